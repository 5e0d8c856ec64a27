/* The plate model of examples/plate_model.cpp, written through the C
 * interface: a bracket plate meshed with 100,000 nodes in three coloured
 * element sets, one bolt placed twice by transformations, and displacement
 * and stress over ten load states. The file is the same as the C++ one.
 *
 *   plate_model_c [file]        (default: plate_model.dov) */

#include <DovWriter/dovwriter.h>

#include <stdio.h>
#include <stdlib.h>

enum { NodesAlong = 400, NodesAcross = 250, LoadStates = 10 };
static const float Spacing = 0.5f;

static dov_scene* scene;

/* Any failure ends the program with the library's report. */
static void check(int code) {
  if (code != 0) {
    fprintf(stderr, "%s", dov_last_error_message());
    dov_scene_free(scene);
    exit(1);
  }
}

static void* allocate(size_t count, size_t size) {
  void* memory = calloc(count, size);
  if (memory == NULL) {
    fprintf(stderr, "out of memory\n");
    exit(1);
  }
  return memory;
}

static dov_id make_object(int32_t type, const char* name) {
  dov_id object;
  check(dov_create_object(scene, type, &object));
  if (name != NULL) check(dov_set_name(scene, object, name));
  return object;
}

/* Array objects holding `count` values in tuples of `width`; the width goes
 * on first, since the count is one of tuples. */
static dov_id float_array(const float* values, size_t count, uint8_t width) {
  const dov_id array = make_object(DOV_ARRAY_OBJECT, NULL);
  check(dov_set_dimension(scene, array, width));
  check(dov_set_values_f32(scene, array, values, count / width));
  return array;
}

static dov_id index_array(const uint32_t* values, size_t count, uint8_t width) {
  const dov_id array = make_object(DOV_ARRAY_OBJECT, NULL);
  check(dov_set_dimension(scene, array, width));
  check(dov_set_values_u32(scene, array, values, count / width));
  return array;
}

static dov_id make_plate(float* nodes) {
  const size_t nodeCount = NodesAlong * NodesAcross, cellsAlong = NodesAlong - 1;
  const size_t cellCount = cellsAlong * (NodesAcross - 1);
  uint32_t* quads = allocate(4 * cellCount, sizeof *quads);
  uint32_t* nodeIds = allocate(nodeCount, sizeof *nodeIds);
  uint32_t* cells = allocate(cellCount, sizeof *cells);
  static const struct {
    const char* name;
    float red, green, blue;
  } parts[] = {
      {"Flange", 0.85f, 0.25f, 0.20f}, {"Web", 0.60f, 0.60f, 0.65f}, {"Boss", 0.20f, 0.40f, 0.85f}};
  unsigned i, j, p;
  size_t cell, q = 0;
  dov_id plate;

  for (j = 0; j < NodesAcross; ++j)
    for (i = 0; i < NodesAlong; ++i) {
      const size_t n = j * NodesAlong + i;
      nodes[3 * n] = i * Spacing;
      nodes[3 * n + 1] = j * Spacing;
      nodes[3 * n + 2] = 0.0f;
      nodeIds[n] = 1000000 + (uint32_t)n;
    }
  for (j = 0; j + 1 < NodesAcross; ++j)
    for (i = 0; i + 1 < NodesAlong; ++i) {
      const uint32_t n = j * NodesAlong + i;
      quads[q++] = n;
      quads[q++] = n + 1;
      quads[q++] = n + 1 + NodesAlong;
      quads[q++] = n + NodesAlong;
    }

  plate = make_object(DOV_MESH_OBJECT, "Plate");
  check(dov_set_coordinates(scene, plate, float_array(nodes, 3 * nodeCount, 3)));
  /* Four nodes per cell: the dimension tells it, no polylength needed. */
  check(dov_set_connectivity(scene, plate, index_array(quads, 4 * cellCount, 4)));
  check(dov_set_node_indices(scene, plate, index_array(nodeIds, nodeCount, 1)));

  /* Three element sets, cut across the length, each in its own colour. */
  for (p = 0; p < 3; ++p) {
    size_t count = 0;
    dov_id set;
    for (cell = 0; cell < cellCount; ++cell)
      if ((cell % cellsAlong) * 3 / cellsAlong == p) cells[count++] = (uint32_t)cell;
    set = index_array(cells, count, 1);
    check(dov_set_name(scene, set, parts[p].name));
    check(dov_set_color_rgba(scene, set, DOV_DIFFUSIVE_COLOR, parts[p].red, parts[p].green,
                             parts[p].blue, 1.0f));
    check(dov_set_ambient_intensity(scene, set, 0.3f));
    check(dov_add_element_set(scene, plate, set));
  }
  free(quads);
  free(nodeIds);
  free(cells);
  return plate;
}

/* Results per load state, under the load factor of the instance group
 * "Load". The plate is clamped at x = 0 and bends under its tip load. */
static void add_results(dov_id plate, const float* nodes) {
  const size_t nodeCount = NodesAlong * NodesAcross;
  const float length = (NodesAlong - 1) * Spacing, halfWidth = (NodesAcross - 1) * Spacing / 2;
  float* displacement = allocate(3 * nodeCount, sizeof *displacement);
  float* stress = allocate(nodeCount, sizeof *stress);
  const dov_id load = make_object(DOV_INSTANCE_GROUP_OBJECT, "Load");
  int state;
  size_t n;

  for (state = 1; state <= LoadStates; ++state) {
    const float factor = state / 10.0f;
    dov_id u, s;
    for (n = 0; n < nodeCount; ++n) {
      const float x = nodes[3 * n] / length, y = (nodes[3 * n + 1] - halfWidth) / halfWidth;
      displacement[3 * n] = 0.0f;
      displacement[3 * n + 1] = 0.0f;
      displacement[3 * n + 2] = -2.0f * factor * x * x;
      stress[n] = 250.0f * factor * (1.0f - x) * y;
    }
    u = float_array(displacement, 3 * nodeCount, 3);
    check(dov_set_property_text(scene, u, "Unit", "mm"));
    check(dov_set_result_typed_at_f32(scene, plate, load, factor, "Displacement",
                                      DOV_VECTOR_VARIABLE, u));
    s = float_array(stress, nodeCount, 1);
    check(dov_set_property_text(scene, s, "Unit", "MPa"));
    check(
        dov_set_result_typed_at_f32(scene, plate, load, factor, "Stress", DOV_SCALAR_VARIABLE, s));
  }
  free(displacement);
  free(stress);
}

/* One hexahedral bolt, built once and placed twice. */
static dov_id make_bolt(void) {
  static const float corners[] = {-4, -4, 0,  4, -4, 0,  4, 4, 0,  -4, 4, 0,
                                  -4, -4, 12, 4, -4, 12, 4, 4, 12, -4, 4, 12};
  static const uint32_t hexahedron[] = {0, 1, 2, 3, 4, 5, 6, 7};
  const dov_id geometry = make_object(DOV_GEOMETRY_OBJECT, NULL);
  dov_id steel, bolt;
  check(dov_set_coordinates(scene, geometry, float_array(corners, 24, 3)));
  check(dov_set_connectivity(scene, geometry, index_array(hexahedron, 8, 8)));

  steel = make_object(DOV_MATERIAL_OBJECT, NULL);
  check(dov_set_color_rgba(scene, steel, DOV_DIFFUSIVE_COLOR, 0.72f, 0.72f, 0.75f, 1.0f));
  check(dov_set_material(scene, geometry, steel));

  bolt = make_object(DOV_SHAPE_OBJECT, "Bolt");
  check(dov_add_component(scene, bolt, geometry, NULL));
  return bolt;
}

static dov_id place_at(const char* name, float x, float y) {
  const dov_id placement = make_object(DOV_TRANSFORMATION_OBJECT, name);
  check(dov_set_translation(scene, placement, x, y, 0.0f));
  return placement;
}

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : "plate_model.dov";
  float* nodes = allocate(3 * NodesAlong * NodesAcross, sizeof *nodes);
  dov_id plate, bolt, assembly;

  check(dov_scene_create("bracket", 1, &scene));
  check(dov_set_application_info_text(scene, "plate_model example", "1.0"));
  plate = make_plate(nodes);
  add_results(plate, nodes);
  bolt = make_bolt();

  assembly = make_object(DOV_GROUP_OBJECT, "Bracket assembly");
  check(dov_set_property_text(scene, assembly, "Units", "mm"));
  check(dov_add_component(scene, assembly, plate, NULL));
  check(dov_add_component_transformed(scene, assembly, bolt, place_at("Bolt 1", 10.0f, 62.25f),
                                      NULL));
  check(dov_add_component_transformed(scene, assembly, bolt, place_at("Bolt 2", 30.0f, 62.25f),
                                      NULL));

  check(dov_create_default_views(scene, assembly));
  check(dov_save_to(scene, path, NULL, 0, 1));
  check(dov_close_file(scene, path));
  check(dov_scene_free(scene));
  free(nodes);
  printf("wrote %s: %d nodes, %d cells in 3 element sets, %d load states, 2 bolts\n", path,
         NodesAlong * NodesAcross, (NodesAlong - 1) * (NodesAcross - 1), LoadStates);
  return 0;
}
