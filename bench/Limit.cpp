// The limit: what zlib alone needs, on one core, for the bytes that the
// library compresses. The file is read back and every compressed block is
// inflated (not timed) and compressed again with compress2 at level 6, so
// the input bytes and the cuts are exactly those of the write.

#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Kel/Util/Coding.h"
#include "Measure.h"
#include "Writers.h"

namespace bench {

namespace {

using Kel::Util::DecodeFixed32;

const std::uint64_t FirstBlockPosition = 2800;
const std::size_t EntrySize = 139;
const std::size_t NameFieldSize = 128;
const char IndexBlockName[] = "\vIndex Block ";

struct Entry {
  std::string name;
  std::uint64_t position;
  std::uint32_t size;
  std::uint8_t flags;
};

class FileReader {
 public:
  explicit FileReader(const std::string& path) : file(std::fopen(path.c_str(), "rb")) {
    if (file == nullptr) throw std::runtime_error("cannot open " + path);
  }
  ~FileReader() { std::fclose(file); }
  std::vector<unsigned char> Read(std::uint64_t position, std::uint64_t size) {
    std::vector<unsigned char> bytes(size);
    if (fseeko(file, static_cast<off_t>(position), SEEK_SET) != 0 ||
        std::fread(bytes.data(), 1, size, file) != size)
      throw std::runtime_error("short read in the model file");
    return bytes;
  }

 private:
  std::FILE* file;
};

// The entries of one index body: a u32 count and that many entries.
std::vector<Entry> ParseEntries(const std::vector<unsigned char>& body) {
  const std::uint32_t count = DecodeFixed32(body.data());
  if (body.size() < 4 + count * EntrySize) throw std::runtime_error("truncated index");
  std::vector<Entry> entries;
  for (std::uint32_t e = 0; e < count; ++e) {
    const unsigned char* entry = body.data() + 4 + e * EntrySize;
    const char* name = reinterpret_cast<const char*>(entry + 5);
    entries.push_back({std::string(name, strnlen(name, NameFieldSize)), 0,
                       DecodeFixed32(entry + 133), entry[137]});
  }
  return entries;
}

// Every block of the file with its place, following the chain of indexes.
std::vector<Entry> WalkIndex(FileReader& reader) {
  const std::uint32_t firstLength = DecodeFixed32(reader.Read(12, 4).data());
  std::vector<Entry> pending = ParseEntries(reader.Read(16, firstLength));
  std::vector<Entry> blocks;
  std::uint64_t position = FirstBlockPosition;
  for (std::size_t next = 0; next < pending.size(); ++next) {
    Entry entry = pending[next];
    entry.position = position;
    position += entry.size;
    blocks.push_back(entry);
    if (entry.name.compare(0, std::strlen(IndexBlockName), IndexBlockName) == 0) {
      const std::vector<Entry> chained = ParseEntries(reader.Read(entry.position, entry.size));
      pending.insert(pending.end(), chained.begin(), chained.end());
    }
  }
  return blocks;
}

std::vector<unsigned char> Inflate(const std::vector<unsigned char>& stored,
                                   std::uint32_t plainLength) {
  std::vector<unsigned char> plain(plainLength);
  uLongf length = plainLength;
  if (uncompress(plain.data(), &length, stored.data() + 4, stored.size() - 4) != Z_OK ||
      length != plainLength)
    throw std::runtime_error("a block does not inflate to its length");
  return plain;
}

}  // namespace

LimitFigures MeasureLimit(const std::string& path) {
  FileReader reader(path);
  LimitFigures figures;
  figures.sameBytes = true;
  Stopwatch watch;
  for (const Entry& entry : WalkIndex(reader)) {
    if ((entry.flags & 1) == 0 || entry.size < 4) continue;
    std::vector<unsigned char> stored = reader.Read(entry.position, entry.size);
    const std::uint32_t plainLength = DecodeFixed32(stored.data());
    std::vector<unsigned char> plain = Inflate(stored, plainLength);
    std::vector<unsigned char> again(compressBound(plainLength));
    uLongf againLength = again.size();
    const int result = watch.Time([&] {
      return compress2(again.data(), &againLength, plain.data(), plainLength, 6);
    });
    if (result != Z_OK) throw std::runtime_error("compress2 failed");
    figures.sameBytes = figures.sameBytes && againLength + 4 == stored.size() &&
                        std::memcmp(again.data(), stored.data() + 4, againLength) == 0;
    figures.plainBytes += plainLength;
    figures.blocks += 1;
    if (entry.name == "Heavy Data" && plainLength > figures.largestHeavyBlock)
      figures.largestHeavyBlock = plainLength;
  }
  figures.wallSeconds = watch.WallSeconds();
  figures.cpuSeconds = watch.CpuSeconds();
  return figures;
}

}  // namespace bench
