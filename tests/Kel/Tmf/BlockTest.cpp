#include <gtest/gtest.h>

#include <cstdio>
#include <limits>

#include "Kel/Tmf/Index.h"
#include "TmfTestSupport.h"

using KelTmf::Block;
using TmfTest::Bytes;

namespace {

// A block released at the end of each test.
struct ScopedBlock {
  Block block;
  ~ScopedBlock() { block.Release(); }
};

Bytes Encoded(void (*put)(Block&)) {
  ScopedBlock scoped;
  put(scoped.block);
  return TmfTest::BlockBytes(scoped.block);
}

}  // namespace

TEST(BlockEncoding, PrimitivesAreLittleEndianWithoutTags) {
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::string("abc")); }),
            (Bytes{0x03, 0, 0, 0, 0x61, 0x62, 0x63}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::string()); }), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::string("a\0b", 3)); }),
            (Bytes{3, 0, 0, 0, 'a', 0, 'b'}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::uint64_t(1)); }), (Bytes{1, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(1.0f); }), (Bytes{0x00, 0x00, 0x80, 0x3F}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::uint32_t(0x11223344)); }),
            (Bytes{0x44, 0x33, 0x22, 0x11}));
  EXPECT_EQ(Encoded([](Block& b) {
              b.Put(true);
              b.Put(false);
              b.Put(std::uint8_t(0xFE));
            }),
            (Bytes{1, 0, 0xFE}));
  // A literal takes the text overload, not the boolean one.
  EXPECT_EQ(Encoded([](Block& b) { b.Put("ab"); }), (Bytes{2, 0, 0, 0, 'a', 'b'}));
}

TEST(BlockEncoding, ListsCountElementsNotBytes) {
  const Bytes empty{0, 0, 0, 0};
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::string>()); }), empty);
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint8_t>()); }), empty);
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint32_t>()); }), empty);
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint64_t>()); }), empty);
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::string>{"a", ""}); }),
            (Bytes{2, 0, 0, 0, 1, 0, 0, 0, 'a', 0, 0, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint8_t>{7, 8}); }),
            (Bytes{2, 0, 0, 0, 7, 8}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint32_t>{1, 0x0100}); }),
            (Bytes{2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0}));
  EXPECT_EQ(Encoded([](Block& b) { b.Put(std::vector<std::uint64_t>{0x0102030405060708ull}); }),
            (Bytes{1, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(BlockEncoding, FramedRecordOverwritesItsPlaceHolder) {
  ScopedBlock scoped;
  Block& block = scoped.block;
  block.Put(std::uint8_t(0xAA));
  const std::uint32_t start = block.position;
  block.Put(std::uint32_t(0));
  block.Put(std::string("0.1"));
  const std::uint32_t end = block.position;
  block.SetPosition(start);
  block.Put(end - start);
  EXPECT_EQ(block.position, start + 4);
  EXPECT_EQ(block.length, end);  // going back never lengthens the block
  block.SetPosition(end);
  EXPECT_EQ(TmfTest::BlockBytes(block),
            (Bytes{0xAA, 0x0B, 0, 0, 0, 0x03, 0, 0, 0, 0x30, 0x2E, 0x31}));
}

TEST(BlockEncoding, IndexEntryIs139BytesWithZeroFilledName) {
  KelTmf::BlockRecord record;
  record.id = 0x42;
  record.name = "Light Data";
  record.size = 0x01020304;
  record.flags = 33;
  ScopedBlock scoped;
  scoped.block.Put(record);
  const Bytes entry = TmfTest::BlockBytes(scoped.block);
  ASSERT_EQ(entry.size(), 139u);
  EXPECT_EQ(entry[0], 0x42);
  EXPECT_EQ(Bytes(entry.begin() + 1, entry.begin() + 5), (Bytes{128, 0, 0, 0}));
  EXPECT_EQ(std::string(entry.begin() + 5, entry.begin() + 15), "Light Data");
  for (std::size_t i = 15; i < 133; ++i) ASSERT_EQ(entry[i], 0) << i;
  EXPECT_EQ(Bytes(entry.begin() + 133, entry.end()), (Bytes{4, 3, 2, 1, 33, 0}));

  // A long name is cut at the field's size, with no terminator.
  record.name = std::string(200, 'x');
  ScopedBlock list;
  list.block.Put(std::vector<KelTmf::BlockRecord>{record, record});
  const Bytes both = TmfTest::BlockBytes(list.block);
  ASSERT_EQ(both.size(), 4u + 2 * 139);
  EXPECT_EQ(Bytes(both.begin(), both.begin() + 4), (Bytes{2, 0, 0, 0}));
  EXPECT_EQ(std::string(both.begin() + 9, both.begin() + 137), std::string(128, 'x'));
  EXPECT_EQ(both[137], 4);
}

TEST(BlockGrowth, GrowsByStepOrByTheLargeItemWhenTheSumReachesCapacity) {
  ScopedBlock scoped;
  Block& block = scoped.block;
  block.Put(std::uint8_t(1));
  EXPECT_EQ(block.capacity, Block::GrowthStep);

  // Fill to one byte short of the capacity; a put that would fit exactly
  // still grows the buffer.
  const std::uint64_t fill = Block::GrowthStep - 1 - 4;
  block.Extend(fill);
  EXPECT_EQ(block.capacity, Block::GrowthStep);
  block.Put(std::uint32_t(7));
  EXPECT_EQ(block.position, Block::GrowthStep);
  EXPECT_EQ(block.capacity, 2 * Block::GrowthStep);

  // Variable-size values grow by their own length when that is larger.
  const std::string large(Block::GrowthStep + 5, 'q');
  const std::uint64_t before = block.capacity;
  block.Put(large);
  EXPECT_EQ(block.capacity, before + Block::GrowthStep + 5);
  EXPECT_EQ(block.length, Block::GrowthStep + 4 + large.size());
  // No doubling: the room left over is used before the next step.
  block.Put(std::uint64_t(9));
  EXPECT_EQ(block.capacity, before + Block::GrowthStep + 5);
}

TEST(BlockGrowth, ABlockOfManyStepsKeepsEveryByte) {
  // Past 32 MiB the buffer is advised for large pages on each growth; the
  // bytes put in earlier steps must survive every move.
  Block block;
  const std::size_t pieces = 60;
  std::vector<unsigned char> piece(1 << 20);
  for (std::size_t p = 0; p < pieces; ++p) {
    for (std::size_t i = 0; i < piece.size(); ++i) piece[i] = static_cast<unsigned char>(p + i * 3);
    block.PutRaw(piece.data(), piece.size());
  }
  EXPECT_EQ(block.capacity, 7 * KelTmf::Block::GrowthStep);
  std::size_t mismatches = 0;
  for (std::size_t p = 0; p < pieces; ++p)
    for (std::size_t i = 0; i < piece.size(); ++i)
      mismatches += block.data[p * piece.size() + i] != static_cast<unsigned char>(p + i * 3);
  EXPECT_EQ(mismatches, 0u);
  block.Release();
}

TEST(BlockGrowth, ExtendReturnsTheWritePlaceAndAdvances) {
  ScopedBlock scoped;
  Block& block = scoped.block;
  block.Put(std::uint8_t(1));
  unsigned char* place = block.Extend(3);
  place[0] = 'x';
  place[1] = 'y';
  place[2] = 'z';
  block.Put(std::uint8_t(2));
  EXPECT_EQ(TmfTest::BlockBytes(block), (Bytes{1, 'x', 'y', 'z', 2}));
}

TEST(BlockPosition, MayGoBackToAnyWrittenPlaceButNotBeyond) {
  ScopedBlock scoped;
  Block& block = scoped.block;
  block.Put(std::uint64_t(5));
  block.SetPosition(2);
  block.SetPosition(8);
  EXPECT_EQ(block.position, 8u);
  TmfTest::ExpectFailure([&] { block.SetPosition(9); }, 1, "Invalid block position");
  EXPECT_EQ(block.position, 8u);
  EXPECT_EQ(block.length, 8u);
}

TEST(BlockLimits, RefusesValuesThatWouldReachFourGiB) {
  ScopedBlock scoped;
  Block& block = scoped.block;
  const char byte = 'a';
  const std::string text = "Value too large: a block holds less than 4 GiB";
  // The check comes before anything is read or allocated.
  TmfTest::ExpectFailure([&] { block.PutRaw(&byte, std::uint64_t(1) << 32); }, 1, text);
  TmfTest::ExpectFailure([&] { block.Extend(std::uint64_t(1) << 40); }, 1, text);
  EXPECT_EQ(block.length, 0u);
  EXPECT_EQ(block.data, nullptr);

  // A block already near the limit: neither a string nor a list count may
  // wrap its 32-bit fields.
  block.Put(std::uint8_t(0));
  const std::uint32_t nearLimit = std::numeric_limits<std::uint32_t>::max() - 6;
  Block fake = block;
  fake.length = fake.position = nearLimit;
  TmfTest::ExpectFailure([&] { fake.Put(std::string("abc")); }, 1, text);
  TmfTest::ExpectFailure([&] { fake.Put(std::vector<std::uint32_t>(1)); }, 1, text);
  TmfTest::ExpectFailure([&] { fake.Put(std::uint64_t(0)); }, 1, text);
  EXPECT_EQ(fake.position, nearLimit);
}

TEST(BlockWrite, WritesTheWholeBlockWithOptionalPrefix) {
  const std::string path = TmfTest::ScratchPath();
  std::FILE* stream = std::fopen(path.c_str(), "wb");
  ASSERT_NE(stream, nullptr);
  ScopedBlock empty;
  empty.block.Write(stream, false);
  EXPECT_EQ(std::ftell(stream), 0);
  empty.block.Write(stream, true);

  ScopedBlock scoped;
  scoped.block.Put(std::uint32_t(0x0A0B0C0D));
  scoped.block.Put(std::uint8_t(1));
  scoped.block.SetPosition(1);  // the position does not limit what is written
  scoped.block.Write(stream, true);
  scoped.block.Write(stream, false);
  std::fclose(stream);
  EXPECT_EQ(TmfTest::ReadAll(path),
            (Bytes{0, 0, 0, 0, 5, 0, 0, 0, 0x0D, 0x0C, 0x0B, 0x0A, 1, 0x0D, 0x0C, 0x0B, 0x0A, 1}));
}

TEST(BlockWrite, FailedOrImpossibleWritesRaiseCode10) {
  std::FILE* full = std::fopen("/dev/full", "wb");
  if (full == nullptr) GTEST_SKIP() << "no /dev/full";
  ScopedBlock scoped;
  scoped.block.Put(std::string("data that cannot be stored"));
  TmfTest::ExpectFailure([&] { scoped.block.Write(full, false); }, 10, "Unable to write to file");
  EXPECT_EQ(scoped.block.length, 30u);  // the block is unchanged
  std::fclose(full);

  // Once released, a block's bytes can no longer be written.
  const std::string path = TmfTest::ScratchPath();
  std::FILE* stream = std::fopen(path.c_str(), "wb");
  ASSERT_NE(stream, nullptr);
  Block released = scoped.block;
  scoped.block.Release();
  released.data = nullptr;
  TmfTest::ExpectFailure([&] { released.Write(stream, false); }, 10, "Unable to write to file");
  std::fclose(stream);
}
