#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "Kel/Tmf/Index.h"
#include "Kel/Tmf/TmFile.h"
#include "TmfTestSupport.h"
#include "reader/Container.h"

using KelTmf::Index;
using KelTmf::TmFile;
using TmfTest::Bytes;

namespace {

const std::uint8_t FreezeAndCompress = KelTmf::BlockFlagFreeze | KelTmf::BlockFlagCompress;

// What a heavy-data writer does: mark the stream, then put.
void PutFlushed(TmFile& file, const std::string& name, const Bytes& bytes) {
  file.index.SetBlockFlags(name, FreezeAndCompress);
  file.index.Put(name, bytes.data(), bytes.size());
  file.index.FlushFrozen(file.stream);
}

Bytes Counting(std::size_t count, unsigned start) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(start + i * 7);
  return bytes;
}

DovReader::Container OpenSound(const std::string& path) {
  DovReader::Container container = DovReader::Container::Open(path);
  EXPECT_EQ(container.Verify(), std::vector<std::string>());
  return container;
}

}  // namespace

TEST(IndexWriteOut, SinglePlainBlockFileIsExactly2900Bytes) {
  const std::string path = TmfTest::ScratchPath();
  const Bytes payload = Counting(100, 3);
  TmfTest::WriteContainer(path, [&](TmFile& file) { file.index.Put("S", payload.data(), 100); });

  Bytes expected{0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A, '1', '.', '1', 0};
  TmfTest::Append(expected, TmfTest::Le32(2784));
  TmfTest::Append(expected, TmfTest::Le32(20));
  for (std::uint32_t entry = 0; entry < 20; ++entry) {
    const std::string name = entry == 0 ? "S" : KelTmf::EmptyBlockName;
    expected.push_back(static_cast<unsigned char>(entry + 1));
    TmfTest::Append(expected, TmfTest::Le32(128));
    Bytes field(128, 0);
    std::copy(name.begin(), name.end(), field.begin());
    TmfTest::Append(expected, field);
    TmfTest::Append(expected, TmfTest::Le32(entry == 0 ? 100 : 0));
    expected.push_back(0);
    expected.push_back(0);
  }
  TmfTest::Append(expected, payload);
  ASSERT_EQ(expected.size(), 2900u);
  EXPECT_EQ(TmfTest::ReadAll(path), expected);
}

TEST(IndexWriteOut, NoBlockAtAllStillGivesAValidEmptyContainer) {
  const std::string path = TmfTest::ScratchPath();
  TmfTest::WriteContainer(path, [](TmFile&) {});
  DovReader::Container container = OpenSound(path);
  EXPECT_EQ(container.FileLength(), 2800u);
  EXPECT_EQ(container.Blocks().size(), 20u);
  EXPECT_TRUE(container.StreamNames().empty());
}

TEST(IndexWriteOut, StreamsOverSeveralIndexChainsReadBack) {
  // Two streams flushed one after the other, then two kept in memory with
  // alternating blocks; tiny limits cut them into hundreds of blocks, so
  // that three index blocks are needed.
  const std::string path = TmfTest::ScratchPath();
  Bytes heavy, light, tree, attributes;
  TmfTest::WriteContainer(path, [&](TmFile& file) {
    file.index.SetBlockLimit("Heavy", 1);
    file.index.SetBlockLimit("Light", 8);
    file.index.SetBlockLimit("Tree", 100);
    file.index.SetBlockLimit("Attributes", 100);
    for (unsigned step = 0; step < 250; ++step) {
      const Bytes piece = Counting(1 + step % 90, step);
      PutFlushed(file, "Heavy", piece);
      TmfTest::Append(heavy, piece);
    }
    // The last block got its flags too late for the last flush.
    file.index.SetBlockFlags("Heavy", FreezeAndCompress);
    file.index.FlushFrozen(file.stream);
    for (unsigned step = 0; step < 200; ++step) {
      const Bytes piece = Counting(1 + step % 20, step * 3);
      PutFlushed(file, "Light", piece);
      TmfTest::Append(light, piece);
    }
    for (unsigned step = 0; step < 300; ++step) {
      file.index.Put("Tree", std::uint32_t(step));
      TmfTest::Append(tree, TmfTest::Le32(step));
      file.index.Put("Attributes", std::string(1, char('a' + step % 26)));
      TmfTest::Append(attributes, TmfTest::Le32(1));
      attributes.push_back(static_cast<unsigned char>('a' + step % 26));
    }
    file.index.SetBlockFlags("Tree", KelTmf::BlockFlagCompress);
  });

  DovReader::Container container = OpenSound(path);
  EXPECT_EQ(container.Blocks().size(), 620u);
  std::vector<std::uint64_t> chain;
  std::uint64_t position = 2800;
  for (const DovReader::BlockInfo& block : container.Blocks()) {
    if (block.IsIndexBlock()) chain.push_back(block.number);
    EXPECT_EQ(block.position, position);
    position += block.size;
  }
  EXPECT_EQ(chain, (std::vector<std::uint64_t>{19, 219, 419}));
  EXPECT_EQ(container.StreamNames(),
            (std::vector<std::string>{"Heavy", "Light", "Tree", "Attributes"}));
  EXPECT_EQ(container.ReadStream("Heavy"), heavy);
  EXPECT_EQ(container.ReadStream("Light"), light);
  EXPECT_EQ(container.ReadStream("Tree"), tree);
  EXPECT_EQ(container.ReadStream("Attributes"), attributes);
  EXPECT_EQ(container.StreamLength("Tree"), tree.size());
  EXPECT_EQ(container.ReadStreamRange("Heavy", 1000, 500),
            Bytes(heavy.begin() + 1000, heavy.begin() + 1500));
  // Flushed blocks carry both flags but the last, started after the flags
  // were set; the kept streams carry what they were given.
  std::vector<std::uint8_t> lightFlags;
  for (const DovReader::BlockInfo& block : container.Blocks()) {
    if (block.name == "Light") lightFlags.push_back(block.flags);
    if (block.name == "Tree") {
      ASSERT_EQ(block.flags, KelTmf::BlockFlagCompress);
    }
    if (block.name == "Attributes") {
      ASSERT_EQ(block.flags, 0);
    }
  }
  ASSERT_GT(lightFlags.size(), 100u);
  EXPECT_EQ(lightFlags.back(), 0);
  lightFlags.pop_back();
  EXPECT_EQ(lightFlags, std::vector<std::uint8_t>(lightFlags.size(), FreezeAndCompress));
}

TEST(IndexWriteOut, ExactlyNineteenAndTwentyStreamBlocks) {
  for (unsigned count : {19u, 20u}) {
    const std::string path = TmfTest::ScratchPath("_" + std::to_string(count) + ".tmf");
    TmfTest::WriteContainer(path, [&](TmFile& file) {
      file.index.SetBlockLimit("S", 1);
      for (unsigned i = 0; i < count; ++i) file.index.Put("S", std::uint8_t(i));
    });
    DovReader::Container container = OpenSound(path);
    const std::vector<DovReader::BlockInfo>& blocks = container.Blocks();
    if (count == 19) {
      EXPECT_EQ(blocks.size(), 20u);
      EXPECT_TRUE(blocks[19].IsPoolBlock());
      EXPECT_EQ(container.FileLength(), 2800u + 19);
    } else {
      EXPECT_EQ(blocks.size(), 220u);
      EXPECT_TRUE(blocks[19].IsIndexBlock());
      EXPECT_EQ(blocks[20].name, "S");
      EXPECT_EQ(container.FileLength(), 2800u + 20 + 27804);
    }
  }
}

TEST(IndexFlushing, FullFrozenBlocksLeaveEarlyAndTheRestFollowsInOrder) {
  const std::string path = TmfTest::ScratchPath();
  TmfTest::LogCapture log;
  TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  file.index.SetBlockLimit("Heavy", 100);
  const Bytes piece = Counting(100, 1);
  for (int i = 0; i < 3; ++i) PutFlushed(file, "Heavy", piece);
  // The third block got its flags only with the next call; nothing is open
  // in front of it, so a flush now writes it.
  EXPECT_FALSE(file.index.records[2].frozen);
  file.index.SetBlockFlags("Heavy", FreezeAndCompress);
  file.index.FlushFrozen(file.stream);
  EXPECT_TRUE(file.index.records[2].frozen);
  EXPECT_EQ(file.index.blocks[2].data, nullptr);
  // Block 0 lies behind the hole left for the first index.
  EXPECT_EQ(file.index.records[0].position, 2800u);
  EXPECT_EQ(file.index.GetStreamLength("Heavy"), 300u);

  file.index.Put("Other", std::uint8_t(1));
  log.Clear();
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();

  // Write-out begins at block 3; pool blocks are logged but add no bytes.
  const std::vector<std::string> messages = log.Messages();
  ASSERT_GE(messages.size(), 3u);
  EXPECT_EQ(messages[0], "Writing all buffers to file stream ...");
  EXPECT_EQ(messages[1], "Writing buffer 3 to stream.");
  EXPECT_EQ(messages[2], "Buffer length: 1");
  const auto at = std::find(messages.begin(), messages.end(), "Writing buffer 4 to stream.");
  ASSERT_NE(at, messages.end());
  EXPECT_EQ(*(at + 1), "Writing buffer at position: " + std::to_string(2800 + file.index.records[0].size +
                                                                         file.index.records[1].size +
                                                                         file.index.records[2].size + 1));
  EXPECT_NE(std::find(messages.begin(), messages.end(), "All buffers to file stream written."),
            messages.end());

  DovReader::Container container = OpenSound(path);
  Bytes heavy;
  for (int i = 0; i < 3; ++i) TmfTest::Append(heavy, piece);
  EXPECT_EQ(container.ReadStream("Heavy"), heavy);
}

TEST(IndexFlushing, OpenLowerBlockOfAnotherStreamStopsTheFlush) {
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
  EXPECT_NE(file.index.blocks[1].data, nullptr);
  std::fflush(file.stream);
  EXPECT_EQ(TmfTest::ReadAll(path).size(), 12u);  // nothing of the block was written

  // At the end everything goes out in order all the same.
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();
  DovReader::Container container = OpenSound(path);
  Bytes expected = TmfTest::Le32(20);
  TmfTest::Append(expected, Bytes(20, 'b'));
  EXPECT_EQ(container.ReadStream("B"), expected);
}

TEST(IndexFlushing, StaleIndexBlockPositionDoesNotMisplaceLaterBlocks) {
  // Block 18 is filled by the put that starts it, before it has the freeze
  // flag; it is still in memory when the next put turns 19 into an index
  // block. Blocks 20 and on are flushed later and must still lie behind
  // 18 plus the index block.
  // Without flushing, the index block goes out first with provisional
  // entries and is rewritten at the end.
  for (bool flush : {true, false}) {
    const std::string path = TmfTest::ScratchPath(flush ? "_flushed.tmf" : "_at_end.tmf");
    Bytes heavy;
    TmfTest::WriteContainer(path, [&](TmFile& file) {
      file.index.SetBlockLimit("Heavy", 50);
      for (unsigned i = 0; i < 25; ++i) {
        const Bytes piece = Counting(i == 18 ? 500 : 50, i);
        file.index.SetBlockFlags("Heavy", FreezeAndCompress);
        file.index.Put("Heavy", piece.data(), piece.size());
        if (flush) file.index.FlushFrozen(file.stream);
        TmfTest::Append(heavy, piece);
      }
      file.index.Put("Light", std::uint8_t(1));
    });
    DovReader::Container container = OpenSound(path);
    EXPECT_EQ(container.ReadStream("Heavy"), heavy);
    EXPECT_TRUE(container.Blocks()[19].IsIndexBlock());
  }
}

TEST(IndexFlushing, IndexBlockAmongFlushedBlocksIsWrittenIntoItsGap) {
  const std::string path = TmfTest::ScratchPath();
  Bytes heavy;
  TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  file.index.SetBlockLimit("Heavy", 10);
  for (unsigned i = 0; i < 21; ++i) {
    const Bytes piece = Counting(10, i);
    PutFlushed(file, "Heavy", piece);
    TmfTest::Append(heavy, piece);
  }
  file.index.SetBlockFlags("Heavy", FreezeAndCompress);
  file.index.FlushFrozen(file.stream);
  // 0 to 18 and 20 and 21 are out, 19 still waits with its own buffer.
  EXPECT_TRUE(file.index.records[21].frozen);
  EXPECT_FALSE(file.index.records[19].frozen);
  EXPECT_EQ(file.index.records[20].position,
            file.index.records[18].position + file.index.records[18].size + 27804);
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();
  DovReader::Container container = OpenSound(path);
  EXPECT_EQ(container.ReadStream("Heavy"), heavy);
  const std::vector<unsigned char> chain = container.ReadBlockBytes(container.Blocks()[19]);
  EXPECT_EQ(Bytes(chain.begin(), chain.begin() + 4), TmfTest::Le32(200));
}

TEST(IndexFlushing, PositionsAreSixtyFourBit) {
  Index index;
  index.SetBlockLimit("S", 1);
  for (int i = 0; i < 21; ++i) index.Put("S", std::uint8_t(1));
  index.records[0].position = 0x17FFFFFF0ull;
  index.records[0].size = 0xFFFFFFF0u;
  EXPECT_EQ(index.BlockPosition(1), 0x17FFFFFF0ull + 0xFFFFFFF0ull);
  index.records[18].position = 0x200000000ull;
  index.records[18].size = 0xF0000000u;
  EXPECT_EQ(index.BlockPosition(20), 0x200000000ull + 0xF0000000ull + 27804);
  EXPECT_EQ(index.records[19].position, 0x200000000ull + 0xF0000000ull);
}

TEST(IndexFailures, WritingTwiceOrToAFullDeviceFailsCleanly) {
  Index index;
  index.Put("S", std::uint8_t(1));
  std::FILE* full = std::fopen("/dev/full", "wb");
  if (full == nullptr) GTEST_SKIP() << "no /dev/full";
  TmfTest::ExpectFailure([&] { index.WriteAllBuffersToFileStream(full); }, 10,
                         "Unable to write to file");
  std::fclose(full);

  const std::string path = TmfTest::ScratchPath();
  std::FILE* stream = std::fopen(path.c_str(), "wb");
  Index twice;
  twice.SetBlockFlags("S", FreezeAndCompress);
  twice.Put("S", std::uint8_t(1));
  twice.SetBlockFlags("S", FreezeAndCompress);
  twice.WriteBufferToFileStream(0, stream);
  TmfTest::ExpectFailure([&] { twice.WriteBufferToFileStream(0, stream); }, 14, "Mis-match Error");
  TmfTest::ExpectFailure([&] { twice.WriteBufferToFileStream(99, stream); }, 5, "Element Not Found");
  std::fclose(stream);
}
