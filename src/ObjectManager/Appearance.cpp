// Colours, transformations, visibility and the kind of mesh: single values
// under fixed keys, each replacing what its key held.

#include <vector>

#include "Kel/Util/Raise.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

namespace {

const char* ColorKey(ColorType type) {
  switch (type) {
    case DiffusiveColor: return "Diffusive";
    case SpecularColor: return "Specular";
    case EmissiveColor: return "Emissive";
    case AmbientColor: return "Ambient";
  }
  // Kept, but nothing reads it: an unknown colour type is no error.
  return "Unknown Color Type";
}

// The connectivity type that a kind of mesh gives its cells.
KelDov::Geometry::VariableType ConnectivityType(MeshType type) {
  switch (type) {
    case LineMesh: return KelDov::Geometry::LineConnectivity;
    case PointMesh: return KelDov::Geometry::PointConnectivity;
    case CellMesh: break;
  }
  return KelDov::Geometry::CellConnectivity;
}

}  // namespace

void ObjectManager::setColor(const Identifier& object, ColorType type, const float& red,
                             const float& green, const float& blue, const float& alpha) {
  validate(object);
  storeProperty(object.second, ColorKey(type), std::vector<float>{red, green, blue, alpha});
}

void ObjectManager::setColor(const Identifier& object, ColorType type, const float* rgba,
                             bool hasAlpha) {
  validate(object);
  if (rgba == nullptr) KEL_RAISE(16, "Null colour pointer", "Kel::Dov::ObjectManager::setColor");
  // Without alpha the fourth float behind the pointer may not exist.
  const float alpha = hasAlpha ? rgba[3] : 1.0f;
  storeProperty(object.second, ColorKey(type), std::vector<float>{rgba[0], rgba[1], rgba[2], alpha});
}

void ObjectManager::setAmbientIntensity(const Identifier& object, float intensity) {
  validate(object);
  storeProperty(object.second, "Ambient Intensity", intensity);
}

void ObjectManager::setTranslation(const Identifier& object, float x, float y, float z) {
  validate(object);
  storeProperty(object.second, "Translation", std::vector<float>{x, y, z});
}

void ObjectManager::setRotation(const Identifier& object, float a, float b, float c, float d) {
  validate(object);
  storeProperty(object.second, "Rotation", std::vector<float>{a, b, c, d});
}

void ObjectManager::setScale(const Identifier& object, float x, float y, float z) {
  validate(object);
  storeProperty(object.second, "Scale", std::vector<float>{x, y, z});
}

void ObjectManager::setVisibility(const Identifier& object, bool visible) {
  validate(object);
  storeProperty(object.second, "Visibility", visible);
}

void ObjectManager::setMeshType(const Identifier& object, MeshType type) {
  validate(object);
  storeProperty(object.second, "Mesh Type", ConnectivityType(type));
}

void ObjectManager::setRandomColors(const Identifier& object) {
  // Every shape gets a random diffuse colour when the scene is closed, so
  // there is nothing to record here.
  validate(object);
}

}  // namespace Dov
}  // namespace Kel
