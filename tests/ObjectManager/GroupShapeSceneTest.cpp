// Scenes of groups, transformations and shapes, written and read back.

#include "ModelFile.h"

#include "Platform/Platform.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

// A triangle geometry: enough for a node below a shape.
Identifier makeTriangle(Scene_V1& scene, const char* name) {
  const Identifier geometry = makeObject(scene, GeometryObject, name);
  scene.setCoordinates(geometry, makeArray(scene, Floats{0, 0, 0, 1, 0, 0, 0, 1, 0}, 3));
  scene.setConnectivity(geometry, makeArray(scene, Words{0, 1, 2}, 3));
  return geometry;
}

// A mesh of two triangles with one element set per triangle.
Identifier makeTwoSetMesh(Scene_V1& scene, const char* name, const char* first, const char* second) {
  const Identifier mesh = makeObject(scene, MeshObject, name);
  scene.setCoordinates(mesh, makeArray(scene, Floats{0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, 3));
  scene.setConnectivity(mesh, makeArray(scene, Words{0, 1, 2, 1, 3, 2}, 3));
  const Identifier a = makeObject(scene, ElementSetObject, first);
  scene.setValues<unsigned int>(a, Words{0}.data(), 1);
  const Identifier b = makeObject(scene, ElementSetObject, second);
  scene.setValues<unsigned int>(b, Words{1}.data(), 1);
  scene.addElementSet(mesh, a);
  scene.addElementSet(mesh, b);
  return mesh;
}

void closeScene(Scene_V1& scene, const Identifier& root, const std::string& path) {
  scene.createDefaultViews(root);
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
}

float draw() { return static_cast<float>(Platform::Random()) / 32767.0f; }

}  // namespace

TEST(GroupShapeScene, EntriesRunDepthFirstInCreationOrder) {
  const std::string path = freshPath();
  Scene_V1 scene;
  const Identifier root = makeObject(scene, GroupObject, "R");
  const Identifier shape = makeObject(scene, ShapeObject, "A");
  const Identifier geometry = makeTriangle(scene, "triangle");
  const Identifier transformation = makeObject(scene, TransformationObject, "T");
  scene.setTranslation(transformation, 1, 2, 3);
  scene.setRotation(transformation, 0.5f, 0.5f, 0.5f, 0.5f);
  scene.setScale(transformation, 2, 2, 2);
  scene.addComponent(shape, geometry);
  EXPECT_EQ(scene.addComponent(root, shape, transformation), 1u);
  EXPECT_EQ(scene.addComponent(root, makeTwoSetMesh(scene, "B", "s1", "s2")), 2u);
  closeScene(scene, root, path);

  ReadModel model(path);
  const struct {
    std::uint32_t parent;
    const char* type;
    const char* name;
  } expected[] = {{0, "Group", "R"},  {1, "Group", "T"},     {2, "Shape", "A"},
                  {3, "Geometry", "A"}, {1, "Group", "B"},  {5, "Shape", "s1"},
                  {6, "Geometry", "s1"}, {5, "Shape", "s2"}, {8, "Geometry", "s2"}};
  ASSERT_EQ(model.records().size(), 9u);
  for (std::uint32_t id = 1; id <= 9; ++id) {
    SCOPED_TRACE(id);
    EXPECT_EQ(model.record(id).parent, expected[id - 1].parent);
    EXPECT_EQ(model.record(id).typeName, expected[id - 1].type);
    EXPECT_EQ(model.record(id).name, expected[id - 1].name);
  }
  // The component took its shape's name, in the table too.
  EXPECT_STREQ(scene.getName(geometry), "A");

  const DovReader::GroupContent& moved = *model.record(2).group;
  EXPECT_EQ(std::vector<float>(moved.translation, moved.translation + 3), (Floats{1, 2, 3}));
  EXPECT_EQ(std::vector<float>(moved.rotation, moved.rotation + 4), (Floats{0.5f, 0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(std::vector<float>(moved.scale, moved.scale + 3), (Floats{2, 2, 2}));
  // A root with a mesh among two or more components carries the flag.
  EXPECT_EQ(model.record(1).group->rootFlag, 1);
  EXPECT_EQ(model.variableNames(4), (std::vector<std::string>{"Connectivity", "Polylength", "Coordinates"}));
}

TEST(GroupShapeScene, RootKeepsHostAttributesOtherGroupsTellVisibility) {
  const std::string path = freshPath();
  Scene_V1 scene;
  const Identifier root = makeObject(scene, GroupObject, "Root");
  scene.setProperty<int>(root, "Revision", 7);
  scene.setVisibility(root, false);
  const Identifier hidden = makeObject(scene, GroupObject, "Hidden");
  scene.setVisibility(hidden, false);
  scene.setProperty<const char*>(hidden, "Owner", "nobody");
  // A transformation without any of its keys still gets its node.
  const Identifier bare = makeObject(scene, TransformationObject, "Bare");
  scene.addComponent(root, hidden, bare);
  // Two meshes one level down do not flag the root.
  scene.addComponent(hidden, makeTwoSetMesh(scene, "M1", "a", "b"));
  scene.addComponent(hidden, makeTwoSetMesh(scene, "M2", "c", "d"));
  closeScene(scene, root, path);

  ReadModel model(path);
  const DovReader::GroupContent& rootGroup = *model.record(1).group;
  ASSERT_NE(rootGroup.attributes.Find("Revision"), nullptr);
  EXPECT_EQ(rootGroup.attributes.Find("Revision")->text, "7");
  EXPECT_EQ(rootGroup.attributes.Find("visible"), nullptr);
  EXPECT_EQ(std::vector<float>(rootGroup.rotation, rootGroup.rotation + 4), (Floats{0, 0, 1, 0}));
  EXPECT_EQ(rootGroup.rootFlag, 0);

  const DovReader::GroupContent& transform = *model.record(2).group;
  EXPECT_EQ(model.record(2).name, "Bare");
  EXPECT_TRUE(transform.attributes.entries.empty());
  EXPECT_EQ(std::vector<float>(transform.translation, transform.translation + 3), (Floats{0, 0, 0}));
  EXPECT_EQ(std::vector<float>(transform.rotation, transform.rotation + 4), (Floats{1, 0, 0, 0}));
  EXPECT_EQ(std::vector<float>(transform.scale, transform.scale + 3), (Floats{1, 1, 1}));

  const DovReader::GroupContent& group = *model.record(3).group;
  EXPECT_EQ(model.record(3).name, "Hidden");
  ASSERT_EQ(group.attributes.entries.size(), 1u);
  EXPECT_EQ(group.attributes.entries[0].key, "visible");
  EXPECT_EQ(group.attributes.entries[0].word, 0u);
  // Mesh groups carry no attributes at all.
  EXPECT_EQ(model.record(4).name, "M1");
  EXPECT_TRUE(model.record(4).group->attributes.entries.empty());
}

TEST(GroupShapeScene, RootFlagNeedsAMeshBesideAnotherComponent) {
  const auto flagOf = [](const std::string& path, bool secondIsMesh, bool withSecond) {
    Scene_V1 scene;
    const Identifier root = makeObject(scene, GroupObject, "R");
    scene.addComponent(root, makeTwoSetMesh(scene, "M", "a", "b"));
    if (withSecond) {
      const Identifier shape = makeObject(scene, ShapeObject, "S");
      scene.addComponent(root, secondIsMesh ? makeTwoSetMesh(scene, "N", "c", "d") : shape);
    }
    closeScene(scene, root, path);
    return ReadModel(path).record(1).group->rootFlag;
  };
  EXPECT_EQ(flagOf(freshPath("mesh_alone"), false, false), 0);
  EXPECT_EQ(flagOf(freshPath("mesh_and_shape"), false, true), 1);
  EXPECT_EQ(flagOf(freshPath("two_meshes"), true, true), 1);
}

TEST(GroupShapeScene, ShapesDrawThreeRandomsEachAndTakeTheComponentsDiffuse) {
  const auto write = [](const std::string& path) {
    Scene_V1 scene;
    const Identifier root = makeObject(scene, GroupObject, "R");
    const Identifier painted = makeObject(scene, ShapeObject, "Painted");
    const Identifier geometry = makeTriangle(scene, "g");
    const Identifier material = makeObject(scene, MaterialObject, "Steel");
    scene.setColor(material, DiffusiveColor, 0.25f, 0.5f, 0.75f, 0.5f);
    scene.setMaterial(geometry, material);
    scene.addComponent(painted, geometry);
    scene.addComponent(root, painted);
    scene.addComponent(root, makeObject(scene, ShapeObject, "Empty"));
    closeScene(scene, root, path);
  };
  const std::string first = freshPath("first");
  const std::string second = freshPath("second");
  write(first);
  write(second);
  ReadModel model(first);

  const DovReader::MaterialContent& painted = *model.record(2).material;
  EXPECT_EQ(std::vector<float>(painted.diffuse, painted.diffuse + 4), (Floats{0.25f, 0.5f, 0.75f, 1.0f}));
  // The ambient default was fixed when the shape was made, before any colour.
  const float ambient = 0.2f * 0.8f;
  EXPECT_EQ(std::vector<float>(painted.ambient, painted.ambient + 4),
            (Floats{ambient, ambient, ambient, 0.2f}));

  // The painted shape used draws 1 to 3 although its colour was replaced.
  Platform::SeedRandom(0);
  for (int i = 0; i < 3; ++i) draw();
  const Floats expected{draw(), draw(), draw(), 1.0f};
  ASSERT_EQ(model.record(4).name, "Empty");
  ASSERT_EQ(model.record(4).firstChild, 0u);
  const DovReader::MaterialContent& empty = *model.record(4).material;
  EXPECT_EQ(std::vector<float>(empty.diffuse, empty.diffuse + 4), expected);
  // Every scene starts the sequence again.
  const ReadModel secondModel(second);
  const DovReader::MaterialContent& again = *secondModel.record(4).material;
  EXPECT_EQ(std::vector<float>(again.diffuse, again.diffuse + 4), expected);
}

TEST(GroupShapeScene, SecondComponentOfAShapeIsRefusedAfterTheFirstIsBuilt) {
  const std::string path = freshPath();
  Scene_V1 scene;
  const Identifier root = makeObject(scene, GroupObject, "R");
  const Identifier shape = makeObject(scene, ShapeObject, "S");
  scene.addComponent(shape, makeTriangle(scene, "one"));
  scene.addComponent(shape, makeTriangle(scene, "two"));
  scene.addComponent(root, shape);
  scene.createDefaultViews(root);
  scene.saveTo(path.c_str(), nullptr, false, true);
  try {
    scene.closeFile(path.c_str());
    FAIL() << "no exception";
  } catch (const Kel::Util::Exception& error) {
    EXPECT_EQ(error.GetCode(), 13);
    EXPECT_STREQ(error.GetDescription(), "Not Implemented");
  }
  // The half-built tree cannot be finished later.
  try {
    scene.closeFile(path.c_str());
    FAIL() << "no exception";
  } catch (const Kel::Util::Exception& error) {
    EXPECT_EQ(error.GetCode(), 19);
  }
}
