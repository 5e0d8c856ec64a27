#include <gtest/gtest.h>

#include <algorithm>

#include "Kel/Tmf/BlockPlaces.h"
#include "Kel/Tmf/Index.h"
#include "TmfTestSupport.h"

using KelTmf::Index;
using Numbers = std::vector<std::uint64_t>;

TEST(IndexNumbering, BatchesOfTwentyThenAnIndexBlockEveryTwoHundred) {
  Index index;
  EXPECT_EQ(index.AddBlock("S"), 0u);
  EXPECT_EQ(index.records.size(), 20u);
  EXPECT_EQ(index.indexSize, 2788u);
  for (std::uint64_t expected = 1; expected <= 18; ++expected)
    ASSERT_EQ(index.AddBlock("S"), expected);
  EXPECT_EQ(index.AddBlock("T"), 20u);
  EXPECT_EQ(index.records.size(), 220u);
  EXPECT_EQ(index.records[19].name, KelTmf::IndexBlockName);
  EXPECT_EQ(index.records[19].size, 27804u);
  EXPECT_EQ(index.records[19].flags, KelTmf::BlockFlagFreeze);
  for (std::uint64_t expected = 21; expected <= 218; ++expected)
    ASSERT_EQ(index.AddBlock("S"), expected);
  EXPECT_EQ(index.AddBlock("S"), 220u);
  EXPECT_EQ(index.GetBlockSizeLimiter(KelTmf::IndexBlockName).blocks, (Numbers{19, 219}));
  EXPECT_EQ(index.records[221].name, KelTmf::EmptyBlockName);
  EXPECT_EQ(index.indexSize, 2788u);
  // Ids count records and wrap in eight bits.
  EXPECT_EQ(index.records[254].id, 255);
  EXPECT_EQ(index.records[255].id, 0);
  EXPECT_EQ(index.records[256].id, 1);

  index.limiters[KelTmf::EmptyBlockName].blocks.clear();
  TmfTest::ExpectFailure([&] { index.AddBlock("S"); }, 14, "This point should not be reached");
  TmfTest::ExpectFailure([&] { index.GetBlockSizeLimiter("missing"); }, 5, "Element Not Found");
}

TEST(IndexSelection, LimitTestedBeforeEachPutAndStreamLengthInPlainBytes) {
  Index index;
  EXPECT_EQ(index.GetStreamLength("S"), 0u);
  index.SetBlockLimit("S", 10);
  index.Put("S", std::uint64_t(1));      // 8 bytes, below the limit
  index.Put("S", std::uint32_t(2));      // still block 0, now 12 bytes
  index.Put("S", std::string(30, 'x'));  // block 0 full: larger than the limit, whole in block 1
  index.Put("T", std::uint8_t(4));
  index.SetBlockLimit("U", 4);
  index.Put("U", std::uint32_t(1));
  index.Put("U", std::uint32_t(2));  // an exact fit counts as full
  EXPECT_EQ(index.GetBlockSizeLimiter("S").blocks, (Numbers{0, 1}));
  EXPECT_EQ(index.GetBlockSizeLimiter("S").limit, 10u);
  EXPECT_EQ(index.blocks[1].length, 34u);
  EXPECT_EQ(index.GetBlockSizeLimiter("U").blocks, (Numbers{3, 4}));

  // A written block counts its plain length, an open one its position.
  index.records[0].frozen = true;
  index.records[0].plainLength = 300;
  index.blocks[1].SetPosition(2);
  EXPECT_EQ(index.GetStreamLength("S"), 302u);

  // Flags reach the existing blocks of exactly that name.
  index.SetBlockFlags("S", KelTmf::BlockFlagCompress);
  index.SetBlockFlags("", KelTmf::BlockFlagFreeze);
  EXPECT_EQ(index.records[1].flags, KelTmf::BlockFlagCompress);
  EXPECT_EQ(index.records[2].flags, 0);
}

TEST(IndexPuts, RecordPutsStayInOneBlockAndWrittenBlocksTakeNoMore) {
  Index index;
  index.SetBlockLimit("S", 2);
  index.Put("S", std::uint8_t(1));
  index.PutRecord("S", [](KelTmf::Block& block) {
    block.Put(std::uint8_t(2));
    block.Put(std::uint32_t(3));
  });
  EXPECT_EQ(TmfTest::BlockBytes(index.blocks[0]), (TmfTest::Bytes{1, 2, 3, 0, 0, 0}));

  // A frozen last block makes the next put start a new block.
  index.records[0].frozen = true;
  index.Put("S", std::uint8_t(4));
  EXPECT_EQ(index.GetBlockSizeLimiter("S").blocks, (Numbers{0, 1}));
  // A block written at the end without the freeze flag is not marked, but
  // its bytes are gone: a put fails instead of getting lost.
  index.blocks[1].Release();
  const unsigned char byte = 0;
  const std::string frozen = "Attempt to write into a frozen block";
  TmfTest::ExpectFailure([&] { index.Put("S", std::uint8_t(3)); }, 16, frozen);
  TmfTest::ExpectFailure([&] { index.PutRecord("S", [](KelTmf::Block&) {}); }, 16, frozen);
  TmfTest::ExpectFailure([&] { index.Put("S", &byte, 1); }, 5, "Element Not Found");
  TmfTest::ExpectFailure([&] { index.Put(KelTmf::IndexBlockName + "x", std::uint8_t(0)); }, 16,
                         "Reserved block name used for a stream");
}

TEST(IndexPuts, APutThatWouldCarryABlockPastWhatItCanHoldStartsANewOne) {
  Index index;
  index.blockCapacity = 100;  // stands for the 4 GiB that 32-bit lengths hold
  const TmfTest::Bytes raw = TmfTest::Pattern(50, 3);
  index.Put("S", std::string(60, 'a'));  // 64 bytes
  index.Put("S", raw.data(), raw.size());
  index.PutCompressed("S", nullptr, 40,
                      [](unsigned char* out, std::uint64_t begin, std::uint64_t end) {
                        std::fill(out, out + (end - begin), 7);
                      });
  index.Put("S", std::vector<std::uint32_t>(24, 1));  // 100 bytes: fills a block exactly
  EXPECT_EQ(index.GetBlockSizeLimiter("S").blocks, (Numbers{0, 1, 2}));
  EXPECT_EQ(index.blocks[1].length, 90u);
  EXPECT_EQ(index.GetStreamLength("S"), 254u);
  // Only a value larger than a whole block is refused, before any block is taken.
  TmfTest::ExpectFailure([&] { index.Put("T", std::string(97, 'b')); }, 1,
                         "Value too large: a block holds less than 4 GiB");
  EXPECT_EQ(index.limiters.count("T"), 0u);
}

// Blocks written by others take the numbers and places of the position rule,
// and each writer finds the same place knowing only what lies in front of it.
TEST(IndexAdoption, AdoptedBlocksLieWhereEachWriterPlacesItsOwn) {
  Index index;
  std::uint64_t stored = 0;
  for (std::uint64_t block = 0; block < 450; ++block) {
    const std::uint32_t size = 100 + static_cast<std::uint32_t>(block * 37 % 1000);
    const std::uint64_t number = index.AdoptWrittenBlock("S", 4096, size, 33);
    ASSERT_EQ(index.records[number].position, KelTmf::DataBlockPosition(block, stored)) << block;
    ASSERT_TRUE(index.records[number].frozen);
    stored += size;
  }
  EXPECT_EQ(index.GetStreamLength("S"), 450u * 4096);
  EXPECT_EQ(index.GetBlockSizeLimiter(KelTmf::IndexBlockName).blocks, (Numbers{19, 219, 419}));
}
