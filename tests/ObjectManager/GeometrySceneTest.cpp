// Scenes of geometry objects: variables, derived data, skipped objects and
// datasets shared across the whole scene.

#include "ModelFile.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

struct GeometryScene : RootedScene {
  Identifier add(const char* name) { return RootedScene::add(GeometryObject, name); }
};

}  // namespace

TEST(GeometryScene, VariablesInOrderWithDerivedPolylengthAndIdsAsFloats) {
  const std::string path = freshPath();
  GeometryScene s;
  const Identifier lines = s.add("Lines");
  s.scene.setMeshType(lines, LineMesh);
  const Floats coordinates{0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0};
  s.scene.setCoordinates(lines, makeArray(s.scene, coordinates, 3));
  // Ten entries with three per cell: three whole cells, the rest unreported.
  const Words connectivity{0, 1, 2, 1, 2, 3, 2, 3, 0, 9};
  const Identifier cells = makeArray(s.scene, connectivity);
  s.scene.setDimension(cells, 3);
  s.scene.setConnectivity(lines, cells);
  s.scene.setNodeIndices(lines, makeArray(s.scene, Words{1, 2, 16777216u, 16777217u}));
  closeScene(s.scene, s.root, path);

  ReadModel model(path);
  EXPECT_EQ(model.variableNames(2),
            (std::vector<std::string>{"Connectivity", "Polylength", "Coordinates", "Node Ids"}));
  EXPECT_EQ((Words{model.variable(2, "Connectivity").type, model.variable(2, "Polylength").type}),
            (Words{5, 9}));
  EXPECT_EQ(model.words(2, "Polylength"), (Words{3, 3, 3}));
  EXPECT_EQ(model.words(2, "Connectivity"), connectivity);
  EXPECT_EQ(model.variable(2, "Coordinates").width, 3);
  EXPECT_EQ(model.floats(2, "Coordinates"), coordinates);
  EXPECT_EQ(model.variable(2, "Node Ids").dataType, 1u);
  EXPECT_EQ(model.floats(2, "Node Ids"), (Floats{1, 2, 16777216.0f, 16777216.0f}));
}

TEST(GeometryScene, IncompleteObjectsDropOutSilently) {
  const std::string path = freshPath();
  GeometryScene s;
  const Identifier coordinates = makeArray(s.scene, Floats{0, 0, 0, 1, 1, 1}, 3);
  const Identifier connectivity = makeArray(s.scene, Words{0, 1}, 2);
  s.scene.setConnectivity(s.add("NoCoordinates"), connectivity);
  s.scene.setCoordinates(s.add("NoConnectivity"), coordinates);
  const Identifier withSet = s.add("WithSet");
  s.scene.setCoordinates(withSet, coordinates);
  s.scene.setConnectivity(withSet, connectivity);
  s.scene.addElementSet(withSet, makeArray(s.scene, Words{0}));
  // A point mesh needs no connectivity; coordinates as doubles read as none.
  const Identifier points = s.add("Points");
  s.scene.setMeshType(points, PointMesh);
  s.scene.setCoordinates(points, coordinates);
  const Identifier doubles = s.add("Doubles");
  s.scene.setCoordinates(doubles, makeArray(s.scene, std::vector<double>{0, 0, 0}, 3));
  s.scene.setConnectivity(doubles, connectivity);
  closeScene(s.scene, s.root, path);

  ReadModel model(path);
  ASSERT_EQ(model.records().size(), 3u);
  EXPECT_EQ(model.record(2).name, "Points");
  EXPECT_EQ(model.variableNames(2), (std::vector<std::string>{"Coordinates"}));
  EXPECT_EQ(model.record(3).name, "Doubles");
  EXPECT_EQ(model.variableNames(3), (std::vector<std::string>{"Connectivity", "Polylength"}));
}

TEST(GeometryScene, ArrayObjectsAreWrittenOnceAndEveryLaterUseLinksToTheFirst) {
  const std::string path = freshPath();
  GeometryScene s;
  const Identifier coordinates = makeArray(s.scene, SquareNodes, 3);
  const Identifier first = s.add("First");
  s.scene.setCoordinates(first, coordinates);
  s.scene.setConnectivity(first, makeArray(s.scene, Words{0, 1, 2}, 3));
  const Identifier second = s.add("Second");
  s.scene.setCoordinates(second, coordinates);
  s.scene.setConnectivity(second, makeArray(s.scene, Words{1, 3, 2}, 3));
  // The same object once more: links only, but for its derived polylength.
  s.scene.addComponent(s.root, second);
  closeScene(s.scene, s.root, path);

  ReadModel model(path);
  ASSERT_EQ(model.records().size(), 4u);
  EXPECT_FALSE(model.variable(2, "Coordinates").linked);
  for (std::uint32_t id : {3u, 4u}) {
    SCOPED_TRACE(id);
    const DovReader::Variable& user = model.variable(id, "Coordinates");
    EXPECT_TRUE(user.linked);
    EXPECT_EQ(user.linkEntryId, 2u);
    EXPECT_EQ(user.linkVariableIndex, model.variableIndex(2, "Coordinates"));
    EXPECT_EQ(model.floats(id, "Coordinates"), SquareNodes);
    EXPECT_FALSE(model.variable(id, "Polylength").linked);
    EXPECT_EQ(model.words(id, "Connectivity"), (Words{1, 3, 2}));
  }
  EXPECT_FALSE(model.variable(3, "Connectivity").linked);
  EXPECT_TRUE(model.variable(4, "Connectivity").linked);
  EXPECT_EQ(model.variable(4, "Connectivity").linkEntryId, 3u);
  // Datasets: 2 connectivities, 3 derived polylengths, 1 coordinates.
  EXPECT_EQ(model.container.StreamLength("Heavy Data"), 4u * (3 + 3 + 3 * 1 + SquareNodes.size()));
}
