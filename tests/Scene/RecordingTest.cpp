// The recording step and the setters that end in it, components, materials
// and application information.

#include <cstdint>
#include <string>
#include <vector>

#include "SceneTestSupport.h"

using namespace Kel::Dov;

namespace {

const std::string R = "\x1E";  // result key mark
const std::string S = "\x1D";  // element set key mark

struct RecordingScene : ::testing::Test {
  InspectableScene scene;
  Identifier mesh = scene.createObject(MeshObject);
  Identifier group = scene.createObject(InstanceGroupObject);

  Identifier array() { return scene.createObject(ArrayObject); }
  TextList texts(const std::string& key) { return *scene.property<TextList>(group, key); }
  IndexMap indices(const std::string& key) { return *scene.property<IndexMap>(group, key); }
  LinkList links(const Identifier& object, const std::string& key) {
    const LinkList* list = scene.property<LinkList>(object, key);
    return list != nullptr ? *list : LinkList();
  }
};

}  // namespace

TEST_F(RecordingScene, FourResultCallsLeaveTheListsOfTheExample) {
  const Identifier a1 = array(), a2 = array(), a3 = array(), a4 = array();
  scene.setResult(mesh, group, 0.5f, "Stress", a1);
  scene.setResult(mesh, group, 1.0f, "Stress", a2);
  scene.setResult(mesh, group, 0.5f, "Strain", a3);
  scene.setResult(mesh, group, 1, "Strain", a4);  // the same value text as 1.0f

  EXPECT_EQ((TextList{"0.5", "1"}), texts("Values"));
  EXPECT_EQ((IndexMap{{"0.5", 0}, {"1", 1}}), indices("Value Indices"));
  EXPECT_EQ((TextList{R + "Stress", R + "Strain"}), texts("Result Names"));
  EXPECT_EQ((IndexMap{{R + "Stress", 0}, {R + "Strain", 1}}), indices("Result Indices"));
  EXPECT_EQ((LinkList{a1.second, a2.second}), links(group, R + "Stress"));
  EXPECT_EQ((LinkList{a3.second, a4.second}), links(group, R + "Strain"));
  EXPECT_EQ(group.second, *scene.property<std::uint64_t>(mesh, "Instance Group"));
  // Without a type the array's type and width stay unset.
  EXPECT_FALSE(scene.table().hasProperty(a1.second, "Variable Type"));
  EXPECT_FALSE(scene.table().hasProperty(a1.second, "Dimension"));
}

TEST_F(RecordingScene, GroupsAreSharedBetweenMeshesAndALaterGroupWins) {
  const Identifier other = scene.createObject(MeshObject);
  const Identifier a = array(), b = array();
  scene.setResult(mesh, group, 1, "R", a);
  scene.setResult(other, group, 2, "R", b);
  EXPECT_EQ((LinkList{a.second, b.second}), links(group, R + "R"));
  EXPECT_EQ((TextList{"1", "2"}), texts("Values"));

  const Identifier secondGroup = scene.createObject(InstanceGroupObject);
  scene.setResult(mesh, secondGroup, 1, "R", a);
  EXPECT_EQ(secondGroup.second, *scene.property<std::uint64_t>(mesh, "Instance Group"));
}

TEST_F(RecordingScene, ResultTypesFixTypeAndWidthOfTheArray) {
  struct Case {
    int type, stored, width;
  };
  for (const Case& c : {Case{0, 12, 1}, {1, 13, 3}, {2, 14, 6}, {3, 15, 6}, {4, 12, 1}, {-1, 12, 1}}) {
    const Identifier recorded = array(), plain = array();
    scene.setResult(mesh, group, 1, "R", static_cast<VariableType>(c.type), recorded);
    scene.setResult(mesh, "R", static_cast<VariableType>(c.type), plain);
    for (const Identifier& target : {recorded, plain}) {
      EXPECT_EQ(c.stored, static_cast<int>(*scene.property<KelDov::Geometry::VariableType>(
                              target, "Variable Type")))
          << "type " << c.type;
      EXPECT_EQ(c.width, *scene.property<unsigned char>(target, "Dimension")) << "type " << c.type;
    }
  }
  // The forms without a group record nothing.
  EXPECT_EQ(6u, links(group, R + "R").size());
}

TEST_F(RecordingScene, ElementSetsEnterTheMeshOnlyUnderANewName) {
  const Identifier wheel1 = array(), wheel2 = array(), body = array();
  scene.setName(wheel1, "Wheel");
  scene.setName(wheel2, "Wheel");
  scene.addElementSet(mesh, group, 1, wheel1);
  scene.addElementSet(mesh, group, 2, wheel2);
  scene.addElementSet(mesh, group, 1, "Body", body);

  EXPECT_EQ((TextList{S + "Wheel", S + "Body"}), texts("Element Set Names"));
  EXPECT_EQ((IndexMap{{S + "Wheel", 0}, {S + "Body", 1}}), indices("Element Set Indices"));
  EXPECT_EQ((LinkList{wheel1.second, wheel2.second}), links(group, S + "Wheel"));
  EXPECT_EQ((LinkList{wheel1.second, body.second}), links(mesh, "Element Sets"));
  EXPECT_EQ(group.second, *scene.property<std::uint64_t>(wheel2, "Instance Id"));
  EXPECT_EQ((TextList{"1", "2"}), texts("Values"));

  // A result and a set of one name are different keys.
  scene.setResult(mesh, group, 1, "Wheel", array());
  EXPECT_EQ(1u, links(group, R + "Wheel").size());
  EXPECT_EQ(2u, links(group, S + "Wheel").size());

  // The plain form appends every time and touches no group.
  scene.addElementSet(mesh, body);
  scene.addElementSet(mesh, body);
  EXPECT_EQ((LinkList{wheel1.second, body.second, body.second, body.second}),
            links(mesh, "Element Sets"));
  EXPECT_EQ(2u, texts("Element Set Names").size());
}

TEST_F(RecordingScene, MeshBindingPerValueNamesTypesAndRecordsTheArray) {
  const Identifier coordinates = array(), connectivity = array(), polylength = array(),
                   nodeIds = array(), elementIds = array();
  scene.setCoordinates(mesh, group, 2, coordinates);
  scene.setConnectivity(mesh, group, 2, connectivity, polylength);
  scene.setNodeIndices(mesh, group, 2, nodeIds);
  scene.setElementIndices(mesh, group, 2, elementIds);

  struct Expected {
    Identifier array;
    const char* name;
    int type, width;
  };
  for (const Expected& e : {Expected{coordinates, "Coordinates", 1, 3}, {connectivity, "Connectivity", 6, 1},
                            {polylength, "Polylength", 9, 1}, {nodeIds, "Node Ids", 12, 1},
                            {elementIds, "Element Ids", 16, 1}}) {
    EXPECT_STREQ(e.name, scene.getName(e.array));
    EXPECT_EQ(e.type, static_cast<int>(*scene.property<KelDov::Geometry::VariableType>(
                          e.array, "Variable Type")));
    EXPECT_EQ(e.width, *scene.property<unsigned char>(e.array, "Dimension"));
    EXPECT_EQ(LinkList{e.array.second}, links(group, R + e.name));
    // Per-value bindings leave the mesh's plain links alone.
    EXPECT_FALSE(scene.table().hasProperty(mesh.second, e.name));
  }
  EXPECT_EQ(TextList{"2"}, texts("Values"));
}

TEST_F(RecordingScene, PlainBindingsLinkAndNameTheArrayAndComponentsCount) {
  const Identifier first = array(), second = array(), shared = array();
  scene.setCoordinates(mesh, first);
  scene.setCoordinates(mesh, second);
  scene.setConnectivity(mesh, shared, shared);
  scene.setElementIndices(mesh, first);
  EXPECT_EQ(second.second, *scene.property<std::uint64_t>(mesh, "Coordinates"));
  EXPECT_FALSE(scene.table().hasProperty(second.second, "Dimension"));
  EXPECT_EQ(shared.second, *scene.property<std::uint64_t>(mesh, "Connectivity"));
  EXPECT_EQ(shared.second, *scene.property<std::uint64_t>(mesh, "Polylength"));
  EXPECT_STREQ("Polylength", scene.getName(shared));
  EXPECT_STREQ("Element Ids", scene.getName(first));
  EXPECT_FALSE(scene.table().hasProperty(mesh.second, "Instance Group"));

  const Identifier child = scene.createObject(ShapeObject);
  const Identifier move = scene.createObject(TransformationObject);
  EXPECT_EQ(1u, scene.addComponent(group, child));
  EXPECT_EQ(2u, scene.addComponent(group, child, move));
  EXPECT_EQ(3u, scene.addComponent(group, group));
  scene.removeComponent(group, 0);  // does nothing
  EXPECT_EQ((LinkList{child.second, child.second, group.second}), links(group, "Components"));
  EXPECT_EQ((LinkList{NoObject, move.second, NoObject}), links(group, "Transformations"));
  scene.setMaterial(child, scene.createObject(MaterialObject));
  scene.setMaterial(child, group);
  EXPECT_EQ(group.second, *scene.property<std::uint64_t>(child, "Material"));
}
