// Closing one part of a file that several processes write together. Each
// process builds its own tree and compresses its own "Heavy Data" into
// blocks; rank 0 writes its blocks at once, as they lead the stream, the
// others keep theirs. Prefix sums over the processes then tell each where
// its entries, datasets and blocks stand in the file. The kept blocks go to
// their places from the process that made them; the tree records and the
// sizes of the blocks, which are small, go to rank 0, which writes the
// tree, the index and the rest, as a single writer would.

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>

#include "Kel/Tmf/BlockPipeline.h"
#include "Kel/Tmf/BlockPlaces.h"
#include "Kel/Tmf/FileWrite.h"
#include "Kel/Util/Raise.h"
#include "ObjectManager/Diagnostics.h"
#include "ObjectManager/ObjectManager.h"
#include "Platform/Platform.h"

namespace Kel {
namespace Dov {

namespace {

const char* const SaveToMethod = "Kel::Dov::Scene_V2Part::saveTo";
const char* const CloseFileMethod = "Kel::Dov::Scene_V2Part::closeFile";

// The tree streams that a part's entries fill, in the order in which their
// bytes travel to rank 0.
const std::string* const PartStreams[] = {&KelDov::DovTreeStream, &KelDov::LightDataStream,
                                          &KelDov::AttributesStream, &KelDov::ResourcesStream};

// A failure as it travels between ranks: its code, then its description.
std::vector<unsigned char> EncodeFailure(const std::exception_ptr& failure) {
  std::int32_t code = 16;
  std::string text = "unknown failure";
  try {
    std::rethrow_exception(failure);
  } catch (const Kel::Util::Exception& caught) {
    code = caught.GetCode();
    text = caught.GetDescription();
  } catch (const std::bad_alloc&) {
    code = 0;
    text = "Memory Allocation Error";
  } catch (const std::exception& caught) {
    text = caught.what();
  } catch (...) {
  }
  std::vector<unsigned char> bytes(sizeof code);
  std::memcpy(bytes.data(), &code, sizeof code);
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

// Every rank learns whether a step failed anywhere; if it did, every rank
// throws: the lowest failing rank its own failure, the others its code and
// text. So no rank goes on to a collective step that another has left.
void Agree(PartGroup& group, const std::exception_ptr& failure, const char* method) {
  const int first = group.firstFlagged(static_cast<bool>(failure));
  if (first == group.size()) return;
  std::vector<unsigned char> bytes;
  if (first == group.rank()) bytes = EncodeFailure(failure);
  group.broadcast(bytes, first);
  if (first == group.rank()) std::rethrow_exception(failure);
  std::int32_t code = 16;
  if (bytes.size() >= sizeof code) std::memcpy(&code, bytes.data(), sizeof code);
  const std::string description(bytes.begin() + std::min(bytes.size(), sizeof code), bytes.end());
  const std::string text = "rank " + std::to_string(first) + " of " +
                           std::to_string(group.size()) + " failed: " + description;
  KEL_RAISE(code, text.c_str(), method);
}

template <class Step>
void Collectively(PartGroup& group, const char* method, Step&& step) {
  std::exception_ptr failure;
  try {
    step();
  } catch (...) {
    failure = std::current_exception();
  }
  Agree(group, failure, method);
}

std::exception_ptr WriteFailure(const std::string& path, const std::string& reason) {
  try {
    const std::string text = "Unable to write to file \"" + path + "\": " + reason;
    KEL_RAISE(10, text.c_str(), CloseFileMethod);
  } catch (...) {
    return std::current_exception();
  }
}

// What a part brings to the file; summed over the parts in front of it,
// where its own begins.
enum PartCount { Entries, HeavyBytes, HeavyBlocks, StoredBytes, LightBytes, PartCounts };
// What every rank tells every other of its root: the ids of its first and
// last top-level entries in the file, and what decides the root's mark.
enum PartEnd { FirstTop, LastTop, EntryCount, ComponentCount, MeshCount, PartEnds };

struct KeptBlock {
  std::uint32_t plainLength = 0;
  std::uint8_t flags = 0;
  const unsigned char* bytes = nullptr;  // in KeptBytes; none where written already
  std::uint64_t size = 0;
};

// The stored forms of a part's blocks, kept until their places are known,
// one behind the other in large chunks prepared for filling: fresh memory
// taken page by page costs a good part of what compressing costs.
class KeptBytes {
 public:
  const unsigned char* keep(const unsigned char* bytes, std::uint64_t size) {
    if (chunks.empty() || chunks.back().capacity() - chunks.back().size() < size) {
      chunks.emplace_back();
      Platform::ReserveForFilling(chunks.back(), std::max(ChunkBytes, size));
    }
    // Within the capacity: the chunk never moves, so what it keeps stays put.
    std::vector<unsigned char>& chunk = chunks.back();
    const std::size_t at = chunk.size();
    chunk.insert(chunk.end(), bytes, bytes + size);
    return chunk.data() + at;
  }
  void release() { chunks = std::vector<std::vector<unsigned char>>(); }

 private:
  static constexpr std::uint64_t ChunkBytes = 64u << 20;
  std::vector<std::vector<unsigned char>> chunks;
};

void Append(std::vector<unsigned char>& out, std::uint64_t value) {
  for (int i = 0; i < 8; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

// Reads what Append wrote, from a message that this library made itself.
std::uint64_t Take(const unsigned char*& in) {
  std::uint64_t value = 0;
  for (int i = 0; i < 8; ++i) value |= static_cast<std::uint64_t>(in[i]) << (8 * i);
  in += 8;
  return value;
}

}  // namespace

class PartClose {
 public:
  PartClose(ObjectManager& scene, PartGroup& group)
      : scene(scene), group(group), first(group.rank() == 0) {}

  void run() {
    Collectively(group, CloseFileMethod, [&] { build(); });
    place();
    std::vector<unsigned char> part;
    Collectively(group, CloseFileMethod, [&] {
      scene.RelocatePart(placement);
      part = pack();
    });
    std::vector<unsigned char> parts = group.gatherAtFirst(part);
    part = std::vector<unsigned char>();
    Collectively(group, CloseFileMethod, [&] {
      if (first) compose(parts);
    });
    parts = std::vector<unsigned char>();
    writeBlocks();
    Collectively(group, CloseFileMethod, [&] {
      if (first)
        scene.explainingFailures("closeFile", false,
                                 [&] { scene.FinishSave(shared, std::string()); });
    });
    scene.endClose(*progress);
  }

 private:
  // The walk from the root, with the blocks of numbers compressed by the
  // rank's threads and kept, and the length of its tree records measured.
  void build() {
    scene.refuseCloseInState();
    if (scene.options.encoding != Encoding::Fast)
      KEL_RAISE(16, "closeFile: a file written by several processes takes the Fast encoding "
                    "only (setWriteOptions)", CloseFileMethod);
    progress = scene.beginBuilding();
    KelTmf::Index& index = scene.GetFile().index;
    index.keepFinished = [&](const KelTmf::FinishedBlock& block) { keep(index, block); };
    {
      const ObjectManager::ParallelWrite parallel(scene);
      scene.explainingFailures("closeFile", false, [&] {
        scene.buildTree();
        index.FinishStream(KelDov::HeavyDataStream);
      });
    }
    KelTmf::TmFile scratch;
    scene.SaveEntries(scratch, 0, first);
    counts[Entries] = scene.size() - 1;
    counts[LightBytes] = scratch.index.GetStreamLength(KelDov::LightDataStream);
  }

  void keep(KelTmf::Index& index, const KelTmf::FinishedBlock& block) {
    const KelTmf::BlockRecord& record = index.records[block.number];
    const unsigned char* bytes = nullptr;
    if (first) {
      // Rank 0's blocks lead the stream, so their places are known now:
      // they go to the file at once instead of waiting in memory, which
      // costs the first touch of that memory and a write after everything.
      KelTmf::WriteAt(scene.GetFile().stream,
                      KelTmf::DataBlockPosition(counts[HeavyBlocks], counts[StoredBytes]),
                      block.bytes, block.size, CloseFileMethod);
    } else {
      bytes = keptBytes.keep(block.bytes, block.size);
    }
    kept.push_back(KeptBlock{block.plainLength, record.flags, bytes, block.size});
    counts[HeavyBytes] += block.plainLength;
    counts[HeavyBlocks] += 1;
    counts[StoredBytes] += block.size;
    if (index.blockWritten) index.blockWritten(record, block.plainLength);
  }

  // Where this part stands: its shifts from the prefix sums, and its
  // neighbours in the chain of top-level entries from every rank's ends.
  void place() {
    std::copy(counts, counts + PartCounts, before);
    group.sumOverLower(before, PartCounts);
    placement.entryShift = static_cast<std::uint32_t>(before[Entries]);
    placement.heavyShift = before[HeavyBytes];
    const LinkList components = scene.readLinks(scene.root, "Components");
    std::uint64_t meshes = 0;
    for (std::uint64_t component : components)
      if (scene.objects[component].type == MeshObject) ++meshes;
    const std::uint64_t ends[PartEnds] = {shifted(scene.FirstTop()), shifted(scene.LastTop()),
                                          counts[Entries], components.size(), meshes};
    const std::vector<std::uint64_t> all = group.gatherAll(ends, PartEnds);
    std::uint64_t allComponents = 0, allMeshes = 0;
    totalEntries = 1;
    for (int rank = 0; rank < group.size(); ++rank) {
      const std::uint64_t* end = &all[PartEnds * rank];
      totalEntries += end[EntryCount];
      allComponents += end[ComponentCount];
      allMeshes += end[MeshCount];
      if (end[FirstTop] == 0) continue;
      if (placement.firstTop == 0) placement.firstTop = static_cast<std::uint32_t>(end[FirstTop]);
      placement.lastTop = static_cast<std::uint32_t>(end[LastTop]);
      if (rank < group.rank()) placement.previousTop = static_cast<std::uint32_t>(end[LastTop]);
      if (rank > group.rank() && placement.nextTop == 0)
        placement.nextTop = static_cast<std::uint32_t>(end[FirstTop]);
    }
    // The one root marks, as a root of its own would, several components
    // of which one is a mesh.
    if (auto root = dynamic_cast<KelDov::Group*>(scene[KelDov::Tree::RootId].value))
      root->rootFlag = allComponents >= 2 && allMeshes != 0 ? 1 : 0;
  }

  std::uint64_t shifted(std::uint32_t id) const { return id == 0 ? 0 : id + before[Entries]; }

  // The message to rank 0: the sizes of the kept blocks, then (but from
  // rank 0 itself) the part's bytes of each tree stream.
  std::vector<unsigned char> pack() {
    if (before[Entries] + counts[Entries] >= std::numeric_limits<std::uint32_t>::max())
      KEL_RAISE(1, "closeFile: more tree entries than 32-bit ids can tell", CloseFileMethod);
    std::vector<unsigned char> out;
    Append(out, kept.size());
    for (const KeptBlock& block : kept) {
      Append(out, block.plainLength);
      Append(out, block.size);
      Append(out, block.flags);
    }
    if (first) return out;
    KelTmf::TmFile scratch;
    scene.SaveEntries(scratch, before[LightBytes], false);
    for (const std::string* stream : PartStreams) {
      const std::vector<unsigned char> bytes = scratch.index.HeldStreamBytes(*stream);
      Append(out, bytes.size());
      out.insert(out.end(), bytes.begin(), bytes.end());
    }
    return out;
  }

  // Rank 0: the index of every rank's blocks, then the tree streams, rank 0's
  // entries saved here and every other rank's appended as they came.
  void compose(const std::vector<unsigned char>& parts) {
    shared.stream = scene.GetFile().stream;
    scene.GetFile().stream = nullptr;
    std::fflush(shared.stream);
    // The rest is compressed as a single writer compresses it.
    scene.startParallelWrite(shared);
    KelTmf::Index& index = shared.index;
    const unsigned char* in = parts.data();
    std::vector<const unsigned char*> streams;
    for (int rank = 0; rank < group.size(); ++rank) {
      for (std::uint64_t blocks = Take(in); blocks != 0; --blocks) {
        const std::uint64_t plainLength = Take(in), size = Take(in), flags = Take(in);
        index.AdoptWrittenBlock(KelDov::HeavyDataStream, static_cast<std::uint32_t>(plainLength),
                                static_cast<std::uint32_t>(size), static_cast<std::uint8_t>(flags));
      }
      if (rank == 0) continue;
      streams.push_back(in);
      for (std::size_t stream = 0; stream < 4; ++stream) {
        const std::uint64_t length = Take(in);
        in += length;
      }
    }
    index.Put(KelDov::DovTreeStream, static_cast<std::uint32_t>(totalEntries));
    scene.SaveEntries(shared, 0, true);
    for (const unsigned char* part : streams)
      for (const std::string* stream : PartStreams) {
        const std::uint64_t length = Take(part);
        if (length != 0) index.Put(*stream, part, length);
        part += length;
      }
  }

  // Every other rank writes its blocks at their places, all in one
  // collective write, in which rank 0, whose blocks are in the file
  // already, takes part with none; their memory goes once they are in the
  // file.
  void writeBlocks() {
    std::vector<PartGroup::Piece> pieces;
    std::uint64_t stored = before[StoredBytes];
    for (std::uint64_t block = 0; block < kept.size(); ++block) {
      if (kept[block].bytes != nullptr)
        pieces.push_back(PartGroup::Piece{
            KelTmf::DataBlockPosition(before[HeavyBlocks] + block, stored), kept[block].bytes,
            kept[block].size});
      stored += kept[block].size;
    }
    const std::string failure = group.writeShared(scene.fileName.c_str(), pieces);
    keptBytes.release();
    Agree(group, failure.empty() ? std::exception_ptr() : WriteFailure(scene.fileName, failure),
          CloseFileMethod);
  }

  ObjectManager& scene;
  PartGroup& group;
  const bool first;
  std::unique_ptr<CloseProgress> progress;
  std::vector<KeptBlock> kept;
  KeptBytes keptBytes;
  std::uint64_t counts[PartCounts] = {};
  std::uint64_t before[PartCounts] = {};
  std::uint64_t totalEntries = 0;
  KelDov::PartPlacement placement;
  KelTmf::TmFile shared;  // rank 0: the file, with the index of every rank's blocks
};

void ObjectManager::saveToAsPart(PartGroup& group, const char* path, bool overwrite) {
  const FileState state = fileState;
  const std::string name = fileName;
  try {
    Collectively(group, SaveToMethod, [&] {
      if (group.rank() == 0) {
        saveTo(path, overwrite);
      } else {
        bindPath(path);
        fileState = FileState::Bound;
      }
    });
  } catch (...) {
    // Bound on every rank or on none.
    fileState = state;
    fileName = name;
    throw;
  }
}

void ObjectManager::refusePartAlone(const char* operation) const {
  if (!partOfGroup) return;
  const std::string text = std::string(operation) +
                           " through a base handle of a part scene: its collective form "
                           "(Scene_V2Part, Scene_V2Mpi) writes the file together with the others";
  KEL_RAISE(16, text.c_str(), operation);
}

void ObjectManager::closeFileAsPart(PartGroup& group, const char* path) {
  // A closeFile that some ranks ignore and others take would leave them
  // waiting for each other.
  const std::uint64_t ignored = path == nullptr || fileName != path;
  const std::vector<std::uint64_t> all = group.gatherAll(&ignored, 1);
  const auto ignoring = std::count(all.begin(), all.end(), 1u);
  if (ignoring == group.size()) return explainIgnoredClose(path);
  if (ignoring != 0)
    KEL_RAISE(16, "closeFile: the ranks name different files; nothing was written",
              CloseFileMethod);
  PartClose(*this, group).run();
}

}  // namespace Dov
}  // namespace Kel
