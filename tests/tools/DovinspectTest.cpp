// The dovinspect program as a user runs it, on a model written through the
// public API; exported files are read back by VTK's own reader.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "Commands.h"
#include "Kel/Dov/Tree.h"
#include "ToolTestSupport.h"

namespace {

using ToolTest::ProcessResult;

const std::string& ModelPath() {
  static const std::string path = [] {
    std::string p = ToolTest::ScratchDir("model") + "/model.dov";
    ToolTest::WriteTestModel(p);
    return p;
  }();
  return path;
}

ProcessResult Tool(std::vector<std::string> args) {
  args.insert(args.begin(), DOVINSPECT_EXECUTABLE);
  return ToolTest::RunProcess(args);
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Dovinspect, HelpAndUsageErrors) {
  EXPECT_EQ(Tool({"--help"}).status, 0);
  for (const char* command : {"info", "tree", "vars", "dump", "verify", "export"}) {
    ProcessResult help = Tool({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_TRUE(Contains(help.out, std::string("Usage: dovinspect ") + command)) << help.out;
  }
  EXPECT_TRUE(Contains(Tool({"export", "--help"}).out, "pyramid, wedge, hexahedron"));

  struct Case {
    std::vector<std::string> args;
    int status;
    const char* message;
  };
  const Case cases[] = {
      {{}, 2, "Usage: dovinspect COMMAND"},
      {{"frobnicate"}, 2, "unknown command 'frobnicate'"},
      {{"info"}, 2, "dovinspect info: missing arguments"},
      {{"info", "a", "b"}, 2, "unexpected argument 'b'"},
      {{"dump", "f", "g", "v", "--limit", "many"}, 2, "--limit expects a non-negative number"},
      {{"dump", "f", "g", "v", "--limit=-1"}, 2, "--limit expects a non-negative number"},
      {{"dump", "f", "g", "v", "--limit"}, 2, "--limit needs a value"},
      {{"dump", "f", "g", "v", "--bogus"}, 2, "unknown option '--bogus'"},
      {{"export", "f", "out", "--series=1"}, 2, "--series takes no value"},
      {{"export", ModelPath(), "out", "--cells=round"}, 2, "--cells expects"},
      {{"info", "/nonexistent/model.dov"}, 1, "dovinspect info: "},
      {{"tree", DOVWRITER_SOURCE_DIR "/CMakeLists.txt"}, 1, "dovinspect tree: "},
      {{"vars", ModelPath(), "Model/Nothing"}, 1, "dovinspect vars: "},
      {{"dump", ModelPath(), "Model/Plate/Left/Left", "Pressure"}, 1, "no variable 'Pressure'"},
  };
  for (const Case& c : cases) {
    ProcessResult run = Tool(c.args);
    EXPECT_EQ(run.status, c.status) << c.message;
    EXPECT_TRUE(Contains(run.err, c.message)) << run.err;
    EXPECT_TRUE(run.out.empty()) << run.out;
    if (c.status == 1) {
      EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
  }
}

TEST(Dovinspect, InfoTreeVarsAndDumpDescribeTheModel) {
  const std::vector<std::pair<std::vector<std::string>, std::vector<const char*>>> cases = {
      {{"info", ModelPath()},
       {"format version 1.1", "inspect test 7", "Heavy Data", "Dov Tree", "Global Information",
        "4 shapes, 4 geometries"}},
      {{"tree", ModelPath()},
       {"Group \"Model\" visible root", "Shape \"Right\" hidden", "translation (10, 0, 0)",
        "      [", "Geometry \"Left\""}},
      {{"vars", ModelPath(), "Model/Plate/All"}, {"Temperature\\x1ETime = 0.5", "link to ["}},
  };
  for (const auto& c : cases) {
    ProcessResult run = Tool(c.first);
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char* part : c.second) EXPECT_TRUE(Contains(run.out, part)) << part << run.out;
  }
  EXPECT_FALSE(Contains(Tool(cases[2].first).out, "Left"));

  // "All" stores Temperature as a link to the dataset of "Left".
  for (const char* geometry : {"Model/Plate/Left/Left", "Model/Plate/All/All"}) {
    ProcessResult dump = Tool({"dump", ModelPath(), geometry, "Temperature\\x1ETime = 1"});
    ASSERT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(dump.out, "0: 100\n1: 101\n2: 102\n3: 103\n4: 104\n5: 105\n") << geometry;
  }
  ProcessResult limited =
      Tool({"dump", "--limit=2", ModelPath(), "Model/Plate/Left/Left", "--", "Coordinates"});
  ASSERT_EQ(limited.status, 0) << limited.err;
  EXPECT_EQ(limited.out, "0: 0 0 0\n1: 1 0 0\n");
  EXPECT_TRUE(Contains(limited.err, "4 more tuples"));
}

// A tree 3,000 groups deep: its lines stop growing at a depth of 32, where
// the depth shows as a number, and the path of its deepest geometry keeps
// only its end; so the output grows with the entries, not with their square.
TEST(Dovinspect, DeepTreesPrintInSpaceLinearInTheirEntries) {
  const std::string path = ToolTest::ScratchDir("deep") + "/deep.dov";
  const int levels = 3000;
  {
    KelDov::Tree tree;
    tree.SetStreamFile(path, true);
    for (int level = 0; level < levels; ++level) tree.AddGroup("g", true);
    tree.AddGeometry("m");
    KelDov::NumericArray array;
    array.byteSize = 4;
    array.width = 1;
    const std::uint64_t offset = tree.WriteStreamDataset(std::vector<std::uint32_t>{7}, 1);
    tree.AddVariable("v", KelDov::Geometry::ScalarValues, offset, array, {});
    tree.Save(tree.GetFile(), "");
  }
  auto run = [](const std::vector<std::string>& args) {
    std::ostringstream out, err;
    EXPECT_EQ(DovInspect::RunTool(args, out, err), 0) << err.str();
    return out.str();
  };
  const std::string tree = run({"tree", path});
  EXPECT_LT(tree.size(), 300u * (levels + 2));
  EXPECT_TRUE(Contains(tree, "(depth 3001) [3002] Geometry \"m\""));
  const std::string vars = run({"vars", path});
  EXPECT_LT(vars.size(), 4096u + 300);
  EXPECT_EQ(vars.rfind("[3002] .../g/g/", 0), 0u) << vars.substr(0, 40);
  EXPECT_EQ(run({"dump", path, "#3002", "v"}), "0: 7\n");
}

// The default export (one file per piece, steps inside, cells by shape) and
// a series with surface cells, both read back by VTK.
TEST(Dovinspect, ExportOpensInVtk) {
  if (!ToolTest::HaveVtkPython()) GTEST_SKIP() << "no python3 vtk";
  const std::string out = ToolTest::ScratchDir("export") + "/vtk";
  const std::string series = ToolTest::ScratchDir("export-series");
  ProcessResult run = Tool({"export", ModelPath(), out});
  ASSERT_EQ(run.status, 0) << run.err;
  // Damage has a value per cell of the whole mesh; the piece holds each
  // element set's cells.
  EXPECT_TRUE(Contains(run.err, "warning: piece Model/Plate: result Damage at value '0.5'")) << run.err;
  run = Tool({"export", ModelPath(), series, "--cells=surface", "--series", "--name", "s.pvd"});
  ASSERT_EQ(run.status, 0) << run.err;

  const std::vector<std::string> paths = {out + "/000_Plate.vtu", out + "/001_Bolt.vtu",
                                          series + "/000_Plate_t002.vtu", series + "/001_Bolt.vtu",
                                          series + "/s.pvd"};
  auto files = ToolTest::ReadWithVtk(paths);
  ASSERT_EQ(files.size(), paths.size());
  auto numbers = [&](int file, const char* kind) { return ToolTest::Numbers(files[paths[file]][kind]); };
  using Values = std::vector<double>;

  ToolTest::VtkRecords& plate = files[paths[0]];
  EXPECT_EQ(plate["steps"] + "|" + plate["counts"] + "|" + plate["celltypes"],
            "3|6 6|9 5 5 9 5 5");
  EXPECT_EQ(plate["cellnodes"], "0 1 4 3 1 2 5 1 5 4 0 1 4 3 1 2 5 1 5 4");
  EXPECT_EQ(numbers(0, "celldata Element Set"), (Values{1, 0, 1, 1, 2, 2, 2}));
  EXPECT_EQ(plate["fielddata Element Set Names"] + "|" + plate["fielddata Visibility"],
            "Left|Right|All|1|0|1");
  EXPECT_EQ(plate["fielddata Instance Values"], "0.5|1|2");
  EXPECT_EQ(numbers(0, "coordinates"),
            Values(ToolTest::kPlateCoordinates.begin(), ToolTest::kPlateCoordinates.end()));
  EXPECT_EQ(numbers(0, "pointdata Node Ids"), (Values{1, 101, 102, 103, 104, 105, 106}));
  EXPECT_EQ(numbers(0, "pointdata Temperature")[1 + 4], ToolTest::Temperature(0, 4));
  EXPECT_EQ(numbers(0, "pointdata Temperature @2")[1 + 4], ToolTest::Temperature(2, 4));
  EXPECT_EQ(numbers(0, "pointdata Displacement @1")[0], 3);  // components
  EXPECT_EQ(plate.count("celldata Damage"), 0u);

  // The bolt is a hexahedron by its shape, moved by (10, 0, 0).
  Values placed(ToolTest::kBoltCoordinates.begin(), ToolTest::kBoltCoordinates.end());
  for (std::size_t i = 0; i < placed.size(); i += 3) placed[i] += 10;
  EXPECT_EQ(files[paths[1]]["celltypes"], "12");
  EXPECT_EQ(numbers(1, "coordinates"), placed);
  EXPECT_EQ(files[paths[1]]["fielddata Diffuse Color"].empty(), false);

  EXPECT_EQ(files[paths[2]]["steps"] + "|" + files[paths[2]]["fielddata TimeValue"], "0|2");
  EXPECT_EQ(numbers(2, "pointdata Temperature")[1 + 4], ToolTest::Temperature(2, 4));
  EXPECT_EQ(files[paths[3]]["celltypes"], "7");  // a surface has no hexahedra
  EXPECT_EQ(numbers(3, "coordinates"), placed);

  ToolTest::VtkRecords& pvd = files[paths[4]];
  EXPECT_EQ(pvd["dataset 0"], "0.5 0 000_Plate_t000.vtu");
  EXPECT_EQ(pvd["dataset 5"], "2 1 001_Bolt.vtu");  // two parts at three times
  EXPECT_EQ(pvd.count("dataset 6"), 0u);
  for (int n = 0; n < 6; ++n) {
    const std::string& set = pvd["dataset " + std::to_string(n)];
    EXPECT_TRUE(std::filesystem::exists(series + "/" + set.substr(set.rfind(' ') + 1))) << set;
  }
}

}  // namespace
