// Datasets in "Heavy Data": layout, offsets, early write-out and refusal.

#include <gtest/gtest.h>

#include <DovWriter/Scene.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <thread>

#include "../../support/HostCalls.h"
#include "Kel/Dov/Tree.h"
#include "StreamBytes.h"
#include "reader/Container.h"

namespace {

using namespace DovTest;
using testsupport::fileBytes;

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

// How the blocks of "Heavy Data" are written.
struct HeavyMode {
  bool compressWhilePutting = true;
  unsigned threads = 0;         // 0: sequential
  bool fast = false;            // cut evenly into blocks of this size:
  std::uint32_t blockBytes = 0;
};

// Where the blocks of "Heavy Data" that the index reports as written lie,
// in the order reported; a report from another thread than the writer's
// counts as none.
using Reported = std::vector<std::uint64_t>;

// Writes datasets of a smooth field of widths 0, 1, 3, 6 and 8 under a
// small block limit, in the given mode.
void WriteHeavyBlocks(const std::string& path, const HeavyMode& mode,
                      Reported* reported = nullptr) {
  KelDov::Tree tree;
  tree.PinCreationTime(1700000000);
  tree.SetStreamFile(path, true);
  KelTmf::Index& index = tree.GetFile().index;
  index.compressWhilePutting = mode.compressWhilePutting;
  index.SetBlockLimit("Heavy Data", 50000);
  if (mode.threads != 0) {
    KelTmf::BlockCoding coding;
    coding.fast = mode.fast;
    index.StartParallel(mode.threads, coding, tree.GetFile().stream);
  }
  if (mode.blockBytes != 0) index.CutEvenly("Heavy Data", mode.blockBytes);
  const std::thread::id writer = std::this_thread::get_id();
  if (reported != nullptr)
    index.blockWritten = [=](const KelTmf::BlockRecord& record, std::uint32_t) {
      if (record.name == "Heavy Data" && std::this_thread::get_id() == writer)
        reported->push_back(record.position);
    };
  // Among them an empty dataset, and one larger than the limit that starts
  // a block of its own: that block is not flagged for early writing, so it
  // is still open when the next dataset needs the next block. Then two
  // datasets a block, past the first chained index block.
  std::vector<std::uint64_t> counts{9000, 20000, 0, 4000, 5000, 3000, 700, 14000, 30};
  counts.insert(counts.end(), 40, 7000);
  const std::uint8_t widths[] = {1, 3, 0, 6, 8};
  for (std::size_t d = 0; d < counts.size(); ++d) {
    std::vector<float> values(counts[d]);
    for (std::uint64_t i = 0; i < counts[d]; ++i) values[i] = std::sin(0.01f * i) * (1.0f + d);
    tree.WriteStreamDataset(values, widths[d % 5]);
  }
  tree.Save(tree.GetFile(), "");
}

// The places of the blocks of "Heavy Data" in the file, in file order.
Reported HeavyBlocksOf(const DovReader::Container& file) {
  Reported positions;
  for (const DovReader::BlockInfo& block : file.Blocks())
    if (block.name == "Heavy Data") positions.push_back(block.position);
  std::sort(positions.begin(), positions.end());
  return positions;
}

// The file of each mode in `modes`, all dated alike. Every heavy block is
// reported once as written, on the writer's thread, in file order.
std::vector<std::string> WriteModes(const std::string& name, const std::vector<HeavyMode>& modes) {
  std::vector<std::string> paths;
  for (std::size_t m = 0; m < modes.size(); ++m) {
    paths.push_back(TempPath(name + "-" + std::to_string(m) + ".dov"));
    Reported reported;
    WriteHeavyBlocks(paths[m], modes[m], &reported);
    EXPECT_EQ(HeavyBlocksOf(DovReader::Container::Open(paths[m])), reported) << "mode " << m;
  }
  return paths;
}

TEST(HeavyDataTest, CompressingWhilePuttingWritesTheFileOfThePlainPath) {
  const std::vector<std::string> paths = WriteModes("heavy-paths", {HeavyMode(), HeavyMode{false}});
  EXPECT_TRUE(fileBytes(paths[0]) == fileBytes(paths[1]));
  const DovReader::Container file = DovReader::Container::Open(paths[0]);
  EXPECT_EQ(std::vector<std::string>(), file.Verify());
  int heavyBlocks = 0, indexBlocks = 0;
  for (const DovReader::BlockInfo& block : file.Blocks()) {
    heavyBlocks += block.name == "Heavy Data";
    indexBlocks += block.IsIndexBlock();
  }
  EXPECT_EQ(23, heavyBlocks);
  EXPECT_EQ(1, indexBlocks);
}

TEST(HeavyDataThreads, ExactBlocksAreTheSequentialOnesAndFastOnesHoldTheSameStream) {
  const std::vector<std::string> paths =
      WriteModes("heavy-threads", {HeavyMode(), HeavyMode{true, 2}, HeavyMode{true, 4}});
  for (std::size_t m = 1; m < paths.size(); ++m)
    EXPECT_TRUE(fileBytes(paths[m]) == fileBytes(paths[0])) << "mode " << m;

  // Cut evenly in small blocks, values of every width span blocks, and the
  // blocks need two chained index blocks.
  const DovReader::Container exact = DovReader::Container::Open(paths[0]);
  for (const HeavyMode& mode : {HeavyMode{true, 1, true, 4096}, HeavyMode{true, 3, true, 5003}}) {
    const std::string path = TempPath("heavy-fast.dov");
    Reported reported;
    WriteHeavyBlocks(path, mode, &reported);
    const DovReader::Container fast = DovReader::Container::Open(path);
    EXPECT_EQ(HeavyBlocksOf(fast), reported);
    EXPECT_EQ(std::vector<std::string>(), fast.Verify());
    EXPECT_TRUE(fast.ReadStream("Heavy Data") == exact.ReadStream("Heavy Data"));
    std::size_t heavyBlocks = 0;
    for (const DovReader::BlockInfo& block : fast.Blocks()) heavyBlocks += block.name == "Heavy Data";
    EXPECT_GT(heavyBlocks, 219u) << mode.blockBytes;
  }
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
