// check: every kind of finding on a model held in memory, and the command
// on files written through the public API.

#include <DovWriter/DovWriter.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "Check.h"
#include "Commands.h"
#include "ToolTestSupport.h"

namespace DovInspect {
namespace {

using Words = std::vector<std::uint32_t>;
using Floats = std::vector<float>;

std::string At(const std::string& name, const std::string& value) {
  return name + "\x1ET = " + value;
}

// "severity #entry variable[index] xcount" per finding, in their order.
std::vector<std::string> Summaries(const std::vector<Finding>& findings) {
  std::vector<std::string> lines;
  for (const Finding& f : findings) {
    std::ostringstream line;
    line << (f.severity == Severity::Error ? "error" : "warning") << " #" << f.entry << " "
         << f.variable << "[" << f.index << "] x" << f.count;
    lines.push_back(line.str());
  }
  return lines;
}

TEST(Check, EachKindOfFindingWithItsPlace) {
  ToolTest::FakeModel model;
  model.geometries.reserve(4);
  const float nan = std::nanf(""), inf = INFINITY;
  ToolTest::FakeModel::GeometryInfo& mesh = model.Geometry("Mesh");  // #2
  model.Add(mesh, "Connectivity", 6, Words{0, 1, 2, 2, 3, 9});       // 3 and 9 beyond 3 points
  model.Add(mesh, "Polylength", 9, Words{3, 4});                     // needs 7 of 6 indices
  model.Add(mesh, "Coordinates", 1, Floats{0, 0, 0, 1, nan, 0, 0, 1, 0}, 3);
  model.Add(mesh, "Node Ids\x1E", 12, Floats{1, 2.5f, 2e7f});        // not whole; above 2^24
  model.Add(mesh, At("S", "1"), 12, Floats{1, 2, 3, 4, 5});          // 5 fits neither 3 nor 2
  model.Add(mesh, At("V", "1"), 13, Floats{0, 0, 0, 1, inf, 1}, 3);  // 2 cells, one infinite
  model.Geometry("Bare");                                            // #3
  ToolTest::FakeModel::GeometryInfo& part = model.Geometry("Part");  // #4
  model.Link(part, "Coordinates", model.geometries[0], 2);           // its NaN told once, above
  model.Add(part, "Connectivity", 6, Words{0, 1, 2});
  model.Add(part, "Polylength", 9, Words{2});  // leaves an index unused
  model.Link(part, "Node Ids\x1E", model.geometries[0], 3);
  // Data per value is checked against the mesh at that value.
  ToolTest::FakeModel::GeometryInfo& moving = model.Geometry("Moving");  // #5
  model.Add(moving, "Coordinates", 1, Floats(6, 0.0f), 3);
  model.Add(moving, "Node Ids\x1E", 12, Floats{1, 2, 3});  // 3 ids for 2 points
  model.Add(moving, At("Coordinates", "2"), 1, Floats(9, 0.0f), 3);
  model.Add(moving, At("R", "2"), 12, Floats{1, 2, 3});
  model.Add(moving, At("R", "1"), 12, Floats{1, 2, 3});

  EXPECT_EQ(Summaries(CheckModel(model.geometries, model)), (std::vector<std::string>{
                                                                "error #2 Connectivity[4] x2",
                                                                "error #2 Polylength[1] x1",
                                                                "error #2 Coordinates[4] x1",
                                                                "error #2 Node Ids\x1E[1] x1",
                                                                "warning #2 Node Ids\x1E[2] x1",
                                                                "warning #2 S\x1ET = 1[-1] x0",
                                                                "warning #2 V\x1ET = 1[4] x1",
                                                                "warning #3 [-1] x0",
                                                                "warning #4 Polylength[-1] x0",
                                                                "warning #5 Node Ids\x1E[-1] x0",
                                                                "warning #5 R\x1ET = 1[-1] x0",
                                                            }));
}

// A triangle through the public API; `beyond` puts a node index outside the
// three points, `nan` a coordinate that is not a number.
void WriteTriangle(const std::string& path, unsigned beyond, float nan) {
  using namespace Kel::Dov;
  Scene_V1 scene;
  Identifier root = scene.createObject(GroupObject);
  scene.setName(root, "Model");
  Identifier shape = scene.createObject(ShapeObject);
  scene.setName(shape, "Triangle");
  Identifier mesh = scene.createObject(GeometryObject);
  Identifier coordinates = scene.createObject(ArrayObject);
  Identifier cells = scene.createObject(ArrayObject);
  const float xyz[] = {0, 0, 0, 1, 0, 0, 0, 1, nan};
  scene.setValues(coordinates, xyz, 9);
  const unsigned nodes[] = {0, 1, beyond};
  scene.setDimension(cells, 3);
  scene.setValues(cells, nodes, 1);
  scene.setCoordinates(mesh, coordinates);
  scene.setConnectivity(mesh, cells);
  scene.addComponent(shape, mesh);
  scene.addComponent(root, shape);
  scene.createDefaultViews(root);
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
}

// Exit 0 without findings, 3 with warnings only, 1 with errors; one line
// per finding that names file, geometry, entry, variable and index.
TEST(Check, CommandReportsFindingsAndExitsBySeverity) {
  const std::string dir = ToolTest::ScratchDir("check");
  const std::string clean = dir + "/clean.dov", broken = dir + "/broken.dov";
  const std::string warned = dir + "/warned.dov";
  WriteTriangle(clean, 2, 1.0f);
  WriteTriangle(broken, 7, std::nanf(""));
  ToolTest::WriteTestModel(warned);  // "Damage" per cell of the whole mesh on each set

  std::ostringstream out, err;
  EXPECT_EQ(RunTool({"check", clean}, out, err), kExitOk) << err.str();
  EXPECT_EQ(out.str(), clean + ": no findings\n");

  out.str("");
  EXPECT_EQ(RunTool({"check", broken}, out, err), kExitFailure);
  EXPECT_NE(out.str().find(broken + ": error: Model/Triangle/Triangle (#3) Connectivity[2]: node "
                                    "indices beyond the 3 points: 1 (first: 7)\n"),
            std::string::npos)
      << out.str();
  EXPECT_NE(
      out.str().find("Coordinates[8]: coordinates that are not finite: 1 (first: node 2, nan)"),
      std::string::npos);
  EXPECT_NE(out.str().find(broken + ": 2 errors, 0 warnings\n"), std::string::npos);

  out.str("");
  EXPECT_EQ(RunTool({"check", warned}, out, err), kExitWarnings);
  EXPECT_NE(out.str().find(": warning: Model/Plate/Right/Right (#"), std::string::npos);
  EXPECT_NE(out.str().find("Damage\\x1ETime = 2: tuple count 3 matches neither the point count 6 "
                           "nor the cell count 2"),
            std::string::npos)
      << out.str();
  EXPECT_EQ(out.str().find("All/All"), std::string::npos);  // 3 cells: fits
}

}  // namespace
}  // namespace DovInspect
