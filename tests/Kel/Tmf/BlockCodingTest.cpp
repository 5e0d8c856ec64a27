// Fast coding stores noise without searching it for matches: the block is
// still one zlib stream that inflates to its plain bytes, while a block with
// anything compressible where a sample looks is compressed.

#include <gtest/gtest.h>

#include <atomic>

#include "Kel/Tmf/BlockCoding.h"
#include "TmfTestSupport.h"

using KelTmf::BlockCoder;
using KelTmf::BlockCoding;
using KelTmf::Buffer;
using TmfTest::Bytes;

namespace {

struct Coded {
  Bytes stored;
  // The zlib head's level field says "fastest": libdeflate writes it for
  // level 0, the stored deflate blocks, where the test levels give "default"
  // or "maximum". Noise ends up in stored deflate blocks either way, so
  // the head is what shows that no search was made.
  bool storedUnsearched;
};

Coded Code(const Bytes& plain, int level) {
  BlockCoder coder(BlockCoding{true, level});
  Buffer stored;
  const std::atomic<bool> cancelled{false};
  const std::uint64_t size = coder.Code(plain.data(), static_cast<std::uint32_t>(plain.size()),
                                        stored, cancelled);
  Coded coded{Bytes(stored.data(), stored.data() + size), false};
  coded.storedUnsearched = size > 6 && (coded.stored[5] >> 6) == 0;
  EXPECT_EQ(TmfTest::Inflated(coded.stored), plain);
  return coded;
}

}  // namespace

TEST(FastCoding, NoiseIsStoredAndAnythingCompressibleIsCompressed) {
  const std::size_t length = std::size_t(1) << 20;
  const Bytes noise = TmfTest::Noise(length, 7);
  const Coded stored = Code(noise, 6);
  EXPECT_TRUE(stored.storedUnsearched);
  EXPECT_LE(stored.stored.size(), length + length / 1000);

  // One compressible sample is enough: the block's last 8 KiB.
  Bytes mixed = noise;
  std::fill(mixed.end() - 8192, mixed.end(), 0);
  const Coded compressed = Code(mixed, 6);
  EXPECT_FALSE(compressed.storedUnsearched);
  EXPECT_LT(compressed.stored.size(), length);

  // Levels from 10 on search every block; too small a block is not sampled.
  EXPECT_FALSE(Code(noise, 10).storedUnsearched);
  EXPECT_FALSE(Code(Bytes(noise.begin(), noise.begin() + 65536), 6).storedUnsearched);
}
