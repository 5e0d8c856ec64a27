#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <fstream>
#include <iterator>
#include <random>

#include "Kel/Tmf/TmFile.h"
#include "reader/Container.h"

using DovReader::Container;
using DovReader::ReadError;
using Bytes = std::vector<unsigned char>;

namespace {

std::string ScratchPath(const std::string& suffix) {
  const char* root = std::getenv("DOVWRITER_TEST_TMP");
  std::filesystem::path dir = root != nullptr ? root : "/tmp/dovwriter_tests";
  std::filesystem::create_directories(dir);
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  return (dir / (std::string("reader_") + test->test_suite_name() + "_" + test->name() + suffix))
      .string();
}

Bytes ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteAll(const std::string& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void Put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<unsigned char>(value >> (8 * i));
}

void Append32(Bytes& bytes, std::uint32_t value) {
  bytes.resize(bytes.size() + 4);
  Put32(bytes, bytes.size() - 4, value);
}

Bytes Compress(const Bytes& plain) {
  uLongf length = compressBound(plain.size());
  Bytes stored(4 + length);
  Put32(stored, 0, static_cast<std::uint32_t>(plain.size()));
  EXPECT_EQ(compress2(stored.data() + 4, &length, plain.data(), plain.size(), 6), Z_OK);
  stored.resize(4 + length);
  return stored;
}

struct Entry {
  std::string name;
  std::uint32_t size;
  std::uint8_t flags;
};

// A file laid down by hand from the drawn format: head, first index of
// `entries` padded with pool entries, then `body`.
Bytes HandBuilt(const std::vector<Entry>& entries, const Bytes& body) {
  Bytes file{0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A, '1', '.', '1', 0};
  Append32(file, 2784);
  Append32(file, 20);
  for (std::size_t i = 0; i < 20; ++i) {
    const Entry entry = i < entries.size() ? entries[i] : Entry{"\vEmpty Block ", 0, 0};
    file.push_back(static_cast<unsigned char>(i + 1));
    Append32(file, 128);
    Bytes field(128, 0);
    std::copy(entry.name.begin(), entry.name.end(), field.begin());
    file.insert(file.end(), field.begin(), field.end());
    Append32(file, entry.size);
    file.push_back(entry.flags);
    file.push_back(0);
  }
  file.insert(file.end(), body.begin(), body.end());
  return file;
}

Bytes Pattern(std::size_t count, unsigned seed) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>((i * seed) >> 3);
  return bytes;
}

// A file of the library: "Heavy" in 25 flushed one-put blocks (so block 19
// is an index block), "Plain" left uncompressed.
struct WrittenFile {
  std::string path;
  Bytes bytes;
  Bytes heavy;
  Bytes plain;
};

WrittenFile WriteSample(const std::string& path) {
  WrittenFile sample;
  sample.path = path;
  KelTmf::TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  file.index.SetBlockLimit("Heavy", 1);
  for (unsigned i = 0; i < 25; ++i) {
    const Bytes piece = Pattern(200 + i, i + 3);
    file.index.SetBlockFlags("Heavy", 33);
    file.index.Put("Heavy", piece.data(), piece.size());
    file.index.FlushFrozen(file.stream);
    sample.heavy.insert(sample.heavy.end(), piece.begin(), piece.end());
  }
  sample.plain = Pattern(50, 11);
  file.index.Put("Plain", sample.plain.data(), sample.plain.size());
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();
  sample.bytes = ReadAll(path);
  return sample;
}

bool Mentions(const std::vector<std::string>& lines, const std::string& text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

const std::size_t EntrySize = 139;
std::size_t EntryAt(std::size_t index) { return 20 + EntrySize * index; }

}  // namespace

TEST(ContainerReading, FindsStreamsOfAHandBuiltFileBySummingSizes) {
  const Bytes heavy = Pattern(1000, 5), tree = Pattern(500, 7), light = Pattern(2000, 1);
  const Bytes lightStored = Compress(light);
  Bytes body = heavy;
  body.insert(body.end(), tree.begin(), tree.end());
  body.insert(body.end(), lightStored.begin(), lightStored.end());
  const std::string path = ScratchPath(".tmf");
  WriteAll(path, HandBuilt({{"Heavy Data", 1000, 32},
                            {"Dov Tree", 500, 0},
                            {"Light Data", static_cast<std::uint32_t>(lightStored.size()), 33}},
                           body));

  const Container container = Container::Open(path);
  EXPECT_EQ(container.Verify(), std::vector<std::string>());
  ASSERT_EQ(container.Blocks().size(), 20u);
  EXPECT_EQ(container.Blocks()[2].position, 4300u);
  EXPECT_EQ(container.Blocks()[19].position, 4300u + lightStored.size());
  EXPECT_TRUE(container.Blocks()[5].IsPoolBlock());
  EXPECT_EQ(container.StreamNames(),
            (std::vector<std::string>{"Heavy Data", "Dov Tree", "Light Data"}));
  EXPECT_EQ(container.StreamLength("Light Data"), 2000u);
  EXPECT_EQ(container.StreamLength("Missing"), 0u);
  EXPECT_EQ(container.ReadStream("Light Data"), light);
  EXPECT_EQ(container.ReadStream("Heavy Data"), heavy);
  EXPECT_EQ(container.ReadStreamRange("Light Data", 1990, 10), Bytes(light.end() - 10, light.end()));
  EXPECT_THROW(container.ReadStreamRange("Light Data", 1990, 11), ReadError);
}

TEST(ContainerReading, RangesInflateOnlyTheBlocksThatHoldThem) {
  const std::string path = ScratchPath(".tmf");
  WrittenFile sample = WriteSample(path);
  Container sound = Container::Open(path);
  EXPECT_EQ(sound.Verify(), std::vector<std::string>());
  EXPECT_EQ(sound.ReadStream("Heavy"), sample.heavy);
  EXPECT_EQ(sound.ReadStream("Plain"), sample.plain);

  // Break the zlib data of the last compressed heavy block (the very last
  // one got its flags too late): earlier ranges still read.
  const DovReader::BlockInfo& last = sound.Blocks()[24];
  ASSERT_EQ(last.name, "Heavy");
  ASSERT_TRUE(last.IsCompressed());
  ASSERT_FALSE(sound.Blocks()[25].IsCompressed());
  Bytes broken = sample.bytes;
  broken[last.position + 8] ^= 0xFF;
  broken[last.position + 9] ^= 0xFF;
  WriteAll(path, broken);
  Container container = Container::Open(path);
  EXPECT_EQ(container.ReadStreamRange("Heavy", 100, 300),
            Bytes(sample.heavy.begin() + 100, sample.heavy.begin() + 400));
  EXPECT_THROW(container.ReadStreamRange("Heavy", sample.heavy.size() - 250, 5), ReadError);
  EXPECT_EQ(container.ReadStreamRange("Heavy", sample.heavy.size() - 5, 5),
            Bytes(sample.heavy.end() - 5, sample.heavy.end()));
  EXPECT_THROW(container.ReadStream("Heavy"), ReadError);
  EXPECT_TRUE(Mentions(container.Verify(), "block 24 (\"Heavy\")"));

  std::vector<std::uint64_t> visited;
  container.ForEachStreamBlock("Plain", [&](const DovReader::BlockInfo& block, const Bytes& plain) {
    visited.push_back(block.number);
    EXPECT_EQ(plain, sample.plain);
  });
  EXPECT_EQ(visited.size(), 1u);
}

TEST(ContainerVerification, EachDamageIsReportedAndUnwalkableFilesAreRefused) {
  const std::string path = ScratchPath(".tmf");
  const WrittenFile sample = WriteSample(path);
  const Container sound = Container::Open(path);
  const std::uint64_t chainAt = sound.Blocks()[19].position;
  const std::uint64_t heavyAt = sound.Blocks()[0].position;
  const std::uint32_t heavySize = sound.Blocks()[0].size;

  struct Damage {
    const char* what;
    std::function<void(Bytes&)> apply;
    bool refused;  // Open fails
  };
  const std::vector<Damage> damages = {
      {"bad magic number", [](Bytes& b) { b[3] = 'X'; }, true},
      {"unknown format version", [](Bytes& b) { b[10] = '2'; }, true},
      {"first index length 2785", [](Bytes& b) { Put32(b, 12, 2785); }, true},
      {"first index count 21", [](Bytes& b) { Put32(b, 16, 21); }, true},
      {"name-size field 127", [](Bytes& b) { Put32(b, EntryAt(3) + 1, 127); }, false},
      {"size 27803, expected 27804", [](Bytes& b) { Put32(b, EntryAt(19) + 133, 27803); }, true},
      {"count 199, expected 200", [&](Bytes& b) { Put32(b, chainAt, 199); }, true},
      {"expected 2800 plus the sizes", [](Bytes& b) { b.push_back(0); }, false},
      {"lies beyond the end of the file", [](Bytes& b) { b.pop_back(); }, false},
      {"inflates to", [&](Bytes& b) { Put32(b, heavyAt, 201); }, false},
      {"more than its compressed bytes can hold",
       [&](Bytes& b) { Put32(b, heavyAt, 0xFFFFFFFF); }, false},
      {"corrupt zlib stream", [&](Bytes& b) { b[heavyAt + 6] ^= 0x55; }, false},
      {"zlib stream ends early",
       [&](Bytes& b) {
         // Shorten block 0 by one byte, and let block 1 take it over.
         Put32(b, EntryAt(0) + 133, heavySize - 1);
         Put32(b, EntryAt(1) + 133, sound.Blocks()[1].size + 1);
       },
       false},
      {"pool block with size 5",
       [&](Bytes& b) { Put32(b, chainAt + 4 + EntrySize * (27 - 20) + 133, 5); }, false},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.what);
    Bytes bytes = sample.bytes;
    damage.apply(bytes);
    WriteAll(path, bytes);
    const std::vector<std::string> lines = Container::Verify(path);
    EXPECT_TRUE(Mentions(lines, damage.what)) << ::testing::PrintToString(lines);
    if (damage.refused) {
      EXPECT_THROW(Container::Open(path), ReadError);
    } else {
      EXPECT_EQ(Container::Open(path).Verify(), lines);
    }
  }
}

TEST(ContainerVerification, PositionsBeyondFourGiBAreSummedNotWrapped) {
  const std::string path = ScratchPath(".tmf");
  WriteAll(path, HandBuilt({{"Huge", 0xF0000000u, 0}, {"Huge", 0xF0000000u, 0}, {"Huge", 16, 0}},
                           Bytes()));
  const Container container = Container::Open(path);
  EXPECT_EQ(container.Blocks()[2].position, 2800ull + 2 * 0xF0000000ull);
  EXPECT_EQ(container.StreamLength("Huge"), 0xF0000000ull * 2 + 16);
  EXPECT_THROW(container.ReadStream("Huge"), ReadError);
  const std::vector<std::string> lines = container.Verify();
  EXPECT_TRUE(Mentions(lines, "block 2 (\"Huge\") lies beyond the end of the file"));
  EXPECT_TRUE(Mentions(lines, "expected 2800 plus the sizes of all blocks: 8053066496"));
}

TEST(ContainerVerification, TruncatedAndScrambledFilesNeverCrash) {
  const std::string path = ScratchPath(".tmf");
  const WrittenFile sample = WriteSample(path);
  const std::string damaged = ScratchPath("_damaged.tmf");

  // Every truncation is reported; most are refused outright.
  for (std::size_t length = 0; length < sample.bytes.size(); length += 97) {
    WriteAll(damaged, Bytes(sample.bytes.begin(), sample.bytes.begin() + length));
    EXPECT_FALSE(Container::Verify(damaged).empty()) << length;
  }

  // Random damage: whatever Verify passes must also read without error.
  std::mt19937 random(1234);
  for (int round = 0; round < 300; ++round) {
    Bytes bytes = sample.bytes;
    const int flips = 1 + static_cast<int>(random() % 4);
    for (int i = 0; i < flips; ++i)
      bytes[random() % bytes.size()] = static_cast<unsigned char>(random());
    WriteAll(damaged, bytes);
    const std::vector<std::string> lines = Container::Verify(damaged);
    try {
      const Container container = Container::Open(damaged);
      for (const std::string& name : container.StreamNames()) {
        if (lines.empty()) {
          EXPECT_NO_THROW(container.ReadStream(name)) << round;
        } else {
          try {
            container.ReadStream(name);
          } catch (const ReadError&) {
          }
        }
      }
    } catch (const ReadError&) {
      EXPECT_FALSE(lines.empty()) << round;
    }
  }
}

TEST(ContainerVerification, MissingFileIsAReadError) {
  EXPECT_THROW(Container::Open(ScratchPath("_missing.tmf")), ReadError);
  EXPECT_EQ(Container::Verify(ScratchPath("_missing.tmf")).size(), 1u);
}
