// The diagnostics channel of the third interface version: each kind of
// warning once with its object, silence for a sound scene, a file that a
// handler does not change, progress up to the exact total, a handler that
// stops closeFile, and failures explained with path and reason.

#include <stdexcept>

#include "Kel/Dov/Tree.h"
#include "ModelFile.h"
#include "ObjectManager/ObjectManager.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

struct Seen {
  Diagnostic kind;
  WarningCode code;
  std::uint64_t object;
  std::string text;
  std::uint64_t done, total;
};

// Keeps every record; throws std::runtime_error at the record `throwAt`
// picks, if any.
struct Recorder {
  std::vector<Seen> seen;
  std::function<bool(const Seen&)> throwAt;

  static void Handle(const DiagnosticRecord& record, void* user) {
    Recorder& self = *static_cast<Recorder*>(user);
    self.seen.push_back(Seen{record.kind, static_cast<WarningCode>(record.code), record.object,
                             record.text, record.done, record.total});
    if (self.throwAt && self.throwAt(self.seen.back())) throw std::runtime_error("host stops");
  }
  std::vector<Seen> of(Diagnostic kind) const {
    std::vector<Seen> picked;
    for (const Seen& record : seen)
      if (record.kind == kind) picked.push_back(record);
    return picked;
  }
  std::string warningTexts() const {
    std::string texts;
    for (const Seen& record : of(Diagnostic::Warning)) texts += record.text + "\n";
    return texts;
  }
};

// A sound scene with some of everything: a mesh object in two element sets
// with node ids and a result at two values, and a bolt shape placed twice
// with a material. Its scene handle lets a test reach the object manager.
struct Model : Scene_V2 {
  Identifier root = makeObject(*this, GroupObject, "Root");
  Identifier mesh = makeObject(*this, MeshObject, "Plate");
  Identifier nodeIds = makeArray(*this, Words{10, 11, 12, 13});
  Identifier skin = makeSet(*this, "Skin", Words{0});
  Identifier bolt = makeObject(*this, ShapeObject, "Bolt");
  Identifier boltMesh = createObject(GeometryObject);
  Identifier boltNodes = makeArray(*this, SquareNodes, 3);
  Identifier boltCells = makeArray(*this, Words{0, 1, 2}, 3);
  Identifier steel = createObject(MaterialObject);

  Model() {
    addComponent(root, mesh);
    setCoordinates(mesh, makeArray(*this, SquareNodes, 3));
    setConnectivity(mesh, makeArray(*this, Words{0, 1, 2, 1, 3, 2}, 3));
    setNodeIndices(mesh, nodeIds);
    addElementSet(mesh, skin);
    addElementSet(mesh, makeSet(*this, "Core", Words{1, 0}));
    const Identifier time = makeObject(*this, InstanceGroupObject, "Time");
    for (int value : {1, 2})
      setResult(mesh, time, value, "Stress", ScalarVariable, makeArray(*this, Floats{1, 2, 3, 4}));
    setCoordinates(boltMesh, boltNodes);
    setConnectivity(boltMesh, boltCells);
    setColor(steel, DiffusiveColor, 0.7f, 0.7f, 0.7f, 1.0f);
    setMaterial(boltMesh, steel);
    addComponent(bolt, boltMesh);
    for (float x : {1.0f, 2.0f}) {
      const Identifier place = makeObject(*this, TransformationObject, "Place");
      setTranslation(place, x, 0, 0);
      addComponent(root, bolt, place);
    }
    createDefaultViews(root);
  }
  ObjectManager& inside() { return *manager; }
  void write(const std::string& path) {
    saveTo(path.c_str(), nullptr, false, true);
    closeFile(path.c_str());
  }
};

struct WarningCase {
  const char* title;
  WarningCode code;
  const char* mention;
  // Spoils the model; returns the object the warning must name.
  std::function<Identifier(Model&)> spoil;
  int failure = 0;  // the code closeFile then fails with
};

}  // namespace

TEST(Diagnostics, EachWarningComesOnceWithItsCodeObjectAndWhatIsWrong) {
  const WarningCase cases[] = {
      {"element type", WarningCode::ElementType, "holds double values as the coordinates",
       [](Model& m) {
         const double nodes[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
         m.setValues<double>(m.boltNodes, nodes, 3);
         return m.boltNodes; }},
      {"element type of a lent array", WarningCode::ElementType,
       "holds double values as the coordinates", [](Model& m) {
         static const double nodes[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
         m.lendValues<double>(m.boltNodes, nodes, 3);
         return m.boltNodes; }},
      {"skipped geometry", WarningCode::SkippedObject, "it has no coordinates",
       [](Model& m) {
         const Identifier lonely = makeObject(m, GeometryObject, "Lonely");
         m.addComponent(m.root, lonely);
         return lonely; }},
      {"result without group", WarningCode::ResultWithoutGroup, "setResult(\"Heat\")",
       [](Model& m) {
         const Identifier heat = makeArray(m, Floats{1, 2, 3, 4});
         m.setResult(m.mesh, "Heat", heat);
         return heat; }},
      {"material on a set", WarningCode::UnusedMaterial, "element sets do not read",
       [](Model& m) { m.setMaterial(m.skin, m.steel); return m.skin; }},
      {"name of a shape's component", WarningCode::NameNotKept, "\"Bolt mesh\" is not kept",
       [](Model& m) { m.setName(m.boltMesh, "Bolt mesh"); return m.boltMesh; }},
      {"node id beyond 2^24", WarningCode::InexactNodeId, "the first 16777217",
       [](Model& m) {
         m.setValues<unsigned int>(m.nodeIds, Words{10, 16777217, 12, 13}.data(), 4);
         return m.nodeIds; }},
      {"node beyond the coordinates", WarningCode::NodeOutsideCoordinates,
       "names node 7, but the coordinates hold 4", [](Model& m) {
         m.setValues<unsigned int>(m.boltCells, Words{0, 1, 7}.data(), 1);
         return m.boltCells; }},
      {"lent node beyond the coordinates", WarningCode::NodeOutsideCoordinates,
       "names node 9, but the coordinates hold 4", [](Model& m) {
         static const std::uint32_t cells[] = {0, 9, 1};
         m.lendValues<unsigned int>(m.boltCells, cells, 1);
         return m.boltCells; }},
      {"cells without a mesh", WarningCode::CellOutsideMesh, "the mesh has no cells",
       [](Model& m) {
         const Identifier loose = makeObject(m, MeshObject, "Loose");
         const Identifier set = makeSet(m, "Rim", Words{0});
         m.addElementSet(loose, set);
         m.addComponent(m.root, loose);
         return set; }},
      {"element ids without value", WarningCode::UnusedData, "only element ids given per value",
       [](Model& m) { m.setElementIndices(m.mesh, makeArray(m, Words{5, 6})); return m.mesh; }},
      {"attributes", WarningCode::AttributesNotKept, "(Author)",
       [](Model& m) { m.setProperty(m.mesh, "Author", "me"); return m.mesh; }},
      {"second component", WarningCode::ExtraComponent, "then fails with code 13",
       [](Model& m) { m.addComponent(m.bolt, m.boltMesh); return m.bolt; }, 13},
  };
  for (const WarningCase& testCase : cases) {
    SCOPED_TRACE(testCase.title);
    Model model;
    Recorder recorder;
    model.setDiagnostics(&Recorder::Handle, &recorder);
    const Identifier object = testCase.spoil(model);
    const std::string path = freshPath(std::string("_") + std::to_string(&testCase - cases));
    if (testCase.failure != 0) {
      expectRefusal([&] { model.write(path); }, testCase.failure, "");
    } else {
      model.write(path);
    }
    const std::vector<Seen> warnings = recorder.of(Diagnostic::Warning);
    ASSERT_EQ(warnings.size(), 1u) << recorder.warningTexts();
    EXPECT_EQ(warnings[0].code, testCase.code);
    EXPECT_EQ(warnings[0].object, object.second);
    EXPECT_NE(warnings[0].text.find("object " + std::to_string(object.second)), std::string::npos);
    EXPECT_NE(warnings[0].text.find(testCase.mention), std::string::npos) << warnings[0].text;
  }
}

TEST(Diagnostics, ASoundSceneWarnsOfNothingAndAHandlerLeavesTheFileAsItIs) {
  const std::string plain = freshPath("_plain"), told = freshPath("_told");
  Model().write(plain);
  Model model;
  Recorder recorder;
  model.setDiagnostics(&Recorder::Handle, &recorder);
  model.write(told);
  EXPECT_EQ(recorder.warningTexts(), "");

  // All streams alike; the global information differs in its date alone.
  ReadModel a(plain), b(told);
  ASSERT_EQ(a.container.StreamNames(), b.container.StreamNames());
  for (const std::string& stream : a.container.StreamNames()) {
    if (stream == KelDov::GlobalInformationStream) continue;
    EXPECT_EQ(a.container.ReadStream(stream), b.container.ReadStream(stream)) << stream;
  }
  EXPECT_EQ(a.scene.Information().applicationName, b.scene.Information().applicationName);
  EXPECT_EQ(a.scene.Information().comment, b.scene.Information().comment);
}

TEST(Diagnostics, ProgressRisesToTheExactTotalAtLeastOncePerBlock) {
  Model model;
  // Small blocks, so that the numbers fill many; and per-value cuts, so
  // that every way of writing a dataset counts towards the total.
  model.inside().GetFile().index.SetBlockLimit(KelDov::HeavyDataStream, 16);
  const Identifier strip = makeObject(model, MeshObject, "Strip");
  const Identifier step = makeObject(model, InstanceGroupObject, "Step");
  model.setCoordinates(strip, makeArray(model, SquareNodes, 3));
  for (int value : {1, 2}) {
    model.setConnectivity(strip, step, value, makeArray(model, Words{0, 1, 2, 1, 3, 2}),
                          makeArray(model, Words{3, 3}));
    model.addElementSet(strip, step, value, "Band", makeSet(model, "Band", Words{1}));
  }
  model.addComponent(model.root, strip);
  Recorder recorder;
  model.setDiagnostics(&Recorder::Handle, &recorder);
  const std::string path = freshPath();
  model.write(path);

  const DovReader::Container file = DovReader::Container::Open(path);
  const std::uint64_t written = file.StreamLength(KelDov::HeavyDataStream);
  std::size_t blocks = 0;
  for (const DovReader::BlockInfo& block : file.Blocks())
    blocks += block.name == KelDov::HeavyDataStream;
  const std::vector<Seen> progress = recorder.of(Diagnostic::Progress);
  ASSERT_GE(progress.size(), blocks + 2);
  EXPECT_EQ(progress.front().done, 0u);
  for (std::size_t i = 0; i < progress.size(); ++i) {
    EXPECT_EQ(progress[i].total, written);
    EXPECT_LE(progress[i > 0 ? i - 1 : 0].done, progress[i].done);
  }
  EXPECT_EQ(progress.back().done, written);
  EXPECT_GT(blocks, 10u);
}

TEST(Diagnostics, AHandlerThatThrowsStopsCloseFile) {
  {
    // At a warning: nothing is written beyond the head, and the scene can
    // be closed once the handler lets it.
    const std::string path = freshPath("_warning");
    Model model;
    Recorder recorder;
    recorder.throwAt = [](const Seen& record) { return record.kind == Diagnostic::Warning; };
    model.setDiagnostics(&Recorder::Handle, &recorder);
    model.setProperty(model.mesh, "Author", "me");
    model.saveTo(path.c_str(), nullptr, false, true);
    EXPECT_THROW(model.closeFile(path.c_str()), std::runtime_error);
    EXPECT_EQ(fileBytes(path).size(), KelTmf::FileHeadSize);
    model.setDiagnostics(nullptr, nullptr);
    model.closeFile(path.c_str());
    EXPECT_EQ(DovReader::Container::Verify(path), std::vector<std::string>());
  }
  // Half way through the numbers: the file stays incomplete for good.
  const std::string path = freshPath("_progress");
  Model model;
  model.inside().GetFile().index.SetBlockLimit(KelDov::HeavyDataStream, 64);
  Recorder recorder;
  recorder.throwAt = [](const Seen& record) { return record.done > 0; };
  model.setDiagnostics(&Recorder::Handle, &recorder);
  model.saveTo(path.c_str(), nullptr, false, true);
  EXPECT_THROW(model.closeFile(path.c_str()), std::runtime_error);
  expectRefusal([&] { model.closeFile(path.c_str()); }, 19, "failed while building");
}

TEST(Diagnostics, FailedAndIgnoredFileOperationsAreExplained) {
  Model model;
  Recorder recorder;
  model.setDiagnostics(&Recorder::Handle, &recorder);
  auto said = [&](WarningCode code, const std::string& text) {
    ASSERT_FALSE(recorder.seen.empty());
    EXPECT_EQ(recorder.seen.back().code, code);
    EXPECT_EQ(recorder.seen.back().object, NoObject);
    EXPECT_NE(recorder.seen.back().text.find(text), std::string::npos) << recorder.seen.back().text;
  };
  const std::string path = freshPath(), missing = path + ".d/no/folder.dov";
  Model().write(path);
  expectRefusal([&] { model.saveTo(path.c_str(), nullptr, false, false); }, 10, "File exists");
  said(WarningCode::FileExists, "\"" + path + "\"): the file exists and overwrite is false");
  expectRefusal([&] { model.saveTo(missing.c_str(), nullptr, false, true); }, 16, "Unable to open");
  said(WarningCode::FileFailure,
       "\"" + missing + "\"): the file cannot be opened for writing: No such file or directory");
  model.saveTo(path.c_str(), nullptr, false, true);
  model.closeFile((path + "x").c_str());
  said(WarningCode::CloseIgnored,
       "(\"" + path + "x\") does nothing: the file of this scene is \"" + path + "\"");
  model.closeFile(nullptr);
  said(WarningCode::CloseIgnored, "closeFile(null) does nothing");

  // A write that fails keeps the system's reason for the host.
  if (!Platform::FileExists("/dev/full")) return;
  Model full;
  full.setDiagnostics(&Recorder::Handle, &recorder);
  expectRefusal([&] { full.saveTo("/dev/full", nullptr, false, true); }, 10, "Unable to write");
  said(WarningCode::FileFailure, "writing the file failed: No space left on device");
}
