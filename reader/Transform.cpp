#include "reader/Transform.h"

#include <cmath>

namespace DovReader {

namespace {

// The rotation by `angle` about the axis (x, y, z), by Rodrigues' formula.
Matrix4 RotationMatrix(double x, double y, double z, double angle) {
  const double length = std::sqrt(x * x + y * y + z * z);
  if (length == 0 || angle == 0) return IdentityMatrix();
  x /= length;
  y /= length;
  z /= length;
  const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
  return {t * x * x + c,     t * x * y - s * z, t * x * z + s * y, 0,
          t * x * y + s * z, t * y * y + c,     t * y * z - s * x, 0,
          t * x * z - s * y, t * y * z + s * x, t * z * z + c,     0,
          0,                 0,                 0,                 1};
}

}  // namespace

Matrix4 IdentityMatrix() { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; }

bool IsIdentity(const Matrix4& matrix) { return matrix == IdentityMatrix(); }

Matrix4 Multiply(const Matrix4& left, const Matrix4& right) {
  Matrix4 product{};
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column)
      for (int k = 0; k < 4; ++k) product[4 * row + column] += left[4 * row + k] * right[4 * k + column];
  return product;
}

Matrix4 GroupMatrix(const GroupContent& group) {
  const float* r = group.rotation;
  Matrix4 matrix = RotationMatrix(r[0], r[1], r[2], r[3]);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) matrix[4 * row + column] *= group.scale[column];
    matrix[4 * row + 3] = group.translation[row];
  }
  return matrix;
}

void TransformPoints(const Matrix4& m, std::vector<float>& xyz) {
  if (IsIdentity(m)) return;
  for (std::size_t i = 0; i + 2 < xyz.size(); i += 3) {
    const double x = xyz[i], y = xyz[i + 1], z = xyz[i + 2];
    for (int row = 0; row < 3; ++row) {
      xyz[i + row] = static_cast<float>(m[4 * row] * x + m[4 * row + 1] * y +
                                        m[4 * row + 2] * z + m[4 * row + 3]);
    }
  }
}

}  // namespace DovReader
