#include <gtest/gtest.h>

#include <cstdio>
#include <limits>

#include "Kel/Tmf/BlockZlibCompressor.h"
#include "Kel/Tmf/Index.h"
#include "Kel/Util/Coding.h"
#include "TmfTestSupport.h"

using KelTmf::Block;
using TmfTest::Bytes;

namespace {

struct ScopedBlock {
  Block block;
  ~ScopedBlock() { block.Release(); }
};

template <class Put>
Bytes Encoded(Put&& put) {
  ScopedBlock scoped;
  put(scoped.block);
  return TmfTest::BlockBytes(scoped.block);
}

Bytes Compressed(const Bytes& plain) {
  return Encoded([&](Block& block) {
    block.PutRaw(plain.data(), plain.size());
    KelTmf::BlockZlibCompressor(6)(block);
  });
}

}  // namespace

TEST(BlockEncoding, ValuesListsAndFramedRecords) {
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::string("abc")); }),
            (Bytes{3, 0, 0, 0, 'a', 'b', 'c'}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::string("a\0", 2)); }), (Bytes{2, 0, 0, 0, 'a', 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(""); }), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::uint64_t(1)); }), (Bytes{1, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(1.0f); }), (Bytes{0x00, 0x00, 0x80, 0x3F}));
  EXPECT_EQ(Encoded([](Block& b) {
              b.Put(true);
              b.Put(std::uint8_t(0xFE));
              b.Put(0x11223344u);
            }),
            (Bytes{1, 0xFE, 0x44, 0x33, 0x22, 0x11}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint64_t>()); }), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) {
              b.Put(std::vector<std::string>{"a"});
              b.Put(std::vector<std::uint8_t>{7});
              b.Put(std::vector<std::uint32_t>{0x0100});
              b.Put(std::vector<std::uint64_t>{2});
            }),
            (Bytes{1, 0, 0, 0, 1, 0, 0, 0, 'a', 1, 0, 0, 0, 7, 1, 0, 0,
                   0, 0, 1, 0, 0, 1, 0, 0, 0,   2, 0, 0, 0, 0, 0, 0, 0}));
  // A framed record goes back to fill in its size; the block keeps its length.
  EXPECT_EQ(Encoded([](Block& b) {
              b.Put(std::uint32_t(0));
              b.Put("0.1");
              const std::uint32_t end = b.position;
              b.SetPosition(0);
              b.Put(end);
              EXPECT_EQ(b.length, end);
              b.SetPosition(end);
            }),
            (Bytes{0x0B, 0, 0, 0, 0x03, 0, 0, 0, 0x30, 0x2E, 0x31}));
}

TEST(BlockEncoding, IndexEntriesAre139BytesWithACutName) {
  KelTmf::BlockRecord record;
  record.id = 0x42;
  record.name = "Light Data";
  record.size = 0x01020304;
  KelTmf::BlockRecord longName = record;
  longName.name = std::string(200, 'x');
  const Bytes entries = Encoded([&](Block& b) {
    b.Put(std::vector<KelTmf::BlockRecord>{record, longName});
  });
  // The full bytes of an entry are held to a hand-built file elsewhere.
  ASSERT_EQ(entries.size(), 4u + 2 * 139);
  EXPECT_EQ(entries[4], 0x42);
  EXPECT_EQ(std::string(entries.begin() + 148, entries.begin() + 276), std::string(128, 'x'));
  EXPECT_EQ(entries[276], 4);
}

TEST(BlockGrowth, StepForFixedValuesOwnLengthForLargeOnesExactFitIsFull) {
  ScopedBlock scoped;
  Block& block = scoped.block;
  block.Put(std::uint8_t(1));
  EXPECT_EQ(block.capacity, Block::GrowthStep);
  block.Extend(Block::GrowthStep - 5);
  block.Put(std::uint32_t(7));  // would fit exactly, grows all the same
  EXPECT_EQ(block.capacity, 2 * Block::GrowthStep);
  block.Put(std::string(Block::GrowthStep + 5, 'q'));
  EXPECT_EQ(block.capacity, 3 * Block::GrowthStep + 5);
  block.Put(std::uint64_t(9));  // no doubling: the room left is used first
  EXPECT_EQ(block.capacity, 3 * Block::GrowthStep + 5);

  EXPECT_NO_THROW(block.SetPosition(block.length));
  TmfTest::ExpectFailure([&] { block.SetPosition(block.length + 1); }, 1, "Invalid block position");
  EXPECT_EQ(block.position, block.length);

  // Nothing may carry a block to 4 GiB: refused before anything is copied.
  const std::string tooLarge = "Value too large: a block holds less than 4 GiB";
  TmfTest::ExpectFailure([&] { block.PutRaw("", std::uint64_t(1) << 32); }, 1, tooLarge);
  Block nearLimit = block;  // shares the buffer; only the fields differ
  nearLimit.length = nearLimit.position = std::numeric_limits<std::uint32_t>::max() - 6;
  TmfTest::ExpectFailure([&] { nearLimit.Put(std::string("abc")); }, 1, tooLarge);
  TmfTest::ExpectFailure([&] { nearLimit.Put(std::vector<std::uint32_t>(1)); }, 1, tooLarge);
  TmfTest::ExpectFailure([&] { nearLimit.Put(std::uint64_t(0)); }, 1, tooLarge);
}

TEST(BlockGrowth, ABlockOfManyStepsKeepsEveryByte) {
  // Past 32 MiB the buffer is advised for large pages on each growth; the
  // bytes put in earlier steps must survive every move.
  ScopedBlock scoped;
  Block& block = scoped.block;
  const std::size_t pieces = 60;
  std::vector<unsigned char> piece(1 << 20);
  for (std::size_t p = 0; p < pieces; ++p) {
    for (std::size_t i = 0; i < piece.size(); ++i) piece[i] = static_cast<unsigned char>(p + i * 3);
    block.PutRaw(piece.data(), piece.size());
  }
  EXPECT_EQ(block.capacity, 7 * Block::GrowthStep);
  std::size_t mismatches = 0;
  for (std::size_t p = 0; p < pieces; ++p)
    for (std::size_t i = 0; i < piece.size(); ++i)
      mismatches += block.data[p * piece.size() + i] != static_cast<unsigned char>(p + i * 3);
  EXPECT_EQ(mismatches, 0u);
}

TEST(BlockWrite, WholeBlockWithOptionalPrefix) {
  const std::string path = TmfTest::ScratchPath();
  std::FILE* stream = std::fopen(path.c_str(), "wb");
  ScopedBlock empty, scoped;
  empty.block.Write(stream, false);
  empty.block.Write(stream, true);
  scoped.block.Put(std::uint32_t(0x0A0B0C0D));
  scoped.block.SetPosition(1);  // the position does not limit what is written
  scoped.block.Write(stream, true);
  std::fclose(stream);
  EXPECT_EQ(TmfTest::ReadAll(path), (Bytes{0, 0, 0, 0, 4, 0, 0, 0, 0x0D, 0x0C, 0x0B, 0x0A}));
  // A full device is tested where the container writes.
}

TEST(BlockWrite, AShortWriteIsAFailureEvenWhereTheFlushSucceeds) {
  // A stream over eight bytes of memory takes the prefix and half the
  // contents; what does not fit is refused by the write, not by the flush.
  char room[8];
  std::FILE* stream = fmemopen(room, sizeof room, "wb");
  ASSERT_NE(stream, nullptr);
  std::setvbuf(stream, nullptr, _IONBF, 0);
  ScopedBlock scoped;
  scoped.block.Put(std::uint64_t(0x0102030405060708));
  TmfTest::ExpectFailure([&] { scoped.block.Write(stream, true); }, 10,
                         "Unable to write to file");
  std::fclose(stream);
}

TEST(BlockCompression, LengthPrefixAndZlibStreamAndPlainBytesKeptOnFailure) {
  EXPECT_EQ(Compressed(Bytes()), (Bytes{0, 0, 0, 0, 0x78, 0x9C, 0x03, 0, 0, 0, 0, 0x01}));
  // A failed compression keeps the plain bytes.
  ScopedBlock scoped;
  scoped.block.Put("keep");
  KelTmf::BlockZlibCompressor invalidLevel(42);
  TmfTest::ExpectFailure([&] { invalidLevel(scoped.block); }, 15, "Compression failed");
  EXPECT_EQ(TmfTest::BlockBytes(scoped.block), (Bytes{4, 0, 0, 0, 'k', 'e', 'e', 'p'}));
}
