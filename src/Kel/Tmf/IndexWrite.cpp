// The half of the index that moves blocks from memory into the file: early
// by FlushFrozen while a large stream is being written, all the rest at the
// end, and finally the index areas that were left open for them.

#include <algorithm>
#include <cstdlib>

#include "Kel/Log/Log.h"
#include "Kel/Tmf/BlockPipeline.h"
#include "Kel/Tmf/BlockZlibCompressor.h"
#include "Kel/Tmf/DeflatingBlock.h"
#include "Kel/Tmf/FileWrite.h"
#include "Kel/Tmf/Index.h"
#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace KelTmf {

namespace {

const char* const WriteBufferMethod = "KelTmf::Index::WriteBufferToFileStream";
const char* const WriteIndexMethod = "KelTmf::Index::WriteIndexBufferToFileStream";
const char* const WriteAllMethod = "KelTmf::Index::WriteAllBuffersToFileStream";
const char* const FlushMethod = "KelTmf::Index::FlushFrozen";
const std::int32_t CompressionLevel = 6;

// The room a block filled for the pipeline gets: its limit and a last put
// that carries it past the limit. Grown by realloc instead, a buffer this
// large moves to an address that splits its large pages, and zlib then
// reads every plain byte through small pages: on a virtual machine that
// made its copying of them a tenth of the block's compression time.
// Untouched room takes only address space; a put larger than a default
// block still grows the buffer.
std::uint64_t RoomBeyondLimit(std::uint32_t limit) {
  return std::uint64_t(limit) + std::min(limit, DefaultBlockLimit);
}

}  // namespace

std::uint64_t Index::BlockPosition(std::uint64_t number) {
  if (number == 0) return indexPosition + indexSize;
  BlockRecord& previous = records.at(number - 1);
  // An index block got its position when it was made, from a predecessor
  // that may not have been written then. Its size is fixed, so its place
  // follows from the block in front of it at any time.
  if (IsIndexBlockName(previous.name)) previous.position = BlockPosition(number - 1);
  return previous.position + previous.size;
}

BlockRecord& Index::RecordAt(std::uint64_t number, const char* method) {
  if (number >= records.size()) KEL_RAISE_CODE(5, method);
  return records[number];
}

bool Index::IsDeflating(std::uint64_t number) const {
  return deflating != nullptr && deflating->Number() == number;
}

bool Index::CanDeflateWhilePutting(std::uint64_t number, std::FILE* stream) const {
  // In parallel, blocks are compressed whole, each on a thread of its own.
  if (!compressWhilePutting || stream == nullptr || deflating != nullptr || parallel != nullptr)
    return false;
  const Block& block = blocks[number];
  if (records[number].frozen || block.length != 0 || block.data != nullptr) return false;
  for (std::uint64_t lower = 0; lower < number; ++lower)
    if (!IsFinal(lower)) return false;
  return true;
}

void Index::StartDeflating(std::uint64_t number, std::uint64_t position, std::FILE* stream) {
  deflating.reset(new DeflatingBlock(number, position, stream, CompressionLevel));
}

Index::CompressedPut Index::BeginCompressedPut(const std::string& name, std::FILE* stream,
                                               std::uint64_t byteCount) {
  const std::uint64_t number =
      SelectOpenBlock(name, byteCount, 16, "Attempt to write into a frozen block", true);
  Block& block = blocks[number];
  if (parallel != nullptr)
    ProvideBuffer(number, RoomBeyondLimit(GetBlockSizeLimiter(name).limit));
  if (!IsDeflating(number) && CanDeflateWhilePutting(number, stream))
    StartDeflating(number, BlockPosition(number), stream);
  if (!IsDeflating(number)) return CompressedPut{block.Extend(byteCount), false};
  block.Skip(byteCount);
  if (staging.capacity < byteCount) {
    // Grown afresh rather than reallocated: the old contents are spent.
    staging.Reset();
    staging.AllocateAdditionalMemory(byteCount);
    Platform::PrepareBufferForFilling(staging.data, byteCount);
  }
  return CompressedPut{staging.data, true};
}

void Index::FeedStaged(std::uint64_t byteCount) { deflating->Feed(staging.data, byteCount); }

void Index::FinishDeflating(BlockRecord& record, Block& block) {
  const std::uint64_t size = deflating->Finish(block.length);
  record.position = deflating->Position();
  deflating.reset();
  // The block now stands as if it held its stored form, which the 32-bit
  // size of a block must be able to tell, as on the path through memory.
  block.Reset();
  block.Skip(size);
}

bool Index::DeflateHeldBlock(std::uint64_t number, std::FILE* stream) {
  // The place of a block is known before it is transformed, so a block to
  // be compressed goes straight into the file as zlib makes it; only where
  // the file cannot be positioned does it take the path through memory,
  // which reports that failure.
  if (deflating != nullptr || stream == nullptr) return false;
  const std::uint64_t position = BlockPosition(number);
  if (Platform::Seek64(stream, position) != 0) return false;
  StartDeflating(number, position, stream);
  const Block& block = blocks[number];
  if (block.data != nullptr) deflating->Feed(block.data, block.length);
  return true;
}

void Index::WriteBufferToFileStream(std::uint64_t number, std::FILE* stream) {
  LogWriteBegins(number);
  BlockRecord& record = RecordAt(number, WriteBufferMethod);
  Block& block = blocks[number];
  const bool compress = (record.flags & BlockFlagCompress) != 0;
  bool inFile = IsDeflating(number);
  // A block on its way into the file compressed is written only that way.
  if (record.frozen || (block.ContentsReleased() && !inFile) || (inFile && !compress))
    KEL_RAISE_CODE(14, WriteBufferMethod);

  const std::uint32_t plainLength = block.length;
  LogPlainLength(plainLength);
  if (!inFile && compress) inFile = DeflateHeldBlock(number, stream);
  if (inFile) {
    FinishDeflating(record, block);
  } else {
    if (compress) {
      BlockZlibCompressor compressor(CompressionLevel);
      BlockTransformation& transformation = compressor;
      transformation(block);
    }
    record.position = BlockPosition(number);
  }
  record.size = block.length;
  if (record.flags & BlockFlagFreeze) {
    record.frozen = true;
    record.plainLength = plainLength;
  }
  EndBlockWrite(number, compress, plainLength, [&] {
    if (!inFile) {
      SeekOrFail(stream, record.position, WriteBufferMethod);
      block.Write(stream, false);
    }
    block.Release();
  });
}

void Index::LogWriteBegins(std::uint64_t number) {
  KEL_LOG(1000, WriteBufferMethod, "Writing buffer " << number << " to stream.");
}

void Index::LogPlainLength(std::uint32_t plainLength) {
  if (plainLength != 0) KEL_LOG(1000, WriteBufferMethod, "Buffer length: " << plainLength);
}

void Index::EndBlockWrite(std::uint64_t number, bool compressed, std::uint32_t plainLength,
                          const std::function<void()>& write) {
  const BlockRecord& record = records[number];
  if (compressed)
    KEL_LOG(1000, WriteBufferMethod, "Buffer length after transformations: " << record.size);
  KEL_LOG(1000, WriteBufferMethod, "Writing buffer at position: " << record.position);
  write();
  KEL_LOG(1000, WriteBufferMethod, "Buffer " << number << " written to stream.");
  if (blockWritten) blockWritten(record, plainLength);
}

void Index::WriteIndexBufferToFileStream(std::uint64_t number, std::FILE* stream) {
  KEL_LOG(1000, WriteIndexMethod, "Writing index buffer " << number << " to stream.");
  BlockRecord& record = RecordAt(number, WriteIndexMethod);
  Block& block = blocks[number];
  if (record.frozen) {
    // Written once with provisional entries, its buffer is gone: start it
    // afresh, but only once, so that a buffer in use again is not lost.
    if (record.flags & BlockFlagFreeze) record.frozen = false;
    if (!record.bufferReset) {
      block.Reset();
      record.bufferReset = true;
    }
  }
  const std::vector<BlockRecord> entries = ChainedEntries(number);
  block.SetPosition(0);
  block.Put(entries);
  record.size = block.length;
  record.position = BlockPosition(number);
  if (record.flags & BlockFlagFreeze) record.frozen = true;
  SeekOrFail(stream, record.position, WriteIndexMethod);
  block.Write(stream, false);
  KEL_LOG(1000, WriteIndexMethod, "Index buffer " << number << " written to stream.");
}

bool Index::IsFinal(std::uint64_t number) const {
  return records[number].frozen || IsIndexBlockName(records[number].name);
}

void Index::FlushFrozen(std::FILE* stream) {
  KEL_LOG(1000, FlushMethod, "Flushing frozen blocks ... ");
  // Blocks only ever become final, so the count of final blocks in front
  // can grow as we go instead of being counted again for every block.
  std::uint64_t finalPrefix = 0;
  for (auto& entry : limiters) {
    if (IsEmptyBlockName(entry.first) || IsIndexBlockName(entry.first)) continue;
    const BlockSizeLimiter& limiter = entry.second;
    for (std::uint64_t number : limiter.blocks) {
      const BlockRecord& record = records[number];
      if (record.frozen || !(record.flags & BlockFlagFreeze) ||
          blocks[number].length < limiter.limit)
        continue;
      while (finalPrefix < number && IsFinal(finalPrefix)) ++finalPrefix;
      // A lower block that can still grow leaves this block's place open.
      if (finalPrefix < number) KEL_RAISE_CODE(13, FlushMethod);
      WriteOrSubmit(number, stream);
    }
  }
  // Blocks that threads have finished meanwhile go to the file now, which
  // frees their memory.
  if (parallel != nullptr) parallel->WriteReady();
  KEL_LOG(1000, FlushMethod, "Frozen blocks flushed. ");
}

void Index::WriteFirstIndex(std::FILE* stream) {
  Block first;
  try {
    first.Put(std::vector<BlockRecord>(records.begin(), records.begin() + FirstIndexEntries));
    SeekOrFail(stream, indexPosition, WriteAllMethod);
    first.Write(stream, true);
  } catch (...) {
    first.Release();
    throw;
  }
  first.Release();
}

void Index::WriteAllBuffersToFileStream(std::FILE* stream) {
  KEL_LOG(1000, WriteAllMethod, "Writing all buffers to file stream ...");
  // No more compressed puts come: their staging memory goes back first.
  staging.Reset();
  // A file without any block still gets its first index, of pool entries.
  if (limiters.find(EmptyBlockName) == limiters.end()) AllocateFirstBatch();
  std::uint64_t first = 0;
  while (first < records.size() && IsFinal(first)) ++first;
  for (std::uint64_t number = first; number < records.size(); ++number)
    WriteOrSubmit(number, stream);
  if (parallel != nullptr) parallel->Drain();
  WriteFirstIndex(stream);
  auto chain = limiters.find(IndexBlockName);
  if (chain != limiters.end())
    for (std::uint64_t number : chain->second.blocks) WriteIndexBufferToFileStream(number, stream);
  KEL_LOG(1000, WriteAllMethod, "All buffers to file stream written.");
}

}  // namespace KelTmf
