#ifndef DOVWRITER_TYPES_H
#define DOVWRITER_TYPES_H

#include <cstdint>

namespace Kel {
namespace Dov {

// Names one object of one scene. The first word tells scenes apart, the
// second is the object's index in its scene. Opaque to the host: copy it and
// hand it back, nothing more.
struct Identifier {
  std::uint64_t first;
  std::uint64_t second;
};

// What an object becomes when the scene is closed. Only the four node kinds
// have a meaning to the library; every other value is a plain data object
// (an array, a material, a transformation, an element set, an instance
// group) and is stored unchanged. The data enumerators below are offered for
// readable host code; any value outside 16, 18, 19 and 21 serves as well.
enum ObjectType : std::int32_t {
  ArrayObject = 0,
  MaterialObject = 1,
  TransformationObject = 2,
  ElementSetObject = 3,
  InstanceGroupObject = 4,
  GeometryObject = 16,
  ShapeObject = 18,
  GroupObject = 19,
  MeshObject = 21
};

enum ColorType : std::int32_t {
  DiffusiveColor = 0,
  SpecularColor = 1,
  EmissiveColor = 2,
  AmbientColor = 3
};

// The kind of cells of a geometry object. It decides the type that the
// connectivity variable carries in the file (0 -> 6, 1 -> 5, 2 -> 4); a
// PointMesh is the one mesh that may exist without connectivity.
enum MeshType : std::int32_t {
  CellMesh = 0,
  LineMesh = 1,
  PointMesh = 2
};

// What one tuple of a result holds, and so its width: 1, 3, 6 and 6.
enum VariableType : std::int32_t {
  ScalarVariable = 0,
  VectorVariable = 1,
  SixComponentVariableA = 2,
  SixComponentVariableB = 3
};

}  // namespace Dov
}  // namespace Kel

#endif
