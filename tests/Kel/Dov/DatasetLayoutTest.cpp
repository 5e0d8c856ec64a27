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

// The two-step reordering as it is described: a temporary copy, then each
// component gathered into a buffer and cut into byte planes.
Bytes LittleEndian(const std::vector<std::uint32_t>& values) {
  Bytes bytes;
  for (std::uint32_t v : values)
    for (int j = 0; j < 4; ++j) bytes.push_back(static_cast<unsigned char>(v >> (8 * j)));
  return bytes;
}

Bytes Planes(const Bytes& t) {
  const std::size_t n = t.size() / 4;
  Bytes b(t.size());
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < 4; ++j) b[j * n + i] = t[4 * i + j];
  return b;
}

Bytes ReferenceReorder(const std::vector<std::uint32_t>& values, std::uint8_t width) {
  Bytes dataset = LittleEndian(values);  // working copy
  if (width == 0) return dataset;
  const Bytes t = dataset;  // temporary area
  const std::size_t n = values.size() / width;
  for (std::size_t k = 0; k < width; ++k) {
    Bytes buffer;
    for (std::size_t i = 0; i < n; ++i)
      buffer.insert(buffer.end(), t.begin() + 4 * (k + i * width), t.begin() + 4 * (k + i * width) + 4);
    const Bytes planes = Planes(buffer);
    std::copy(planes.begin(), planes.end(), dataset.begin() + 4 * n * k);
  }
  return dataset;
}

TEST(DatasetLayoutTest, WorkedExamples) {
  EXPECT_EQ((Bytes{1, 5, 2, 6, 3, 7, 4, 8}), Encode({0x04030201, 0x08070605}, 1));

  // A, B, C, D with width 2: planes of A and C, then of B and D.
  const std::vector<std::uint32_t> abcd = {0xA3A2A1A0, 0xB3B2B1B0, 0xC3C2C1C0, 0xD3D2D1D0};
  const Bytes ac_bd = {0xA0, 0xC0, 0xA1, 0xC1, 0xA2, 0xC2, 0xA3, 0xC3,
                       0xB0, 0xD0, 0xB1, 0xD1, 0xB2, 0xD2, 0xB3, 0xD3};
  EXPECT_EQ(ac_bd, Encode(abcd, 2));

  // A fifth value does not fill an item and stays as it was, at the end.
  std::vector<std::uint32_t> five = abcd;
  five.push_back(0xE3E2E1E0);
  Bytes expected = ac_bd;
  expected.insert(expected.end(), {0xE0, 0xE1, 0xE2, 0xE3});
  EXPECT_EQ(expected, Encode(five, 2));

  // Width 0 leaves the values in memory order.
  EXPECT_EQ((Bytes{1, 2, 3, 4, 5, 6, 7, 8}), Encode({0x04030201, 0x08070605}, 0));
  EXPECT_TRUE(Encode({}, 3).empty());
}

TEST(DatasetLayoutTest, MatchesTheTwoStepReorderingForManyShapes) {
  std::uint32_t seed = 12345;
  for (std::size_t count : {0u, 1u, 2u, 3u, 7u, 12u, 100u, 1001u}) {
    std::vector<std::uint32_t> values(count);
    for (auto& v : values) v = seed = seed * 1664525u + 1013904223u;
    for (int width : {0, 1, 2, 3, 6, 7, 255}) {
      EXPECT_EQ(ReferenceReorder(values, width), Encode(values, width))
          << "count " << count << " width " << width;
    }
  }
}

}  // namespace
