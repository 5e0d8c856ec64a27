// The pure pieces of tree construction: how element sets are cut out of a
// mesh, how a polylength is derived, and how per-value variables are named.

#include <gtest/gtest.h>

#include "ObjectManager/BuildSupport.h"

using namespace Kel::Dov;
typedef std::vector<std::uint32_t> Words;

TEST(MeshCut, SetsAreCutBySliceInTheirOwnOrderAndMayRepeatCells) {
  const Words polylength{3, 4, 3};
  const Words connectivity{0, 1, 2, 2, 3, 4, 5, 5, 6, 7};
  const Words offsets = cellOffsets(polylength);
  EXPECT_EQ(offsets, (Words{0, 3, 7}));

  CutSet cut = cutElementSet(Words{2, 0}, polylength, offsets, connectivity);
  EXPECT_EQ(cut.polylength, (Words{3, 3}));
  EXPECT_EQ(cut.connectivity, (Words{5, 6, 7, 0, 1, 2}));

  cut = cutElementSet(Words{1, 2, 2}, polylength, offsets, connectivity);
  EXPECT_EQ(cut.polylength, (Words{4, 3, 3}));
  EXPECT_EQ(cut.connectivity, (Words{2, 3, 4, 5, 5, 6, 7, 5, 6, 7}));

  cut = cutElementSet(Words(), polylength, offsets, connectivity);
  EXPECT_TRUE(cut.polylength.empty());
  EXPECT_TRUE(cut.connectivity.empty());
}

TEST(MeshCut, OffsetsWrapIn32Bits) {
  EXPECT_EQ(cellOffsets(Words{0xFFFFFFFFu, 2, 5}), (Words{0, 0xFFFFFFFFu, 1}));
  EXPECT_TRUE(cellOffsets(Words()).empty());
}

TEST(MeshCut, FaultNamesTheFirstCellThatCannotBeCut) {
  const Words polylength{3, 4, 3};
  const Words offsets = cellOffsets(polylength);

  EXPECT_FALSE(findCutFault(Words{0, 1, 2, 2}, polylength, offsets, 10).found);

  CutFault fault = findCutFault(Words{0, 3, 7}, polylength, offsets, 10);
  ASSERT_TRUE(fault.found);
  EXPECT_EQ(fault.position, 1u);
  EXPECT_EQ(fault.cell, 3u);
  EXPECT_TRUE(fault.outsidePolylength);

  // The last cell's slice needs ten entries; nine are there.
  fault = findCutFault(Words{0, 2}, polylength, offsets, 9);
  ASSERT_TRUE(fault.found);
  EXPECT_EQ(fault.cell, 2u);
  EXPECT_FALSE(fault.outsidePolylength);
  EXPECT_EQ(fault.sliceEnd, 10u);

  // A polylength without connectivity has nothing to cut from, except cells
  // of no nodes.
  EXPECT_TRUE(findCutFault(Words{0}, polylength, offsets, 0).found);
  EXPECT_FALSE(findCutFault(Words{0}, Words{0}, Words{0}, 0).found);
}

TEST(MeshCut, DerivedPolylengthCountsWholeCellsOnly) {
  EXPECT_EQ(derivePolylength(Words(12, 7), 3), Words(4, 3));
  EXPECT_EQ(derivePolylength(Words(10, 7), 3), Words(3, 3));
  EXPECT_EQ(derivePolylength(Words(8, 7), 4), Words(2, 4));
  EXPECT_TRUE(derivePolylength(Words(), 3).empty());
  EXPECT_TRUE(derivePolylength(Words(5, 1), 0).empty());
}

TEST(MeshCut, NodeIdsBecomeFloatsByValue) {
  const std::vector<float> floats = idsToFloats(Words{0, 7, 16777216u, 16777217u, 0xFFFFFFFFu});
  ASSERT_EQ(floats.size(), 5u);
  EXPECT_EQ(floats[1], 7.0f);
  EXPECT_EQ(floats[2], 16777216.0f);
  EXPECT_EQ(floats[3], 16777216.0f);
  EXPECT_EQ(floats[4], 4294967296.0f);
}

TEST(MeshCut, ValueNamesJoinNameGroupAndValue) {
  EXPECT_EQ(valueName("Stress", "Time", "0.5"), std::string("Stress\x1E" "Time = 0.5"));
  EXPECT_EQ(valueName("S", "", "1"), std::string("S\x1E = 1"));
  EXPECT_EQ(resultKey("Connectivity"), std::string("\x1E") + "Connectivity");
  EXPECT_EQ(elementSetKey("Wheel"), std::string("\x1DWheel"));
}
