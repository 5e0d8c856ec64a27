/* The C interface beyond identifiers: scenes and their interface versions,
 * the failures that only C callers can make, results handed back, the
 * runtime's exceptions turned into codes, and a small file written. */

#include <DovWriter/dovwriter.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int condition, const char* what, int line) {
  if (!condition) {
    printf("line %d: %s (last error %d \"%s\")\n", line, what, dov_last_error_code(),
           dov_last_error_description());
    ++failures;
  }
}

#define EXPECT(condition) expect((condition) != 0, #condition, __LINE__)
#define EXPECT_CODE(code, call) \
  expect((call) == (code) && dov_last_error_code() == (code), #call, __LINE__)

static int file_holds(const char* path, const char* text) {
  char line[1024];
  int found = 0;
  FILE* file = fopen(path, "r");
  if (file == NULL) return 0;
  while (!found && fgets(line, sizeof line, file) != NULL) found = strstr(line, text) != NULL;
  fclose(file);
  return found;
}

static long file_size(const char* path) {
  long size = -1;
  FILE* file = fopen(path, "rb");
  if (file != NULL && fseek(file, 0, SEEK_END) == 0) size = ftell(file);
  if (file != NULL) fclose(file);
  return size;
}

static void versions_and_null_arguments(const char* trace) {
  dov_scene* scene = (dov_scene*)&failures;
  dov_id object;
  dov_write_options options;

  EXPECT(strcmp(dov_library_version(), DOVWRITER_EXPECTED_VERSION) == 0);
  EXPECT_CODE(DOV_ERROR_UNKNOWN_VERSION, dov_scene_create("v3", 3, &scene));
  EXPECT(scene == NULL);
  EXPECT_CODE(DOV_ERROR_MISCELLANEOUS, dov_scene_create("v0", 0, NULL));
  EXPECT_CODE(DOV_ERROR_MISCELLANEOUS, dov_create_object(NULL, DOV_ARRAY_OBJECT, &object));
  EXPECT(strcmp(dov_last_error_description(), "Null scene") == 0);
  EXPECT(strstr(dov_last_error_message(), "Exception \"Miscelleneous Error\" raised.") != NULL);

  EXPECT(dov_scene_create("v0", 0, &scene) == 0);
  EXPECT_CODE(DOV_ERROR_MISCELLANEOUS, dov_create_object(scene, DOV_ARRAY_OBJECT, NULL));
  EXPECT(dov_create_object(scene, DOV_ARRAY_OBJECT, &object) == 0);
  EXPECT(dov_set_property_f64(scene, object, "key", 1.5) == 0);
  EXPECT_CODE(DOV_ERROR_INVALID_METHOD, dov_set_dimension(scene, object, 3));
  EXPECT(strstr(dov_last_error_description(), "dov_set_dimension needs interface version 1") !=
         NULL);
  EXPECT(dov_scene_free(scene) == 0);

  EXPECT(dov_scene_create("v1", 1, &scene) == 0);
  EXPECT(dov_write_options_init(&options) == 0);
  EXPECT(options.threads == 1 && options.encoding == DOV_ENCODING_EXACT && options.level == 6);
  EXPECT_CODE(DOV_ERROR_INVALID_METHOD, dov_set_write_options(scene, &options));
  EXPECT(dov_scene_free(scene) == 0);

  /* Failures reach the trace log as they do from C++. */
  EXPECT(dov_log_trace_to_file(trace) == 0);
  EXPECT(dov_scene_create("v2", 2, &scene) == 0);
  EXPECT_CODE(DOV_ERROR_INVALID_OBJECT, dov_validate(scene, object));
  EXPECT(file_holds(trace, "Invalid Identifier"));
  EXPECT(dov_set_write_options(scene, &options) == 0);
  options.encoding = DOV_ENCODING_FAST;
  options.level = 13;
  EXPECT_CODE(DOV_ERROR_MISCELLANEOUS, dov_set_write_options(scene, &options));
  EXPECT_CODE(DOV_ERROR_MISCELLANEOUS, dov_set_write_options(scene, NULL));
  EXPECT(dov_scene_free(scene) == 0);
  EXPECT(dov_scene_free(NULL) == 0);
}

static void on_diagnostic(const dov_diagnostic_record* record, void* user) {
  (void)record;
  ++*(int*)user;
}

static void small_file(const char* path) {
  dov_scene* scene = NULL;
  dov_id root, shape, mesh, xyz, cells;
  const float nodes[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  const uint32_t triangle[] = {0, 1, 2};
  const char* name = NULL;
  int32_t type = -1;
  uint64_t count = 0;
  int diagnostics = 0;

  EXPECT(dov_scene_create("triangle", 2, &scene) == 0);
  EXPECT(dov_set_title(scene, "one triangle") == 0);
  EXPECT(dov_set_diagnostics(scene, on_diagnostic, &diagnostics) == 0);
  EXPECT(dov_create_object(scene, DOV_GROUP_OBJECT, &root) == 0);
  EXPECT(dov_create_object(scene, DOV_SHAPE_OBJECT, &shape) == 0);
  EXPECT(dov_create_object(scene, DOV_GEOMETRY_OBJECT, &mesh) == 0);
  EXPECT(dov_create_object(scene, DOV_ARRAY_OBJECT, &xyz) == 0);
  EXPECT(dov_create_object(scene, DOV_ARRAY_OBJECT, &cells) == 0);
  EXPECT(dov_set_name(scene, mesh, "Mesh") == 0);
  EXPECT(dov_get_name(scene, mesh, &name) == 0 && strcmp(name, "Mesh") == 0);
  EXPECT(dov_get_type(scene, mesh, &type) == 0 && type == DOV_GEOMETRY_OBJECT);

  EXPECT_CODE(DOV_ERROR_LENGTH, dov_set_values_f32(scene, xyz, nodes, UINT64_MAX / 2));
  EXPECT(dov_set_dimension(scene, xyz, 3) == 0);
  EXPECT(dov_set_values_f32(scene, xyz, nodes, 1) == 0);
  EXPECT(dov_lend_values_f32(scene, xyz, nodes, 3) == 0);
  EXPECT(dov_set_dimension(scene, cells, 3) == 0);
  EXPECT(dov_set_values_u32(scene, cells, triangle, 1) == 0);
  EXPECT(dov_set_coordinates(scene, mesh, xyz) == 0);
  EXPECT(dov_set_connectivity(scene, mesh, cells) == 0);
  EXPECT(dov_add_component(scene, shape, mesh, &count) == 0 && count == 1);
  EXPECT(dov_add_component(scene, root, shape, NULL) == 0);
  EXPECT(dov_add_component(scene, root, shape, &count) == 0 && count == 2);
  EXPECT(dov_remove_component(scene, root, 1) == 0);

#define SET_APPLICATION_INFO(suffix, T) \
  EXPECT(dov_set_application_info_##suffix(scene, "c test " #suffix, (T)1) == 0);
  DOV_NUMBER_TYPES(SET_APPLICATION_INFO)
  EXPECT(dov_set_application_info_text(scene, "c test", "1.0") == 0);

  EXPECT(dov_create_default_views(scene, root) == 0);
  EXPECT(dov_save_to(scene, path, NULL, 0, 1) == 0);
  EXPECT(dov_close_file(scene, "another path") == 0);
  EXPECT(dov_close_file(scene, path) == 0);
  EXPECT_CODE(DOV_ERROR_STATE, dov_close_file(scene, path));
  EXPECT(dov_set_diagnostics(scene, NULL, NULL) == 0);
  EXPECT(dov_scene_free(scene) == 0);
  EXPECT(file_size(path) > 2800);
}

int main(int argc, char** argv) {
  char trace[1024], model[1024];
  const char* directory = argc > 1 ? argv[1] : ".";
  snprintf(trace, sizeof trace, "%s/c_interface_trace.log", directory);
  snprintf(model, sizeof model, "%s/c_interface_triangle.dov", directory);
  remove(trace);
  versions_and_null_arguments(trace);
  small_file(model);
  if (failures != 0) printf("%d checks failed\n", failures);
  return failures == 0 ? 0 : 1;
}
