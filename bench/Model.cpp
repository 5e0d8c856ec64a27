#include "Model.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

// Tables of one smooth function per axis, so that a field over 10^7 nodes
// costs a few multiplications per node rather than trigonometry.
struct AxisTables {
  std::vector<float> x, y, z;
};

AxisTables Tables(const ModelShape& shape, float frequency, float phase) {
  auto table = [&](std::uint32_t count, float scale) {
    std::vector<float> values(count);
    for (std::uint32_t i = 0; i < count; ++i)
      values[i] = std::sin(frequency * scale * static_cast<float>(i) / count + phase);
    return values;
  };
  return {table(shape.nx, 3.1f), table(shape.ny, 2.3f), table(shape.nz, 1.7f)};
}

std::uint64_t NodeNumber(const ModelShape& s, std::uint64_t i, std::uint64_t j, std::uint64_t k) {
  return i + s.nx * (j + s.ny * k);
}

// The six tetrahedra around the main diagonal 0-6 of a hexahedron whose
// corners are numbered 0-3 on the bottom face and 4-7 above them.
const std::uint32_t TetCorners[6][4] = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                        {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};

template <class Field>
std::vector<float> NodeField(const ModelShape& shape, std::uint32_t width, Field field) {
  std::vector<float> values(shape.nodes * width);
  float* out = values.data();
  for (std::uint32_t k = 0; k < shape.nz; ++k)
    for (std::uint32_t j = 0; j < shape.ny; ++j)
      for (std::uint32_t i = 0; i < shape.nx; ++i, out += width) field(i, j, k, out);
  return values;
}

// The counts that follow from the kind and the nodes along each axis.
ModelShape Counted(ModelShape shape) {
  shape.nodes = std::uint64_t(shape.nx) * shape.ny * shape.nz;
  const std::uint64_t hexahedra = std::uint64_t(shape.nx - 1) * (shape.ny - 1) * (shape.nz - 1);
  shape.nodesPerCell = shape.kind == CellKind::Hexahedron ? 8 : 4;
  shape.cells = shape.kind == CellKind::Hexahedron ? hexahedra : 6 * hexahedra;
  return shape;
}

}  // namespace

std::uint64_t ModelShape::HostBytes() const {
  const std::uint64_t perState = 4 * nodes * (3 + 1);
  return 4 * (3 * nodes + cells * nodesPerCell + nodes + cells) + states * perState;
}

ModelShape PlanModel(std::uint64_t targetNodes, CellKind kind) {
  ModelShape shape;
  shape.kind = kind;
  const double side = std::cbrt(static_cast<double>(std::max<std::uint64_t>(targetNodes, 8)));
  shape.nx = shape.ny = std::max<std::uint32_t>(2, static_cast<std::uint32_t>(std::lround(side)));
  shape.nz = std::max<std::uint32_t>(
      2, static_cast<std::uint32_t>(std::llround(static_cast<double>(targetNodes) /
                                                 (double(shape.nx) * shape.ny))));
  return Counted(shape);
}

ModelShape SliceModel(const ModelShape& whole, std::uint32_t part, std::uint32_t parts) {
  const std::uint64_t layers = whole.nz - 1;
  ModelShape slab = whole;
  slab.nz = static_cast<std::uint32_t>(layers * (part + 1) / parts - layers * part / parts + 1);
  return Counted(slab);
}

std::string CellKindName(CellKind kind) {
  return kind == CellKind::Hexahedron ? "hexahedra" : "tetrahedra";
}

std::vector<float> Coordinates(const ModelShape& shape) {
  const AxisTables bend = Tables(shape, 1.0f, 0.3f);
  const float h = 1.0f / static_cast<float>(std::max({shape.nx, shape.ny, shape.nz}));
  return NodeField(shape, 3, [&](std::uint32_t i, std::uint32_t j, std::uint32_t k, float* out) {
    out[0] = h * i + 0.05f * bend.y[j] * bend.z[k];
    out[1] = h * j + 0.05f * bend.x[i] * bend.z[k];
    out[2] = h * k + 0.05f * bend.x[i] * bend.y[j];
  });
}

std::vector<std::uint32_t> Connectivity(const ModelShape& s) {
  std::vector<std::uint32_t> result;
  result.reserve(s.cells * s.nodesPerCell);
  for (std::uint32_t k = 0; k + 1 < s.nz; ++k)
    for (std::uint32_t j = 0; j + 1 < s.ny; ++j)
      for (std::uint32_t i = 0; i + 1 < s.nx; ++i) {
        const std::uint32_t corner[8] = {
            std::uint32_t(NodeNumber(s, i, j, k)),         std::uint32_t(NodeNumber(s, i + 1, j, k)),
            std::uint32_t(NodeNumber(s, i + 1, j + 1, k)), std::uint32_t(NodeNumber(s, i, j + 1, k)),
            std::uint32_t(NodeNumber(s, i, j, k + 1)),     std::uint32_t(NodeNumber(s, i + 1, j, k + 1)),
            std::uint32_t(NodeNumber(s, i + 1, j + 1, k + 1)),
            std::uint32_t(NodeNumber(s, i, j + 1, k + 1))};
        if (s.kind == CellKind::Hexahedron) {
          result.insert(result.end(), corner, corner + 8);
          continue;
        }
        for (const auto& tet : TetCorners)
          for (std::uint32_t c : tet) result.push_back(corner[c]);
      }
  return result;
}

std::vector<std::uint32_t> NodeIds(const ModelShape& shape) {
  std::vector<std::uint32_t> ids(shape.nodes);
  for (std::uint64_t n = 0; n < shape.nodes; ++n) ids[n] = static_cast<std::uint32_t>(n + 1);
  return ids;
}

std::vector<std::uint32_t> ElementSet(const ModelShape& shape, std::uint64_t set) {
  const std::uint64_t first = set * shape.cellsPerSet;
  const std::uint64_t end = std::min(shape.cells, first + shape.cellsPerSet);
  std::vector<std::uint32_t> cells;
  cells.reserve(end > first ? end - first : 0);
  for (std::uint64_t c = first; c < end; ++c) cells.push_back(static_cast<std::uint32_t>(c));
  return cells;
}

std::vector<float> VectorResult(const ModelShape& shape, std::uint32_t state) {
  const float t = 0.1f * static_cast<float>(state + 1);
  const AxisTables a = Tables(shape, 1.0f + t, t);
  const AxisTables b = Tables(shape, 2.0f, 0.5f * t);
  return NodeField(shape, 3, [&](std::uint32_t i, std::uint32_t j, std::uint32_t k, float* out) {
    out[0] = t * (a.x[i] * b.y[j] + 0.2f * b.z[k]);
    out[1] = t * (a.y[j] * b.z[k] + 0.2f * b.x[i]);
    out[2] = t * (a.z[k] * b.x[i] + 0.2f * b.y[j]);
  });
}

std::vector<float> ScalarResult(const ModelShape& shape, std::uint32_t state) {
  const float t = 0.1f * static_cast<float>(state + 1);
  const AxisTables a = Tables(shape, 1.5f, t);
  return NodeField(shape, 1, [&](std::uint32_t i, std::uint32_t j, std::uint32_t k, float* out) {
    out[0] = 100.0f * t * (1.0f + a.x[i] * a.y[j] * a.z[k]);
  });
}

}  // namespace bench
