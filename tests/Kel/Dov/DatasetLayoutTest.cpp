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

TEST(DatasetLayoutTest, WorkedExamples) {
  EXPECT_EQ((Bytes{1, 5, 2, 6, 3, 7, 4, 8}), Encode({0x04030201, 0x08070605}, 1));

  // A, B, C, D with width 2: planes of A and C, then of B and D; a fifth
  // value does not fill an item and stays as it was, at the end.
  const std::vector<std::uint32_t> abcde = {0xA3A2A1A0, 0xB3B2B1B0, 0xC3C2C1C0, 0xD3D2D1D0,
                                            0xE3E2E1E0};
  EXPECT_EQ((Bytes{0xA0, 0xC0, 0xA1, 0xC1, 0xA2, 0xC2, 0xA3, 0xC3, 0xB0, 0xD0, 0xB1, 0xD1, 0xB2,
                   0xD2, 0xB3, 0xD3, 0xE0, 0xE1, 0xE2, 0xE3}),
            Encode(abcde, 2));

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
