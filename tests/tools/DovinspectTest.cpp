// The dovinspect program as a user runs it, on a model written through the
// public API; exported files are read back by VTK's own reader.

#include <DovWriter/Version.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <thread>

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
  EXPECT_EQ(Tool({"--version"}).out, std::string("dovinspect ") + DOVWRITER_VERSION_STRING +
                                         "\nlibrary " + DOVWRITER_VERSION_STRING +
                                         "\nformat 1.1\n");
  for (const char* command :
       {"info", "tree", "vars", "dump", "verify", "check", "diff", "export"}) {
    ProcessResult help = Tool({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_TRUE(Contains(help.out, std::string("Usage: dovinspect ") + command)) << help.out;
  }
  EXPECT_TRUE(Contains(Tool({"export", "--help"}).out, "pyramid, wedge, hexahedron"));

  const std::string left = "Model/Plate/Left/Left";
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
      {{"vars", ModelPath(), "Model/Plate/Lft"}, 1, "'Model/Plate/Lft'; closest: Model/Plate/Left"},
      {{"dump", ModelPath(), left, "Pressure"}, 1, "no variable 'Pressure'"},
      {{"dump", ModelPath(), left, "Temprature", "--at", "Time=1"}, 1, "closest: Temperature"},
      {{"dump", ModelPath(), left, "Temperature"}, 1, "--at: Time=0.5, Time=1, Time=2"},
      {{"dump", ModelPath(), left, "Temperature", "--at", "Time=3"}, 1, "not at Time=3"},
      {{"dump", "f", "g", "v", "--at", "Time"}, 2, "--at expects NAME=VALUE"},
      {{"diff", "a", "b", "--rtol", "-1"}, 2, "--rtol expects a non-negative number"},
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

  // "All" stores Temperature as a link to the dataset of "Left"; an instance
  // value is named in full, or by --at, where numbers match by value.
  const std::vector<std::vector<std::string>> dumps = {
      {"Model/Plate/Left/Left", "Temperature\\x1ETime = 1"},
      {"Model/Plate/All/All", "Temperature\\x1ETime = 1"},
      {"Model/Plate/All/All", "Temperature", "--at", "Time=1.0"}};
  for (std::vector<std::string> args : dumps) {
    args.insert(args.begin(), {"dump", ModelPath()});
    ProcessResult dump = Tool(args);
    ASSERT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(dump.out, "0: 100\n1: 101\n2: 102\n3: 103\n4: 104\n5: 105\n") << args[2];
  }
  ProcessResult limited =
      Tool({"dump", "--limit=2", ModelPath(), "Model/Plate/Left/Left", "--", "Coordinates"});
  ASSERT_EQ(limited.status, 0) << limited.err;
  EXPECT_EQ(limited.out, "0: 0 0 0\n1: 1 0 0\n");
  EXPECT_TRUE(Contains(limited.err, "4 more tuples"));
}

// Every command gives a file of another kind one line that says so.
TEST(Dovinspect, NotAModelFileIsOneLine) {
  const std::string source = DOVWRITER_SOURCE_DIR "/CMakeLists.txt";
  const std::string out = ToolTest::ScratchDir("not-a-model");
  const std::vector<std::vector<std::string>> commands = {
      {"info", source},   {"tree", source},        {"vars", source},
      {"dump", source, "g", "v"}, {"verify", source}, {"check", source},
      {"diff", ModelPath(), source}, {"export", source, out}};
  for (std::vector<std::string> command : commands) {
    ProcessResult run = Tool(command);
    const std::string text = run.out + run.err;
    EXPECT_EQ(run.status, 1) << command[0];
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    EXPECT_TRUE(Contains(text, source + ": not a model file: it does not begin with the signature"))
        << text;
  }
}

// --json gives one document that a JSON parser reads back; names keep
// their control bytes.
TEST(Dovinspect, JsonDocumentsReadBack) {
  const std::string dir = ToolTest::ScratchDir("json");
  const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases = {
      {{"info", ModelPath()}, {"information/application", "scene/geometries", "streams/0/name"}},
      {{"tree", ModelPath()}, {"entries/0/group/root", "entries/3/parent", "len:entries"}},
      {{"vars", ModelPath(), "Model/Plate/All/All"},
       {"geometries/0/variables/4/name", "geometries/0/variables/4/instanceValue"}},
      {{"verify", ModelPath()}, {"sound", "len:violations"}},
      {{"check", ModelPath()}, {"errors", "warnings", "findings/0/index"}},
  };
  const std::vector<std::string> expected = {
      "\"inspect test\"\n4\n\"Heavy Data\"\n",
      "true\n3\n11\n",
      "\"Temperature\\u001eTime = 0.5\"\n\"0.5\"\n",
      "true\n0\n",
      "0\n6\nnull\n",
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    std::vector<std::string> args = cases[i].first;
    args.push_back("--json");
    ProcessResult run = Tool(args);
    EXPECT_EQ(run.status, args[0] == "check" ? 3 : 0) << run.err;
    ToolTest::WriteFile(dir + "/out.json", run.out);
    std::vector<std::string> query = {"/usr/bin/python3",
                                      DOVWRITER_SOURCE_DIR "/tests/tools/json_query.py",
                                      dir + "/out.json"};
    query.insert(query.end(), cases[i].second.begin(), cases[i].second.end());
    ProcessResult parsed = ToolTest::RunProcess(query);
    EXPECT_EQ(parsed.status, 0) << parsed.err << run.out;
    EXPECT_EQ(parsed.out, expected[i]) << args[0];
  }
}

// The same model written again, later and cut into other blocks, is no
// difference; a changed value is one, unless a tolerance takes it.
TEST(Dovinspect, DiffComparesModelsNotBytes) {
  const std::string dir = ToolTest::ScratchDir("diff");
  const std::string again = dir + "/again.dov", changed = dir + "/changed.dov";
  const std::string created = Tool({"info", ModelPath()}).out;
  ToolTest::WriteTestModel(changed, 0, 0.5f);
  do {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ToolTest::WriteTestModel(again, 1);
  } while (Tool({"info", again}).out.substr(created.find("Created:")).substr(0, 40) ==
           created.substr(created.find("Created:")).substr(0, 40));

  ProcessResult same = Tool({"diff", ModelPath(), again});
  EXPECT_EQ(same.status, 0) << same.out << same.err;
  EXPECT_EQ(same.out, "no differences\n");
  ProcessResult differs = Tool({"diff", ModelPath(), changed});
  EXPECT_EQ(differs.status, 1) << differs.err;
  EXPECT_TRUE(Contains(differs.out, "Model/Plate/Left/Left Temperature\\x1ETime = 1: 1 of 6 "
                                    "values differ, most at [4]: 104 vs 104.5\n1 difference\n"))
      << differs.out;
  EXPECT_EQ(Tool({"diff", "--atol=0.5", ModelPath(), changed}).status, 0);
  EXPECT_EQ(Tool({"diff", "--rtol=0.004", ModelPath(), changed}).status, 1);
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
