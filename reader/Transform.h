#ifndef DOVREADER_TRANSFORM_H
#define DOVREADER_TRANSFORM_H

// Placement of geometries. Every group of the scene tree stores a
// translation, a rotation and a scale; a geometry stands where the groups
// above it put it, the root's first. The rotation's four numbers are an
// axis (x, y, z) and an angle in radians about it, so that both rotations a
// file holds without a host's say, (1, 0, 0, 0) and (0, 0, 1, 0), turn
// nothing. A zero axis turns nothing either.

#include <array>
#include <vector>

#include "reader/Scene.h"

namespace DovReader {

// Row-major 4x4, applied to column vectors (x, y, z, 1).
using Matrix4 = std::array<double, 16>;

Matrix4 IdentityMatrix();
Matrix4 Multiply(const Matrix4& left, const Matrix4& right);
bool IsIdentity(const Matrix4& matrix);

// Translation · rotation · scale: points are scaled, then turned, then moved.
Matrix4 GroupMatrix(const GroupContent& group);

// Applies `matrix` to the points `xyz` (x, y, z after each other) in place.
void TransformPoints(const Matrix4& matrix, std::vector<float>& xyz);

}  // namespace DovReader

#endif
