#ifndef DOVPYTHON_SCENEVIEW_H
#define DOVPYTHON_SCENEVIEW_H

// What a viewer needs of one tree entry beyond its own record: where it is
// placed (the group transformations from the root down to it, composed),
// the colour it is drawn in and whether it is shown. Depends on the reader
// only, so that other readers of model files can take it over.

#include <array>
#include <cstdint>
#include <optional>

#include "reader/Scene.h"

namespace DovPython {

// Row-major, acting on column vectors: x' = M x.
using Matrix4 = std::array<double, 16>;

Matrix4 IdentityMatrix();
Matrix4 Multiply(const Matrix4& left, const Matrix4& right);

// One group's transformation: translation T, rotation R and scale S as
// T R S, so a point is scaled first and moved last. The rotation is an
// axis (its first three numbers) and an angle in radians (the fourth); a
// zero axis or angle is no rotation, which both defaults of the format are.
Matrix4 GroupMatrix(const DovReader::GroupContent& group);

// The product of the group matrices from the root down to the entry, the
// entry's own included.
Matrix4 ComposedMatrix(const DovReader::Scene& scene, std::uint32_t entryId);

struct Appearance {
  // The diffuse colour (red, green, blue, alpha) of the nearest shape at or
  // above the entry; none for an entry without a shape above it.
  std::optional<std::array<float, 4>> color;
  // False if the entry or any entry above it is hidden.
  bool visible = true;
};

Appearance AppearanceOf(const DovReader::Scene& scene, std::uint32_t entryId);

}  // namespace DovPython

#endif
