#include "Kel/Dov/DatasetLayout.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

typedef std::vector<unsigned char> Bytes;

Bytes Encode(const std::vector<std::uint32_t>& values, std::uint8_t width) {
  Bytes out(4 * values.size(), 0xEE);
  KelDov::EncodeDataset(out.data(), values.data(), values.size(), width);
  return out;
}

TEST(DatasetLayoutTest, WorkedExamplesAndPlainOrder) {
  EXPECT_EQ((Bytes{1, 5, 2, 6, 3, 7, 4, 8}), Encode({0x04030201, 0x08070605}, 1));
  // Width 0 leaves the values in memory order.
  EXPECT_EQ((Bytes{1, 2, 3, 4, 5, 6, 7, 8}), Encode({0x04030201, 0x08070605}, 0));
  EXPECT_TRUE(Encode({}, 3).empty());
}

TEST(DatasetLayoutTest, ByteJOfComponentKOfItemIGoesToPlaneKJ) {
  std::uint32_t seed = 12345;
  for (std::size_t count : {1u, 3u, 7u, 100u, 1001u, 6149u}) {
    std::vector<std::uint32_t> values(count);
    for (auto& v : values) v = seed = seed * 1664525u + 1013904223u;
    for (int width : {1, 3, 7, 255}) {
      const std::size_t items = count / width;
      Bytes expected(4 * count);
      for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = 0; j < 4; ++j) {
          const std::size_t item = i / width, k = i % width;
          const std::size_t at = item < items ? 4 * items * k + items * j + item : 4 * i + j;
          expected[at] = static_cast<unsigned char>(values[i] >> (8 * j));
        }
      EXPECT_EQ(expected, Encode(values, width)) << "count " << count << " width " << width;
    }
  }
}

}  // namespace
