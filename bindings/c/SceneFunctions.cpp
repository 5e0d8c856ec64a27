// The C interface's functions for scenes and for the operations that are
// not templates. Each forwards to the handle through Call, which checks the
// scene and its interface version and turns failures into return codes.

#include "bindings/c/CallGuard.h"

#include "Kel/Util/Raise.h"

using namespace Kel::Dov;
using DovC::Call;
using DovC::Id;
using DovC::ResultPlace;

// The C names stand for the very values of the C++ enumerations.
constexpr bool Same(int c, int cxx) { return c == cxx; }
static_assert(Same(DOV_ARRAY_OBJECT, ArrayObject) && Same(DOV_MATERIAL_OBJECT, MaterialObject) &&
                  Same(DOV_TRANSFORMATION_OBJECT, TransformationObject) &&
                  Same(DOV_ELEMENT_SET_OBJECT, ElementSetObject) &&
                  Same(DOV_INSTANCE_GROUP_OBJECT, InstanceGroupObject) &&
                  Same(DOV_GEOMETRY_OBJECT, GeometryObject) &&
                  Same(DOV_SHAPE_OBJECT, ShapeObject) && Same(DOV_GROUP_OBJECT, GroupObject) &&
                  Same(DOV_MESH_OBJECT, MeshObject),
              "object types");
static_assert(Same(DOV_DIFFUSIVE_COLOR, DiffusiveColor) &&
                  Same(DOV_SPECULAR_COLOR, SpecularColor) &&
                  Same(DOV_EMISSIVE_COLOR, EmissiveColor) && Same(DOV_AMBIENT_COLOR, AmbientColor),
              "colour types");
static_assert(Same(DOV_CELL_MESH, CellMesh) && Same(DOV_LINE_MESH, LineMesh) &&
                  Same(DOV_POINT_MESH, PointMesh),
              "mesh types");
static_assert(Same(DOV_SCALAR_VARIABLE, ScalarVariable) &&
                  Same(DOV_VECTOR_VARIABLE, VectorVariable) &&
                  Same(DOV_SIX_COMPONENT_VARIABLE_A, SixComponentVariableA) &&
                  Same(DOV_SIX_COMPONENT_VARIABLE_B, SixComponentVariableB),
              "variable types");
static_assert(Same(DOV_ENCODING_EXACT, static_cast<int>(Encoding::Exact)) &&
                  Same(DOV_ENCODING_FAST, static_cast<int>(Encoding::Fast)) &&
                  Same(DOV_DIAGNOSTIC_PROGRESS, static_cast<int>(Diagnostic::Progress)) &&
                  Same(DOV_DIAGNOSTIC_WARNING, static_cast<int>(Diagnostic::Warning)),
              "options");

namespace {

dov_id ToC(const Identifier& id) { return dov_id{id.first, id.second}; }

// Hands a record of the library to the host's C handler.
void ForwardDiagnostic(const DiagnosticRecord& record, void* scene) {
  const dov_scene& owner = *static_cast<const dov_scene*>(scene);
  dov_diagnostic_record forwarded;
  forwarded.kind = static_cast<int32_t>(record.kind);
  forwarded.code = record.code;
  forwarded.object = record.object;
  forwarded.text = record.text;
  forwarded.done = record.done;
  forwarded.total = record.total;
  owner.handler(&forwarded, owner.user);
}

}  // namespace

int dov_scene_create(const char* title, int version, dov_scene** scene) {
  const char* const function = __func__;
  return DovC::Guard([&] {
    dov_scene*& result = ResultPlace(scene, function);
    result = nullptr;
    if (version < 0 || version > 2) KEL_RAISE(2, "Unknown interface version", function);
    result = new dov_scene(title, version);
  });
}

namespace Kel {
namespace Dov {

int makeCScene(const std::function<Scene_V2Part*()>& make, dov_scene** scene) {
  return DovC::Guard([&] {
    dov_scene*& result = ResultPlace(scene, "dov_scene_create");
    result = nullptr;
    std::unique_ptr<Scene_V2Part> part(make());
    result = new dov_scene(part.get());
    part.release();
  });
}

}  // namespace Dov
}  // namespace Kel

int dov_scene_free(dov_scene* scene) {
  return DovC::Guard([&] { delete scene; });
}

int dov_log_trace_to_file(const char* path) {
  return DovC::Guard([&] { logTraceToFile(path); });
}

int dov_create_object(dov_scene* scene, int32_t type, dov_id* object) {
  const char* const function = __func__;
  return Call<Scene_V0>(scene, function, [&](Scene_V0& s) {
    dov_id& result = ResultPlace(object, function);
    result = ToC(s.createObject(static_cast<ObjectType>(type)));
  });
}

int dov_get_type(dov_scene* scene, dov_id object, int32_t* type) {
  const char* const function = __func__;
  return Call<Scene_V0>(scene, function, [&](Scene_V0& s) {
    int32_t& result = ResultPlace(type, function);
    result = s.getType(Id(object));
  });
}

int dov_get_name(dov_scene* scene, dov_id object, const char** name) {
  const char* const function = __func__;
  return Call<Scene_V0>(scene, function, [&](Scene_V0& s) {
    const char*& result = ResultPlace(name, function);
    result = s.getName(Id(object));
  });
}

int dov_set_name(dov_scene* scene, dov_id object, const char* name) {
  return Call<Scene_V0>(scene, __func__, [&](Scene_V0& s) { s.setName(Id(object), name); });
}

int dov_set_title(dov_scene* scene, const char* title) {
  return Call<Scene_V0>(scene, __func__, [&](Scene_V0& s) { s.setTitle(title); });
}

int dov_validate(dov_scene* scene, dov_id object) {
  return Call<Scene_V0>(scene, __func__, [&](Scene_V0& s) { s.validate(Id(object)); });
}

int dov_save_to(dov_scene* scene, const char* path, const char* unused, int unused_flag,
                int overwrite) {
  return Call<Scene_V0>(scene, __func__, [&](Scene_V0& s) {
    if (scene->part != nullptr)
      scene->part->saveTo(path, unused, unused_flag != 0, overwrite != 0);
    else
      s.saveTo(path, unused, unused_flag != 0, overwrite != 0);
  });
}

int dov_close_file(dov_scene* scene, const char* path) {
  return Call<Scene_V0>(scene, __func__, [&](Scene_V0& s) {
    if (scene->part != nullptr)
      scene->part->closeFile(path);
    else
      s.closeFile(path);
  });
}

int dov_set_title_object(dov_scene* scene, dov_id object, const char* name) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) { s.setTitle(Id(object), name); });
}

int dov_create_default_views(dov_scene* scene, dov_id root) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) { s.createDefaultViews(Id(root)); });
}

int dov_set_dimension(dov_scene* scene, dov_id array, uint8_t dimension) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setDimension(Id(array), dimension); });
}

int dov_set_color_rgba(dov_scene* scene, dov_id object, int32_t type, float red, float green,
                       float blue, float alpha) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    s.setColor(Id(object), static_cast<ColorType>(type), red, green, blue, alpha);
  });
}

int dov_set_color(dov_scene* scene, dov_id object, int32_t type, const float* rgba, int has_alpha) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    s.setColor(Id(object), static_cast<ColorType>(type), rgba, has_alpha != 0);
  });
}

int dov_set_ambient_intensity(dov_scene* scene, dov_id object, float intensity) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setAmbientIntensity(Id(object), intensity); });
}

int dov_set_translation(dov_scene* scene, dov_id object, float x, float y, float z) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setTranslation(Id(object), x, y, z); });
}

int dov_set_rotation(dov_scene* scene, dov_id object, float a, float b, float c, float d) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setRotation(Id(object), a, b, c, d); });
}

int dov_set_scale(dov_scene* scene, dov_id object, float x, float y, float z) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) { s.setScale(Id(object), x, y, z); });
}

int dov_set_visibility(dov_scene* scene, dov_id object, int visible) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setVisibility(Id(object), visible != 0); });
}

int dov_set_mesh_type(dov_scene* scene, dov_id object, int32_t type) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    s.setMeshType(Id(object), static_cast<MeshType>(type));
  });
}

int dov_set_random_colors(dov_scene* scene, dov_id object) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) { s.setRandomColors(Id(object)); });
}

int dov_set_coordinates(dov_scene* scene, dov_id mesh, dov_id array) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setCoordinates(Id(mesh), Id(array)); });
}

int dov_set_connectivity(dov_scene* scene, dov_id mesh, dov_id array) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setConnectivity(Id(mesh), Id(array)); });
}

int dov_set_connectivity_polylength(dov_scene* scene, dov_id mesh, dov_id connectivity,
                                    dov_id polylength) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    s.setConnectivity(Id(mesh), Id(connectivity), Id(polylength));
  });
}

int dov_set_node_indices(dov_scene* scene, dov_id mesh, dov_id array) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setNodeIndices(Id(mesh), Id(array)); });
}

int dov_set_element_indices(dov_scene* scene, dov_id mesh, dov_id array) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setElementIndices(Id(mesh), Id(array)); });
}

int dov_set_result(dov_scene* scene, dov_id mesh, const char* name, dov_id array) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setResult(Id(mesh), name, Id(array)); });
}

int dov_set_result_typed(dov_scene* scene, dov_id mesh, const char* name, int32_t type,
                         dov_id array) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    s.setResult(Id(mesh), name, static_cast<VariableType>(type), Id(array));
  });
}

int dov_add_element_set(dov_scene* scene, dov_id mesh, dov_id set) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) { s.addElementSet(Id(mesh), Id(set)); });
}

int dov_add_component(dov_scene* scene, dov_id parent, dov_id child, uint64_t* count) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    const std::uint64_t components = s.addComponent(Id(parent), Id(child));
    if (count != nullptr) *count = components;
  });
}

int dov_add_component_transformed(dov_scene* scene, dov_id parent, dov_id child,
                                  dov_id transformation, uint64_t* count) {
  return Call<Scene_V1>(scene, __func__, [&](Scene_V1& s) {
    const std::uint64_t components = s.addComponent(Id(parent), Id(child), Id(transformation));
    if (count != nullptr) *count = components;
  });
}

int dov_remove_component(dov_scene* scene, dov_id parent, uint64_t component) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.removeComponent(Id(parent), component); });
}

int dov_set_material(dov_scene* scene, dov_id object, dov_id material) {
  return Call<Scene_V1>(scene, __func__,
                        [&](Scene_V1& s) { s.setMaterial(Id(object), Id(material)); });
}

int dov_write_options_init(dov_write_options* options) {
  const char* const function = __func__;
  return DovC::Guard([&] {
    const WriteOptions defaults;
    ResultPlace(options, function) =
        dov_write_options{defaults.threads, static_cast<int32_t>(defaults.encoding), defaults.level,
                          defaults.blockBytes};
  });
}

int dov_set_write_options(dov_scene* scene, const dov_write_options* options) {
  const char* const function = __func__;
  return Call<Scene_V2>(scene, function, [&](Scene_V2& s) {
    if (options == nullptr) KEL_RAISE(16, "Null write options", function);
    WriteOptions requested;
    requested.threads = options->threads;
    requested.encoding = static_cast<Encoding>(options->encoding);
    requested.level = options->level;
    requested.blockBytes = options->block_bytes;
    s.setWriteOptions(requested);
  });
}

int dov_set_diagnostics(dov_scene* scene, dov_diagnostic_handler handler, void* user) {
  return Call<Scene_V2>(scene, __func__, [&](Scene_V2& s) {
    scene->handler = handler;
    scene->user = user;
    s.setDiagnostics(handler != nullptr ? ForwardDiagnostic : nullptr, scene);
  });
}
