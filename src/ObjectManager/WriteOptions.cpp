// The options a host of the third interface version may set: how the file
// is written, lent arrays, and where diagnostics go.

#include <thread>

#include "Kel/Util/Raise.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

namespace {

const char* const SetWriteOptionsMethod = "Kel::Dov::ObjectManager::setWriteOptions";
// Fast blocks: 4 MiB compress as well as larger ones (within 0.03 %) and as
// fast as any from 1 to 8 MiB, give every thread many blocks to share, and
// keep the memory of the blocks in flight small (see the README's table).
const std::uint32_t DefaultFastBlockBytes = 4u << 20;
const std::uint32_t SmallestBlockBytes = 4u << 10;
const std::uint32_t LargestBlockBytes = 1u << 30;
const unsigned MostThreads = 1024;

unsigned ThreadsToUse(unsigned requested) {
  if (requested != 0) return requested;
  const unsigned hardware = std::thread::hardware_concurrency();
  return hardware != 0 ? hardware : 1;
}

}  // namespace

void ObjectManager::setWriteOptions(const WriteOptions& requested) {
  // The blocks of a file are cut one way from its first dataset to its
  // last; a change half way would leave them cut two ways.
  if (fileState == FileState::Building || fileState == FileState::Finished)
    KEL_RAISE(19, "setWriteOptions after closeFile has started building", SetWriteOptionsMethod);
  if (requested.encoding != Encoding::Exact && requested.encoding != Encoding::Fast)
    KEL_RAISE(16, "setWriteOptions: unknown encoding", SetWriteOptionsMethod);
  if (requested.encoding == Encoding::Fast && (requested.level < 1 || requested.level > 12))
    KEL_RAISE(16, "setWriteOptions: the Fast level must lie in 1..12", SetWriteOptionsMethod);
  if (requested.blockBytes != 0 &&
      (requested.blockBytes < SmallestBlockBytes || requested.blockBytes > LargestBlockBytes))
    KEL_RAISE(16, "setWriteOptions: blockBytes must be 0 or lie in 4 KiB..1 GiB",
              SetWriteOptionsMethod);
  if (requested.threads > MostThreads)
    KEL_RAISE(16, "setWriteOptions: at most 1024 threads", SetWriteOptionsMethod);
  options = requested;
}

void ObjectManager::startParallelWrite() { startParallelWrite(file); }

void ObjectManager::startParallelWrite(KelTmf::TmFile& target) {
  const unsigned threads = ThreadsToUse(options.threads);
  const bool fast = options.encoding == Encoding::Fast;
  // One thread and exact blocks: the sequential write, untouched.
  if (threads == 1 && !fast) return;
  KelTmf::BlockCoding coding;
  coding.fast = fast;
  coding.level = fast ? options.level : 6;
  target.index.StartParallel(threads, coding, target.stream);
  if (fast)
    target.index.CutEvenly(KelDov::HeavyDataStream,
                         options.blockBytes != 0 ? options.blockBytes : DefaultFastBlockBytes);
}

void ObjectManager::setDiagnostics(DiagnosticHandler handler, void* user) {
  diagnostics.attach(handler, user);
}

}  // namespace Dov
}  // namespace Kel
