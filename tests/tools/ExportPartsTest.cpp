// Parts of the export that the test model does not reach: a mesh whose
// points move from value to value, a piece whose connectivity points past
// its nodes, and a mesh without coordinates.

#include <DovWriter/DovWriter.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Export.h"
#include "ToolTestSupport.h"

namespace DovInspect {
namespace {

using namespace Kel::Dov;
using ToolTest::makeArray;

// A triangle mesh "Moving" whose coordinates are given per value, 1 and 2.
Identifier MovingMesh(Scene_V1& scene) {
  Identifier mesh = scene.createObject(MeshObject);
  scene.setName(mesh, "Moving");
  scene.setConnectivity(mesh, makeArray(scene, std::vector<unsigned>{0, 1, 2}, 3));
  Identifier time = scene.createObject(InstanceGroupObject);
  scene.setName(time, "Time");
  for (float t : {1.0f, 2.0f})
    scene.setCoordinates(mesh, time, t,
                         makeArray(scene, std::vector<float>{0, 0, t, 1, 0, t, 0, 1, t}, 3));
  Identifier set = makeArray(scene, std::vector<unsigned>{0});
  scene.setName(set, "Skin");
  scene.addElementSet(mesh, set);
  return mesh;
}

// "Bad": one point, and a line to node 7. "Bare": a mesh without points.
void AddBrokenParts(Scene_V1& scene, const Identifier& root) {
  Identifier bad = scene.createObject(GeometryObject);
  scene.setCoordinates(bad, makeArray(scene, std::vector<float>{0, 0, 0}, 3));
  scene.setConnectivity(bad, makeArray(scene, std::vector<unsigned>{0, 7}, 2));
  Identifier shape = scene.createObject(ShapeObject);
  scene.setName(shape, "Bad");
  scene.addComponent(shape, bad);
  scene.addComponent(root, shape);
  Identifier bare = scene.createObject(MeshObject);
  scene.setName(bare, "Bare");
  Identifier set = makeArray(scene, std::vector<unsigned>{0});
  scene.setName(set, "Nothing");
  scene.addElementSet(bare, set);
  scene.addComponent(root, bare);
}

std::string WriteOddModel() {
  const std::string path = ToolTest::ScratchDir("odd") + "/odd.dov";
  Scene_V1 scene;
  Identifier root = scene.createObject(GroupObject);
  scene.setName(root, "Odd");
  scene.addComponent(root, MovingMesh(scene));
  AddBrokenParts(scene, root);
  scene.createDefaultViews(root);
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
  return path;
}

TEST(Export, MovingPointsGetAFilePerStepAndBadPiecesAreReported) {
  DovReader::Model model(WriteOddModel());
  ExportPlan plan = PlanExport(model, false);
  ASSERT_EQ(plan.notes.size(), 1u);  // no coordinates, no piece
  EXPECT_NE(plan.notes[0].find("Odd/Bare"), std::string::npos) << plan.notes[0];

  const std::string dir = ToolTest::ScratchDir("export-odd");
  ExportReport report = RunExport(model, plan, dir, "odd.pvd", {}, {});
  ASSERT_EQ(report.failures.size(), 1u);
  EXPECT_NE(report.failures[0].find("node 7"), std::string::npos) << report.failures[0];
  EXPECT_EQ(report.written, (std::vector<std::string>{"000_Moving_t000.vtu", "000_Moving_t001.vtu"}));
  // Each file of one step tells its time the way VTK reads it.
  const std::string second = ToolTest::ReadFile(dir + "/000_Moving_t001.vtu");
  EXPECT_NE(second.find("Name=\"TimeValue\" NumberOfComponents=\"1\" NumberOfTuples=\"1\" "
                        "format=\"ascii\">\n        2 "),
            std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir + "/001_Bad.vtu"));
}

}  // namespace
}  // namespace DovInspect
