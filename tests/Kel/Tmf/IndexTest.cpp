#include <gtest/gtest.h>

#include "Kel/Tmf/Index.h"
#include "TmfTestSupport.h"

using KelTmf::Index;
using TmfTest::Bytes;

TEST(IndexNumbering, BatchesOfTwentyThenChainedIndexBlocksEveryTwoHundred) {
  Index index;
  EXPECT_EQ(index.AddBlock("S"), 0u);
  EXPECT_EQ(index.records.size(), 20u);
  EXPECT_EQ(index.indexSize, 2788u);
  for (std::uint64_t expected = 1; expected <= 18; ++expected) EXPECT_EQ(index.AddBlock("S"), expected);

  EXPECT_EQ(index.AddBlock("T"), 20u);
  EXPECT_EQ(index.records.size(), 220u);
  const KelTmf::BlockRecord& chain = index.records[19];
  EXPECT_EQ(chain.name, KelTmf::IndexBlockName);
  EXPECT_EQ(chain.size, 27804u);
  EXPECT_EQ(chain.flags, KelTmf::BlockFlagFreeze);
  EXPECT_EQ(index.blocks[19].length, 27804u);
  EXPECT_EQ(index.GetBlockSizeLimiter(KelTmf::IndexBlockName).limit, 27804u);

  for (std::uint64_t expected = 21; expected <= 218; ++expected) ASSERT_EQ(index.AddBlock("S"), expected);
  EXPECT_EQ(index.AddBlock("S"), 220u);
  EXPECT_EQ(index.records[219].name, KelTmf::IndexBlockName);
  EXPECT_EQ(index.records.size(), 420u);
  EXPECT_EQ(index.GetBlockSizeLimiter(KelTmf::IndexBlockName).blocks,
            (std::vector<std::uint64_t>{19, 219}));
  EXPECT_EQ(index.indexSize, 2788u);
  EXPECT_EQ(index.GetBlockSizeLimiter("T").blocks, (std::vector<std::uint64_t>{20}));
  EXPECT_EQ(index.records[220].name, "S");
  EXPECT_EQ(index.records[221].name, KelTmf::EmptyBlockName);

  // Ids count records and wrap in eight bits.
  EXPECT_EQ(index.records[0].id, 1);
  EXPECT_EQ(index.records[254].id, 255);
  EXPECT_EQ(index.records[255].id, 0);
  EXPECT_EQ(index.records[256].id, 1);
}

TEST(IndexNumbering, EmptyPoolAfterSetupIsAnInternalError) {
  Index index;
  index.AddBlock("S");
  index.limiters[KelTmf::EmptyBlockName].blocks.clear();
  TmfTest::ExpectFailure([&] { index.AddBlock("S"); }, 14, "This point should not be reached");
  TmfTest::ExpectFailure([&] { index.GetBlockSizeLimiter("missing"); }, 5, "Element Not Found");
}

TEST(IndexSelection, LimitIsTestedBeforeEachPutAndPutsNeverSplit) {
  Index index;
  index.SetBlockLimit("S", 10);
  index.Put("S", std::uint64_t(1));  // 8 bytes: below the limit
  index.Put("S", std::uint32_t(2));  // still goes to block 0, now 12 bytes
  index.Put("S", std::uint8_t(3));   // block 0 is full: block 1
  index.Put("S", std::string(30, 'x'));  // larger than the limit, whole in block 1
  index.Put("T", std::uint8_t(4));
  EXPECT_EQ(index.GetBlockSizeLimiter("S").blocks, (std::vector<std::uint64_t>{0, 1}));
  EXPECT_EQ(index.GetBlockSizeLimiter("S").limit, 10u);  // kept when blocks were added
  EXPECT_EQ(index.blocks[0].length, 12u);
  EXPECT_EQ(index.blocks[1].length, 1u + 34u);
  EXPECT_EQ(index.GetBlockSizeLimiter("T").blocks, (std::vector<std::uint64_t>{2}));

  // An exact fit of the limit counts as full.
  index.SetBlockLimit("U", 4);
  index.Put("U", std::uint32_t(1));
  index.Put("U", std::uint32_t(2));
  EXPECT_EQ(index.GetBlockSizeLimiter("U").blocks, (std::vector<std::uint64_t>{3, 4}));
}

TEST(IndexSelection, StreamLengthCountsPlainBytesOfFrozenAndOpenBlocks) {
  Index index;
  EXPECT_EQ(index.GetStreamLength("S"), 0u);
  index.SetBlockLimit("S", 300);
  const Bytes bytes(300, 9);
  index.Put("S", bytes.data(), bytes.size());
  index.Put("S", std::uint64_t(1));
  index.Put("S", std::uint32_t(5));
  // Block 0 written and frozen: its plain length counts, not its size.
  index.records[0].frozen = true;
  index.records[0].plainLength = 300;
  index.records[0].size = 17;
  EXPECT_EQ(index.GetStreamLength("S"), 312u);
  // Going back counts the position, not the high-water mark.
  index.blocks[1].SetPosition(2);
  EXPECT_EQ(index.GetStreamLength("S"), 302u);
}

TEST(IndexSelection, FlagsTouchExactNamesOfExistingRecordsOnly) {
  Index index;
  index.SetBlockLimit("Data", 1);
  index.Put("Data", std::uint8_t(1));
  index.Put("Data Extra", std::uint8_t(1));
  index.SetBlockFlags("Data", KelTmf::BlockFlagCompress);
  index.SetBlockFlags("Dat", KelTmf::BlockFlagFreeze);
  index.SetBlockFlags("Nothing", KelTmf::BlockFlagFreeze);
  index.Put("Data", std::uint8_t(2));  // a new block starts with no flags
  EXPECT_EQ(index.records[0].flags, KelTmf::BlockFlagCompress);
  EXPECT_EQ(index.records[1].flags, 0);
  EXPECT_EQ(index.records[2].flags, 0);
  EXPECT_EQ(index.records[2].name, "Data");
}

TEST(IndexPuts, TypedRawAndRecordPutsShareOneStream) {
  Index index;
  const unsigned char raw[3] = {0xA, 0xB, 0xC};
  index.Put("S", true);
  index.Put("S", raw, 3);
  index.Put("S", 1.0f);
  index.Put("S", "ab");
  index.Put("S", std::vector<std::string>{"c"});
  index.Put("S", std::vector<std::uint8_t>{5});
  index.Put("S", std::vector<std::uint32_t>{6});
  index.Put("S", std::vector<std::uint64_t>{7});
  index.PutRecord("S", [](KelTmf::Block& block) {
    const std::uint32_t start = block.position;
    block.Put(std::uint32_t(0));
    block.Put(std::string("0.1"));
    const std::uint32_t end = block.position;
    block.SetPosition(start);
    block.Put(end - start);
    block.SetPosition(end);
  });
  const Bytes expected{1,    0xA, 0xB, 0xC, 0, 0, 0x80, 0x3F, 2, 0, 0, 0, 'a', 'b',
                       1,    0,   0,   0,   1, 0, 0,    0,    'c',
                       1,    0,   0,   0,   5,
                       1,    0,   0,   0,   6, 0, 0,    0,
                       1,    0,   0,   0,   7, 0, 0,    0,    0, 0, 0, 0,
                       0x0B, 0,   0,   0,   3, 0, 0,    0,    '0', '.', '1'};
  EXPECT_EQ(TmfTest::BlockBytes(index.blocks[0]), expected);
}

TEST(IndexPuts, WrittenBlocksAndReservedNamesRefusePuts) {
  Index index;
  index.Put("S", std::uint8_t(1));
  index.records[0].frozen = true;
  // A frozen last block makes the next put start a new block.
  index.Put("S", std::uint8_t(2));
  EXPECT_EQ(index.GetBlockSizeLimiter("S").blocks.size(), 2u);

  // A block written without the freeze flag is not marked, but its bytes
  // are gone: a further put fails instead of getting lost.
  index.blocks[1].Release();
  TmfTest::ExpectFailure([&] { index.Put("S", std::uint8_t(3)); }, 16,
                         "Attempt to write into a frozen block");
  TmfTest::ExpectFailure([&] { index.PutRecord("S", [](KelTmf::Block&) {}); }, 16,
                         "Attempt to write into a frozen block");
  const unsigned char byte = 0;
  TmfTest::ExpectFailure([&] { index.Put("S", &byte, 1); }, 5, "Element Not Found");

  TmfTest::ExpectFailure([&] { index.Put(KelTmf::IndexBlockName + "x", std::uint8_t(0)); }, 16,
                         "Reserved block name used for a stream");
  TmfTest::ExpectFailure([&] { index.Put(KelTmf::EmptyBlockName, &byte, 1); }, 16,
                         "Reserved block name used for a stream");
}
