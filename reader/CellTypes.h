#ifndef DOVREADER_CELLTYPES_H
#define DOVREADER_CELLTYPES_H

// What the cells of a model file are. A file stores each cell as its node
// count (the "Polylength") and its node indices, and says per connectivity
// variable whether the mesh is made of points, lines or cells. It does not
// say whether four nodes make a quadrilateral or a tetrahedron, so the
// cell's points decide: 4, 5, 6 and 8 nodes that do not lie in one plane
// are a tetrahedron, pyramid, wedge and hexahedron, flat ones a quad or a
// polygon. A rule can override that for all cells.
//
// Cell types carry VTK's numbers, which VTK, ParaView and meshio all read;
// nothing here depends on VTK.

#include <cstdint>
#include <string>
#include <vector>

namespace DovReader {

enum class CellRule {
  ByShape,  // solid unless the points are coplanar
  Surface,  // never solid: 4 nodes quad, more polygon
  Solid     // 4, 5, 6 and 8 nodes always solid
};

// Variable types of a connectivity variable.
const std::uint32_t kPointConnectivity = 4;
const std::uint32_t kLineConnectivity = 5;
const std::uint32_t kCellConnectivity = 6;

enum CellType : std::uint8_t {
  kEmptyCell = 0,
  kVertex = 1,
  kPolyVertex = 2,
  kLine = 3,
  kPolyLine = 4,
  kTriangle = 5,
  kPolygon = 7,
  kQuad = 9,
  kTetra = 10,
  kHexahedron = 12,
  kWedge = 13,
  kPyramid = 14
};

// The type of a cell of `nodeCount` nodes; `flat` tells whether its points
// lie in one plane and matters only for the by-shape rule.
std::uint8_t CellTypeFor(std::uint32_t nodeCount, std::uint32_t connectivityType, CellRule rule,
                         bool flat);

// True if the `count` points named by `nodes` lie in one plane (or on a
// line), within what 32-bit coordinates can tell apart.
bool PointsAreFlat(const std::vector<float>& xyz, const std::uint32_t* nodes,
                   std::uint32_t count);

// The mapping above as text for help screens.
const char* CellRuleHelp();

// The cells of one mesh. Node indices stay in the caller's connectivity;
// only the first `usedNodes` of them belong to cells.
struct CellLayout {
  std::vector<std::int64_t> offsets;  // end of each cell
  std::vector<std::uint8_t> types;
  std::uint64_t usedNodes = 0;
  std::vector<std::string> warnings;
};

// Builds the layout from a connectivity and its polylength over the points
// `xyz`. An empty polylength with a non-empty connectivity means one node
// per cell; both empty means one vertex per point, so that a point cloud
// stays visible. Throws ReadError if the polylength asks for more indices
// than there are, or if an index lies outside the points.
CellLayout BuildCells(const std::vector<std::uint32_t>& connectivity,
                      const std::vector<std::uint32_t>& polylength, std::uint32_t connectivityType,
                      const std::vector<float>& xyz, CellRule rule);

}  // namespace DovReader

#endif
