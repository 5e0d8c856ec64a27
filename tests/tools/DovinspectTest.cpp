// The dovinspect program as a user runs it, on a model written through the
// public API; exported files are read back by VTK's own reader.

#include <gtest/gtest.h>

#include <filesystem>

#include "TestModel.h"
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

int Lines(const std::string& text) {
  return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

TEST(Dovinspect, HelpAndUsageErrors) {
  ProcessResult bare = Tool({});
  EXPECT_EQ(bare.status, 2);
  EXPECT_TRUE(Contains(bare.err, "Usage: dovinspect COMMAND"));
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
      {{"frobnicate"}, 2, "unknown command 'frobnicate'"},
      {{"info"}, 2, "dovinspect info: missing arguments"},
      {{"dump", "f", "g", "v", "--limit", "many"}, 2, "--limit expects a non-negative number"},
      {{"export", ModelPath(), "out", "--cells=round"}, 2, "--cells expects"},
      {{"info", "/nonexistent/model.dov"}, 1, "dovinspect info: "},
      {{"tree", DOVWRITER_SOURCE_DIR "/CMakeLists.txt"}, 1, "dovinspect tree: "},
  };
  for (const Case& c : cases) {
    ProcessResult run = Tool(c.args);
    EXPECT_EQ(run.status, c.status) << c.args[0];
    EXPECT_TRUE(Contains(run.err, c.message)) << run.err;
    EXPECT_TRUE(run.out.empty()) << run.out;
    if (c.status == 1) {
      EXPECT_EQ(Lines(run.err), 1) << run.err;
    }
  }
}

TEST(Dovinspect, InfoTreeAndVarsDescribeTheModel) {
  ProcessResult info = Tool({"info", ModelPath()});
  ASSERT_EQ(info.status, 0) << info.err;
  for (const char* part : {"format version 1.1", "inspect test 7", "Heavy Data", "Dov Tree",
                           "Global Information", "4 shapes, 4 geometries"}) {
    EXPECT_TRUE(Contains(info.out, part)) << part << "\n" << info.out;
  }

  ProcessResult tree = Tool({"tree", ModelPath()});
  ASSERT_EQ(tree.status, 0) << tree.err;
  EXPECT_TRUE(Contains(tree.out, "Group \"Model\" visible root")) << tree.out;
  EXPECT_TRUE(Contains(tree.out, "Shape \"Right\" hidden")) << tree.out;
  EXPECT_TRUE(Contains(tree.out, "translation (10, 0, 0)")) << tree.out;
  EXPECT_TRUE(Contains(tree.out, "      [") && Contains(tree.out, "Geometry \"Left\"")) << tree.out;

  ProcessResult vars = Tool({"vars", ModelPath(), "Model/Plate/All"});
  ASSERT_EQ(vars.status, 0) << vars.err;
  EXPECT_TRUE(Contains(vars.out, "Temperature\\x1ETime = 0.5")) << vars.out;
  EXPECT_TRUE(Contains(vars.out, "link to [")) << vars.out;
  EXPECT_FALSE(Contains(vars.out, "Left")) << vars.out;
  EXPECT_EQ(Tool({"vars", ModelPath(), "Model/Nothing"}).status, 1);
}

TEST(Dovinspect, DumpFollowsLinksAndLimits) {
  // "All" stores Temperature as a link to the dataset of "Left".
  for (const char* geometry : {"Model/Plate/Left/Left", "Model/Plate/All/All"}) {
    ProcessResult dump = Tool({"dump", ModelPath(), geometry, "Temperature\\x1ETime = 1"});
    ASSERT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(dump.out, "0: 100\n1: 101\n2: 102\n3: 103\n4: 104\n5: 105\n") << geometry;
  }
  ProcessResult limited =
      Tool({"dump", ModelPath(), "Model/Plate/Left/Left", "Coordinates", "--limit", "2"});
  ASSERT_EQ(limited.status, 0) << limited.err;
  EXPECT_EQ(limited.out, "0: 0 0 0\n1: 1 0 0\n");
  EXPECT_TRUE(Contains(limited.err, "4 more tuples"));
  ProcessResult missing = Tool({"dump", ModelPath(), "Model/Plate/Left/Left", "Pressure"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(Contains(missing.err, "no variable 'Pressure'")) << missing.err;
}

TEST(Dovinspect, ExportOpensInVtk) {
  if (!ToolTest::HaveVtkPython()) GTEST_SKIP() << "no python3 vtk";
  std::string out = ToolTest::ScratchDir("export") + "/vtk";
  ProcessResult run = Tool({"export", ModelPath(), out});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(run.err.empty() || Contains(run.err, "warning: ")) << run.err;

  std::vector<std::string> paths;
  for (const char* name : {"000_Left_t000.vtu", "000_Left_t002.vtu", "002_All_t001.vtu",
                           "003_Bolt.vtu", "model.pvd"}) {
    paths.push_back(out + "/" + name);
  }
  auto files = ToolTest::ReadWithVtk(paths);
  ASSERT_EQ(files.size(), paths.size());

  const ToolTest::VtkFileSummary& left = files[paths[0]];
  EXPECT_EQ(left.points, 6);
  EXPECT_EQ(left.cells, 1);
  EXPECT_EQ(left.cellTypes, (std::vector<long>{9}));
  EXPECT_EQ(left.cellNodes, (std::vector<long>{0, 1, 4, 3}));
  EXPECT_EQ(left.coordinates, std::vector<double>(ToolTest::kPlateCoordinates.begin(),
                                                  ToolTest::kPlateCoordinates.end()));
  EXPECT_EQ(left.pointData.at("Node Ids").values,
            (std::vector<double>{101, 102, 103, 104, 105, 106}));
  EXPECT_EQ(left.pointData.at("Temperature").values[4], ToolTest::Temperature(0, 4));
  EXPECT_EQ(left.pointData.at("Displacement").components, 3);
  EXPECT_EQ(left.cellData.count("Damage"), 0u);  // three values fit neither 6 points nor 1 cell
  EXPECT_EQ(files[paths[1]].pointData.at("Temperature").values[4], ToolTest::Temperature(2, 4));

  const ToolTest::VtkFileSummary& all = files[paths[2]];
  EXPECT_EQ(all.cells, 3);
  EXPECT_EQ(all.cellTypes, (std::vector<long>{9, 5, 5}));
  EXPECT_EQ(all.cellData.at("Damage").values,
            (std::vector<double>{ToolTest::Damage(1, 0), ToolTest::Damage(1, 1),
                                 ToolTest::Damage(1, 2)}));

  const ToolTest::VtkFileSummary& bolt = files[paths[3]];
  EXPECT_EQ(bolt.points, 8);
  EXPECT_EQ(bolt.cellTypes, (std::vector<long>{7}));  // eight nodes: a polygon unless solid

  const std::vector<std::string>& sets = files[paths[4]].dataSets;
  ASSERT_EQ(sets.size(), 12u);  // four parts at three times
  EXPECT_EQ(sets[0], "0.5 0 000_Left_t000.vtu");
  EXPECT_EQ(sets[3], "0.5 3 003_Bolt.vtu");
  EXPECT_EQ(sets[11], "2 3 003_Bolt.vtu");
  for (const std::string& set : sets) {
    EXPECT_TRUE(std::filesystem::exists(out + "/" + set.substr(set.rfind(' ') + 1))) << set;
  }
}

TEST(Dovinspect, ExportAsSolidsWithRawData) {
  if (!ToolTest::HaveVtkPython()) GTEST_SKIP() << "no python3 vtk";
  std::string out = ToolTest::ScratchDir("export-solid");
  ProcessResult run =
      Tool({"export", ModelPath(), out, "--cells=solid", "--raw", "--name", "solid.pvd"});
  ASSERT_EQ(run.status, 0) << run.err;
  std::string bolt = out + "/003_Bolt.vtu";
  std::string right = out + "/001_Right_t001.vtu";
  auto files = ToolTest::ReadWithVtk({bolt, right, out + "/solid.pvd"});
  EXPECT_EQ(files[bolt].cellTypes, (std::vector<long>{12}));
  EXPECT_EQ(files[bolt].coordinates, std::vector<double>(ToolTest::kBoltCoordinates.begin(),
                                                         ToolTest::kBoltCoordinates.end()));
  EXPECT_EQ(files[right].cellNodes, (std::vector<long>{1, 2, 5, 1, 5, 4}));
  EXPECT_EQ(files[right].pointData.at("Temperature").values[0], ToolTest::Temperature(1, 0));
}

}  // namespace
