#include "Kel/Tmf/Index.h"

#include <algorithm>
#include <cstdlib>

#include "Kel/Tmf/BlockPipeline.h"
#include "Kel/Tmf/DeflatingBlock.h"
#include "Kel/Util/Raise.h"

namespace KelTmf {

namespace {

const char* const PutMethod = "KelTmf::Index::Put";

bool BeginsWith(const std::string& name, const std::string& prefix) {
  return name.compare(0, prefix.size(), prefix) == 0;
}

// Bytes of a value in its stored encoding (a u32 count or length in front
// of a text or list).
std::uint64_t StoredSize(const std::string& text) { return 4 + std::uint64_t(text.size()); }

std::uint64_t StoredSize(const std::vector<std::string>& texts) {
  std::uint64_t size = 4;
  for (const std::string& text : texts) size += StoredSize(text);
  return size;
}

template <class T>
std::uint64_t StoredSize(const std::vector<T>& values) {
  return 4 + std::uint64_t(values.size()) * sizeof(T);
}

}  // namespace

Index::Index() = default;

Index::~Index() {
  StopParallel();
  for (Block& block : blocks) block.Release();
  staging.Release();
}

bool Index::IsEmptyBlockName(const std::string& name) { return BeginsWith(name, EmptyBlockName); }

bool Index::IsIndexBlockName(const std::string& name) { return BeginsWith(name, IndexBlockName); }

std::uint64_t Index::AppendBlockRecord(const std::string& name) {
  const std::uint64_t number = records.size();
  BlockRecord record;
  record.id = nextId;
  record.name = name;
  records.push_back(record);
  blocks.push_back(Block());
  limiters[name].blocks.push_back(number);
  ++nextId;
  return number;
}

std::uint64_t Index::AllocateEmptyBlocks(std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) AppendBlockRecord(EmptyBlockName);
  // Kept in reverse so that the lowest free number is taken off the back.
  std::vector<std::uint64_t>& pool = limiters[EmptyBlockName].blocks;
  std::reverse(pool.begin(), pool.end());
  return count * IndexEntrySize + 4;
}

void Index::AllocateFirstBatch() {
  // The first index lies in front of all blocks, behind its u32 length.
  indexSize = AllocateEmptyBlocks(FirstIndexEntries) + 4;
}

std::uint64_t Index::AddBlock(const std::string& name) {
  if (IsEmptyBlockName(name)) return AppendBlockRecord(name);
  auto pool = limiters.find(EmptyBlockName);
  if (pool == limiters.end()) {
    AllocateFirstBatch();
  } else if (pool->second.blocks.empty()) {
    KEL_RAISE(14, "This point should not be reached", "KelTmf::Index::AddBlock");
  }
  limiters.emplace(name, BlockSizeLimiter());
  std::uint64_t number = TakeFromPool();
  if (limiters[EmptyBlockName].blocks.empty()) {
    // The batch is used up: its last number becomes the index block that
    // describes the next batch, and the stream takes the first of those.
    MakeIndexBlock(number);
    number = TakeFromPool();
  }
  limiters[name].blocks.push_back(number);
  records[number].name = name;
  return number;
}

std::uint64_t Index::TakeFromPool() {
  std::vector<std::uint64_t>& pool = limiters[EmptyBlockName].blocks;
  const std::uint64_t number = pool.back();
  pool.pop_back();
  return number;
}

void Index::MakeIndexBlock(std::uint64_t number) {
  const std::uint64_t bodySize = AllocateEmptyBlocks(ChainedIndexEntries);
  BlockSizeLimiter chain;
  chain.limit = static_cast<std::uint32_t>(bodySize);
  limiters.emplace(IndexBlockName, chain).first->second.blocks.push_back(number);
  records[number].name = IndexBlockName;
  SetBlockFlags(IndexBlockName, BlockFlagFreeze);
  // Provisional entries: only the size counts now, the final ones are
  // written at the end.
  blocks[number].Put(ChainedEntries(number));
  records[number].size = blocks[number].length;
  records[number].position = BlockPosition(number);
}

std::vector<BlockRecord> Index::ChainedEntries(std::uint64_t number) const {
  const std::uint64_t first = number + 1;
  const std::uint64_t end = std::min<std::uint64_t>(first + ChainedIndexEntries, records.size());
  if (first > end || end - first != ChainedIndexEntries)
    KEL_RAISE_CODE(14, "KelTmf::Index::WriteIndexBufferToFileStream");
  return std::vector<BlockRecord>(records.begin() + first, records.begin() + end);
}

BlockSizeLimiter& Index::GetBlockSizeLimiter(const std::string& name) {
  auto found = limiters.find(name);
  if (found == limiters.end()) KEL_RAISE_CODE(5, "KelTmf::Index::GetBlockSizeLimiter");
  return found->second;
}

std::uint64_t Index::SelectBlock(const std::string& name, std::uint64_t putBytes) {
  auto found = limiters.find(name);
  if (found != limiters.end() && !found->second.blocks.empty()) {
    const std::uint64_t last = found->second.blocks.back();
    const Block& block = blocks[last];
    // The limit is tested before the put: a put never splits, and a block
    // may end up larger than the limit by its last put, but never larger
    // than its 32-bit lengths can tell.
    if (!records[last].frozen && block.length < found->second.limit &&
        putBytes <= blockCapacity - std::min<std::uint64_t>(block.position, blockCapacity))
      return last;
  }
  return AddBlock(name);
}

std::uint64_t Index::SelectOpenBlock(const std::string& name, std::uint64_t putBytes,
                                     std::int32_t code, const char* description,
                                     bool compressedPut) {
  // The reserved names mark the container's own blocks; a stream under
  // such a name would be taken for one of them by every reader.
  if (IsEmptyBlockName(name) || IsIndexBlockName(name))
    KEL_RAISE(16, "Reserved block name used for a stream", PutMethod);
  if (putBytes > blockCapacity)
    KEL_RAISE(1, "Value too large: a block holds less than 4 GiB", PutMethod);
  const std::uint64_t number = SelectBlock(name, putBytes);
  // A block without the freeze flag is not marked when it is written at the
  // end, but its bytes are gone all the same.
  const bool deflatingHere = IsDeflating(number);
  if (records[number].frozen || (deflatingHere && !compressedPut) ||
      (blocks[number].ContentsReleased() && !deflatingHere))
    KEL_RAISE(code, description, PutMethod);
  return number;
}

Block& Index::BlockForTypedPut(const std::string& name, std::uint64_t putBytes) {
  return blocks[SelectOpenBlock(name, putBytes, 16, "Attempt to write into a frozen block")];
}

void Index::Put(const std::string& name, const void* data, std::uint64_t byteCount) {
  blocks[SelectOpenBlock(name, byteCount, 5, "Element Not Found")].PutRaw(data, byteCount);
}

void Index::Put(const std::string& name, bool value) { BlockForTypedPut(name, 1).Put(value); }
void Index::Put(const std::string& name, std::uint8_t value) {
  BlockForTypedPut(name, 1).Put(value);
}
void Index::Put(const std::string& name, std::uint32_t value) {
  BlockForTypedPut(name, 4).Put(value);
}
void Index::Put(const std::string& name, std::uint64_t value) {
  BlockForTypedPut(name, 8).Put(value);
}
void Index::Put(const std::string& name, float value) { BlockForTypedPut(name, 4).Put(value); }
void Index::Put(const std::string& name, const std::string& value) {
  BlockForTypedPut(name, StoredSize(value)).Put(value);
}
void Index::Put(const std::string& name, const std::vector<std::string>& values) {
  BlockForTypedPut(name, StoredSize(values)).Put(values);
}
void Index::Put(const std::string& name, const std::vector<std::uint8_t>& values) {
  BlockForTypedPut(name, StoredSize(values)).Put(values);
}
void Index::Put(const std::string& name, const std::vector<std::uint32_t>& values) {
  BlockForTypedPut(name, StoredSize(values)).Put(values);
}
void Index::Put(const std::string& name, const std::vector<std::uint64_t>& values) {
  BlockForTypedPut(name, StoredSize(values)).Put(values);
}

std::uint64_t Index::GetStreamLength(const std::string& name) {
  const BlockSizeLimiter* limiter = nullptr;
  try {
    limiter = &GetBlockSizeLimiter(name);
  } catch (const Kel::Util::Exception& failure) {
    if (failure.GetCode() == 5) return 0;
    throw;
  }
  std::uint64_t length = 0;
  for (std::uint64_t number : limiter->blocks)
    length += records[number].frozen ? records[number].plainLength : blocks[number].position;
  return length;
}

void Index::SetBlockFlags(const std::string& name, std::uint8_t flag) {
  for (BlockRecord& record : records)
    if (record.name == name) record.flags |= flag;
}

void Index::SetBlockLimit(const std::string& name, std::uint32_t limit) {
  limiters[name].limit = limit;
}

}  // namespace KelTmf
