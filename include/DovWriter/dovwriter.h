#ifndef DOVWRITER_C_INTERFACE_H
#define DOVWRITER_C_INTERFACE_H

/* The C interface of the library (C99; usable from C++ as well).
 *
 * Every operation of Kel::Dov::Scene_V0, Scene_V1 and Scene_V2 has one
 * function here, named dov_ and the operation in snake case. The arguments
 * follow from the C++ operation: the scene first, then the operation's
 * arguments in their order, identifiers by value as dov_id, bool as int,
 * enumerations as int32_t, and a returned value through a last pointer.
 * An overload is named after what it adds (dov_set_color_rgba,
 * dov_add_component_transformed, dov_set_result_typed, ...), and a form per
 * instance value after the plain one with _at and the value's type.
 *
 * Template operations exist once per element type, with a suffix:
 *   _i8 _u8 _i16 _u16 _i32 _u32 _i64 _u64 _f32 _f64, and _text (const char*)
 * (dov_set_values and dov_lend_values have no _text form). The families are
 * declared at the end of this header, each with its signature.
 *
 * Every function but the dov_last_error_ ones returns 0 on success, else an
 * error code: the library's code (the DOV_ERROR_ names below, the
 * descriptions in the README), or one of the negative codes for failures of
 * the C++ runtime. No exception ever leaves a function. The last failure of
 * the calling thread stays readable through dov_last_error_code(),
 * dov_last_error_description() and dov_last_error_message() (the whole
 * multi-line report) until the thread's next failure. */

#include <stdint.h>

#include "Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A scene, made by dov_scene_create and freed by dov_scene_free. */
typedef struct dov_scene dov_scene;

/* Names one object of one scene; copy it and hand it back, nothing more. */
typedef struct dov_id {
  uint64_t first;
  uint64_t second;
} dov_id;

/* Error codes: the library's codes, and three for failures of the C++
 * runtime. The library's code 0 (memory) is reported as
 * DOV_ERROR_OUT_OF_MEMORY, since 0 means success here. */
enum {
  DOV_ERROR_OUT_OF_MEMORY = -1, /* std::bad_alloc, or the library's code 0 */
  DOV_ERROR_LENGTH = -2,        /* std::length_error: a size no vector can hold */
  DOV_ERROR_UNEXPECTED = -3,    /* any other exception of the C++ runtime */
  DOV_ERROR_OUT_OF_BOUNDS = 1,
  DOV_ERROR_UNKNOWN_VERSION = 2,
  DOV_ERROR_NOT_INITIALIZED = 3,
  DOV_ERROR_ELEMENT_EXISTS = 4,
  DOV_ERROR_ELEMENT_NOT_FOUND = 5,
  DOV_ERROR_INVALID_METHOD = 6,
  DOV_ERROR_INVALID_ENUMERATION = 7,
  DOV_ERROR_INVALID_OBJECT = 8,
  DOV_ERROR_READ = 9,
  DOV_ERROR_WRITE = 10,
  DOV_ERROR_FORMAT_NOT_SUPPORTED = 11,
  DOV_ERROR_BAD_CASTING = 12,
  DOV_ERROR_NOT_IMPLEMENTED = 13,
  DOV_ERROR_MISMATCH = 14,
  DOV_ERROR_SYSTEM = 15,
  DOV_ERROR_MISCELLANEOUS = 16,
  DOV_ERROR_ZERO_LENGTH = 17,
  DOV_ERROR_MODEL = 18,
  DOV_ERROR_STATE = 19,
  DOV_ERROR_INVALID_EXCEPTION = 21
};

/* The values of the C++ enumerations ObjectType, ColorType, MeshType,
 * VariableType, Encoding and Diagnostic. */
enum {
  DOV_ARRAY_OBJECT = 0,
  DOV_MATERIAL_OBJECT = 1,
  DOV_TRANSFORMATION_OBJECT = 2,
  DOV_ELEMENT_SET_OBJECT = 3,
  DOV_INSTANCE_GROUP_OBJECT = 4,
  DOV_GEOMETRY_OBJECT = 16,
  DOV_SHAPE_OBJECT = 18,
  DOV_GROUP_OBJECT = 19,
  DOV_MESH_OBJECT = 21
};
enum {
  DOV_DIFFUSIVE_COLOR = 0,
  DOV_SPECULAR_COLOR = 1,
  DOV_EMISSIVE_COLOR = 2,
  DOV_AMBIENT_COLOR = 3
};
enum { DOV_CELL_MESH = 0, DOV_LINE_MESH = 1, DOV_POINT_MESH = 2 };
enum {
  DOV_SCALAR_VARIABLE = 0,
  DOV_VECTOR_VARIABLE = 1,
  DOV_SIX_COMPONENT_VARIABLE_A = 2,
  DOV_SIX_COMPONENT_VARIABLE_B = 3
};
enum { DOV_ENCODING_EXACT = 0, DOV_ENCODING_FAST = 1 };
enum { DOV_DIAGNOSTIC_PROGRESS = 0, DOV_DIAGNOSTIC_WARNING = 1 };

/* Kel::Dov::WriteOptions; dov_write_options_init fills in the defaults. */
typedef struct dov_write_options {
  uint32_t threads;
  int32_t encoding;
  int32_t level;
  uint32_t block_bytes;
} dov_write_options;

/* Kel::Dov::DiagnosticRecord; `text` is valid during the call only. */
typedef struct dov_diagnostic_record {
  int32_t kind;
  int32_t code;
  uint64_t object;
  const char* text;
  uint64_t done;
  uint64_t total;
} dov_diagnostic_record;

typedef void (*dov_diagnostic_handler)(const dov_diagnostic_record* record, void* user);

/* The last failure of the calling thread: 0 and empty texts before any. */
DOVWRITER_API int dov_last_error_code(void);
DOVWRITER_API const char* dov_last_error_description(void);
DOVWRITER_API const char* dov_last_error_message(void);

/* "MAJOR.MINOR.PATCH" of the loaded library, whatever version the host was
 * compiled against. */
DOVWRITER_API const char* dov_library_version(void);

/* `version` 0, 1 or 2 chooses the interface: a function of a later version
 * than the scene's fails with DOV_ERROR_INVALID_METHOD. *scene is NULL
 * after a failure. dov_scene_free(NULL) does nothing. */
DOVWRITER_API int dov_scene_create(const char* title, int version, dov_scene** scene);
DOVWRITER_API int dov_scene_free(dov_scene* scene);
DOVWRITER_API int dov_log_trace_to_file(const char* path);

/* Interface version 0. */
DOVWRITER_API int dov_create_object(dov_scene* scene, int32_t type, dov_id* object);
DOVWRITER_API int dov_get_type(dov_scene* scene, dov_id object, int32_t* type);
/* The text belongs to the scene, valid until the name is set again or the
 * next dov_create_object. */
DOVWRITER_API int dov_get_name(dov_scene* scene, dov_id object, const char** name);
DOVWRITER_API int dov_set_name(dov_scene* scene, dov_id object, const char* name);
DOVWRITER_API int dov_set_title(dov_scene* scene, const char* title);
DOVWRITER_API int dov_validate(dov_scene* scene, dov_id object);
DOVWRITER_API int dov_save_to(dov_scene* scene, const char* path, const char* unused,
                              int unused_flag, int overwrite);
DOVWRITER_API int dov_close_file(dov_scene* scene, const char* path);

/* Interface version 1. */
DOVWRITER_API int dov_set_title_object(dov_scene* scene, dov_id object, const char* name);
DOVWRITER_API int dov_create_default_views(dov_scene* scene, dov_id root);
DOVWRITER_API int dov_set_dimension(dov_scene* scene, dov_id array, uint8_t dimension);
DOVWRITER_API int dov_set_color_rgba(dov_scene* scene, dov_id object, int32_t type, float red,
                                     float green, float blue, float alpha);
DOVWRITER_API int dov_set_color(dov_scene* scene, dov_id object, int32_t type, const float* rgba,
                                int has_alpha);
DOVWRITER_API int dov_set_ambient_intensity(dov_scene* scene, dov_id object, float intensity);
DOVWRITER_API int dov_set_translation(dov_scene* scene, dov_id object, float x, float y, float z);
DOVWRITER_API int dov_set_rotation(dov_scene* scene, dov_id object, float a, float b, float c,
                                   float d);
DOVWRITER_API int dov_set_scale(dov_scene* scene, dov_id object, float x, float y, float z);
DOVWRITER_API int dov_set_visibility(dov_scene* scene, dov_id object, int visible);
DOVWRITER_API int dov_set_mesh_type(dov_scene* scene, dov_id object, int32_t type);
DOVWRITER_API int dov_set_random_colors(dov_scene* scene, dov_id object);
DOVWRITER_API int dov_set_coordinates(dov_scene* scene, dov_id mesh, dov_id array);
DOVWRITER_API int dov_set_connectivity(dov_scene* scene, dov_id mesh, dov_id array);
DOVWRITER_API int dov_set_connectivity_polylength(dov_scene* scene, dov_id mesh,
                                                  dov_id connectivity, dov_id polylength);
DOVWRITER_API int dov_set_node_indices(dov_scene* scene, dov_id mesh, dov_id array);
DOVWRITER_API int dov_set_element_indices(dov_scene* scene, dov_id mesh, dov_id array);
DOVWRITER_API int dov_set_result(dov_scene* scene, dov_id mesh, const char* name, dov_id array);
DOVWRITER_API int dov_set_result_typed(dov_scene* scene, dov_id mesh, const char* name,
                                       int32_t type, dov_id array);
DOVWRITER_API int dov_add_element_set(dov_scene* scene, dov_id mesh, dov_id set);
/* `count` (the parent's number of components afterwards) may be NULL. */
DOVWRITER_API int dov_add_component(dov_scene* scene, dov_id parent, dov_id child, uint64_t* count);
DOVWRITER_API int dov_add_component_transformed(dov_scene* scene, dov_id parent, dov_id child,
                                                dov_id transformation, uint64_t* count);
DOVWRITER_API int dov_remove_component(dov_scene* scene, dov_id parent, uint64_t component);
DOVWRITER_API int dov_set_material(dov_scene* scene, dov_id object, dov_id material);

/* Interface version 2. */
DOVWRITER_API int dov_write_options_init(dov_write_options* options);
DOVWRITER_API int dov_set_write_options(dov_scene* scene, const dov_write_options* options);
/* A NULL handler turns the channel off. */
DOVWRITER_API int dov_set_diagnostics(dov_scene* scene, dov_diagnostic_handler handler, void* user);

/* The element types: X(suffix, C type). */
#define DOV_NUMBER_TYPES(X) \
  X(i8, int8_t)             \
  X(u8, uint8_t)            \
  X(i16, int16_t)           \
  X(u16, uint16_t)          \
  X(i32, int32_t)           \
  X(u32, uint32_t)          \
  X(i64, int64_t)           \
  X(u64, uint64_t)          \
  X(f32, float)             \
  X(f64, double)
#define DOV_ELEMENT_TYPES(X) \
  DOV_NUMBER_TYPES(X)        \
  X(text, const char*)

/* dov_set_values_<suffix> (version 1) and dov_lend_values_<suffix>
 * (version 2): `count` tuples of the array's dimension. A lent array must
 * stay valid and unchanged until dov_close_file returns or the scene is
 * freed. */
#define DOV_DECLARE_ARRAY_FUNCTIONS(suffix, T)                                                \
  DOVWRITER_API int dov_set_values_##suffix(dov_scene* scene, dov_id array, const T* values,  \
                                            uint64_t count);                                  \
  DOVWRITER_API int dov_lend_values_##suffix(dov_scene* scene, dov_id array, const T* values, \
                                             uint64_t count);
DOV_NUMBER_TYPES(DOV_DECLARE_ARRAY_FUNCTIONS)

/* dov_set_property_<suffix> is of version 0, the others of version 1. */
#define DOV_DECLARE_VALUE_FUNCTIONS(suffix, T)                                                    \
  DOVWRITER_API int dov_set_property_##suffix(dov_scene* scene, dov_id object, const char* key,   \
                                              T value);                                           \
  DOVWRITER_API int dov_set_coordinates_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group,  \
                                                    T value, dov_id array);                       \
  DOVWRITER_API int dov_set_connectivity_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, \
                                                     T value, dov_id array);                      \
  DOVWRITER_API int dov_set_connectivity_polylength_at_##suffix(                                  \
      dov_scene* scene, dov_id mesh, dov_id group, T value, dov_id connectivity,                  \
      dov_id polylength);                                                                         \
  DOVWRITER_API int dov_set_node_indices_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, \
                                                     T value, dov_id array);                      \
  DOVWRITER_API int dov_set_element_indices_at_##suffix(dov_scene* scene, dov_id mesh,            \
                                                        dov_id group, T value, dov_id array);     \
  DOVWRITER_API int dov_set_result_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group,       \
                                               T value, const char* name, dov_id array);          \
  DOVWRITER_API int dov_set_result_typed_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group, \
                                                     T value, const char* name, int32_t type,     \
                                                     dov_id array);                               \
  DOVWRITER_API int dov_add_element_set_at_##suffix(dov_scene* scene, dov_id mesh, dov_id group,  \
                                                    T value, dov_id set);                         \
  DOVWRITER_API int dov_add_element_set_named_at_##suffix(                                        \
      dov_scene* scene, dov_id mesh, dov_id group, T value, const char* name, dov_id set);        \
  DOVWRITER_API int dov_set_application_info_##suffix(dov_scene* scene, const char* name, T value);
DOV_ELEMENT_TYPES(DOV_DECLARE_VALUE_FUNCTIONS)

#ifdef __cplusplus
}
#endif

#endif
