// The C interface's functions for the template operations, one per element
// type, made from the element-type table of the public header.

#include "bindings/c/CallGuard.h"

using namespace Kel::Dov;
using DovC::Call;
using DovC::Id;

#define DOV_DEFINE_ARRAY_FUNCTIONS(suffix, T)                                                     \
  int dov_set_values_##suffix(dov_scene* scene, dov_id array, const T* values, uint64_t count) {  \
    return Call<Scene_V1>(scene, __func__,                                                        \
                          [&](Scene_V1& s) { s.setValues(Id(array), values, count); });           \
  }                                                                                               \
  int dov_lend_values_##suffix(dov_scene* scene, dov_id array, const T* values, uint64_t count) { \
    return Call<Scene_V2>(scene, __func__,                                                        \
                          [&](Scene_V2& s) { s.lendValues(Id(array), values, count); });          \
  }
DOV_NUMBER_TYPES(DOV_DEFINE_ARRAY_FUNCTIONS)

#define DOV_DEFINE_VALUE_FUNCTIONS(suffix, T)                                                     \
  int dov_set_property_##suffix(dov_scene* scene, dov_id object, const char* key, T value) {      \
    return Call<Scene_V0>(scene, __func__,                                                        \
                          [&](Scene_V0& s) { s.setProperty<T>(Id(object), key, value); });        \
  }                                                                                               \
  int dov_set_coordinates_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,       \
                                      dov_id array) {                                             \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setCoordinates<T>(Id(mesh), Id(group), value, Id(array));                                 \
    });                                                                                           \
  }                                                                                               \
  int dov_set_connectivity_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,      \
                                       dov_id array) {                                            \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setConnectivity<T>(Id(mesh), Id(group), value, Id(array));                                \
    });                                                                                           \
  }                                                                                               \
  int dov_set_connectivity_polylength_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group,    \
                                                  T value, dov_id connectivity,                   \
                                                  dov_id polylength) {                            \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setConnectivity<T>(Id(mesh), Id(group), value, Id(connectivity), Id(polylength));         \
    });                                                                                           \
  }                                                                                               \
  int dov_set_node_indices_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,      \
                                       dov_id array) {                                            \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setNodeIndices<T>(Id(mesh), Id(group), value, Id(array));                                 \
    });                                                                                           \
  }                                                                                               \
  int dov_set_element_indices_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,   \
                                          dov_id array) {                                         \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setElementIndices<T>(Id(mesh), Id(group), value, Id(array));                              \
    });                                                                                           \
  }                                                                                               \
  int dov_set_result_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,            \
                                 const char* name, dov_id array) {                                \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setResult<T>(Id(mesh), Id(group), value, name, Id(array));                                \
    });                                                                                           \
  }                                                                                               \
  int dov_set_result_typed_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,      \
                                       const char* name, int32_t type, dov_id array) {            \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.setResult<T>(Id(mesh), Id(group), value, name, static_cast<VariableType>(type),           \
                     Id(array));                                                                  \
    });                                                                                           \
  }                                                                                               \
  int dov_add_element_set_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value,       \
                                      dov_id set) {                                               \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.addElementSet<T>(Id(mesh), Id(group), value, Id(set));                                    \
    });                                                                                           \
  }                                                                                               \
  int dov_add_element_set_named_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, T value, \
                                            const char* name, dov_id set) {                       \
    return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {                                     \
      s.addElementSet<T>(Id(mesh), Id(group), value, name, Id(set));                              \
    });                                                                                           \
  }                                                                                               \
  int dov_set_application_info_##suffix(dov_scene* scene, const char* name, T value) {            \
    return Call<Scene_V1>(scene, __func__,                                                        \
                          [&](Scene_V1& s) { s.setApplicationInfo<T>(name, value); });            \
  }
DOV_ELEMENT_TYPES(DOV_DEFINE_VALUE_FUNCTIONS)
