#include "reader/CellTypes.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>

#include "reader/Container.h"

namespace DovReader {

namespace {

using Vector = std::array<double, 3>;

Vector Point(const std::vector<float>& xyz, std::uint32_t node) {
  const std::size_t at = 3 * static_cast<std::size_t>(node);
  return {xyz[at], xyz[at + 1], xyz[at + 2]};
}

Vector Minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double Dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vector Cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

std::uint8_t PointCellType(std::uint32_t nodeCount) {
  return nodeCount == 1 ? kVertex : kPolyVertex;
}

std::uint8_t LineCellType(std::uint32_t nodeCount) {
  if (nodeCount == 1) return kVertex;
  return nodeCount == 2 ? kLine : kPolyLine;
}

std::uint8_t SolidCellType(std::uint32_t nodeCount) {
  switch (nodeCount) {
    case 4: return kTetra;
    case 5: return kPyramid;
    case 6: return kWedge;
    case 8: return kHexahedron;
    default: return kPolygon;
  }
}

bool HasSolidForm(std::uint32_t nodeCount) {
  return nodeCount == 4 || nodeCount == 5 || nodeCount == 6 || nodeCount == 8;
}

// Only cells that could be solid have their points looked at.
bool ShapeDecides(std::uint32_t nodeCount, std::uint32_t connectivityType, CellRule rule) {
  return rule == CellRule::ByShape && HasSolidForm(nodeCount) &&
         connectivityType != kPointConnectivity && connectivityType != kLineConnectivity;
}

std::uint8_t GeneralCellType(std::uint32_t nodeCount, CellRule rule, bool flat) {
  switch (nodeCount) {
    case 1: return kVertex;
    case 2: return kLine;
    case 3: return kTriangle;
    default: break;
  }
  const bool solid = rule == CellRule::Solid || (rule == CellRule::ByShape && !flat);
  if (solid && HasSolidForm(nodeCount)) return SolidCellType(nodeCount);
  return nodeCount == 4 ? kQuad : kPolygon;
}

void CheckNodeIndices(const std::vector<std::uint32_t>& connectivity, std::uint64_t used,
                      std::uint64_t points) {
  for (std::uint64_t i = 0; i < used; ++i) {
    if (connectivity[i] >= points) {
      throw ReadError("connectivity entry " + std::to_string(i) + " refers to node " +
                      std::to_string(connectivity[i]) + ", but there are only " +
                      std::to_string(points) + " points");
    }
  }
}

}  // namespace

std::uint8_t CellTypeFor(std::uint32_t nodeCount, std::uint32_t connectivityType, CellRule rule,
                         bool flat) {
  if (nodeCount == 0) return kEmptyCell;
  if (connectivityType == kPointConnectivity) return PointCellType(nodeCount);
  if (connectivityType == kLineConnectivity) return LineCellType(nodeCount);
  return GeneralCellType(nodeCount, rule, flat);
}

bool PointsAreFlat(const std::vector<float>& xyz, const std::uint32_t* nodes,
                   std::uint32_t count) {
  if (count < 4) return true;
  const Vector origin = Point(xyz, nodes[0]);
  // The point farthest from the first spans the cell; the point farthest
  // from that line completes the plane that the others are measured from.
  Vector span{0, 0, 0};
  double magnitude = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const Vector p = Point(xyz, nodes[i]);
    for (double c : p) magnitude = std::max(magnitude, std::fabs(c));
    const Vector d = Minus(p, origin);
    if (Dot(d, d) > Dot(span, span)) span = d;
  }
  const double extent = std::sqrt(Dot(span, span));
  // 32-bit coordinates carry about 7 digits of their magnitude: differences
  // below that are rounding, not shape.
  const double tolerance = 1e-5 * extent + 16 * FLT_EPSILON * magnitude;
  if (extent <= tolerance) return true;
  Vector normal{0, 0, 0};
  for (std::uint32_t i = 0; i < count; ++i) {
    const Vector n = Cross(span, Minus(Point(xyz, nodes[i]), origin));
    if (Dot(n, n) > Dot(normal, normal)) normal = n;
  }
  const double length = std::sqrt(Dot(normal, normal));
  if (length / extent <= tolerance) return true;  // all on one line
  for (std::uint32_t i = 0; i < count; ++i) {
    const double height = Dot(normal, Minus(Point(xyz, nodes[i]), origin)) / length;
    if (std::fabs(height) > tolerance) return false;
  }
  return true;
}

const char* CellRuleHelp() {
  return "Cells are typed by their node count, the type of their connectivity\n"
         "variable and, for 4, 5, 6 and 8 nodes, their shape:\n"
         "  point mesh (type 4):  1 node vertex, more nodes poly-vertex\n"
         "  line mesh (type 5):   1 node vertex, 2 nodes line, more nodes poly-line\n"
         "  cell mesh (type 6 and any other type):\n"
         "                        1 node vertex, 2 nodes line, 3 nodes triangle;\n"
         "    4, 5, 6, 8 nodes not in one plane: tetra, pyramid, wedge, hexahedron\n"
         "    4 nodes in one plane: quad; other counts: polygon\n"
         "  --cells=surface treats every cell as flat, --cells=solid none;\n"
         "  a cell of 0 nodes becomes an empty cell.\n"
         "Nodes keep the file's order. A mesh without connectivity becomes one\n"
         "vertex per point. A connectivity without polylength has one node per cell.\n";
}

CellLayout BuildCells(const std::vector<std::uint32_t>& connectivity,
                      const std::vector<std::uint32_t>& polylength, std::uint32_t connectivityType,
                      const std::vector<float>& xyz, CellRule rule) {
  const std::uint64_t points = xyz.size() / 3;
  CellLayout layout;
  if (connectivity.empty() && polylength.empty()) {
    layout.offsets.resize(points);
    layout.types.assign(points, kVertex);
    for (std::uint64_t i = 0; i < points; ++i) layout.offsets[i] = static_cast<std::int64_t>(i + 1);
    return layout;
  }
  std::vector<std::uint32_t> ones;
  const std::vector<std::uint32_t>* lengths = &polylength;
  if (polylength.empty()) {
    ones.assign(connectivity.size(), 1);
    lengths = &ones;
  }
  layout.offsets.reserve(lengths->size());
  std::uint64_t end = 0;
  for (std::uint32_t count : *lengths) {
    end += count;
    layout.offsets.push_back(static_cast<std::int64_t>(end));
  }
  if (end > connectivity.size()) {
    throw ReadError("the polylength asks for " + std::to_string(end) +
                    " node indices, but the connectivity holds " +
                    std::to_string(connectivity.size()));
  }
  if (end < connectivity.size()) {
    layout.warnings.push_back("the last " + std::to_string(connectivity.size() - end) +
                              " connectivity entries belong to no cell and are left out");
  }
  CheckNodeIndices(connectivity, end, points);
  layout.usedNodes = end;
  layout.types.reserve(lengths->size());
  std::uint64_t start = 0;
  for (std::uint32_t count : *lengths) {
    const bool flat = !ShapeDecides(count, connectivityType, rule) ||
                      PointsAreFlat(xyz, connectivity.data() + start, count);
    layout.types.push_back(CellTypeFor(count, connectivityType, rule, flat));
    start += count;
  }
  return layout;
}

}  // namespace DovReader
