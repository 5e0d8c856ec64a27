// Mapping of stored cells to VTK cells, and the layout built from a
// connectivity and its polylength.

#include <gtest/gtest.h>

#include "CellTypes.h"
#include "Cli.h"

namespace DovInspect {
namespace {

TEST(CellTypes, NodeCountAndConnectivityTypeChooseTheCell) {
  struct Case {
    std::uint32_t nodes, connectivityType;
    CellStyle style;
    std::uint8_t expected;
  };
  const Case cases[] = {
      {1, kPointConnectivity, CellStyle::Surface, kVtkVertex},
      {5, kPointConnectivity, CellStyle::Solid, kVtkPolyVertex},
      {2, kLineConnectivity, CellStyle::Surface, kVtkLine},
      {4, kLineConnectivity, CellStyle::Solid, kVtkPolyLine},
      {3, kCellConnectivity, CellStyle::Solid, kVtkTriangle},
      {4, kCellConnectivity, CellStyle::Surface, kVtkQuad},
      {4, kCellConnectivity, CellStyle::Solid, kVtkTetra},
      {5, kCellConnectivity, CellStyle::Solid, kVtkPyramid},
      {6, kCellConnectivity, CellStyle::Solid, kVtkWedge},
      {8, kCellConnectivity, CellStyle::Solid, kVtkHexahedron},
      {8, kCellConnectivity, CellStyle::Surface, kVtkPolygon},
      {7, kCellConnectivity, CellStyle::Solid, kVtkPolygon},
      {4, 77, CellStyle::Surface, kVtkQuad},  // unknown types count as cells
      {0, kCellConnectivity, CellStyle::Surface, kVtkEmptyCell},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(VtkCellTypeFor(c.nodes, c.connectivityType, c.style), c.expected)
        << c.nodes << " nodes, type " << c.connectivityType;
  }
}

TEST(CellTypes, LayoutFollowsPolylength) {
  std::vector<std::uint32_t> connectivity = {0, 1, 2, 2, 3, 4, 5, 5, 6, 7};
  CellLayout layout = BuildCells(connectivity, {3, 4, 3}, kCellConnectivity, 8, CellStyle::Surface);
  EXPECT_EQ(layout.offsets, (std::vector<std::int64_t>{3, 7, 10}));
  EXPECT_EQ(layout.types, (std::vector<std::uint8_t>{kVtkTriangle, kVtkQuad, kVtkTriangle}));
  EXPECT_EQ(layout.usedNodes, 10u);
  EXPECT_TRUE(layout.warnings.empty());
}

TEST(CellTypes, MissingPolylengthOrConnectivityHaveFallbacks) {
  CellLayout cloud = BuildCells({}, {}, kPointConnectivity, 3, CellStyle::Surface);
  EXPECT_EQ(cloud.offsets, (std::vector<std::int64_t>{1, 2, 3}));
  EXPECT_EQ(cloud.types, (std::vector<std::uint8_t>(3, kVtkVertex)));

  CellLayout single = BuildCells({2, 0}, {}, kLineConnectivity, 3, CellStyle::Surface);
  EXPECT_EQ(single.offsets, (std::vector<std::int64_t>{1, 2}));
}

TEST(CellTypes, InconsistentMeshesAreReported) {
  EXPECT_THROW(BuildCells({0, 1}, {3}, kCellConnectivity, 5, CellStyle::Surface), ToolError);
  EXPECT_THROW(BuildCells({0, 1, 5}, {3}, kCellConnectivity, 5, CellStyle::Surface), ToolError);
  CellLayout extra = BuildCells({0, 1, 2, 4}, {3}, kCellConnectivity, 5, CellStyle::Surface);
  EXPECT_EQ(extra.usedNodes, 3u);
  EXPECT_EQ(extra.warnings.size(), 1u);
}

}  // namespace
}  // namespace DovInspect
