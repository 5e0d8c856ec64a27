// Scenes of mesh objects: element sets cut out of the mesh, their colours,
// data shared among the sets, and data per instance value. Results per value
// shared among the sets are pinned byte for byte in StreamIdentityTest.

#include "ModelFile.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

struct MeshScene : RootedScene {
  Identifier addMesh(const char* name) { return add(MeshObject, name); }
  Identifier addSet(const Identifier& mesh, const char* name, const Words& cells) {
    const Identifier set = makeSet(scene, name, cells);
    scene.addElementSet(mesh, set);
    return set;
  }
};

void expectLink(const ReadModel& model, std::uint32_t id, std::uint32_t index,
                std::uint32_t targetId, std::uint32_t targetIndex) {
  const DovReader::Variable& variable = model.record(id).variables.at(index);
  SCOPED_TRACE(variable.name);
  EXPECT_TRUE(variable.linked);
  EXPECT_EQ(variable.linkEntryId, targetId);
  EXPECT_EQ(variable.linkVariableIndex, targetIndex);
}

}  // namespace

TEST(MeshScene, SetsCutByDimensionShareNodeIdsUnderTheirOwnName) {
  const std::string path = freshPath();
  MeshScene s;
  const Identifier coordinates = makeArray(s.scene, SquareNodes, 3);
  const Identifier mesh = s.addMesh("Quads");
  s.scene.setCoordinates(mesh, coordinates);
  s.scene.setConnectivity(mesh, makeArray(s.scene, Words{0, 1, 3, 2, 2, 3, 1, 0}, 4));
  s.scene.setNodeIndices(mesh, makeArray(s.scene, Words{101, 102, 103, 104}));
  s.addSet(mesh, "Back", Words{1, 1});
  s.addSet(mesh, "Both", Words{0, 1});
  s.addSet(mesh, "None", Words{});
  closeScene(s.scene, s.root, path);

  ReadModel model(path);
  const std::string nodeIds = std::string("Node Ids") + '\x1E';
  EXPECT_EQ(model.variableNames(4),
            (std::vector<std::string>{"Connectivity", "Polylength", "Coordinates", nodeIds}));
  EXPECT_EQ(model.words(4, "Connectivity"), (Words{2, 3, 1, 0, 2, 3, 1, 0}));
  EXPECT_EQ(model.words(4, "Polylength"), (Words{4, 4}));
  EXPECT_EQ(model.floats(4, nodeIds), (Floats{101, 102, 103, 104}));
  EXPECT_EQ(model.words(6, "Connectivity"), (Words{0, 1, 3, 2, 2, 3, 1, 0}));
  expectLink(model, 6, 3, 4, 3);
  EXPECT_EQ(model.record(8).name, "None");
  EXPECT_EQ(model.variable(8, "Connectivity").byteSize, 0u);
  EXPECT_EQ(model.variable(8, "Polylength").byteSize, 0u);
  EXPECT_FALSE(model.variable(8, "Polylength").linked);
}

TEST(MeshScene, SetColoursApplyInOrderWithAmbientIntensityLast) {
  const std::string path = freshPath();
  MeshScene s;
  const Identifier mesh = s.addMesh("M");
  s.scene.setConnectivity(mesh, makeArray(s.scene, Words{0, 1, 2}, 3));
  const Identifier painted = s.addSet(mesh, "Painted", Words{0});
  s.scene.setColor(painted, DiffusiveColor, 0.2f, 0.4f, 0.6f, 0.0f);
  s.scene.setColor(painted, SpecularColor, 1, 0, 0, 1);
  s.scene.setColor(painted, EmissiveColor, 0, 1, 0, 1);
  s.scene.setColor(painted, AmbientColor, 0.9f, 0.9f, 0.9f, 0.9f);
  s.scene.setAmbientIntensity(painted, 0.5f);
  s.scene.setVisibility(painted, false);
  const Identifier ambient = s.addSet(mesh, "Ambient", Words{0});
  s.scene.setColor(ambient, AmbientColor, 0.3f, 0.3f, 0.3f, 0.7f);
  s.scene.setAmbientIntensity(s.addSet(mesh, "Dark", Words{0}), 0.0f);
  closeScene(s.scene, s.root, path);

  ReadModel model(path);
  const DovReader::MaterialContent& first = *model.record(3).material;
  EXPECT_EQ(first.visible, 0);
  EXPECT_EQ(floats(first.diffuse), (Floats{0.2f, 0.4f, 0.6f, 1.0f}));
  EXPECT_EQ(floats(first.specular), (Floats{1, 0, 0, 1}));
  EXPECT_EQ(floats(first.emissive), (Floats{0, 1, 0, 1}));
  EXPECT_EQ(floats(first.ambient),
            (Floats{0.5f * 0.2f, 0.5f * 0.4f, 0.5f * 0.6f, 0.5f}));

  // The second set's diffuse is draws 4 to 6; its ambient alpha stays 0.2.
  EXPECT_EQ(model.record(5).material->visible, 1);
  EXPECT_EQ(floats(model.record(5).material->diffuse), drawnDiffuse(3));
  EXPECT_EQ(floats(model.record(5).material->ambient), (Floats{0.3f, 0.3f, 0.3f, 0.2f}));
  EXPECT_EQ(floats(model.record(7).material->ambient), (Floats{0, 0, 0, 0}));
}

TEST(MeshScene, ConnectivityPerValueIsCutPerSetAndValue) {
  const std::string path = freshPath();
  MeshScene s;
  const Identifier mesh = s.addMesh("M");
  s.scene.setCoordinates(mesh, makeArray(s.scene, SquareNodes, 3));
  const Identifier step = makeObject(s.scene, InstanceGroupObject, "Step");
  // Value 1: two triangles; value 2: one quad and one triangle.
  s.scene.setConnectivity<int>(mesh, step, 1, makeArray(s.scene, Words{0, 1, 2, 1, 3, 2}),
                               makeArray(s.scene, Words{3, 3}));
  s.scene.setConnectivity<int>(mesh, step, 2, makeArray(s.scene, Words{0, 1, 3, 2, 1, 3, 2}),
                               makeArray(s.scene, Words{4, 3}));
  s.scene.setElementIndices<int>(mesh, step, 1, makeArray(s.scene, Words{7, 8}));
  s.scene.setElementIndices<int>(mesh, step, 2, makeArray(s.scene, Words{7, 9}));
  const char* const setNames[] = {"First", "Second"};
  const Words cells[2][2] = {{Words{0}, Words{1, 0}}, {Words{1}, Words{}}};
  for (int set = 0; set < 2; ++set)
    for (int value = 0; value < 2; ++value)
      s.scene.addElementSet<int>(mesh, step, value + 1, makeSet(s.scene, setNames[set], cells[set][value]));
  closeScene(s.scene, s.root, path);

  ReadModel model(path);
  std::vector<std::string> names;
  for (const char* name : {"Connectivity", "Polylength", "Element Ids", "Coordinates"})
    for (const char* value : {"1", "2"}) names.push_back(at(name, "Step", value));
  ASSERT_EQ(model.record(4).name, "First");
  EXPECT_EQ(model.variableNames(4), names);
  EXPECT_EQ(model.variableNames(6), names);
  EXPECT_EQ(model.words(4, at("Connectivity", "Step", "2")), (Words{1, 3, 2, 0, 1, 3, 2}));
  EXPECT_EQ(model.words(4, at("Polylength", "Step", "2")), (Words{3, 4}));
  EXPECT_EQ(model.words(6, at("Connectivity", "Step", "1")), (Words{1, 3, 2}));
  EXPECT_EQ(model.variable(6, at("Connectivity", "Step", "2")).byteSize, 0u);
  for (std::uint32_t i = 0; i < 4; ++i) EXPECT_FALSE(model.record(6).variables[i].linked) << i;
  // Element ids arrive whole in every set.
  expectLink(model, 6, 5, 4, 5);
  EXPECT_EQ(model.words(6, at("Element Ids", "Step", "2")), (Words{7, 9}));
  EXPECT_EQ(model.variable(4, at("Element Ids", "Step", "1")).type, 16u);
  expectLink(model, 4, 7, 4, 6);
  expectLink(model, 6, 6, 4, 6);
}
