// Datasets in "Heavy Data": layout, offsets, early write-out and refusal.

#include <gtest/gtest.h>

#include <DovWriter/Scene.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "Kel/Dov/Tree.h"
#include "StreamBytes.h"
#include "reader/Container.h"

namespace {

using namespace DovTest;

TEST(HeavyDataTest, DatasetsFollowEachOtherInBytePlanes) {
  const std::string path = TempPath("heavy-planes.dov");
  KelDov::Tree tree;
  tree.SetStreamFile(path, true);
  KelTmf::Index& index = tree.GetFile().index;
  EXPECT_EQ(0u, tree.WriteStreamDataset(std::vector<float>(), 1));
  EXPECT_EQ(1u, index.limiters.at("Heavy Data").blocks.size());  // started all the same
  EXPECT_EQ(0u, tree.WriteStreamDataset(std::vector<std::uint32_t>{0x04030201, 0x08070605}, 1));
  EXPECT_EQ(8u, tree.WriteStreamDataset(std::vector<float>{1.0f}, 0));
  // Width 2 over three values: one item of two components, one leftover.
  const std::uint32_t raw[3] = {0x0A0B0C0D, 1, 2};
  EXPECT_EQ(12u, tree.WriteStreamDataset(raw, 3, 2));
  tree.Save(tree.GetFile(), "");
  EXPECT_EQ((Bytes{1, 5, 2, 6, 3, 7, 4, 8, 0, 0, 0x80, 0x3F, 0x0D, 0x0C, 0x0B, 0x0A, 1, 0, 0,
                   0, 2, 0, 0, 0}),
            DovReader::Container::Open(path).ReadStream("Heavy Data"));
}

// Writes datasets of a smooth field under a small block limit, either
// compressing blocks while they fill or holding them until they are written.
void WriteHeavyBlocks(const std::string& path, bool compressWhilePutting) {
  KelDov::Tree tree;
  tree.SetStreamFile(path, true);
  KelTmf::Index& index = tree.GetFile().index;
  index.compressWhilePutting = compressWhilePutting;
  index.SetBlockLimit("Heavy Data", 50000);
  // Among them an empty dataset, and one larger than the limit that starts
  // a block of its own: that block is not flagged for early writing, so it
  // is still open when the next dataset needs the next block. Then two
  // datasets a block, past the first chained index block.
  std::vector<std::uint64_t> counts{9000, 20000, 0, 4000, 5000, 3000, 700, 14000, 30};
  counts.insert(counts.end(), 40, 7000);
  for (std::uint64_t count : counts) {
    std::vector<float> values(count);
    for (std::uint64_t i = 0; i < count; ++i) values[i] = std::sin(0.01f * i) * (1.0f + count);
    tree.WriteStreamDataset(values, count % 3 == 0 ? 3 : 1);
  }
  tree.Save(tree.GetFile(), "");
}

TEST(HeavyDataTest, CompressingWhilePuttingWritesTheBlocksOfThePlainPath) {
  const std::string streamed = TempPath("heavy-streamed.dov");
  const std::string plain = TempPath("heavy-plain.dov");
  // The creation date, taken at each save, changes the size of its block
  // when the two saves fall in different seconds, and with it what the
  // index tells of the blocks behind it: such a pair is written again.
  for (int attempt = 0; attempt < 5; ++attempt) {
    WriteHeavyBlocks(streamed, true);
    WriteHeavyBlocks(plain, false);
    if (DovReader::Container::Open(streamed).ReadStream("Global Information") ==
        DovReader::Container::Open(plain).ReadStream("Global Information"))
      break;
  }
  const DovReader::Container a = DovReader::Container::Open(streamed);
  const DovReader::Container b = DovReader::Container::Open(plain);
  EXPECT_EQ(std::vector<std::string>(), a.Verify());
  ASSERT_EQ(a.Blocks().size(), b.Blocks().size());
  int heavyBlocks = 0, indexBlocks = 0;
  bool behindDate = false;
  for (std::size_t i = 0; i < a.Blocks().size(); ++i) {
    const DovReader::BlockInfo& x = a.Blocks()[i];
    const DovReader::BlockInfo& y = b.Blocks()[i];
    EXPECT_EQ(x.name, y.name);
    EXPECT_EQ(x.flags, y.flags) << x.name;
    // The creation date, taken at the save, may differ by a second, and
    // with it the compressed size of its block and the places of the empty
    // blocks behind it.
    if (x.name == "Global Information") {
      behindDate = true;
      continue;
    }
    if (!behindDate) {
      EXPECT_EQ(x.position, y.position) << x.name;
    }
    EXPECT_EQ(a.ReadBlockBytes(x), b.ReadBlockBytes(y)) << x.name << " " << i;
    heavyBlocks += x.name == "Heavy Data";
    indexBlocks += x.IsIndexBlock();
  }
  EXPECT_EQ(23, heavyBlocks);
  EXPECT_EQ(1, indexBlocks);
}

TEST(HeavyDataTest, FullBlocksLeaveAtOnceAndFlagsLagOneDataset) {
  KelDov::Tree tree;
  tree.SetStreamFile(TempPath("heavy-flush.dov"), true);
  KelTmf::Index& index = tree.GetFile().index;
  index.SetBlockLimit("Heavy Data", 16);
  const std::vector<std::uint32_t> values(8, 0x11223344);  // 32 bytes: one block each
  std::vector<std::uint64_t> offsets;
  for (int i = 0; i < 3; ++i) offsets.push_back(tree.WriteStreamDataset(values, 1));
  EXPECT_EQ((std::vector<std::uint64_t>{0, 32, 64}), offsets);
  EXPECT_EQ(96u, index.GetStreamLength("Heavy Data"));

  const std::vector<std::uint64_t>& blocks = index.limiters.at("Heavy Data").blocks;
  ASSERT_EQ(3u, blocks.size());
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(index.records[blocks[i]].frozen) << i;
    EXPECT_EQ(KelTmf::BlockFlagFreeze | KelTmf::BlockFlagCompress, index.records[blocks[i]].flags);
    EXPECT_EQ(nullptr, index.blocks[blocks[i]].data);  // memory released
  }
  // The block the last dataset started has no flags until the save.
  EXPECT_FALSE(index.records[blocks[2]].frozen);
  EXPECT_EQ(0, index.records[blocks[2]].flags);
  tree.Save(tree.GetFile(), "");
  EXPECT_EQ(KelTmf::BlockFlagCompress, index.records[blocks[2]].flags);
}

TEST(HeavyDataTest, RefusesDatasetsOf4GiB) {
  KelDov::Tree tree;
  const std::uint32_t one = 1;  // never read
  ExpectFailure([&] { tree.WriteStreamDataset(&one, std::uint64_t(1) << 30, 1); }, 1,
                "Dataset too large: 4 GiB or more cannot be stored");
  EXPECT_FALSE(HasStream(tree.GetFile().index, "Heavy Data"));
}

TEST(HeavyDataTest, ProgressIsLogged) {
  const std::string log = TempPath("heavy-save.log");
  Kel::Dov::logTraceToFile(log.c_str());
  const std::string path = TempPath("heavy-save.dov");
  KelDov::Tree tree;
  tree.SetStreamFile(path, true);
  tree.WriteStreamDataset(std::vector<float>{1, 2, 3}, 3);
  tree.Save(tree.GetFile(), "");

  std::ifstream in(log);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  for (std::string line : {"Setting dov file \"" + path + "\"", std::string("Saving dov tree ... "),
                           std::string("Writing Dataset of size 3 width 3 datatype size 4"),
                           std::string("Saving global information ..."),
                           std::string("Global information saved."), std::string("Dov tree saved. ")})
    EXPECT_NE(std::string::npos, text.find("@ " + line + "\n")) << line;
}

}  // namespace
