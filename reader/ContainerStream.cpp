// Reading the blocks of a stream: the stored bytes, their inflation with an
// exact length check, and streams joined from blocks or cut to a range.

#include <zlib.h>

#include <algorithm>

#include "Kel/Util/Coding.h"
#include "reader/Container.h"

namespace DovReader {

namespace {

// deflate cannot do better than about 1032 to 1, so a block that claims
// more than this many plain bytes per stored byte is lying; the bound keeps
// a hostile length from turning into a huge allocation.
const std::uint64_t MaxInflateRatio = 1032;

std::string BlockText(const BlockInfo& block) {
  return "block " + std::to_string(block.number) + " (\"" + block.name + "\")";
}

// Inflates `input` and insists on exactly `expected` bytes and nothing
// behind the zlib stream.
std::vector<unsigned char> Inflate(const unsigned char* input, std::uint32_t inputLength,
                                   std::uint32_t expected, const std::string& where) {
  // One spare byte shows a stream that is longer than stated.
  std::vector<unsigned char> output(static_cast<std::uint64_t>(expected) + 1);
  z_stream stream = {};
  if (inflateInit(&stream) != Z_OK) throw ReadError(where + ": cannot start zlib");
  stream.next_in = const_cast<unsigned char*>(input);
  stream.avail_in = inputLength;
  stream.next_out = output.data();
  stream.avail_out = static_cast<uInt>(output.size());
  const int result = inflate(&stream, Z_FINISH);
  const std::uint64_t produced = stream.total_out;
  const std::string message = stream.msg != nullptr ? stream.msg : "";
  const uInt leftOver = stream.avail_in;
  inflateEnd(&stream);

  const std::string stated = std::to_string(expected);
  if (result == Z_STREAM_END) {
    if (produced != expected)
      throw ReadError(where + ": inflates to " + std::to_string(produced) + " bytes, stated " +
                      stated);
    if (leftOver != 0)
      throw ReadError(where + ": " + std::to_string(leftOver) + " bytes behind the zlib stream");
  } else if (result == Z_DATA_ERROR || result == Z_NEED_DICT) {
    throw ReadError(where + ": corrupt zlib stream (" + message + ")");
  } else if (produced > expected) {
    throw ReadError(where + ": inflates to more than the stated " + stated + " bytes");
  } else {
    throw ReadError(where + ": zlib stream ends early, stated length " + stated);
  }
  output.resize(expected);
  return output;
}

}  // namespace

std::vector<unsigned char> Container::ReadBlockBytes(const BlockInfo& block) const {
  if (block.position > fileLength || block.size > fileLength - block.position)
    throw ReadError(BlockText(block) + " lies beyond the end of the file");
  return ReadAt(block.position, block.size);
}

std::uint64_t Container::PlainLength(const BlockInfo& block) const {
  if (!block.IsCompressed()) return block.size;
  if (block.size < 4) throw ReadError(BlockText(block) + ": compressed block shorter than 4 bytes");
  if (block.position > fileLength || block.size > fileLength - block.position)
    throw ReadError(BlockText(block) + " lies beyond the end of the file");
  return Kel::Util::DecodeFixed32(ReadAt(block.position, 4).data());
}

std::vector<unsigned char> Container::ReadBlockPlain(const BlockInfo& block) const {
  std::vector<unsigned char> stored = ReadBlockBytes(block);
  if (!block.IsCompressed()) return stored;
  const std::string where = BlockText(block);
  if (stored.size() < 4) throw ReadError(where + ": compressed block shorter than 4 bytes");
  const std::uint32_t expected = Kel::Util::DecodeFixed32(stored.data());
  const std::uint32_t compressedLength = static_cast<std::uint32_t>(stored.size() - 4);
  if (expected > compressedLength * MaxInflateRatio)
    throw ReadError(where + ": stated length " + std::to_string(expected) +
                    " is more than its compressed bytes can hold");
  return Inflate(stored.data() + 4, compressedLength, expected, where);
}

std::vector<const BlockInfo*> Container::StreamBlocks(const std::string& name) const {
  std::vector<const BlockInfo*> found;
  for (const BlockInfo& block : blocks)
    if (block.IsStreamBlock() && block.name == name) found.push_back(&block);
  return found;
}

std::vector<std::string> Container::StreamNames() const {
  std::vector<std::string> names;
  for (const BlockInfo& block : blocks)
    if (block.IsStreamBlock() && std::find(names.begin(), names.end(), block.name) == names.end())
      names.push_back(block.name);
  return names;
}

const std::vector<Container::StreamPart>& Container::Parts(const std::string& name) const {
  auto found = parts.find(name);
  if (found != parts.end()) return found->second;
  std::vector<StreamPart> list;
  std::uint64_t start = 0;
  for (const BlockInfo* block : StreamBlocks(name)) {
    list.push_back({block->number, start, PlainLength(*block)});
    start += list.back().length;
  }
  return parts.emplace(name, std::move(list)).first->second;
}

const std::vector<unsigned char>& Container::KeptPlain(std::size_t block) const {
  if (block != keptBlock) {
    keptBlock = SIZE_MAX;
    keptPlain = ReadBlockPlain(blocks[block]);
    keptBlock = block;
  }
  return keptPlain;
}

std::uint64_t Container::StreamLength(const std::string& name) const {
  const std::vector<StreamPart>& list = Parts(name);
  return list.empty() ? 0 : list.back().start + list.back().length;
}

void Container::ForEachStreamBlock(const std::string& name, const BlockCallback& callback) const {
  for (const BlockInfo* block : StreamBlocks(name)) callback(*block, ReadBlockPlain(*block));
}

std::vector<unsigned char> Container::ReadStream(const std::string& name) const {
  std::vector<unsigned char> stream;
  ForEachStreamBlock(name, [&stream](const BlockInfo&, const std::vector<unsigned char>& plain) {
    stream.insert(stream.end(), plain.begin(), plain.end());
  });
  return stream;
}

std::vector<unsigned char> Container::ReadStreamRange(const std::string& name, std::uint64_t offset,
                                                      std::uint64_t length) const {
  const std::uint64_t total = StreamLength(name);
  if (offset > total || length > total - offset)
    throw ReadError("range " + std::to_string(offset) + "+" + std::to_string(length) +
                    " lies beyond the end of stream \"" + name + "\" (" + std::to_string(total) +
                    " bytes)");
  const std::vector<StreamPart>& list = Parts(name);
  const std::uint64_t end = offset + length;
  // The first part that ends behind the offset.
  auto part = std::upper_bound(
      list.begin(), list.end(), offset,
      [](std::uint64_t at, const StreamPart& p) { return at < p.start + p.length; });
  std::vector<unsigned char> range;
  for (; part != list.end() && part->start < end; ++part) {
    const std::vector<unsigned char>& plain = KeptPlain(part->block);
    const std::uint64_t from = std::max(offset, part->start) - part->start;
    const std::uint64_t to = std::min(end, part->start + part->length) - part->start;
    range.insert(range.end(), plain.begin() + from, plain.begin() + to);
  }
  return range;
}

}  // namespace DovReader
