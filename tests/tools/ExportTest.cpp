// Export of an in-memory model, for the cases that a file written by the
// library does not produce: per-value data without values, inconsistent
// meshes, results that fit nowhere.

#include <Kel/Util/Coding.h>
#include <gtest/gtest.h>

#include <map>

#include "Export.h"
#include "ToolTestSupport.h"

namespace DovInspect {
namespace {

const char RS = '\x1E';

// A model held in memory: variables with their words.
class FakeModel : public ValueSource {
 public:
  GeometryInfo& AddGeometry(const std::string& name) {
    geometries.push_back(
        {static_cast<std::uint32_t>(geometries.size() + 2), name, "Root/" + name, {}});
    return geometries.back();
  }
  void AddFloats(GeometryInfo& g, const std::string& name, std::uint32_t type, std::uint8_t width,
                 const std::vector<float>& values) {
    std::vector<std::uint32_t> words;
    for (float v : values) words.push_back(Kel::Util::FloatBits(v));
    Add(g, name, type, kFloatData, width, words);
  }
  void AddWords(GeometryInfo& g, const std::string& name, std::uint32_t type,
                const std::vector<std::uint32_t>& words) {
    Add(g, name, type, kUnsignedData, 1, words);
  }
  std::vector<std::uint32_t> Words(std::uint32_t entryId, std::size_t index) override {
    return data.at({entryId, index});
  }

  std::vector<GeometryInfo> geometries;

 private:
  void Add(GeometryInfo& g, const std::string& name, std::uint32_t type, std::uint8_t dataType,
           std::uint8_t width, const std::vector<std::uint32_t>& words) {
    VariableInfo v;
    v.index = g.variables.size();
    v.name = name;
    v.type = type;
    v.dataType = dataType;
    v.width = width;
    v.count = words.size();
    g.variables.push_back(v);
    data[{g.entryId, v.index}] = words;
  }
  std::map<std::pair<std::uint32_t, std::size_t>, std::vector<std::uint32_t>> data;
};

std::string At(const std::string& name, const std::string& value) {
  return name + RS + "T = " + value;
}

// A quad and a triangle on five nodes with a result per value, and per-value
// coordinates at the second value only (the first has no data), then a
// geometry that does not change.
FakeModel TwoGeometries() {
  FakeModel model;
  GeometryInfo& plate = model.AddGeometry("Plate");
  model.AddWords(plate, "Connectivity", 6, {0, 1, 2, 3, 1, 4, 2});
  model.AddWords(plate, "Polylength", 9, {4, 3});
  model.AddFloats(plate, "Coordinates", 1, 3, std::vector<float>(15, 0.0f));
  model.AddFloats(plate, std::string("Node Ids") + RS, 12, 1, {11, 12, 13, 14, 15});
  model.AddFloats(plate, At("Stress", "0.5"), 12, 1, {1, 2});
  model.AddFloats(plate, At("Stress", "1.5"), 12, 1, {3, 4});
  model.AddFloats(plate, At("Coordinates", "0.5"), 1, 3, {});
  model.AddFloats(plate, At("Coordinates", "1.5"), 1, 3, std::vector<float>(15, 1.0f));
  GeometryInfo& wire = model.AddGeometry("Wire");
  model.AddFloats(wire, "Coordinates", 1, 3, {0, 0, 0});
  return model;
}

TEST(ExportPlan, OnePiecePerGeometryAndValue) {
  FakeModel model = TwoGeometries();
  ExportPlan plan = PlanExport(model.geometries);
  EXPECT_TRUE(plan.axis.numeric);
  EXPECT_EQ(plan.axis.times, (std::vector<double>{0.5, 1.5}));
  ASSERT_EQ(plan.pieces.size(), 3u);
  EXPECT_EQ(plan.pieces[1].fileName, "000_Plate_t001.vtu");
  EXPECT_EQ(plan.pieces[2].fileName, "001_Wire.vtu");
  EXPECT_EQ(plan.pieces[2].timeIndex, kNone);
  // Per-value coordinates take the place of the shared ones, unless empty.
  EXPECT_EQ(plan.pieces[0].coordinates, 2);
  EXPECT_EQ(plan.pieces[1].coordinates, 7);
  EXPECT_EQ(plan.pieces[1].nodeIds, 3);
  EXPECT_EQ(plan.pieces[1].results, (std::vector<int>{5}));
}

TEST(ExportPlan, GeometryWithoutCoordinatesIsNoted) {
  FakeModel model;
  GeometryInfo& g = model.AddGeometry("Bare");
  model.AddWords(g, "Connectivity", 6, {0});
  ExportPlan plan = PlanExport(model.geometries);
  EXPECT_TRUE(plan.pieces.empty());
  ASSERT_EQ(plan.notes.size(), 1u);
  EXPECT_NE(plan.notes[0].find("Root/Bare"), std::string::npos);
}

TEST(Export, BadPieceIsReportedAndTheRestWritten) {
  FakeModel model;
  GeometryInfo& bad = model.AddGeometry("Bad");
  model.AddWords(bad, "Connectivity", 6, {0, 7});
  model.AddWords(bad, "Polylength", 9, {2});
  model.AddFloats(bad, "Coordinates", 1, 3, {0, 0, 0});
  GeometryInfo& cloud = model.AddGeometry("Cloud");
  model.AddFloats(cloud, "Coordinates", 1, 3, {0, 0, 0, 1, 1, 1});
  model.AddFloats(cloud, "Odd", 12, 1, {1, 2, 3});
  std::string dir = ToolTest::ScratchDir("export-bad");
  ExportReport report =
      RunExport(model.geometries, PlanExport(model.geometries), model, dir, "m.pvd", {}, {});
  ASSERT_EQ(report.failures.size(), 1u);
  EXPECT_NE(report.failures[0].find("node 7"), std::string::npos) << report.failures[0];
  EXPECT_EQ(report.written, (std::vector<std::string>{"001_Cloud.vtu", "m.pvd"}));
  ASSERT_EQ(report.warnings.size(), 1u);  // "Odd" fits neither points nor cells
  EXPECT_NE(report.warnings[0].find("Odd"), std::string::npos);
  std::string collection = ToolTest::ReadFile(dir + "/m.pvd");
  EXPECT_EQ(collection.find("000_Bad"), std::string::npos);
}

}  // namespace
}  // namespace DovInspect
