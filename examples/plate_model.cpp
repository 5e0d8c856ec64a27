// A host program that writes a realistic model: a bracket plate meshed with
// 100,000 nodes, divided into three coloured element sets, two bolts placed
// by transformations, and displacement and stress over ten load states.
// It listens to the scene's diagnostics: warnings go to stderr, and on a
// terminal a bar shows how far the write has come.
//
//   plate_model [file]        (default: plate_model.dov)

#include <DovWriter/DovWriter.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <vector>

using namespace Kel::Dov;

namespace {

const unsigned NodesAlong = 400;   // x, 0.5 mm apart: 199.5 mm
const unsigned NodesAcross = 250;  // y, 0.5 mm apart: 124.5 mm
const float Spacing = 0.5f;
const int LoadStates = 10;

// An array object holding `values` in tuples of `width`. The width goes on
// first: setValues counts tuples of the width in force.
template <class T>
Identifier makeArray(Scene_V1& scene, const std::vector<T>& values, unsigned char width) {
  const Identifier array = scene.createObject(ArrayObject);
  scene.setDimension(array, width);
  scene.setValues(array, values.data(), values.size() / width);
  return array;
}

Identifier makePlate(Scene_V1& scene, std::vector<float>& nodes) {
  std::vector<unsigned int> quads, nodeIds;
  for (unsigned j = 0; j < NodesAcross; ++j)
    for (unsigned i = 0; i < NodesAlong; ++i) {
      nodes.insert(nodes.end(), {i * Spacing, j * Spacing, 0.0f});
      nodeIds.push_back(1000000 + j * NodesAlong + i);
    }
  for (unsigned j = 0; j + 1 < NodesAcross; ++j)
    for (unsigned i = 0; i + 1 < NodesAlong; ++i) {
      const unsigned n = j * NodesAlong + i;
      quads.insert(quads.end(), {n, n + 1, n + 1 + NodesAlong, n + NodesAlong});
    }

  const Identifier plate = scene.createObject(MeshObject);
  scene.setName(plate, "Plate");
  scene.setCoordinates(plate, makeArray(scene, nodes, 3));
  // Four nodes per cell: the dimension tells it, no polylength needed.
  scene.setConnectivity(plate, makeArray(scene, quads, 4));
  scene.setNodeIndices(plate, makeArray(scene, nodeIds, 1));

  // Three element sets, cut across the length, each in its own colour.
  const struct {
    const char* name;
    float red, green, blue;
  } parts[] = {{"Flange", 0.85f, 0.25f, 0.20f}, {"Web", 0.60f, 0.60f, 0.65f}, {"Boss", 0.20f, 0.40f, 0.85f}};
  std::vector<unsigned int> cells[3];
  const unsigned cellsAlong = NodesAlong - 1;
  for (unsigned cell = 0; cell < quads.size() / 4; ++cell)
    cells[(cell % cellsAlong) * 3 / cellsAlong].push_back(cell);
  for (int p = 0; p < 3; ++p) {
    const Identifier set = makeArray(scene, cells[p], 1);
    scene.setName(set, parts[p].name);
    scene.setColor(set, DiffusiveColor, parts[p].red, parts[p].green, parts[p].blue, 1.0f);
    scene.setAmbientIntensity(set, 0.3f);
    scene.addElementSet(plate, set);
  }
  return plate;
}

// Results per load state, recorded on the instance group "Load" under the
// load factor. The plate is clamped at x = 0 and bends under its tip load.
void addResults(Scene_V1& scene, const Identifier& plate, const std::vector<float>& nodes) {
  const Identifier load = scene.createObject(InstanceGroupObject);
  scene.setName(load, "Load");
  const float length = (NodesAlong - 1) * Spacing, halfWidth = (NodesAcross - 1) * Spacing / 2;
  for (int state = 1; state <= LoadStates; ++state) {
    const float factor = state / 10.0f;
    std::vector<float> displacement, stress;
    for (std::size_t n = 0; n < nodes.size(); n += 3) {
      const float x = nodes[n] / length, y = (nodes[n + 1] - halfWidth) / halfWidth;
      displacement.insert(displacement.end(), {0.0f, 0.0f, -2.0f * factor * x * x});
      stress.push_back(250.0f * factor * (1.0f - x) * y);
    }
    const Identifier u = makeArray(scene, displacement, 3);
    scene.setProperty(u, "Unit", "mm");
    scene.setResult(plate, load, factor, "Displacement", VectorVariable, u);
    const Identifier s = makeArray(scene, stress, 1);
    scene.setProperty(s, "Unit", "MPa");
    scene.setResult(plate, load, factor, "Stress", ScalarVariable, s);
  }
}

// One hexahedral bolt, built once and placed twice.
Identifier makeBolt(Scene_V1& scene) {
  const std::vector<float> corners = {-4, -4, 0, 4, -4, 0, 4, 4, 0, -4, 4, 0,
                                      -4, -4, 12, 4, -4, 12, 4, 4, 12, -4, 4, 12};
  const std::vector<unsigned int> hexahedron = {0, 1, 2, 3, 4, 5, 6, 7};
  const Identifier geometry = scene.createObject(GeometryObject);
  scene.setCoordinates(geometry, makeArray(scene, corners, 3));
  scene.setConnectivity(geometry, makeArray(scene, hexahedron, 8));

  const Identifier steel = scene.createObject(MaterialObject);
  scene.setColor(steel, DiffusiveColor, 0.72f, 0.72f, 0.75f, 1.0f);
  scene.setMaterial(geometry, steel);

  const Identifier bolt = scene.createObject(ShapeObject);
  scene.setName(bolt, "Bolt");
  scene.addComponent(bolt, geometry);
  return bolt;
}

Identifier placeAt(Scene_V1& scene, const char* name, float x, float y) {
  const Identifier placement = scene.createObject(TransformationObject);
  scene.setName(placement, name);
  scene.setTranslation(placement, x, y, 0.0f);
  return placement;
}

// Warnings always; the bar only where stderr is a terminal, so that logs
// stay clean. It is redrawn when it grows by a step, not at every record.
void onDiagnostic(const DiagnosticRecord& record, void* user) {
  if (record.kind == Diagnostic::Warning) {
    std::fprintf(stderr, "warning %d: %s\n", record.code, record.text);
    return;
  }
  int& drawn = *static_cast<int*>(user);
  const int width = 40;
  const int filled =
      record.total != 0 ? static_cast<int>(width * record.done / record.total) : width;
  if (filled == drawn || !isatty(STDERR_FILENO)) return;
  drawn = filled;
  std::fprintf(stderr, "\rwriting [%.*s%*s] %3d%%", filled,
               "########################################", width - filled, "",
               100 * filled / width);
  if (filled == width) std::fputc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : "plate_model.dov";
  try {
    Scene_V2 scene("bracket");
    int barDrawn = -1;
    scene.setDiagnostics(&onDiagnostic, &barDrawn);
    scene.setApplicationInfo("plate_model example", "1.0");

    std::vector<float> nodes;
    const Identifier plate = makePlate(scene, nodes);
    addResults(scene, plate, nodes);
    const Identifier bolt = makeBolt(scene);

    const Identifier assembly = scene.createObject(GroupObject);
    scene.setName(assembly, "Bracket assembly");
    scene.setProperty(assembly, "Units", "mm");
    scene.addComponent(assembly, plate);
    scene.addComponent(assembly, bolt, placeAt(scene, "Bolt 1", 10.0f, 62.25f));
    scene.addComponent(assembly, bolt, placeAt(scene, "Bolt 2", 30.0f, 62.25f));

    scene.createDefaultViews(assembly);
    scene.saveTo(path, nullptr, false, true);
    scene.closeFile(path);
    std::printf("wrote %s: %u nodes, %u cells in 3 element sets, %d load states, 2 bolts\n", path,
                NodesAlong * NodesAcross, (NodesAlong - 1) * (NodesAcross - 1), LoadStates);
  } catch (const Kel::Util::Exception& error) {
    std::fprintf(stderr, "%s", error.what());
    return 1;
  }
  return 0;
}
