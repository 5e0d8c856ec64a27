// Scenes of groups, transformations and shapes, written and read back.

#include <regex>

#include "ModelFile.h"

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
  scene.setCoordinates(mesh, makeArray(scene, SquareNodes, 3));
  scene.setConnectivity(mesh, makeArray(scene, Words{0, 1, 2, 1, 3, 2}, 3));
  scene.addElementSet(mesh, makeSet(scene, first, Words{0}));
  scene.addElementSet(mesh, makeSet(scene, second, Words{1}));
  return mesh;
}

}  // namespace

TEST(GroupShapeScene, EntriesRunDepthFirstInCreationOrder) {
  const std::string path = freshPath();
  Scene_V1 scene;
  scene.setApplicationInfo("Solver", 2);
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
  // parent, previous and next sibling, first and last child.
  const struct {
    const char* type;
    const char* name;
    Words links;
  } expected[] = {{"Group", "R", {0, 0, 0, 2, 5}},    {"Group", "T", {1, 0, 5, 3, 3}},
                  {"Shape", "A", {2, 0, 0, 4, 4}},    {"Geometry", "A", {3, 0, 0, 0, 0}},
                  {"Group", "B", {1, 2, 0, 6, 8}},    {"Shape", "s1", {5, 0, 8, 7, 7}},
                  {"Geometry", "s1", {6, 0, 0, 0, 0}}, {"Shape", "s2", {5, 6, 0, 9, 9}},
                  {"Geometry", "s2", {8, 0, 0, 0, 0}}};
  ASSERT_EQ(model.records().size(), 9u);
  for (std::uint32_t id = 1; id <= 9; ++id) {
    SCOPED_TRACE(id);
    const DovReader::TreeRecord& r = model.record(id);
    EXPECT_EQ(r.typeName, expected[id - 1].type);
    EXPECT_EQ(r.name, expected[id - 1].name);
    EXPECT_EQ((Words{r.parent, r.previousSibling, r.nextSibling, r.firstChild, r.lastChild}),
              expected[id - 1].links);
  }
  // The component took its shape's name, in the table too.
  EXPECT_STREQ(scene.getName(geometry), "A");

  const DovReader::GroupContent& moved = *model.record(2).group;
  EXPECT_EQ((std::vector<Floats>{floats(moved.translation), floats(moved.rotation), floats(moved.scale)}),
            (std::vector<Floats>{{1, 2, 3}, {0.5f, 0.5f, 0.5f, 0.5f}, {2, 2, 2}}));
  // A root with a mesh among two or more components carries the flag.
  EXPECT_EQ(model.record(1).group->rootFlag, 1);

  const DovReader::GlobalInformation& info = model.scene.Information();
  EXPECT_EQ((std::vector<std::string>{"0.1", "Solver", "2", "1.1"}),
            (std::vector<std::string>{info.version, info.applicationName, info.applicationVersion,
                                      info.formatVersion}));
  // "Wed Mar 05 14:07:09 2025 " and a time zone name.
  EXPECT_TRUE(std::regex_search(
      info.creationDate, std::regex("^[A-Z][a-z]{2} [A-Z][a-z]{2} \\d\\d \\d\\d:\\d\\d:\\d\\d \\d{4} ")))
      << info.creationDate;
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
  scene.addComponent(root, hidden, makeObject(scene, TransformationObject, "Bare"));
  // Two meshes one level down do not flag the root.
  scene.addComponent(hidden, makeTwoSetMesh(scene, "M1", "a", "b"));
  scene.addComponent(hidden, makeTwoSetMesh(scene, "M2", "c", "d"));
  closeScene(scene, root, path);

  ReadModel model(path);
  const DovReader::GroupContent& rootGroup = *model.record(1).group;
  ASSERT_NE(rootGroup.attributes.Find("Revision"), nullptr);
  EXPECT_EQ(rootGroup.attributes.Find("Revision")->text, "7");
  EXPECT_EQ(rootGroup.attributes.Find("visible"), nullptr);
  EXPECT_EQ(floats(rootGroup.rotation), (Floats{0, 0, 1, 0}));
  EXPECT_EQ(rootGroup.rootFlag, 0);

  const DovReader::GroupContent& bare = *model.record(2).group;
  EXPECT_EQ(model.record(2).name, "Bare");
  EXPECT_TRUE(bare.attributes.entries.empty());
  EXPECT_EQ((std::vector<Floats>{floats(bare.translation), floats(bare.rotation), floats(bare.scale)}),
            (std::vector<Floats>{{0, 0, 0}, {1, 0, 0, 0}, {1, 1, 1}}));

  const DovReader::GroupContent& group = *model.record(3).group;
  ASSERT_EQ(group.attributes.entries.size(), 1u);
  EXPECT_EQ(group.attributes.entries[0].key, "visible");
  EXPECT_EQ(group.attributes.entries[0].word, 0u);
  // Mesh groups carry no attributes at all.
  EXPECT_EQ(model.record(4).name, "M1");
  EXPECT_TRUE(model.record(4).group->attributes.entries.empty());
}

TEST(GroupShapeScene, ShapesDrawThreeRandomsEachAndTakeTheComponentsDiffuse) {
  const std::string path = freshPath();
  Scene_V1 scene;
  const Identifier root = makeObject(scene, GroupObject, "R");
  const Identifier shape = makeObject(scene, ShapeObject, "Painted");
  const Identifier geometry = makeTriangle(scene, "g");
  const Identifier material = makeObject(scene, MaterialObject, "Steel");
  scene.setColor(material, DiffusiveColor, 0.25f, 0.5f, 0.75f, 0.5f);
  scene.setMaterial(geometry, material);
  scene.addComponent(shape, geometry);
  scene.addComponent(root, shape);
  scene.addComponent(root, makeObject(scene, ShapeObject, "Empty"));
  closeScene(scene, root, path);
  ReadModel model(path);

  const DovReader::MaterialContent& painted = *model.record(2).material;
  EXPECT_EQ(floats(painted.diffuse), (Floats{0.25f, 0.5f, 0.75f, 1.0f}));
  // The ambient default was fixed when the shape was made, before any colour.
  const float ambient = 0.2f * 0.8f;
  EXPECT_EQ(floats(painted.ambient), (Floats{ambient, ambient, ambient, 0.2f}));

  // The painted shape used draws 1 to 3 although its colour was replaced.
  ASSERT_EQ(model.record(4).name, "Empty");
  EXPECT_EQ(floats(model.record(4).material->diffuse), drawnDiffuse(3));
}

TEST(GroupShapeScene, SecondComponentOfAShapeIsRefusedAfterTheFirstIsBuilt) {
  const std::string path = freshPath();
  Scene_V1 scene;
  const Identifier root = makeObject(scene, GroupObject, "R");
  const Identifier shape = makeObject(scene, ShapeObject, "S");
  scene.addComponent(shape, makeTriangle(scene, "one"));
  scene.addComponent(shape, makeTriangle(scene, "two"));
  scene.addComponent(root, shape);
  expectRefusal([&] { closeScene(scene, root, path); }, 13, "Not Implemented");
  // The half-built tree cannot be finished later.
  expectRefusal([&] { scene.closeFile(path.c_str()); }, 19, "");
}
