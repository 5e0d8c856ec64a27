// Parts of the export that a file written by the library does not reach:
// cell types beyond the test model's, inconsistent meshes, per-value data
// without values, results that fit nowhere.

#include <gtest/gtest.h>

#include <map>

#include "CellTypes.h"
#include "Cli.h"
#include "Export.h"
#include "ToolTestSupport.h"

namespace DovInspect {
namespace {

TEST(CellTypes, CellsFollowNodeCountTypeAndPolylength) {
  // Only solid cells tell 4, 5 and 6 nodes apart; the model has none of these.
  EXPECT_EQ(VtkCellTypeFor(4, kCellConnectivity, CellStyle::Solid), kVtkTetra);
  EXPECT_EQ(VtkCellTypeFor(5, kCellConnectivity, CellStyle::Solid), kVtkPyramid);
  EXPECT_EQ(VtkCellTypeFor(6, kCellConnectivity, CellStyle::Solid), kVtkWedge);
  EXPECT_EQ(VtkCellTypeFor(7, kCellConnectivity, CellStyle::Solid), kVtkPolygon);
  EXPECT_EQ(VtkCellTypeFor(5, kPointConnectivity, CellStyle::Solid), kVtkPolyVertex);
  EXPECT_EQ(VtkCellTypeFor(4, kLineConnectivity, CellStyle::Solid), kVtkPolyLine);
  EXPECT_EQ(VtkCellTypeFor(4, 77, CellStyle::Surface), kVtkQuad);  // unknown types are cells
  EXPECT_EQ(VtkCellTypeFor(0, kCellConnectivity, CellStyle::Surface), kVtkEmptyCell);

  // Without polylength or connectivity; with connectivity that does not fit.
  CellLayout cloud = BuildCells({}, {}, kPointConnectivity, 3, CellStyle::Surface);
  EXPECT_EQ(cloud.offsets, (std::vector<std::int64_t>{1, 2, 3}));
  EXPECT_EQ(cloud.types, (std::vector<std::uint8_t>(3, kVtkVertex)));
  CellLayout single = BuildCells({2, 0}, {}, kLineConnectivity, 3, CellStyle::Surface);
  EXPECT_EQ(single.offsets, (std::vector<std::int64_t>{1, 2}));

  EXPECT_THROW(BuildCells({0, 1}, {3}, kCellConnectivity, 5, CellStyle::Surface), ToolError);
  EXPECT_THROW(BuildCells({0, 1, 5}, {3}, kCellConnectivity, 5, CellStyle::Surface), ToolError);
  CellLayout extra = BuildCells({0, 1, 2, 4}, {3}, kCellConnectivity, 5, CellStyle::Surface);
  EXPECT_EQ(extra.usedNodes, 3u);
  EXPECT_EQ(extra.warnings.size(), 1u);
}

using FakeModel = ToolTest::FakeModel;

std::string At(const std::string& name, const std::string& value) {
  return name + "\x1ET = " + value;
}

TEST(ExportPlan, PerValueCoordinatesReplaceSharedOnesUnlessEmpty) {
  FakeModel model;
  GeometryInfo& plate = model.Geometry("Plate");
  model.Add(plate, "Connectivity", 6, std::vector<std::uint32_t>{0, 1, 2, 3, 1, 4, 2});
  model.Add(plate, "Polylength", 9, std::vector<std::uint32_t>{4, 3});
  model.Add(plate, "Coordinates", 1, std::vector<float>(15, 0.0f), 3);
  model.Add(plate, "Node Ids\x1E", 12, std::vector<float>{11, 12, 13, 14, 15});
  model.Add(plate, At("Stress", "0.5"), 12, std::vector<float>{1, 2});
  model.Add(plate, At("Stress", "1.5"), 12, std::vector<float>{3, 4});
  model.Add(plate, At("Coordinates", "0.5"), 1, std::vector<float>{}, 3);
  model.Add(plate, At("Coordinates", "1.5"), 1, std::vector<float>(15, 1.0f), 3);
  ExportPlan plan = PlanExport(model.geometries);
  EXPECT_EQ(plan.axis.times, (std::vector<double>{0.5, 1.5}));
  ASSERT_EQ(plan.pieces.size(), 2u);
  EXPECT_EQ(plan.pieces[1].fileName, "000_Plate_t001.vtu");
  EXPECT_EQ(plan.pieces[0].coordinates, 2);
  EXPECT_EQ(plan.pieces[1].coordinates, 7);
  EXPECT_EQ(plan.pieces[1].nodeIds, 3);
  EXPECT_EQ(plan.pieces[1].results, (std::vector<int>{5}));
}

TEST(Export, BadPiecesAreReportedAndTheRestWritten) {
  FakeModel model;
  GeometryInfo& bad = model.Geometry("Bad");
  model.Add(bad, "Connectivity", 6, std::vector<std::uint32_t>{0, 7});
  model.Add(bad, "Polylength", 9, std::vector<std::uint32_t>{2});
  model.Add(bad, "Coordinates", 1, std::vector<float>{0, 0, 0}, 3);
  GeometryInfo& cloud = model.Geometry("Cloud");
  model.Add(cloud, "Coordinates", 1, std::vector<float>{0, 0, 0, 1, 1, 1}, 3);
  model.Add(cloud, "Odd", 12, std::vector<float>{1, 2, 3});
  model.Add(model.Geometry("Bare"), "Connectivity", 6, std::vector<std::uint32_t>{0});
  ExportPlan plan = PlanExport(model.geometries);
  ASSERT_EQ(plan.notes.size(), 1u);  // no coordinates, no piece
  EXPECT_NE(plan.notes[0].find("Root/Bare"), std::string::npos);

  std::string dir = ToolTest::ScratchDir("export-bad");
  ExportReport report = RunExport(model.geometries, plan, model, dir, "m.pvd", {}, {});
  ASSERT_EQ(report.failures.size(), 1u);
  EXPECT_NE(report.failures[0].find("node 7"), std::string::npos) << report.failures[0];
  EXPECT_EQ(report.written, (std::vector<std::string>{"001_Cloud.vtu", "m.pvd"}));
  // The plan's note, then "Odd", which fits neither points nor cells.
  ASSERT_EQ(report.warnings.size(), 2u);
  EXPECT_EQ(report.warnings[0], plan.notes[0]);
  EXPECT_NE(report.warnings[1].find("Odd"), std::string::npos);
  EXPECT_EQ(ToolTest::ReadFile(dir + "/m.pvd").find("000_Bad"), std::string::npos);
}

}  // namespace
}  // namespace DovInspect
