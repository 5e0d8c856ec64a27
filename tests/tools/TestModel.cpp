#include "ToolTestSupport.h"

#include <DovWriter/DovWriter.h>

#include "ObjectManager/ObjectManager.h"

namespace ToolTest {

using namespace Kel::Dov;

const std::vector<float> kPlateCoordinates = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0};
const std::vector<float> kBoltCoordinates = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0,
                                             0, 0, 3, 1, 0, 3, 1, 1, 3, 0, 1, 3};

const float kTimes[3] = {0.5f, 1.0f, 2.0f};

float Temperature(int time, int node) { return kTimes[time] * 100 + float(node); }
float Damage(int time, int cell) { return kTimes[time] + float(cell) / 8; }

namespace {

// Reaches the scene's file to shrink the block limit of "Heavy Data".
class SmallBlockScene : public Scene_V1 {
 public:
  void LimitHeavyBlocks(std::uint32_t limit) {
    manager->GetFile().index.SetBlockLimit("Heavy Data", limit);
  }
};

Identifier ElementSet(Scene_V1& scene, const char* name, const std::vector<unsigned>& cells) {
  Identifier set = makeArray(scene, cells);
  scene.setName(set, name);
  return set;
}

void AddResults(Scene_V1& scene, const Identifier& plate, float temperatureChange) {
  Identifier time = scene.createObject(InstanceGroupObject);
  scene.setName(time, "Time");
  for (int t = 0; t < 3; ++t) {
    std::vector<float> temperature, damage, displacement;
    for (int node = 0; node < 6; ++node) {
      temperature.push_back(Temperature(t, node) + (t == 1 && node == 4 ? temperatureChange : 0));
      displacement.insert(displacement.end(), {0, 0, kTimes[t] * float(node)});
    }
    for (int cell = 0; cell < 3; ++cell) damage.push_back(Damage(t, cell));
    scene.setResult(plate, time, kTimes[t], "Temperature", ScalarVariable,
                    makeArray(scene, temperature));
    scene.setResult(plate, time, kTimes[t], "Damage", ScalarVariable, makeArray(scene, damage));
    scene.setResult(plate, time, kTimes[t], "Displacement", VectorVariable,
                    makeArray(scene, displacement, 3));
  }
}

Identifier Plate(Scene_V1& scene, float temperatureChange) {
  Identifier plate = scene.createObject(MeshObject);
  scene.setName(plate, "Plate");
  scene.setCoordinates(plate, makeArray(scene, kPlateCoordinates, 3));
  scene.setConnectivity(plate,
                        makeArray(scene, std::vector<unsigned>{0, 1, 4, 3, 1, 2, 5, 1, 5, 4}),
                        makeArray(scene, std::vector<unsigned>{4, 3, 3}));
  scene.setNodeIndices(plate,
                       makeArray(scene, std::vector<unsigned>{101, 102, 103, 104, 105, 106}));
  scene.addElementSet(plate, ElementSet(scene, "Left", {0}));
  Identifier right = ElementSet(scene, "Right", {1, 2});
  scene.setVisibility(right, false);
  scene.addElementSet(plate, right);
  scene.addElementSet(plate, ElementSet(scene, "All", {0, 1, 2}));
  AddResults(scene, plate, temperatureChange);
  return plate;
}

Identifier Bolt(Scene_V1& scene) {
  Identifier geometry = scene.createObject(GeometryObject);
  scene.setName(geometry, "Bolt body");
  scene.setCoordinates(geometry, makeArray(scene, kBoltCoordinates, 3));
  scene.setConnectivity(geometry,
                        makeArray(scene, std::vector<unsigned>{0, 1, 2, 3, 4, 5, 6, 7}, 8));
  Identifier bolt = scene.createObject(ShapeObject);
  scene.setName(bolt, "Bolt");
  scene.addComponent(bolt, geometry);
  return bolt;
}

}  // namespace

void WriteTestModel(const std::string& path, std::uint32_t heavyBlockLimit,
                    float temperatureChange) {
  SmallBlockScene scene;
  scene.setApplicationInfo("inspect test", 7);
  Identifier root = scene.createObject(GroupObject);
  scene.setName(root, "Model");
  scene.addComponent(root, Plate(scene, temperatureChange));
  Identifier place = scene.createObject(TransformationObject);
  scene.setTranslation(place, 10, 0, 0);
  scene.addComponent(root, Bolt(scene), place);
  scene.createDefaultViews(root);
  scene.saveTo(path.c_str(), nullptr, false, true);
  if (heavyBlockLimit != 0) scene.LimitHeavyBlocks(heavyBlockLimit);
  scene.closeFile(path.c_str());
}

}  // namespace ToolTest
