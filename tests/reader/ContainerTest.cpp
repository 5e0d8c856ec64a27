#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <functional>
#include <random>

#include "../Kel/Tmf/TmfTestSupport.h"
#include "reader/Container.h"

using DovReader::Container;
using DovReader::ReadError;
using TmfTest::Bytes;

namespace {

const std::size_t EntrySize = 139;
std::size_t EntryAt(std::size_t number) { return 20 + EntrySize * number; }

// A file of the library: "Heavy" in 25 flushed one-put blocks, so that 19
// is an index block, and "Plain" left uncompressed.
struct Sample {
  Bytes bytes;
  Bytes heavy;
  Bytes plain = TmfTest::Pattern(50, 11);
};

Sample WriteSample(const std::string& path) {
  Sample sample;
  TmfTest::WriteContainer(path, [&](KelTmf::TmFile& file) {
    file.index.SetBlockLimit("Heavy", 1);
    for (unsigned i = 0; i < 25; ++i) {
      const Bytes piece = TmfTest::Pattern(200 + i, i + 3);
      file.index.SetBlockFlags("Heavy", 33);
      file.index.Put("Heavy", piece.data(), piece.size());
      file.index.FlushFrozen(file.stream);
      sample.heavy.insert(sample.heavy.end(), piece.begin(), piece.end());
    }
    file.index.Put("Plain", sample.plain.data(), sample.plain.size());
  });
  sample.bytes = TmfTest::ReadAll(path);
  return sample;
}

bool Mentions(const std::vector<std::string>& lines, const std::string& text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

}  // namespace

TEST(ContainerReading, FindsStreamsOfAHandBuiltFileBySummingSizes) {
  const Bytes heavy = TmfTest::Pattern(1000, 5), tree = TmfTest::Pattern(500, 7);
  const Bytes light = TmfTest::Pattern(2000, 1);
  uLongf length = compressBound(light.size());
  Bytes lightStored(4 + length);
  TmfTest::Put32(lightStored, 0, 2000);
  ASSERT_EQ(compress2(lightStored.data() + 4, &length, light.data(), light.size(), 6), Z_OK);
  lightStored.resize(4 + length);
  Bytes body = heavy;
  body.insert(body.end(), tree.begin(), tree.end());
  body.insert(body.end(), lightStored.begin(), lightStored.end());
  const std::string path = TmfTest::ScratchPath();
  TmfTest::WriteAll(path, TmfTest::HandBuilt({{"Heavy Data", 1000, 32}, {"Dov Tree", 500, 0},
                                              {"Light Data", std::uint32_t(4 + length), 33}},
                                             body));

  const Container container = Container::Open(path);
  EXPECT_EQ(container.Verify(), std::vector<std::string>());
  EXPECT_EQ(container.Blocks()[2].position, 4300u);
  EXPECT_TRUE(container.Blocks()[5].IsPoolBlock());
  EXPECT_EQ(container.StreamNames(),
            (std::vector<std::string>{"Heavy Data", "Dov Tree", "Light Data"}));
  EXPECT_EQ(container.StreamLength("Light Data"), 2000u);
  EXPECT_EQ(container.StreamLength("Missing"), 0u);
  EXPECT_EQ(container.ReadStream("Light Data"), light);
  EXPECT_EQ(container.ReadStream("Heavy Data"), heavy);
  EXPECT_EQ(container.ReadStreamRange("Light Data", 1990, 10),
            Bytes(light.end() - 10, light.end()));
  EXPECT_THROW(container.ReadStreamRange("Light Data", 1990, 11), ReadError);
}

TEST(ContainerReading, RangesInflateOnlyTheBlocksThatHoldThem) {
  const std::string path = TmfTest::ScratchPath();
  const Sample sample = WriteSample(path);
  const DovReader::BlockInfo last = Container::Open(path).Blocks()[24];
  ASSERT_TRUE(last.IsCompressed());  // 25, the very last, got its flags too late
  Bytes broken = sample.bytes;
  broken[last.position + 8] ^= 0xFF;
  broken[last.position + 9] ^= 0xFF;
  TmfTest::WriteAll(path, broken);

  const Container container = Container::Open(path);
  const std::size_t size = sample.heavy.size();
  EXPECT_EQ(container.ReadStreamRange("Heavy", 100, 300),
            Bytes(sample.heavy.begin() + 100, sample.heavy.begin() + 400));
  EXPECT_EQ(container.ReadStreamRange("Heavy", size - 5, 5),
            Bytes(sample.heavy.end() - 5, sample.heavy.end()));
  EXPECT_THROW(container.ReadStreamRange("Heavy", size - 250, 5), ReadError);
  EXPECT_THROW(container.ReadStream("Heavy"), ReadError);
  EXPECT_EQ(container.ReadStream("Plain"), sample.plain);
  EXPECT_TRUE(Mentions(container.Verify(), "block 24 (\"Heavy\")"));
}

TEST(ContainerVerification, EachDamageIsReportedAndUnwalkableFilesAreRefused) {
  const std::string path = TmfTest::ScratchPath();
  const Sample sample = WriteSample(path);
  const Container sound = Container::Open(path);
  EXPECT_EQ(sound.Verify(), std::vector<std::string>());
  const std::uint64_t chainAt = sound.Blocks()[19].position;
  const std::uint64_t heavyAt = sound.Blocks()[0].position;
  const std::uint32_t heavySize = sound.Blocks()[0].size;

  struct Damage {
    const char* report;
    std::function<void(Bytes&)> apply;
    bool refused;  // by Open
  };
  const std::vector<Damage> damages = {
      {"bad magic number", [](Bytes& b) { b[3] = 'X'; }, true},
      {"unknown format version", [](Bytes& b) { b[10] = '2'; }, true},
      {"first index length 2785", [](Bytes& b) { TmfTest::Put32(b, 12, 2785); }, true},
      {"first index count 21", [](Bytes& b) { TmfTest::Put32(b, 16, 21); }, true},
      {"name-size field 127", [](Bytes& b) { TmfTest::Put32(b, EntryAt(3) + 1, 127); }, false},
      {"block 3 (\"Heavy\"): name field holds bytes other than 0 behind the name",
       [](Bytes& b) { b[EntryAt(3) + 5 + 127] = 'x'; }, false},
      {"size 27803, expected 27804", [](Bytes& b) { TmfTest::Put32(b, EntryAt(19) + 133, 27803); },
       true},
      {"count 199, expected 200", [&](Bytes& b) { TmfTest::Put32(b, chainAt, 199); }, true},
      {"pool block with size 5",
       [&](Bytes& b) { TmfTest::Put32(b, chainAt + 4 + EntrySize * 7 + 133, 5); }, false},
      {"expected 2800 plus the sizes", [](Bytes& b) { b.push_back(0); }, false},
      {"lies beyond the end of the file", [](Bytes& b) { b.pop_back(); }, false},
      {"inflates to 200 bytes, stated 201", [&](Bytes& b) { TmfTest::Put32(b, heavyAt, 201); },
       false},
      {"more than its compressed bytes can hold",
       [&](Bytes& b) { TmfTest::Put32(b, heavyAt, 0xFFFFFFFF); }, false},
      {"corrupt zlib stream", [&](Bytes& b) { b[heavyAt + 6] ^= 0x55; }, false},
      {"zlib stream ends early",
       [&](Bytes& b) {  // block 0 loses its last byte to block 1
         TmfTest::Put32(b, EntryAt(0) + 133, heavySize - 1);
         TmfTest::Put32(b, EntryAt(1) + 133, sound.Blocks()[1].size + 1);
       },
       false},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.report);
    Bytes bytes = sample.bytes;
    damage.apply(bytes);
    TmfTest::WriteAll(path, bytes);
    const std::vector<std::string> lines = Container::Verify(path);
    EXPECT_TRUE(Mentions(lines, damage.report)) << ::testing::PrintToString(lines);
    if (damage.refused) {
      EXPECT_THROW(Container::Open(path), ReadError);
    } else {
      EXPECT_EQ(Container::Open(path).Verify(), lines);
    }
  }
  EXPECT_THROW(Container::Open(path + ".missing"), ReadError);
}

TEST(ContainerVerification, PositionsBeyondFourGiBAreSummedNotWrapped) {
  const std::string path = TmfTest::ScratchPath();
  TmfTest::WriteAll(
      path,
      TmfTest::HandBuilt({{"Huge", 0xF0000000u, 0}, {"Huge", 0xF0000000u, 0}, {"Huge", 16, 0}}, Bytes()));
  const Container container = Container::Open(path);
  EXPECT_EQ(container.Blocks()[2].position, 2800ull + 2 * 0xF0000000ull);
  EXPECT_EQ(container.StreamLength("Huge"), 2 * 0xF0000000ull + 16);
  EXPECT_THROW(container.ReadStream("Huge"), ReadError);
  const std::vector<std::string> lines = container.Verify();
  EXPECT_TRUE(Mentions(lines, "block 2 (\"Huge\") lies beyond the end of the file"));
  EXPECT_TRUE(Mentions(lines, "expected 2800 plus the sizes of all blocks: 8053066496"));
}

TEST(ContainerVerification, TruncatedAndScrambledFilesNeverCrash) {
  const Sample sample = WriteSample(TmfTest::ScratchPath());
  const std::string damaged = TmfTest::ScratchPath("_damaged.tmf");
  std::vector<std::size_t> lengths = {0, 11, 12, 20, 2799, 2800, sample.bytes.size() - 1};
  for (std::size_t length = 3000; length < sample.bytes.size(); length += 2999)
    lengths.push_back(length);
  for (std::size_t length : lengths) {
    TmfTest::WriteAll(damaged, Bytes(sample.bytes.begin(), sample.bytes.begin() + length));
    EXPECT_FALSE(Container::Verify(damaged).empty()) << length;
  }
  // Random damage: whatever Verify passes must also read without error.
  std::mt19937 random(1234);
  for (int round = 0; round < 100; ++round) {
    Bytes bytes = sample.bytes;
    for (unsigned flips = 1 + random() % 4; flips > 0; --flips)
      bytes[random() % bytes.size()] = static_cast<unsigned char>(random());
    TmfTest::WriteAll(damaged, bytes);
    const std::vector<std::string> lines = Container::Verify(damaged);
    try {
      const Container container = Container::Open(damaged);
      for (const std::string& name : container.StreamNames()) container.ReadStream(name);
    } catch (const ReadError&) {
      EXPECT_FALSE(lines.empty()) << round;
    }
  }
}
