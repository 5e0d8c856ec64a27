// The second version of the scene handle: arrays, appearance, mesh data,
// results, element sets and components. Every operation forwards to the
// scene's ObjectManager; host spellings of one element type meet there in
// one implementation (ElementTypes.h).

#include <DovWriter/Scene.h>

#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

Scene_V1::Scene_V1() : Scene_V0(nullptr) {}

Scene_V1::Scene_V1(const char* title) : Scene_V0(title) {}

void Scene_V1::setTitle(const Identifier& object, const char* name) {
  manager->setName(object, name);
}

void Scene_V1::setTitle(const char* title) { manager->setTitle(title); }

template <class T>
void Scene_V1::setValues(const Identifier& array, const T* values, std::uint64_t count) {
  typedef typename SharedArrayType<T>::type Stored;
  static_assert(sizeof(Stored) == sizeof(T), "shared array type of another size");
  // Only the spelling changes (long as long long); the bytes are copied as
  // they are.
  manager->setValues(array, reinterpret_cast<const Stored*>(values), count);
}

void Scene_V1::setDimension(const Identifier& array, unsigned char dimension) {
  manager->setDimension(array, dimension);
}

void Scene_V1::setColor(const Identifier& object, ColorType type, const float& red,
                        const float& green, const float& blue, const float& alpha) {
  manager->setColor(object, type, red, green, blue, alpha);
}

void Scene_V1::setColor(const Identifier& object, ColorType type, const float* rgba,
                        bool hasAlpha) {
  manager->setColor(object, type, rgba, hasAlpha);
}

void Scene_V1::setAmbientIntensity(const Identifier& object, float intensity) {
  manager->setAmbientIntensity(object, intensity);
}

void Scene_V1::setTranslation(const Identifier& object, float x, float y, float z) {
  manager->setTranslation(object, x, y, z);
}

void Scene_V1::setRotation(const Identifier& object, float a, float b, float c, float d) {
  manager->setRotation(object, a, b, c, d);
}

void Scene_V1::setScale(const Identifier& object, float x, float y, float z) {
  manager->setScale(object, x, y, z);
}

void Scene_V1::setVisibility(const Identifier& object, bool visible) {
  manager->setVisibility(object, visible);
}

void Scene_V1::setMeshType(const Identifier& object, MeshType type) {
  manager->setMeshType(object, type);
}

void Scene_V1::setRandomColors(const Identifier& object) { manager->setRandomColors(object); }

void Scene_V1::setCoordinates(const Identifier& mesh, const Identifier& array) {
  manager->setCoordinates(mesh, array);
}

template <class T>
void Scene_V1::setCoordinates(const Identifier& mesh, const Identifier& group, const T& value,
                              const Identifier& array) {
  manager->setCoordinates(mesh, group, SharedValue(value), array);
}

void Scene_V1::setConnectivity(const Identifier& mesh, const Identifier& array) {
  manager->setConnectivity(mesh, array);
}

void Scene_V1::setConnectivity(const Identifier& mesh, const Identifier& connectivity,
                               const Identifier& polylength) {
  manager->setConnectivity(mesh, connectivity, polylength);
}

template <class T>
void Scene_V1::setConnectivity(const Identifier& mesh, const Identifier& group, const T& value,
                               const Identifier& array) {
  manager->setConnectivity(mesh, group, SharedValue(value), array);
}

template <class T>
void Scene_V1::setConnectivity(const Identifier& mesh, const Identifier& group, const T& value,
                               const Identifier& connectivity, const Identifier& polylength) {
  manager->setConnectivity(mesh, group, SharedValue(value), connectivity, polylength);
}

void Scene_V1::setNodeIndices(const Identifier& mesh, const Identifier& array) {
  manager->setNodeIndices(mesh, array);
}

template <class T>
void Scene_V1::setNodeIndices(const Identifier& mesh, const Identifier& group, const T& value,
                              const Identifier& array) {
  manager->setNodeIndices(mesh, group, SharedValue(value), array);
}

void Scene_V1::setElementIndices(const Identifier& mesh, const Identifier& array) {
  manager->setElementIndices(mesh, array);
}

template <class T>
void Scene_V1::setElementIndices(const Identifier& mesh, const Identifier& group, const T& value,
                                 const Identifier& array) {
  manager->setElementIndices(mesh, group, SharedValue(value), array);
}

void Scene_V1::setResult(const Identifier& mesh, const char* name, const Identifier& array) {
  manager->setResult(mesh, name, array);
}

void Scene_V1::setResult(const Identifier& mesh, const char* name, VariableType type,
                         const Identifier& array) {
  manager->setResult(mesh, name, type, array);
}

template <class T>
void Scene_V1::setResult(const Identifier& mesh, const Identifier& group, const T& value,
                         const char* name, const Identifier& array) {
  manager->setResult(mesh, group, SharedValue(value), name, array);
}

template <class T>
void Scene_V1::setResult(const Identifier& mesh, const Identifier& group, const T& value,
                         const char* name, VariableType type, const Identifier& array) {
  manager->setResult(mesh, group, SharedValue(value), name, type, array);
}

void Scene_V1::addElementSet(const Identifier& mesh, const Identifier& set) {
  manager->addElementSet(mesh, set);
}

template <class T>
void Scene_V1::addElementSet(const Identifier& mesh, const Identifier& group, const T& value,
                             const Identifier& set) {
  manager->addElementSet(mesh, group, SharedValue(value), set);
}

template <class T>
void Scene_V1::addElementSet(const Identifier& mesh, const Identifier& group, const T& value,
                             const char* name, const Identifier& set) {
  manager->addElementSet(mesh, group, SharedValue(value), name, set);
}

std::uint64_t Scene_V1::addComponent(const Identifier& parent, const Identifier& child) {
  return manager->addComponent(parent, child);
}

std::uint64_t Scene_V1::addComponent(const Identifier& parent, const Identifier& child,
                                     const Identifier& transformation) {
  return manager->addComponent(parent, child, transformation);
}

void Scene_V1::removeComponent(const Identifier& parent, const std::uint64_t& component) {
  manager->removeComponent(parent, component);
}

void Scene_V1::setMaterial(const Identifier& object, const Identifier& material) {
  manager->setMaterial(object, material);
}

template <class T>
void Scene_V1::setApplicationInfo(const char* name, const T& value) {
  manager->setApplicationInfo(name, SharedValue(value));
}

#define DOVWRITER_EXPORT_SET_VALUES(T) \
  template void Scene_V1::setValues<T>(const Identifier&, T const*, std::uint64_t);
DOVWRITER_FOR_EACH_NUMBER_TYPE(DOVWRITER_EXPORT_SET_VALUES)

#define DOVWRITER_EXPORT_VALUE_TEMPLATES(T)                                                     \
  template void Scene_V1::setCoordinates<T>(const Identifier&, const Identifier&, T const&,    \
                                            const Identifier&);                                 \
  template void Scene_V1::setConnectivity<T>(const Identifier&, const Identifier&, T const&,   \
                                             const Identifier&);                                \
  template void Scene_V1::setConnectivity<T>(const Identifier&, const Identifier&, T const&,   \
                                             const Identifier&, const Identifier&);             \
  template void Scene_V1::setNodeIndices<T>(const Identifier&, const Identifier&, T const&,    \
                                            const Identifier&);                                 \
  template void Scene_V1::setElementIndices<T>(const Identifier&, const Identifier&, T const&, \
                                               const Identifier&);                              \
  template void Scene_V1::setResult<T>(const Identifier&, const Identifier&, T const&,         \
                                       const char*, const Identifier&);                         \
  template void Scene_V1::setResult<T>(const Identifier&, const Identifier&, T const&,         \
                                       const char*, VariableType, const Identifier&);           \
  template void Scene_V1::addElementSet<T>(const Identifier&, const Identifier&, T const&,     \
                                           const Identifier&);                                  \
  template void Scene_V1::addElementSet<T>(const Identifier&, const Identifier&, T const&,     \
                                           const char*, const Identifier&);                     \
  template void Scene_V1::setApplicationInfo<T>(const char*, T const&);
DOVWRITER_FOR_EACH_ELEMENT_TYPE(DOVWRITER_EXPORT_VALUE_TEMPLATES)

}  // namespace Dov
}  // namespace Kel
