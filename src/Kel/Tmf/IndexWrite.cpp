// The half of the index that moves blocks from memory into the file: early
// by FlushFrozen while a large stream is being written, all the rest at the
// end, and finally the index areas that were left open for them.

#include <cstdlib>

#include "Kel/Log/Log.h"
#include "Kel/Tmf/BlockZlibCompressor.h"
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

// Every placement is absolute; a failed seek would put the bytes anywhere,
// so it is a failed write.
void SeekOrFail(std::FILE* stream, std::uint64_t position, const char* method) {
  if (stream != nullptr && Platform::Seek64(stream, position) == 0) return;
  KEL_LOG(1000, method, "File positioning failed");
  KEL_RAISE(10, "Saving the buffer failed", method);
}

// What a failed block write raises, whichever way the bytes went.
void RaiseWriteFailure() { KEL_RAISE(10, "Unable to write to file", "KelTmf::Block::Write"); }

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

void Index::WriteBufferToFileStream(std::uint64_t number, std::FILE* stream) {
  KEL_LOG(1000, WriteBufferMethod, "Writing buffer " << number << " to stream.");
  BlockRecord& record = RecordAt(number, WriteBufferMethod);
  Block& block = blocks[number];
  if (record.frozen || block.ContentsReleased()) KEL_RAISE_CODE(14, WriteBufferMethod);

  const std::uint32_t plainLength = block.length;
  if (plainLength != 0) KEL_LOG(1000, WriteBufferMethod, "Buffer length: " << plainLength);
  const bool compress = (record.flags & BlockFlagCompress) != 0;
  // The place of a block is known before it is transformed, so a block to
  // be compressed goes straight into the file as zlib makes it; only where
  // the file cannot be positioned does it take the path through memory,
  // which reports that failure.
  const std::uint64_t position = BlockPosition(number);
  const bool streamed = compress && stream != nullptr && Platform::Seek64(stream, position) == 0;
  if (streamed) {
    WriteCompressedInPlace(block, stream);
  } else if (compress) {
    BlockZlibCompressor compressor(CompressionLevel);
    BlockTransformation& transformation = compressor;
    transformation(block);
  }
  if (compress)
    KEL_LOG(1000, WriteBufferMethod, "Buffer length after transformations: " << block.length);
  record.size = block.length;
  record.position = position;
  if (record.flags & BlockFlagFreeze) {
    record.frozen = true;
    record.plainLength = plainLength;
  }
  KEL_LOG(1000, WriteBufferMethod, "Writing buffer at position: " << record.position);
  if (!streamed) {
    SeekOrFail(stream, record.position, WriteBufferMethod);
    block.Write(stream, false);
  }
  block.Release();
  KEL_LOG(1000, WriteBufferMethod, "Buffer " << number << " written to stream.");
}

void Index::WriteCompressedInPlace(Block& block, std::FILE* stream) {
  BlockZlibCompressor compressor(CompressionLevel);
  const std::uint64_t size =
      compressor.Stream(block, [&](const unsigned char* bytes, std::size_t count) {
        if (std::fwrite(bytes, 1, count, stream) != count) RaiseWriteFailure();
      });
  if (std::fflush(stream) != 0 || std::ferror(stream) != 0) RaiseWriteFailure();
  // The block now stands as the transformation would have left it: its
  // length is that of the transformed bytes, which are in the file.
  block.Release();
  block.length = block.position = static_cast<std::uint32_t>(size);
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
      block.Release();
      block = Block();
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
      WriteBufferToFileStream(number, stream);
    }
  }
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
  // A file without any block still gets its first index, of pool entries.
  if (limiters.find(EmptyBlockName) == limiters.end()) AllocateFirstBatch();
  std::uint64_t first = 0;
  while (first < records.size() && IsFinal(first)) ++first;
  for (std::uint64_t number = first; number < records.size(); ++number)
    WriteBufferToFileStream(number, stream);
  WriteFirstIndex(stream);
  auto chain = limiters.find(IndexBlockName);
  if (chain != limiters.end())
    for (std::uint64_t number : chain->second.blocks) WriteIndexBufferToFileStream(number, stream);
  KEL_LOG(1000, WriteAllMethod, "All buffers to file stream written.");
}

}  // namespace KelTmf
