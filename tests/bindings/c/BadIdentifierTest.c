/* Every function of the C interface that takes an identifier, called with
 * one that names no object (after valid ones where there are several):
 * each must return code 8 with the description "Invalid Identifier", and
 * none may let an exception through. CheckCalls.cmake, run beside this
 * test, fails if a function declared in the header is not called here. */

#include <DovWriter/dovwriter.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect_invalid(int code, const char* call) {
  if (code != DOV_ERROR_INVALID_OBJECT || dov_last_error_code() != DOV_ERROR_INVALID_OBJECT ||
      strcmp(dov_last_error_description(), "Invalid Identifier") != 0) {
    printf("%s: code %d, last error %d \"%s\"\n", call, code, dov_last_error_code(),
           dov_last_error_description());
    ++failures;
  }
}

#define EXPECT_INVALID(call) expect_invalid(call, #call)

int main(void) {
  dov_scene* scene = NULL;
  dov_id g, b = {0, 0};
  const float rgba[4] = {1, 1, 1, 1};
  const char* name = NULL;
  int32_t type = 0;
  uint64_t count = 0;
  if (dov_scene_create("bad identifiers", 2, &scene) != 0 ||
      dov_create_object(scene, DOV_MESH_OBJECT, &g) != 0)
    return 1;

  EXPECT_INVALID(dov_get_type(scene, b, &type));
  EXPECT_INVALID(dov_get_name(scene, b, &name));
  EXPECT_INVALID(dov_set_name(scene, b, "name"));
  EXPECT_INVALID(dov_validate(scene, b));
  EXPECT_INVALID(dov_set_title_object(scene, b, "name"));
  EXPECT_INVALID(dov_create_default_views(scene, b));
  EXPECT_INVALID(dov_set_dimension(scene, b, 3));
  EXPECT_INVALID(dov_set_color_rgba(scene, b, DOV_DIFFUSIVE_COLOR, 1, 1, 1, 1));
  EXPECT_INVALID(dov_set_color(scene, b, DOV_DIFFUSIVE_COLOR, rgba, 1));
  EXPECT_INVALID(dov_set_ambient_intensity(scene, b, 0.5f));
  EXPECT_INVALID(dov_set_translation(scene, b, 1, 2, 3));
  EXPECT_INVALID(dov_set_rotation(scene, b, 1, 0, 0, 0));
  EXPECT_INVALID(dov_set_scale(scene, b, 1, 1, 1));
  EXPECT_INVALID(dov_set_visibility(scene, b, 0));
  EXPECT_INVALID(dov_set_mesh_type(scene, b, DOV_LINE_MESH));
  EXPECT_INVALID(dov_set_random_colors(scene, b));
  EXPECT_INVALID(dov_set_coordinates(scene, g, b));
  EXPECT_INVALID(dov_set_connectivity(scene, g, b));
  EXPECT_INVALID(dov_set_connectivity_polylength(scene, g, g, b));
  EXPECT_INVALID(dov_set_node_indices(scene, g, b));
  EXPECT_INVALID(dov_set_element_indices(scene, g, b));
  EXPECT_INVALID(dov_set_result(scene, g, "result", b));
  EXPECT_INVALID(dov_set_result_typed(scene, g, "result", DOV_VECTOR_VARIABLE, b));
  EXPECT_INVALID(dov_add_element_set(scene, g, b));
  EXPECT_INVALID(dov_add_component(scene, g, b, &count));
  EXPECT_INVALID(dov_add_component_transformed(scene, g, g, b, &count));
  EXPECT_INVALID(dov_remove_component(scene, b, 0));
  EXPECT_INVALID(dov_set_material(scene, g, b));

#define CALL_ARRAY_FUNCTIONS(suffix, T)                       \
  EXPECT_INVALID(dov_set_values_##suffix(scene, b, NULL, 0)); \
  EXPECT_INVALID(dov_lend_values_##suffix(scene, b, NULL, 0));
  DOV_NUMBER_TYPES(CALL_ARRAY_FUNCTIONS)

  /* For _text the value is a null pointer: the identifiers are checked
     before anything else. */
#define CALL_VALUE_FUNCTIONS(suffix, T)                                                 \
  EXPECT_INVALID(dov_set_property_##suffix(scene, b, "key", (T)0));                     \
  EXPECT_INVALID(dov_set_coordinates_at_##suffix(scene, g, g, (T)0, b));                \
  EXPECT_INVALID(dov_set_connectivity_at_##suffix(scene, g, g, (T)0, b));               \
  EXPECT_INVALID(dov_set_connectivity_polylength_at_##suffix(scene, g, g, (T)0, g, b)); \
  EXPECT_INVALID(dov_set_node_indices_at_##suffix(scene, g, g, (T)0, b));               \
  EXPECT_INVALID(dov_set_element_indices_at_##suffix(scene, g, g, (T)0, b));            \
  EXPECT_INVALID(dov_set_result_at_##suffix(scene, g, g, (T)0, "result", b));           \
  EXPECT_INVALID(dov_set_result_typed_at_##suffix(scene, g, g, (T)0, "result", 1, b));  \
  EXPECT_INVALID(dov_add_element_set_at_##suffix(scene, g, g, (T)0, b));                \
  EXPECT_INVALID(dov_add_element_set_named_at_##suffix(scene, g, g, (T)0, "set", b));
  DOV_ELEMENT_TYPES(CALL_VALUE_FUNCTIONS)

  dov_scene_free(scene);
  if (failures != 0) printf("%d calls did not report the bad identifier\n", failures);
  return failures == 0 ? 0 : 1;
}
