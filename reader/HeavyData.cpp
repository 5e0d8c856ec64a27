#include "reader/HeavyData.h"

#include <Kel/Util/Coding.h>

#include <algorithm>
#include <fstream>

namespace DovReader {

namespace {

// A compressed block begins with its length before compression.
std::uint64_t PlainLength(std::ifstream& file, const BlockInfo& block) {
  if (!block.IsCompressed()) return block.size;
  unsigned char bytes[4] = {0, 0, 0, 0};
  file.seekg(static_cast<std::streamoff>(block.position));
  file.read(reinterpret_cast<char*>(bytes), sizeof bytes);
  if (!file || block.size < 4) {
    throw ReadError("block " + std::to_string(block.number) + " of \"Heavy Data\" is cut short");
  }
  return Kel::Util::DecodeFixed32(bytes);
}

}  // namespace

HeavyData::HeavyData(const Container& container, const std::string& path)
    : container_(container) {
  std::ifstream file(path, std::ios::binary);
  for (const BlockInfo& block : container.Blocks()) {
    if (!block.IsStreamBlock() || block.name != "Heavy Data") continue;
    Part part;
    part.block = block;
    part.start = length_;
    part.length = PlainLength(file, block);
    length_ += part.length;
    parts_.push_back(part);
  }
}

const std::vector<unsigned char>& HeavyData::Plain(std::size_t part) {
  if (part != cachedPart_) {
    cachedPlain_.clear();
    cachedPart_ = SIZE_MAX;
    cachedPlain_ = container_.ReadBlockPlain(parts_[part].block);
    cachedPart_ = part;
  }
  return cachedPlain_;
}

std::vector<unsigned char> HeavyData::Range(std::uint64_t offset, std::uint64_t length) {
  if (offset > length_ || length > length_ - offset) {
    throw ReadError("range " + std::to_string(offset) + "+" + std::to_string(length) +
                    " lies beyond \"Heavy Data\" (" + std::to_string(length_) + " bytes)");
  }
  std::vector<unsigned char> range;
  range.reserve(length);
  const std::uint64_t end = offset + length;
  for (std::size_t i = 0; i < parts_.size() && range.size() < length; ++i) {
    const Part& part = parts_[i];
    if (part.start + part.length <= offset || part.start >= end) continue;
    const std::vector<unsigned char>& plain = Plain(i);
    if (plain.size() != part.length) throw ReadError("block of \"Heavy Data\" changed size");
    std::uint64_t from = std::max(offset, part.start) - part.start;
    std::uint64_t to = std::min(end, part.start + part.length) - part.start;
    range.insert(range.end(), plain.begin() + static_cast<std::ptrdiff_t>(from),
                 plain.begin() + static_cast<std::ptrdiff_t>(to));
  }
  return range;
}

std::vector<std::uint32_t> HeavyData::Values(const Variable& holder) {
  if (holder.byteSize % 4 != 0)
    throw ReadError("variable \"" + holder.name + "\" has a byte size that is no multiple of 4");
  const std::vector<unsigned char> bytes = Range(holder.offset, holder.byteSize);
  return DecodeDataset(bytes.data(), holder.byteSize, holder.width);
}

}  // namespace DovReader
