// The values of a model's pieces: points placed by their groups, cells
// typed, results described. One variable is read at a time.

#include <array>
#include <cmath>
#include <set>

#include "Kel/Util/Coding.h"
#include "reader/Model.h"

namespace DovReader {

namespace {

// The variables that make a geometry's points and cells, after links.
using GeometryData = std::array<const Variable*, 4>;

void ReadNodeIds(const std::vector<std::uint32_t>& words, bool isFloat, PointSet& points) {
  if (words.size() != points.Count()) {
    points.warnings.push_back("node ids do not match the points, left out");
    return;
  }
  points.nodeIds.reserve(words.size());
  // The writer keeps node ids as floats; they come back as integers.
  for (std::uint32_t word : words)
    points.nodeIds.push_back(isFloat ? std::llround(Kel::Util::BitsToFloat(word))
                                     : static_cast<std::int64_t>(word));
}

}  // namespace

std::vector<std::uint32_t> Model::Values(std::uint32_t entryId, int index) {
  if (index == kNoVariable) return {};
  return scene_.ReadValues(entryId, static_cast<std::uint32_t>(index));
}

PointSet Model::ReadPoints(const ModelPiece& piece, int step) {
  PointSet points;
  for (std::uint32_t geometry : piece.geometries) {
    const GeometryRoles roles = Roles(geometry, step);
    if (roles.coordinates == kNoVariable) continue;
    points.xyz = Scene::AsFloats(Values(geometry, roles.coordinates));
    if (points.xyz.size() % 3 != 0) {
      points.warnings.push_back("coordinates are not whole triples; the rest is left out");
      points.xyz.resize(points.xyz.size() - points.xyz.size() % 3);
    }
    TransformPoints(piece.matrix, points.xyz);
    if (roles.nodeIds != kNoVariable)
      ReadNodeIds(Values(geometry, roles.nodeIds), Holder(geometry, roles.nodeIds)->dataType == 1,
                  points);
    break;
  }
  return points;
}

void Model::AppendCells(const ModelPiece& piece, std::size_t position, int step,
                        const PointSet& points, CellRule rule, CellSet& cells) {
  const std::uint32_t geometry = piece.geometries.at(position);
  const GeometryRoles roles = Roles(geometry, step);
  const std::vector<std::uint32_t> connectivity = Values(geometry, roles.connectivity);
  const std::vector<std::uint32_t> polylength = Values(geometry, roles.polylength);
  const std::uint32_t type =
      roles.connectivity == kNoVariable
          ? kPointConnectivity
          : scene_.GetVariable(geometry, static_cast<std::uint32_t>(roles.connectivity)).type;
  const CellLayout layout = BuildCells(connectivity, polylength, type, points.xyz, rule);
  const std::int64_t base = static_cast<std::int64_t>(cells.connectivity.size());
  cells.connectivity.insert(cells.connectivity.end(), connectivity.begin(),
                            connectivity.begin() + static_cast<std::ptrdiff_t>(layout.usedNodes));
  for (std::int64_t end : layout.offsets) cells.offsets.push_back(base + end);
  cells.types.insert(cells.types.end(), layout.types.begin(), layout.types.end());
  cells.geometry.insert(cells.geometry.end(), layout.types.size(),
                        static_cast<std::int32_t>(position));
  for (const std::string& warning : layout.warnings)
    cells.warnings.push_back(Node(geometry).path + ": " + warning);
}

CellSet Model::ReadCells(const ModelPiece& piece, int step, const PointSet& points,
                         CellRule rule) {
  CellSet cells;
  for (std::size_t position = 0; position < piece.geometries.size(); ++position)
    AppendCells(piece, position, step, points, rule, cells);
  return cells;
}

CellSet Model::ReadCells(const ModelPiece& piece, const std::vector<std::size_t>& positions,
                         int step, const PointSet& points, CellRule rule) {
  CellSet cells;
  for (std::size_t position : positions) AppendCells(piece, position, step, points, rule, cells);
  return cells;
}

std::vector<FieldInfo> Model::Fields(const ModelPiece& piece, int step) const {
  std::vector<FieldInfo> fields;
  std::set<std::string> seen;
  for (std::uint32_t geometry : piece.geometries) {
    for (const auto& result : Roles(geometry, step).results) {
      if (!seen.insert(result.first).second) continue;
      FieldInfo field;
      field.name = result.first;
      field.entryId = geometry;
      field.index = result.second;
      field.holder = Holder(geometry, result.second);
      field.isFloat = field.holder->dataType == 1;
      field.components = field.holder->width == 0 ? 1 : field.holder->width;
      field.values = field.holder->byteSize / 4;
      fields.push_back(field);
    }
  }
  return fields;
}

std::uint64_t Model::PointCount(const ModelPiece& piece, int step) const {
  for (std::uint32_t geometry : piece.geometries) {
    const int coordinates = Roles(geometry, step).coordinates;
    if (coordinates != kNoVariable) return Holder(geometry, coordinates)->byteSize / 12;
  }
  return 0;
}

// As ReadCells counts them: a cell per polylength entry, else one per
// connectivity entry, else a vertex per point.
std::uint64_t Model::CellCount(std::uint32_t geometry, int step) const {
  const GeometryRoles roles = Roles(geometry, step);
  for (int index : {roles.polylength, roles.connectivity}) {
    const Variable* holder = Holder(geometry, index);
    if (holder != nullptr && holder->byteSize >= 4) return holder->byteSize / 4;
  }
  const Variable* points = Holder(geometry, roles.coordinates);
  return points == nullptr ? 0 : points->byteSize / 12;
}

bool Model::GeometryVaries(const ModelPiece& piece) const {
  if (!piece.perValue) return false;
  auto data = [this](std::uint32_t geometry, int step) {
    const GeometryRoles roles = Roles(geometry, step);
    return GeometryData{Holder(geometry, roles.coordinates), Holder(geometry, roles.connectivity),
                        Holder(geometry, roles.polylength), Holder(geometry, roles.nodeIds)};
  };
  for (std::uint32_t geometry : piece.geometries) {
    const GeometryData first = data(geometry, 0);
    for (int step = 1; step < static_cast<int>(steps_.values.size()); ++step)
      if (data(geometry, step) != first) return true;
  }
  return false;
}

}  // namespace DovReader
