// Binding arrays to a mesh: once for all as a link on the mesh, or for one
// instance value through the recording step.

#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"
#include "ObjectManager/SetterSupport.h"

namespace Kel {
namespace Dov {

namespace {

// What an array is to the mesh: the key of the plain link (also the
// recording name and the array's new name), and the type and width that a
// per-value binding fixes on the array.
struct Binding {
  const char* key;
  KelDov::Geometry::VariableType type;
  unsigned char dimension;
};

const Binding kCoordinates{"Coordinates", KelDov::Geometry::Coordinates, 3};
// Per-value connectivity always carries the cell type; "Mesh Type" decides
// only for the plain link.
const Binding kConnectivity{"Connectivity", KelDov::Geometry::CellConnectivity, 1};
const Binding kPolylength{"Polylength", KelDov::Geometry::PolygonLengths, 1};
const Binding kNodeIds{"Node Ids", KelDov::Geometry::ScalarValues, 1};
const Binding kElementIds{"Element Ids", KelDov::Geometry::ElementIds, 1};

void BindPlain(ObjectManager& manager, std::uint64_t mesh, const Binding& binding,
               std::uint64_t array) {
  manager.storeProperty(mesh, binding.key, array);
  manager.record(array).name = binding.key;
}

void BindPerValue(ObjectManager& manager, std::uint64_t mesh, std::uint64_t group,
                  const std::string& valueText, const Binding& binding, std::uint64_t array) {
  manager.record(array).name = binding.key;
  manager.storeProperty(array, "Variable Type", binding.type);
  manager.storeProperty(array, "Dimension", binding.dimension);
  RecordInstance(manager, RecordingKind::Result, mesh, group, valueText, binding.key, array);
}

}  // namespace

void ObjectManager::setCoordinates(const Identifier& mesh, const Identifier& array) {
  ValidateAll(*this, mesh, array);
  BindPlain(*this, mesh.second, kCoordinates, array.second);
}

void ObjectManager::setConnectivity(const Identifier& mesh, const Identifier& array) {
  ValidateAll(*this, mesh, array);
  BindPlain(*this, mesh.second, kConnectivity, array.second);
}

void ObjectManager::setConnectivity(const Identifier& mesh, const Identifier& connectivity,
                                    const Identifier& polylength) {
  ValidateAll(*this, mesh, connectivity, polylength);
  BindPlain(*this, mesh.second, kConnectivity, connectivity.second);
  BindPlain(*this, mesh.second, kPolylength, polylength.second);
}

void ObjectManager::setNodeIndices(const Identifier& mesh, const Identifier& array) {
  ValidateAll(*this, mesh, array);
  BindPlain(*this, mesh.second, kNodeIds, array.second);
}

void ObjectManager::setElementIndices(const Identifier& mesh, const Identifier& array) {
  ValidateAll(*this, mesh, array);
  BindPlain(*this, mesh.second, kElementIds, array.second);
}

template <class T>
void ObjectManager::setCoordinates(const Identifier& mesh, const Identifier& group,
                                   const T& value, const Identifier& array) {
  ValidateAll(*this, mesh, group, array);
  const std::string text = RequireValueText(value, "Kel::Dov::ObjectManager::setCoordinates");
  BindPerValue(*this, mesh.second, group.second, text, kCoordinates, array.second);
}

template <class T>
void ObjectManager::setConnectivity(const Identifier& mesh, const Identifier& group,
                                    const T& value, const Identifier& array) {
  ValidateAll(*this, mesh, group, array);
  const std::string text = RequireValueText(value, "Kel::Dov::ObjectManager::setConnectivity");
  BindPerValue(*this, mesh.second, group.second, text, kConnectivity, array.second);
}

template <class T>
void ObjectManager::setConnectivity(const Identifier& mesh, const Identifier& group,
                                    const T& value, const Identifier& connectivity,
                                    const Identifier& polylength) {
  ValidateAll(*this, mesh, group, connectivity, polylength);
  const std::string text = RequireValueText(value, "Kel::Dov::ObjectManager::setConnectivity");
  BindPerValue(*this, mesh.second, group.second, text, kConnectivity, connectivity.second);
  BindPerValue(*this, mesh.second, group.second, text, kPolylength, polylength.second);
}

template <class T>
void ObjectManager::setNodeIndices(const Identifier& mesh, const Identifier& group,
                                   const T& value, const Identifier& array) {
  ValidateAll(*this, mesh, group, array);
  const std::string text = RequireValueText(value, "Kel::Dov::ObjectManager::setNodeIndices");
  BindPerValue(*this, mesh.second, group.second, text, kNodeIds, array.second);
}

template <class T>
void ObjectManager::setElementIndices(const Identifier& mesh, const Identifier& group,
                                      const T& value, const Identifier& array) {
  ValidateAll(*this, mesh, group, array);
  const std::string text = RequireValueText(value, "Kel::Dov::ObjectManager::setElementIndices");
  BindPerValue(*this, mesh.second, group.second, text, kElementIds, array.second);
}

#define DOVWRITER_INSTANTIATE_MESH_BINDING(T)                                                 \
  template void ObjectManager::setCoordinates<T>(const Identifier&, const Identifier&,       \
                                                 T const&, const Identifier&);                \
  template void ObjectManager::setConnectivity<T>(const Identifier&, const Identifier&,      \
                                                  T const&, const Identifier&);               \
  template void ObjectManager::setConnectivity<T>(const Identifier&, const Identifier&,      \
                                                  T const&, const Identifier&,                \
                                                  const Identifier&);                         \
  template void ObjectManager::setNodeIndices<T>(const Identifier&, const Identifier&,       \
                                                 T const&, const Identifier&);                \
  template void ObjectManager::setElementIndices<T>(const Identifier&, const Identifier&,    \
                                                    T const&, const Identifier&);
DOVWRITER_FOR_EACH_SHARED_VALUE_TYPE(DOVWRITER_INSTANTIATE_MESH_BINDING)

}  // namespace Dov
}  // namespace Kel
