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
  EXPECT_TRUE(Contains(Tool({"export", "--help"}).out, "8 hexahedron"));

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
      {{"export", "f", "out", "--raw=1"}, 2, "--raw takes no value"},
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

// The default export (base64, surface cells) and one with solids, raw data
// and a chosen collection name, both read back by VTK.
TEST(Dovinspect, ExportOpensInVtk) {
  if (!ToolTest::HaveVtkPython()) GTEST_SKIP() << "no python3 vtk";
  std::string out = ToolTest::ScratchDir("export") + "/vtk";
  std::string solid = ToolTest::ScratchDir("export-solid");
  ProcessResult run = Tool({"export", ModelPath(), out});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(run.err.empty() || Contains(run.err, "warning: ")) << run.err;
  run = Tool({"export", ModelPath(), solid, "--cells=solid", "--raw", "--name", "solid.pvd"});
  ASSERT_EQ(run.status, 0) << run.err;

  const std::vector<std::string> paths = {
      out + "/000_Left_t000.vtu", out + "/000_Left_t002.vtu", out + "/002_All_t001.vtu",
      out + "/003_Bolt.vtu",      out + "/model.pvd",         solid + "/003_Bolt.vtu",
      solid + "/001_Right_t001.vtu", solid + "/solid.pvd"};
  auto files = ToolTest::ReadWithVtk(paths);
  ASSERT_EQ(files.size(), paths.size());
  auto numbers = [&](int file, const char* kind) { return ToolTest::Numbers(files[paths[file]][kind]); };
  using Values = std::vector<double>;
  const Values plate(ToolTest::kPlateCoordinates.begin(), ToolTest::kPlateCoordinates.end());
  const Values bolt(ToolTest::kBoltCoordinates.begin(), ToolTest::kBoltCoordinates.end());

  ToolTest::VtkRecords& left = files[paths[0]];
  EXPECT_EQ(left["counts"] + "|" + left["celltypes"] + "|" + left["cellnodes"], "6 1|9|0 1 4 3");
  EXPECT_EQ(numbers(0, "coordinates"), plate);
  EXPECT_EQ(numbers(0, "pointdata Node Ids"), (Values{1, 101, 102, 103, 104, 105, 106}));
  EXPECT_EQ(numbers(0, "pointdata Temperature")[1 + 4], ToolTest::Temperature(0, 4));
  EXPECT_EQ(numbers(0, "pointdata Displacement")[0], 3);  // components
  EXPECT_EQ(left.count("celldata Damage"), 0u);  // 3 values fit neither 6 points nor 1 cell
  EXPECT_EQ(numbers(1, "pointdata Temperature")[1 + 4], ToolTest::Temperature(2, 4));

  EXPECT_EQ(files[paths[2]]["counts"] + "|" + files[paths[2]]["celltypes"], "6 3|9 5 5");
  EXPECT_EQ(numbers(2, "celldata Damage"),
            (Values{1, ToolTest::Damage(1, 0), ToolTest::Damage(1, 1), ToolTest::Damage(1, 2)}));
  // 8 nodes: a polygon unless solid.
  EXPECT_EQ(files[paths[3]]["counts"] + "|" + files[paths[3]]["celltypes"], "8 1|7");

  ToolTest::VtkRecords& pvd = files[paths[4]];
  EXPECT_EQ(pvd["dataset 0"], "0.5 0 000_Left_t000.vtu");
  EXPECT_EQ(pvd["dataset 3"], "0.5 3 003_Bolt.vtu");
  EXPECT_EQ(pvd["dataset 11"], "2 3 003_Bolt.vtu");  // four parts at three times
  EXPECT_EQ(pvd.count("dataset 12"), 0u);
  for (int n = 0; n < 12; ++n) {
    const std::string& set = pvd["dataset " + std::to_string(n)];
    EXPECT_TRUE(std::filesystem::exists(out + "/" + set.substr(set.rfind(' ') + 1))) << set;
  }

  EXPECT_EQ(files[paths[5]]["celltypes"], "12");
  EXPECT_EQ(numbers(5, "coordinates"), bolt);
  EXPECT_EQ(files[paths[6]]["cellnodes"], "1 2 5 1 5 4");
  EXPECT_EQ(numbers(6, "pointdata Temperature")[1], ToolTest::Temperature(1, 0));
  EXPECT_EQ(files[paths[7]]["dataset 11"], "2 3 003_Bolt.vtu");
}

}  // namespace
