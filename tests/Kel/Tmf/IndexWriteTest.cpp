#include <gtest/gtest.h>

#include <cstdio>

#include "Kel/Tmf/Index.h"
#include "Kel/Tmf/TmFile.h"
#include "TmfTestSupport.h"
#include "reader/Container.h"

using KelTmf::TmFile;
using TmfTest::Bytes;

namespace {

const std::uint8_t FreezeAndCompress = KelTmf::BlockFlagFreeze | KelTmf::BlockFlagCompress;

// What the heavy-data writer does: mark the stream, put, flush.
void PutFlushed(TmFile& file, const std::string& name, const Bytes& bytes, Bytes& all,
                std::uint8_t flags = FreezeAndCompress) {
  file.index.SetBlockFlags(name, flags);
  file.index.Put(name, bytes.data(), bytes.size());
  file.index.FlushFrozen(file.stream);
  all.insert(all.end(), bytes.begin(), bytes.end());
}

DovReader::Container OpenSound(const std::string& path) {
  DovReader::Container container = DovReader::Container::Open(path);
  EXPECT_EQ(container.Verify(), std::vector<std::string>());
  return container;
}

}  // namespace

TEST(IndexWriteOut, SinglePlainBlockFileIsExactly2900Bytes) {
  const std::string path = TmfTest::ScratchPath();
  const Bytes payload = TmfTest::Pattern(100, 3);
  TmfTest::WriteContainer(path, [&](TmFile& file) { file.index.Put("S", payload.data(), 100); });

  const Bytes expected = TmfTest::HandBuilt({{"S", 100, 0}}, payload);
  ASSERT_EQ(expected.size(), 2900u);
  EXPECT_EQ(TmfTest::ReadAll(path), expected);
}

TEST(IndexWriteOut, ChainedIndexesAndAlternatingStreamsReadBack) {
  // Two streams flushed one after the other, then two kept in memory with
  // alternating blocks; tiny limits make more than 219 blocks.
  const std::string path = TmfTest::ScratchPath();
  Bytes heavy, light, tree;
  TmfTest::WriteContainer(path, [&](TmFile& file) {
    file.index.SetBlockLimit("Heavy", 1);
    file.index.SetBlockLimit("Light", 8);
    file.index.SetBlockLimit("Tree", 100);
    file.index.SetBlockLimit("Attributes", 100);
    // Heavy stays plain, which keeps the run short.
    for (unsigned step = 0; step < 200; ++step)
      PutFlushed(file, "Heavy", TmfTest::Pattern(1 + step % 90, step), heavy,
                 KelTmf::BlockFlagFreeze);
    // The last block got its flags too late for the last flush.
    file.index.SetBlockFlags("Heavy", KelTmf::BlockFlagFreeze);
    file.index.FlushFrozen(file.stream);
    for (unsigned step = 0; step < 60; ++step)
      PutFlushed(file, "Light", TmfTest::Pattern(1 + step % 20, step * 3), light);
    for (unsigned step = 0; step < 300; ++step) {
      file.index.Put("Tree", std::uint32_t(step));
      TmfTest::Append32(tree, step);
      file.index.Put("Attributes", std::string(1, 'a'));
    }
    file.index.SetBlockFlags("Tree", KelTmf::BlockFlagCompress);
  });

  DovReader::Container container = OpenSound(path);
  ASSERT_EQ(container.Blocks().size(), 420u);
  std::vector<std::uint64_t> chain;
  for (const DovReader::BlockInfo& block : container.Blocks())
    if (block.IsIndexBlock()) chain.push_back(block.number);
  EXPECT_EQ(chain, (std::vector<std::uint64_t>{19, 219}));
  EXPECT_EQ(container.StreamNames(),
            (std::vector<std::string>{"Heavy", "Light", "Tree", "Attributes"}));
  EXPECT_EQ(container.ReadStream("Heavy"), heavy);
  EXPECT_EQ(container.ReadStream("Light"), light);
  EXPECT_EQ(container.ReadStream("Tree"), tree);
  EXPECT_EQ(container.StreamLength("Attributes"), 300u * 5);
}

TEST(IndexWriteOut, NineteenTwentyOrNoStreamBlocks) {
  for (unsigned count : {0u, 19u, 20u}) {
    const std::string path = TmfTest::ScratchPath("_" + std::to_string(count) + ".tmf");
    TmfTest::WriteContainer(path, [&](TmFile& file) {
      file.index.SetBlockLimit("S", 1);
      for (unsigned i = 0; i < count; ++i) file.index.Put("S", std::uint8_t(i));
    });
    DovReader::Container container = OpenSound(path);
    const bool chained = count == 20;
    EXPECT_EQ(container.Blocks().size(), chained ? 220u : 20u);
    EXPECT_EQ(container.Blocks()[19].IsIndexBlock(), chained);
    EXPECT_EQ(container.FileLength(), 2800u + count + (chained ? 27804 : 0));
  }
}

TEST(IndexFlushing, FullFrozenBlockWaitsWhileALowerBlockIsOpen) {
  const std::string path = TmfTest::ScratchPath();
  TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  file.index.Put("A open", std::uint8_t(1));
  file.index.SetBlockLimit("B", 10);
  file.index.Put("B", std::string(20, 'b'));
  file.index.SetBlockFlags("B", FreezeAndCompress);
  TmfTest::ExpectFailure([&] { file.index.FlushFrozen(file.stream); }, 13, "Not Implemented");
  EXPECT_FALSE(file.index.records[1].frozen);
  std::fflush(file.stream);
  EXPECT_EQ(TmfTest::ReadAll(path).size(), 12u);  // nothing of the block was written

  // Such a block cannot be written a second time either.
  file.index.records[1].frozen = true;
  TmfTest::ExpectFailure([&] { file.index.WriteBufferToFileStream(1, file.stream); }, 14,
                         "Mis-match Error");
}

TEST(IndexFlushing, StaleIndexBlockPositionDoesNotMisplaceLaterBlocks) {
  // Each block is filled by the put that starts it, before it has the
  // freeze flag, so block 18 is still in memory when the next put turns 19
  // into an index block. Flushed or not, what follows must lie behind 18
  // plus the index block.
  for (bool flush : {true, false}) {
    const std::string path = TmfTest::ScratchPath(flush ? "_flushed.tmf" : "_at_end.tmf");
    Bytes heavy;
    TmfTest::WriteContainer(path, [&](TmFile& file) {
      file.index.SetBlockLimit("Heavy", 50);
      for (unsigned i = 0; i < 25; ++i) {
        const Bytes piece = TmfTest::Pattern(i == 18 ? 500 : 50, i);
        file.index.SetBlockFlags("Heavy", FreezeAndCompress);
        file.index.Put("Heavy", piece.data(), piece.size());
        if (flush) file.index.FlushFrozen(file.stream);
        heavy.insert(heavy.end(), piece.begin(), piece.end());
      }
      if (flush) {
        EXPECT_EQ(file.index.records[20].position,
                  file.index.records[18].position + file.index.records[18].size + 27804);
        EXPECT_FALSE(file.index.records[19].frozen);  // waits for its final entries
      }
      file.index.Put("Light", std::uint8_t(1));
    });
    DovReader::Container container = OpenSound(path);
    EXPECT_EQ(container.ReadStream("Heavy"), heavy);
  }
}

TEST(IndexFlushing, PositionsAreSixtyFourBit) {
  KelTmf::Index index;
  index.SetBlockLimit("S", 1);
  for (int i = 0; i < 21; ++i) index.Put("S", std::uint8_t(1));
  index.records[0].position = 0x17FFFFFF0ull;
  index.records[0].size = 0xFFFFFFF0u;
  EXPECT_EQ(index.BlockPosition(1), 0x17FFFFFF0ull + 0xFFFFFFF0ull);
  index.records[18].position = 0x200000000ull;
  index.records[18].size = 0xF0000000u;
  EXPECT_EQ(index.BlockPosition(20), 0x200000000ull + 0xF0000000ull + 27804);
}
