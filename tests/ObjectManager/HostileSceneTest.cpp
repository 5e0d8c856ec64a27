// Scenes a careless or hostile host may build: what closeFile reads must be
// what it checked, however deep the tree, and a failed saveTo leaves the
// scene as it was.

#include <pthread.h>

#include "ModelFile.h"
#include "ObjectManager/BuildSupport.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

// Runs `work` on a thread of 1 MiB of stack, as hosts' threads often have.
void runOnSmallStack(std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 1 << 20);
  pthread_t thread;
  auto body = [](void* job) -> void* {
    (*static_cast<std::function<void()>*>(job))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, body, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace

// A shape gives its name to its component. When that component is also an
// element set with cells per instance value, the mesh cuts it by the new
// name: the check must look at that list, not at the one of the old name,
// also where the mesh was checked sound under the old name before.
TEST(HostileScene, ASetRenamedByAShapeIsCheckedUnderItsNewName) {
  const struct {
    std::uint32_t badCell;
    bool meshBeforeShape;
  } cases[] = {{6, false}, {1000000, true}};
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.badCell);
    Scene_V1 scene;
    const Identifier root = makeObject(scene, GroupObject, "Root");
    const Identifier renamer = makeObject(scene, ShapeObject, "Bad");
    const Identifier mesh = makeObject(scene, MeshObject, "Mesh");
    if (testCase.meshBeforeShape) scene.addComponent(root, mesh);
    scene.addComponent(root, renamer);
    scene.addComponent(root, mesh);

    const Identifier otherMesh = makeObject(scene, MeshObject, "Elsewhere");
    const Identifier time = makeObject(scene, InstanceGroupObject, "Time");
    const Identifier triangle = makeArray(scene, Words{0, 1, 2}, 3);
    scene.setCoordinates(mesh, makeArray(scene, Floats{0, 0, 0, 1, 0, 0, 0, 1, 0}, 3));
    scene.setConnectivity(mesh, triangle);
    scene.setConnectivity<int>(mesh, time, 1, triangle, makeArray(scene, Words{3}));
    const Identifier set = makeObject(scene, GroupObject, "X");
    scene.addComponent(renamer, set);
    scene.addElementSet(mesh, set);
    scene.addElementSet<int>(mesh, time, 1, "X", makeSet(scene, "X", Words{0}));
    const Words badCells{testCase.badCell};
    scene.addElementSet<int>(otherMesh, time, 1, "Bad", makeSet(scene, "Bad", badCells));

    const std::string path = freshPath(std::to_string(testCase.badCell));
    expectRefusal([&] { closeScene(scene, root, path); }, 18,
                  "lists cell " + std::to_string(testCase.badCell) +
                      " at value \"1\", but the mesh has 1 cells");
  }
}

TEST(HostileScene, DeepTreesCloseOnASmallStack) {
  const int levels = 100000;
  const std::string path = freshPath();
  runOnSmallStack([&] {
    Scene_V1 scene;
    const Identifier root = makeObject(scene, GroupObject, "Level 0");
    Identifier parent = root;
    for (int level = 1; level < levels; ++level) {
      const Identifier child = scene.createObject(level % 2 == 0 ? GroupObject : ShapeObject);
      scene.addComponent(parent, child);
      parent = child;
    }
    const Identifier bottom = scene.createObject(GeometryObject);
    scene.setMeshType(bottom, PointMesh);
    scene.setCoordinates(bottom, makeArray(scene, Floats{1, 2, 3}, 3));
    scene.addComponent(parent, bottom);
    EXPECT_NO_THROW(closeScene(scene, root, path));
  });
  ReadModel read(path);
  ASSERT_EQ(read.records().size(), static_cast<std::size_t>(levels) + 1);
  const DovReader::TreeRecord& deepest = read.records().back();
  EXPECT_EQ(deepest.parent, static_cast<std::uint32_t>(levels));
  EXPECT_EQ(read.floats(deepest.id, "Coordinates"), (Floats{1, 2, 3}));
}

TEST(HostileScene, AFailedSaveToLeavesTheSceneUnbound) {
  RootedScene model;
  Scene_V1& scene = model.scene;
  scene.createDefaultViews(model.root);
  expectRefusal([&] { scene.saveTo("/dev/full", nullptr, false, true); }, 10,
                "Unable to write to file");
  expectRefusal([&] { scene.closeFile("/dev/full"); }, 19, "saveTo");
  const std::string path = freshPath();
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
  EXPECT_TRUE(DovReader::Container::Verify(path).empty());
  EXPECT_EQ(ReadModel(path).records().size(), 1u);
}

TEST(HostileScene, ACutRefusesCellsOutsideItsArraysInsteadOfReadingThem) {
  const Words polylength{3, 4};
  const Words connectivity{0, 1, 2, 3, 4, 5};  // the second cell runs one past its end
  const CellTable listed = CellTable::Listed(polylength);
  EXPECT_EQ(cutElementSet(Words{0, 0}, listed, connectivity).connectivity,
            (Words{0, 1, 2, 0, 1, 2}));
  const CellTable equal = CellTable::Equal(2, 3);
  for (const CellTable* table : {&listed, &equal})
    for (const Words& cells : {Words{2}, Words{0, 1000000}})
      expectRefusal([&] { cutElementSet(cells, *table, connectivity); }, 18, "outside its mesh");
  expectRefusal([&] { cutElementSet(Words{1}, listed, connectivity); }, 18, "cell 1,");
}
