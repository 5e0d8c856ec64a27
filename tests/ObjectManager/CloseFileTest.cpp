// Binding and closing: the path rule, and the host errors that closeFile
// refuses before it writes anything, so that the host can mend the scene
// and close again.

#include "ModelFile.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

// A root group with one mesh object of two triangles and one element set.
struct SmallModel {
  Scene_V1 scene;
  Identifier root = makeObject(scene, GroupObject, "Root");
  Identifier mesh = makeObject(scene, MeshObject, "Plate");
  Identifier connectivity = makeArray(scene, Words{0, 1, 2, 1, 3, 2}, 3);
  Identifier set = makeSet(scene, "Skin", Words{0, 1});
  Identifier extra{0, 0};  // whatever a case needs to mend the model

  SmallModel() {
    scene.addComponent(root, mesh);
    scene.setCoordinates(mesh, makeArray(scene, SquareNodes, 3));
    scene.setConnectivity(mesh, connectivity);
    scene.addElementSet(mesh, set);
    scene.createDefaultViews(root);
  }
  void close(const std::string& path) { scene.closeFile(path.c_str()); }
  void save(const std::string& path) { scene.saveTo(path.c_str(), nullptr, false, true); }
};

std::string named(const Identifier& object, const char* name) {
  return "object " + std::to_string(object.second) + " \"" + name + "\"";
}

}  // namespace

TEST(CloseFile, OtherPathDoesNothingAndTheRightOneFinishesTheFile) {
  const std::string path = freshPath();
  SmallModel model;
  model.scene.saveTo(path.c_str(), "ignored", true, true);
  model.close(path.substr(0, path.size() - 1) + "V");
  model.close(path + " ");
  model.scene.closeFile(nullptr);
  model.close(path);
  ReadModel read(path);
  EXPECT_EQ(read.records().size(), 4u);
  EXPECT_EQ(read.words(4, "Connectivity"), (Words{0, 1, 2, 1, 3, 2}));
}

TEST(CloseFile, StateErrorsWithoutFileOrRootAndOnceFinished) {
  const std::string path = freshPath();
  {
    SmallModel model;
    // Never bound: the empty path equals the empty file name.
    expectRefusal([&] { model.close(""); }, 19, "saveTo");
    model.save(path);
  }
  // A failed saveTo keeps the path but binds no file.
  SmallModel model;
  expectRefusal([&] { model.scene.saveTo(path.c_str()); }, 10, "File exists");
  expectRefusal([&] { model.close(path); }, 19, "saveTo");

  Scene_V1 rootless;
  rootless.createObject(GroupObject);
  rootless.saveTo(path.c_str(), nullptr, false, true);
  // The path is compared first: another path is no error even here.
  rootless.closeFile((path + "x").c_str());
  expectRefusal([&] { rootless.closeFile(path.c_str()); }, 19, "createDefaultViews");

  // A finished file is neither finished again nor followed by another.
  const std::string other = freshPath("other");
  model.save(other);
  model.close(other);
  const std::vector<unsigned char> finished = fileBytes(other);
  expectRefusal([&] { model.close(other); }, 19, "already finished");
  expectRefusal([&] { model.save(path); }, 19, "already");
  EXPECT_EQ(fileBytes(other), finished);
}

// Each case breaks the small model in one way, is refused naming the
// object, and closes cleanly once mended.
struct ModelErrorCase {
  const char* title;
  std::function<std::string(SmallModel&)> breakModel;  // returns the mention
  std::function<void(SmallModel&)> mend;
};

TEST(CloseFile, ModelErrorsAreRefusedBeforeAnythingIsWrittenAndCanBeMended) {
  auto floats4 = [](SmallModel& m) { return makeArray(m.scene, Floats{1, 2, 3, 4}); };
  const ModelErrorCase cases[] = {
      {"component cycle",
       [](SmallModel& m) {
         const Identifier inner = makeObject(m.scene, GroupObject, "Loop");
         m.scene.addComponent(m.root, inner);
         m.scene.addComponent(inner, m.root);
         return std::string("cycle");
       },
       [](SmallModel& m) {
         const Identifier fresh = makeObject(m.scene, GroupObject, "Root");
         m.scene.addComponent(fresh, m.mesh);
         m.scene.createDefaultViews(fresh);
       }},
      {"dimension 0",
       [](SmallModel& m) {
         m.scene.setDimension(m.connectivity, 0);
         return named(m.connectivity, "Connectivity") + " has \"Dimension\" 0";
       },
       [](SmallModel& m) { m.scene.setDimension(m.connectivity, 3); }},
      {"cell outside",
       [](SmallModel& m) {
         m.scene.setValues<unsigned int>(m.set, Words{1, 2}.data(), 2);
         return named(m.mesh, "Plate") + ": element set " + named(m.set, "Skin") +
                " lists cell 2, but the mesh has 2 cells";
       },
       [](SmallModel& m) { m.scene.setValues<unsigned int>(m.set, Words{1}.data(), 1); }},
      {"slice beyond",
       [](SmallModel& m) {
         m.scene.setConnectivity(m.mesh, m.connectivity, makeArray(m.scene, Words{3, 4}));
         return std::string("end at position 7 of a connectivity of 6");
       },
       [](SmallModel& m) { m.scene.setConnectivity(m.mesh, m.connectivity, makeArray(m.scene, Words{3, 3})); }},
      {"short result list",
       [&](SmallModel& m) {
         m.extra = makeObject(m.scene, InstanceGroupObject, "Time");
         m.scene.setResult<int>(m.mesh, m.extra, 1, "Stress", floats4(m));
         m.scene.setResult<int>(m.mesh, m.extra, 2, "Stress", floats4(m));
         m.scene.setResult<int>(m.mesh, m.extra, 1, "Strain", floats4(m));
         return "\"Strain\" on instance group " + named(m.extra, "Time") +
                " has 1 entries, but the group has 2 values";
       },
       [&](SmallModel& m) { m.scene.setResult<int>(m.mesh, m.extra, 2, "Strain", floats4(m)); }},
      {"per-value cells missing",
       [](SmallModel& m) {
         m.extra = makeObject(m.scene, InstanceGroupObject, "Step");
         m.scene.setConnectivity<int>(m.mesh, m.extra, 1, makeArray(m.scene, Words{0, 1, 2}),
                                      makeArray(m.scene, Words{3}));
         return std::string("the per-value cells of element set \"Skin\"");
       },
       [](SmallModel& m) {
         m.scene.addElementSet<int>(m.mesh, m.extra, 1, "Skin", makeSet(m.scene, "Skin", Words{0}));
       }},
      {"per-value polylength of floats",
       [](SmallModel& m) {
         const Identifier step = makeObject(m.scene, InstanceGroupObject, "Step");
         m.extra = makeArray(m.scene, Floats{3});
         m.scene.setConnectivity<int>(m.mesh, step, 1, makeArray(m.scene, Words{0, 1, 2}), m.extra);
         m.scene.addElementSet<int>(m.mesh, step, 1, "Skin", makeSet(m.scene, "Skin", Words{0}));
         return "the polylength at value \"1\" is " + named(m.extra, "Polylength") +
                ", whose \"Array\" is not of unsigned int";
       },
       [](SmallModel& m) { m.scene.setValues<unsigned int>(m.extra, Words{3}.data(), 1); }},
  };
  for (const ModelErrorCase& testCase : cases) {
    SCOPED_TRACE(testCase.title);
    const std::string path = freshPath(std::string("_") + std::to_string(&testCase - cases));
    SmallModel model;
    model.save(path);
    const std::string mention = testCase.breakModel(model);
    expectRefusal([&] { model.close(path); }, 18, mention);
    testCase.mend(model);
    model.close(path);
    ReadModel read(path);
    EXPECT_EQ(read.container.StreamNames().front(), "Heavy Data");
    EXPECT_FALSE(read.records().empty());
  }
}
