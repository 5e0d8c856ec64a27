// Writing with threads, with the fast encoding, and with lent arrays: the
// exact file stays byte for byte the sequential one, the fast file reads
// back the same values, and failures reach the host. Suites whose names
// end in "Threads" carry the CTest label `threads`.

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "ModelFile.h"
#include "ObjectManager/ObjectManager.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

// A scene whose file the test can reach: exact blocks are cut small, and
// every file is dated alike, so that files compare byte for byte.
class OpenScene : public Scene_V2 {
 public:
  using Scene_V2::Scene_V2;
  KelTmf::Index& index() { return manager->GetFile().index; }
  void pinDate() { manager->PinCreationTime(1700000000); }
};

struct Variant {
  unsigned threads = 1;
  Encoding encoding = Encoding::Exact;
  bool lend = false;
  std::uint32_t blockBytes = 0;
};

// A mesh of quads with results over two states of widths 1, 3, 6 and 8.
// The arrays live here, so that they can be lent until the file is done.
struct StateModel {
  static const std::uint32_t Side = 40;
  Floats coordinates;
  Words quads;
  std::vector<std::pair<std::string, Floats>> results;  // per state, in order
  std::vector<unsigned char> widths;

  StateModel() {
    for (std::uint32_t j = 0; j < Side; ++j)
      for (std::uint32_t i = 0; i < Side; ++i)
        coordinates.insert(coordinates.end(), {float(i), float(j), std::sin(0.1f * i * j)});
    for (std::uint32_t j = 0; j + 1 < Side; ++j)
      for (std::uint32_t i = 0; i + 1 < Side; ++i) {
        const std::uint32_t n = j * Side + i;
        quads.insert(quads.end(), {n, n + 1, n + Side + 1, n + Side});
      }
    const std::uint32_t nodes = Side * Side;
    for (int state = 0; state < 2; ++state)
      for (unsigned char width : {1, 3, 6, 8}) {
        Floats values(nodes * width);
        for (std::size_t k = 0; k < values.size(); ++k)
          values[k] = std::cos(0.37f * k + state) * (1.0f + 0.001f * (k % 977));
        results.emplace_back("W" + std::to_string(width), values);
        widths.push_back(width);
      }
  }

  void write(const std::string& path, const Variant& variant) {
    OpenScene scene("states");
    WriteOptions options;
    options.threads = variant.threads;
    options.encoding = variant.encoding;
    options.blockBytes = variant.blockBytes;
    scene.setWriteOptions(options);
    const Identifier root = makeObject(scene, GroupObject, "Model");
    const Identifier mesh = makeObject(scene, MeshObject, "Part");
    scene.addComponent(root, mesh);
    scene.setCoordinates(mesh, makeArray(scene, coordinates, 3, variant.lend));
    scene.setConnectivity(mesh, makeArray(scene, quads, 4, variant.lend));
    const Identifier states = makeObject(scene, InstanceGroupObject, "State");
    for (std::size_t r = 0; r < results.size(); ++r)
      scene.setResult(mesh, states, static_cast<int>(r / 4), results[r].first.c_str(),
                      ScalarVariable, makeArray(scene, results[r].second, widths[r], variant.lend));
    scene.addElementSet(mesh, makeSet(scene, "Lower", Words{0, 1, 2, 40, 41}));
    scene.addElementSet(mesh, makeSet(scene, "Upper", Words{1000, 1001, 1443}));
    // Exact blocks of 64 KiB: the file has several, written while it is built.
    scene.index().SetBlockLimit("Heavy Data", 64 << 10);
    scene.pinDate();
    closeScene(scene, root, path);
  }
};

std::string textOf(const std::string& path) {
  std::ifstream in(path);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The trace of the write to `path`: the lines behind its "Setting dov
// file" line up to the next such line.
std::string traceOf(const std::string& log, const std::string& path) {
  const std::size_t start = log.rfind("Setting dov file \"" + path + "\"");
  if (start == std::string::npos) return std::string();
  const std::size_t from = log.find('\n', start);
  const std::size_t next = log.find("Setting dov file", from);
  const std::size_t to = next == std::string::npos ? log.size() : log.rfind('\n', next) + 1;
  return log.substr(from, to - from);
}

}  // namespace

TEST(ExactThreads, FilesAndTracesAreTheSequentialOnesWhateverThreadsAndLending) {
  const std::string& log = processTraceLog();
  StateModel model;
  const std::vector<Variant> variants{{1, Encoding::Exact, false}, {2, Encoding::Exact, false},
                                      {4, Encoding::Exact, true}, {1, Encoding::Exact, true}};
  std::vector<std::string> paths;
  for (std::size_t v = 0; v < variants.size(); ++v) {
    paths.push_back(freshPath("-" + std::to_string(v)));
    model.write(paths[v], variants[v]);
  }
  const std::vector<unsigned char> sequential = fileBytes(paths[0]);
  EXPECT_GT(DovReader::Container::Open(paths[0]).Blocks().size(), 10u);
  const std::string trace = textOf(log);
  for (std::size_t v = 1; v < variants.size(); ++v) {
    SCOPED_TRACE("variant " + std::to_string(v));
    EXPECT_TRUE(fileBytes(paths[v]) == sequential);
    EXPECT_EQ(traceOf(trace, paths[v]), traceOf(trace, paths[0]));
  }
}

TEST(FastThreads, ValuesReadBackAsWrittenFromBlocksOfAnySize) {
  StateModel model;
  const std::string exact = freshPath("-exact");
  model.write(exact, Variant());
  const ReadModel reference(exact);
  for (const Variant& variant : {Variant{1, Encoding::Fast, true, 4096},
                                 Variant{3, Encoding::Fast, false, 5000}, Variant{2, Encoding::Fast}}) {
    SCOPED_TRACE(std::to_string(variant.threads) + " threads, blocks of " +
                 std::to_string(variant.blockBytes));
    const std::string path = freshPath("-fast");
    model.write(path, variant);
    const ReadModel fast(path);
    EXPECT_EQ(fast.container.Verify(), std::vector<std::string>());
    EXPECT_TRUE(fast.container.ReadStream("Heavy Data") ==
                reference.container.ReadStream("Heavy Data"));
    EXPECT_TRUE(fast.container.ReadStream("Light Data") ==
                reference.container.ReadStream("Light Data"));
    // Entry 4 is the geometry of the first set, holding every result.
    EXPECT_EQ(fast.floats(4, "Coordinates"), model.coordinates);
    for (std::size_t r = 0; r < model.results.size(); ++r)
      EXPECT_EQ(fast.floats(4, at(model.results[r].first, "State", std::to_string(r / 4))),
                model.results[r].second);
  }
}

// The code that writing `variant` fails with once the file may grow no
// further than 96 KiB, in the middle of the heavy blocks; -1 for none.
static int codeOfAWriteBeyondTheLimit(StateModel& model, const Variant& variant) {
  const testsupport::FileSizeLimit limit(96 << 10);
  if (!limit.set) return -2;
  try {
    model.write(freshPath(), variant);
  } catch (const Kel::Util::Exception& failure) {
    return failure.GetCode();
  }
  return -1;
}

TEST(WriteFailureThreads, AFileThatCannotGrowFailsWithCode10OnTheHostsThread) {
  StateModel model;
  // In a process of its own: the limit holds for every file of the
  // process, the trace log of the other tests included.
  for (const Variant& variant : {Variant{3, Encoding::Exact}, Variant{3, Encoding::Fast, true, 8192}})
    EXPECT_EXIT(std::exit(codeOfAWriteBeyondTheLimit(model, variant) == 10 ? 0 : 1),
                ::testing::ExitedWithCode(0), "");
}

TEST(LentArrays, AreReadWhenTheFileIsWrittenAndNeverAfterTheScene) {
  const std::string path = freshPath();
  Floats nodes = SquareNodes;
  {
    Scene_V2 scene;
    const Identifier root = makeObject(scene, GroupObject, "R");
    const Identifier geometry = makeObject(scene, GeometryObject, "G");
    scene.addComponent(root, geometry);
    const Identifier coordinates = scene.createObject(ArrayObject);
    scene.lendValues(coordinates, nodes.data(), nodes.size());
    scene.setCoordinates(geometry, coordinates);
    scene.setConnectivity(geometry, makeArray(scene, Words{0, 1, 2}, 3));
    // Lent, not copied: what the array holds at closeFile is what is written.
    nodes[0] = 42.0f;
    closeScene(scene, root, path);
  }
  EXPECT_EQ(ReadModel(path).floats(2, "Coordinates")[0], 42.0f);

  // A scene that lent arrays and never closed its file lets them go
  // untouched, threads or not.
  std::unique_ptr<std::vector<std::uint32_t>> lent(new std::vector<std::uint32_t>(1000, 7));
  std::unique_ptr<Scene_V2> scene(new Scene_V2);
  WriteOptions options;
  options.threads = 4;
  scene->setWriteOptions(options);
  const Identifier array = scene->createObject(ArrayObject);
  scene->lendValues(array, lent->data(), lent->size());
  scene->saveTo(freshPath("-unclosed").c_str(), nullptr, false, true);
  lent.reset();
  scene.reset();
}
