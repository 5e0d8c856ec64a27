#include "reader/Container.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "Kel/Util/Coding.h"

namespace DovReader {

namespace {

const unsigned char Magic[8] = {0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A};
const unsigned char Version[4] = {'1', '.', '1', 0};
const std::uint64_t HeadSize = 12;
const std::uint32_t FirstIndexBodySize = 2784;
const std::uint32_t FirstIndexCount = 20;
const std::uint32_t ChainedIndexCount = 200;
const std::uint32_t EntrySize = 139;
const std::uint32_t NameFieldSize = 128;
const char IndexBlockName[] = "\vIndex Block ";
const char EmptyBlockName[] = "\vEmpty Block ";
const std::size_t ReservedNameSize = 13;

int SeekTo(std::FILE* stream, std::uint64_t offset) {
#if defined(_WIN32)
  return _fseeki64(stream, static_cast<__int64>(offset), SEEK_SET);
#else
  return fseeko(stream, static_cast<off_t>(offset), SEEK_SET);
#endif
}

std::uint64_t LengthOf(std::FILE* stream) {
#if defined(_WIN32)
  if (_fseeki64(stream, 0, SEEK_END) != 0) return 0;
  return static_cast<std::uint64_t>(_ftelli64(stream));
#else
  if (fseeko(stream, 0, SEEK_END) != 0) return 0;
  const off_t end = ftello(stream);
  return end < 0 ? 0 : static_cast<std::uint64_t>(end);
#endif
}

std::string Describe(const BlockInfo& block) {
  std::ostringstream out;
  out << "block " << block.number;
  if (block.IsStreamBlock()) out << " (\"" << block.name << "\")";
  return out.str();
}

// The entry fields as they lie in 139 bytes.
struct RawEntry {
  BlockInfo info;
  std::uint32_t nameSize;
  std::uint8_t reserved;
  bool nameFieldPadded;  // only zero bytes behind the name
};

RawEntry ParseEntry(const unsigned char* entry) {
  RawEntry raw;
  raw.info.id = entry[0];
  raw.nameSize = Kel::Util::DecodeFixed32(entry + 1);
  const char* name = reinterpret_cast<const char*>(entry + 5);
  raw.info.name.assign(name, strnlen(name, NameFieldSize));
  raw.nameFieldPadded = std::all_of(name + raw.info.name.size(), name + NameFieldSize,
                                    [](char c) { return c == 0; });
  raw.info.size = Kel::Util::DecodeFixed32(entry + 133);
  raw.info.flags = entry[137];
  raw.reserved = entry[138];
  return raw;
}

bool BeginsWith(const std::string& name, const char* prefix) {
  return name.compare(0, ReservedNameSize, prefix, ReservedNameSize) == 0;
}

}  // namespace

bool BlockInfo::IsIndexBlock() const { return BeginsWith(name, IndexBlockName); }
bool BlockInfo::IsPoolBlock() const { return BeginsWith(name, EmptyBlockName); }

Container::Container(const std::string& path) : path(path) {
  file.reset(std::fopen(path.c_str(), "rb"), [](std::FILE* stream) {
    if (stream != nullptr) std::fclose(stream);
  });
  if (!file) throw ReadError("cannot open \"" + path + "\"");
  fileLength = LengthOf(file.get());
  ReadHead();
  if (fileLength < FirstBlockPosition) {
    fatal.push_back("file length " + std::to_string(fileLength) +
                    " is less than the 2800 bytes of head and first index");
    return;
  }
  WalkIndexes();
}

Container Container::Open(const std::string& path) {
  Container container(path);
  if (!container.fatal.empty()) {
    std::string text = "\"" + path + "\" is not a readable container file:";
    for (const std::string& line : container.fatal) text += "\n  " + line;
    throw ReadError(text);
  }
  return container;
}

std::vector<std::string> Container::Verify(const std::string& path) {
  try {
    return Container(path).Verify();
  } catch (const ReadError& failure) {
    return {failure.what()};
  }
}

std::vector<unsigned char> Container::ReadAt(std::uint64_t offset, std::uint64_t count) const {
  if (offset > fileLength || count > fileLength - offset)
    throw ReadError("bytes " + std::to_string(offset) + " to " + std::to_string(offset + count) +
                    " lie beyond the end of the file (" + std::to_string(fileLength) + ")");
  std::vector<unsigned char> bytes(count);
  if (count == 0) return bytes;
  if (SeekTo(file.get(), offset) != 0 || std::fread(bytes.data(), 1, count, file.get()) != count)
    throw ReadError("cannot read " + std::to_string(count) + " bytes at " + std::to_string(offset));
  return bytes;
}

void Container::ReadHead() {
  if (fileLength < HeadSize) {
    fatal.push_back("file is shorter than its 12-byte head");
    return;
  }
  const std::vector<unsigned char> head = ReadAt(0, HeadSize);
  if (std::memcmp(head.data(), Magic, sizeof Magic) != 0) fatal.push_back("bad magic number");
  if (std::memcmp(head.data() + 8, Version, sizeof Version) != 0)
    fatal.push_back("unknown format version");
}

void Container::WalkIndexes() {
  const std::vector<unsigned char> first = ReadAt(HeadSize, FirstBlockPosition - HeadSize);
  const std::uint32_t bodySize = Kel::Util::DecodeFixed32(first.data());
  const std::uint32_t count = Kel::Util::DecodeFixed32(first.data() + 4);
  if (bodySize != FirstIndexBodySize)
    fatal.push_back("first index length " + std::to_string(bodySize) + ", expected 2784");
  if (count != FirstIndexCount)
    fatal.push_back("first index count " + std::to_string(count) + ", expected 20");

  // The entries in hand; an index block as the last of them brings the next
  // 200. Positions only grow, so the walk ends within the file.
  std::vector<unsigned char> entries(first.begin() + 8, first.end());
  std::uint64_t position = FirstBlockPosition;
  while (!entries.empty()) {
    std::vector<unsigned char> next;
    const std::size_t entryCount = entries.size() / EntrySize;
    for (std::size_t i = 0; i < entryCount; ++i) {
      RawEntry raw = ParseEntry(entries.data() + i * EntrySize);
      raw.info.number = blocks.size();
      raw.info.position = position;
      position += raw.info.size;
      blocks.push_back(raw.info);
      CheckEntry(raw.info, raw.nameSize, raw.reserved, raw.nameFieldPadded);
      if (!raw.info.IsIndexBlock()) continue;
      if (i + 1 == entryCount)
        next = ReadChainedIndex(raw.info);
      else
        problems.push_back(Describe(raw.info) + ": index block is not the last entry of its index");
    }
    entries.swap(next);
  }
}

std::vector<unsigned char> Container::ReadChainedIndex(const BlockInfo& block) {
  const std::string where = "index " + Describe(block);
  if (block.size != IndexBlockSize) {
    fatal.push_back(where + ": size " + std::to_string(block.size) + ", expected 27804");
    return {};
  }
  if (block.position > fileLength || block.size > fileLength - block.position) {
    fatal.push_back(where + " lies beyond the end of the file");
    return {};
  }
  std::vector<unsigned char> body = ReadAt(block.position, block.size);
  const std::uint32_t count = Kel::Util::DecodeFixed32(body.data());
  if (count != ChainedIndexCount) {
    fatal.push_back(where + ": count " + std::to_string(count) + ", expected 200");
    return {};
  }
  return std::vector<unsigned char>(body.begin() + 4, body.end());
}

void Container::CheckEntry(const BlockInfo& block, std::uint32_t nameSize, std::uint8_t reserved,
                           bool nameFieldPadded) {
  const std::string where = "entry of " + Describe(block);
  if (nameSize != NameFieldSize)
    problems.push_back(where + ": name-size field " + std::to_string(nameSize) + ", expected 128");
  if (!nameFieldPadded)
    problems.push_back(where + ": name field holds bytes other than 0 behind the name");
  if (reserved != 0) problems.push_back(where + ": reserved byte is not 0");
  if ((block.flags & ~0x21) != 0)
    problems.push_back(where + ": unknown flags " + std::to_string(block.flags));
  if (block.IsPoolBlock() && block.size != 0)
    problems.push_back(where + ": pool block with size " + std::to_string(block.size));
}

std::vector<std::string> Container::Verify() const {
  std::vector<std::string> lines = fatal;
  lines.insert(lines.end(), problems.begin(), problems.end());
  CheckBlocks(lines);
  return lines;
}

void Container::CheckBlocks(std::vector<std::string>& lines) const {
  if (blocks.empty()) return;
  const BlockInfo& last = blocks.back();
  const std::uint64_t expected = last.position + last.size;
  if (fileLength != expected)
    lines.push_back("file length " + std::to_string(fileLength) +
                    ", expected 2800 plus the sizes of all blocks: " + std::to_string(expected));
  for (const BlockInfo& block : blocks) {
    if (block.position > fileLength || block.size > fileLength - block.position) {
      lines.push_back(Describe(block) + " lies beyond the end of the file");
      continue;
    }
    if (!block.IsStreamBlock() || !block.IsCompressed()) continue;
    try {
      ReadBlockPlain(block);
    } catch (const ReadError& failure) {
      lines.push_back(failure.what());
    }
  }
}

}  // namespace DovReader
