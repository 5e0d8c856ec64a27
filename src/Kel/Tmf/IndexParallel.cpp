// Writing on several threads: blocks are handed to a pipeline that
// compresses them while the puts go on and gives them back in number order,
// on the caller's thread, which writes them as the sequential write does.

#include <algorithm>

#include "Kel/Tmf/BlockPipeline.h"
#include "Kel/Tmf/FileWrite.h"
#include "Kel/Tmf/Index.h"
#include "Kel/Util/Raise.h"

namespace KelTmf {

namespace {
const char* const WriteBufferMethod = "KelTmf::Index::WriteBufferToFileStream";
}  // namespace

void Index::StartParallel(unsigned threads, const BlockCoding& coding, std::FILE* stream) {
  parallel.reset(new BlockPipeline(threads, coding, [this, stream](const FinishedBlock& block) {
    if (keepFinished)
      keepFinished(block);
    else
      WriteFinished(block, stream);
  }));
}

void Index::StopParallel() { parallel.reset(); }

void Index::CutEvenly(const std::string& name, std::uint32_t blockBytes) {
  evenStream = name;
  evenBlockBytes = blockBytes;
}

void Index::CutPiecesEvery(std::uint32_t blockCount) {
  pieceBytes = std::uint64_t(blockCount) * evenBlockBytes;
}

void Index::SubmitOpenBlock(const std::string& name, std::uint8_t flags) {
  // Only the pipeline can take a block without a file to write it to.
  if (parallel == nullptr) KEL_RAISE_CODE(14, "KelTmf::Index::SubmitOpenBlock");
  auto found = limiters.find(name);
  if (found == limiters.end() || found->second.blocks.empty()) return;
  const std::uint64_t last = found->second.blocks.back();
  if (!records[last].frozen && !blocks[last].ContentsReleased()) {
    records[last].flags |= flags;
    WriteOrSubmit(last, nullptr);
  }
}

void Index::FinishStream(const std::string& name) {
  SubmitOpenBlock(name, BlockFlagCompress);
  parallel->Drain();
}

std::uint64_t Index::AdoptWrittenBlock(const std::string& name, std::uint32_t plainLength,
                                       std::uint32_t size, std::uint8_t flags) {
  const std::uint64_t number = AddBlock(name);
  BlockRecord& record = records[number];
  record.flags = flags;
  record.size = size;
  record.plainLength = plainLength;
  // Written already: the final write of all blocks passes it by.
  record.frozen = true;
  record.position = BlockPosition(number);
  return number;
}

std::vector<unsigned char> Index::HeldStreamBytes(const std::string& name) {
  std::vector<unsigned char> bytes;
  auto found = limiters.find(name);
  if (found == limiters.end()) return bytes;
  for (std::uint64_t number : found->second.blocks) {
    const Block& block = blocks[number];
    if (block.ContentsReleased()) KEL_RAISE_CODE(3, "KelTmf::Index::HeldStreamBytes");
    if (block.data != nullptr) bytes.insert(bytes.end(), block.data, block.data + block.length);
  }
  return bytes;
}

void Index::ProvideBuffer(std::uint64_t number, std::uint64_t plainBytes) {
  Block& block = blocks[number];
  if (block.data != nullptr || block.length != 0) return;
  // Room for `plainBytes`: an exact fit counts as full, hence one more
  // byte. A put that carries the block beyond grows the buffer as usual.
  Buffer buffer = parallel->TakeBuffer(plainBytes + 1);
  block.capacity = buffer.capacity();
  block.data = buffer.Release();
}

void Index::PutAcrossBlocks(const std::string& name, std::FILE* stream, std::uint64_t byteCount,
                            const RangeEncoder& encode) {
  if (pieceBytes != 0 && evenPutBytes - lastCut >= pieceBytes) {
    // Bytes were put, so the stream has a block. An empty open one stays:
    // it is the first of the new piece, and the block in front of it the
    // last of the old.
    const std::vector<std::uint64_t>& numbers = limiters[name].blocks;
    const std::uint64_t last = numbers.back();
    const bool emptyOpen = !records[last].frozen && blocks[last].length == 0;
    if (!emptyOpen) SubmitOpenBlock(name, BlockFlagCompress | BlockFlagFreeze);
    pieceEnds.push_back(emptyOpen ? numbers[numbers.size() - 2] : last);
    lastCut = evenPutBytes;
  }
  evenPutBytes += byteCount;
  std::uint64_t done = 0;
  do {
    // A piece never exceeds one block of this stream, far below 4 GiB.
    const std::uint64_t most = std::min<std::uint64_t>(byteCount - done, evenBlockBytes);
    const std::uint64_t number =
        SelectOpenBlock(name, most, 16, "Attempt to write into a frozen block", true);
    Block& block = blocks[number];
    if (parallel != nullptr) ProvideBuffer(number, evenBlockBytes);
    const std::uint64_t room = evenBlockBytes - std::min(evenBlockBytes, block.length);
    const std::uint64_t piece = std::min<std::uint64_t>(byteCount - done, room);
    encode(block.Extend(piece), done, done + piece);
    done += piece;
    if (block.length >= evenBlockBytes) {
      // A full block leaves at once, marked as the stream's blocks are.
      records[number].flags |= BlockFlagCompress | BlockFlagFreeze;
      WriteOrSubmit(number, stream);
    }
  } while (done < byteCount);
}

void Index::WriteOrSubmit(std::uint64_t number, std::FILE* stream) {
  if (parallel == nullptr) return WriteBufferToFileStream(number, stream);
  BlockRecord& record = RecordAt(number, WriteBufferMethod);
  Block& block = blocks[number];
  if (record.frozen || block.ContentsReleased()) KEL_RAISE_CODE(14, WriteBufferMethod);
  // From here its bytes cannot change: the stream's length and the next
  // put see it as written, as they would after a sequential write.
  if (record.flags & BlockFlagFreeze) {
    record.frozen = true;
    record.plainLength = block.length;
  }
  Buffer plain(block.data, block.capacity);
  block.data = nullptr;
  parallel->Submit(number, std::move(plain), block.length,
                   (record.flags & BlockFlagCompress) != 0);
}

void Index::WriteFinished(const FinishedBlock& finished, std::FILE* stream) {
  const std::uint64_t number = finished.number;
  BlockRecord& record = records[number];
  LogWriteBegins(number);
  LogPlainLength(finished.plainLength);
  // 32 bits: BlockCoder refuses a larger stored form.
  record.size = static_cast<std::uint32_t>(finished.size);
  record.position = BlockPosition(number);
  EndBlockWrite(number, finished.compressed, finished.plainLength, [&] {
    WriteAt(stream, record.position, finished.bytes, finished.size, WriteBufferMethod);
  });
}

}  // namespace KelTmf
