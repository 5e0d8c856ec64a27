#include "SceneView.h"

#include <cmath>
#include <vector>

namespace DovPython {

namespace {

// The entry and its ancestors, the root first. A parent chain longer than
// the tree is a cycle, which a damaged file may hold.
std::vector<const DovReader::TreeRecord*> PathFromRoot(const DovReader::Scene& scene,
                                                       std::uint32_t entryId) {
  std::vector<const DovReader::TreeRecord*> path;
  for (std::uint32_t id = entryId; id != 0; id = path.back()->parent) {
    if (path.size() > scene.Records().size())
      throw DovReader::ReadError("the parents of entry " + std::to_string(entryId) +
                                 " form a cycle");
    path.push_back(&scene.Record(id));
  }
  return std::vector<const DovReader::TreeRecord*>(path.rbegin(), path.rend());
}

Matrix4 RotationMatrix(const float (&rotation)[4]) {
  const double x = rotation[0], y = rotation[1], z = rotation[2], angle = rotation[3];
  const double length = std::sqrt(x * x + y * y + z * z);
  if (length == 0.0 || angle == 0.0) return IdentityMatrix();
  const double u = x / length, v = y / length, w = z / length;
  const double c = std::cos(angle), s = std::sin(angle), t = 1.0 - c;
  // One row a line: the turn by the angle about the unit axis (u, v, w).
  // clang-format off
  return {t * u * u + c,     t * u * v - s * w, t * u * w + s * v, 0.0,
          t * u * v + s * w, t * v * v + c,     t * v * w - s * u, 0.0,
          t * u * w - s * v, t * v * w + s * u, t * w * w + c,     0.0,
          0.0,               0.0,               0.0,               1.0};
  // clang-format on
}

bool Hidden(const DovReader::TreeRecord& record) {
  if (record.material) return record.material->visible == 0;
  if (record.group) {
    const DovReader::Attribute* visible = record.group->attributes.Find("visible");
    return visible != nullptr && visible->kind <= 1 && visible->word == 0;
  }
  return false;
}

}  // namespace

Matrix4 IdentityMatrix() { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; }

Matrix4 Multiply(const Matrix4& left, const Matrix4& right) {
  Matrix4 product{};
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column)
      for (int k = 0; k < 4; ++k)
        product[4 * row + column] += left[4 * row + k] * right[4 * k + column];
  return product;
}

Matrix4 GroupMatrix(const DovReader::GroupContent& group) {
  Matrix4 translateRotate = RotationMatrix(group.rotation);
  for (int axis = 0; axis < 3; ++axis) translateRotate[4 * axis + 3] = group.translation[axis];
  Matrix4 scale = IdentityMatrix();
  for (int axis = 0; axis < 3; ++axis) scale[5 * axis] = group.scale[axis];
  return Multiply(translateRotate, scale);
}

Matrix4 ComposedMatrix(const DovReader::Scene& scene, std::uint32_t entryId) {
  Matrix4 composed = IdentityMatrix();
  for (const DovReader::TreeRecord* record : PathFromRoot(scene, entryId))
    if (record->group) composed = Multiply(composed, GroupMatrix(*record->group));
  return composed;
}

Appearance AppearanceOf(const DovReader::Scene& scene, std::uint32_t entryId) {
  Appearance appearance;
  for (const DovReader::TreeRecord* record : PathFromRoot(scene, entryId)) {
    if (Hidden(*record)) appearance.visible = false;
    if (record->material) {
      const float* diffuse = record->material->diffuse;
      appearance.color = std::array<float, 4>{diffuse[0], diffuse[1], diffuse[2], diffuse[3]};
    }
  }
  return appearance;
}

}  // namespace DovPython
