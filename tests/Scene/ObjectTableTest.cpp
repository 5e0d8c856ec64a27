// Objects, names, titles and the identifier check.

#include <cstring>
#include <string>

#include "SceneTestSupport.h"

using namespace Kel::Dov;

TEST(ObjectTable, IndicesCountFromZeroAndTypesAreKeptUnchanged) {
  InspectableScene scene;
  const int types[] = {GroupObject, -7, 0x7fffffff};
  for (std::uint64_t i = 0; i < 3; ++i) {
    const Identifier object = scene.createObject(static_cast<ObjectType>(types[i]));
    EXPECT_EQ(i, object.second);
    EXPECT_EQ(types[i], static_cast<int>(scene.getType(object)));
    EXPECT_STREQ("", scene.getName(object));
  }
  EXPECT_TRUE(scene.table().record(1).properties.empty()) << "reading changes nothing";
}

TEST(ObjectTable, NamesAndTitlesAreSeparateAndCopied) {
  EXPECT_EQ(InspectableScene(nullptr).table().title(), InspectableScene("").table().title());
  InspectableScene scene("First");
  const Identifier object = scene.createObject(MeshObject);
  scene.setTitle(object, "Plate");
  EXPECT_EQ("First", scene.table().title());
  static_cast<Scene_V0&>(scene).setTitle("Second");
  EXPECT_EQ("Second", scene.table().title());
  EXPECT_STREQ("Plate", scene.getName(object));
  char buffer[] = "Temporary";
  static_cast<Scene_V0&>(scene).setName(object, buffer);
  std::strcpy(buffer, "Changed!!");
  EXPECT_STREQ("Temporary", scene.getName(object));
}

TEST(IdentifierCheck, ForeignOrOutOfRangeIdentifiersFailWithCode8) {
  Scene_V1 scene, other;
  const Identifier mine = scene.createObject(GroupObject);
  scene.createObject(GroupObject);
  const Identifier foreign = other.createObject(GroupObject);
  ASSERT_EQ(mine.second, foreign.second);
  ExpectInvalidIdentifier([&] { scene.getType(foreign); });
  ExpectInvalidIdentifier([&] { scene.validate(Identifier{mine.first, 2}); });
  EXPECT_NO_THROW(scene.validate(Identifier{mine.first, 1}));
  ExpectInvalidIdentifier([&] { scene.getName(Identifier{mine.first, ~0ull}); });
  ExpectInvalidIdentifier([&] { scene.setRandomColors(foreign); });
  ExpectInvalidIdentifier([&] { scene.removeComponent(foreign, mine.second); });
  EXPECT_NO_THROW(scene.removeComponent(mine, 12345));
}

// The bad identifier comes last, or a null text is passed: the checks run
// before anything is stored, so the table stays as it was.
TEST(IdentifierCheck, BadIdentifiersAndNullTextsAreRefusedBeforeAnythingChanges) {
  InspectableScene scene;
  const Identifier mesh = scene.createObject(MeshObject);
  const Identifier group = scene.createObject(InstanceGroupObject);
  const Identifier array = scene.createObject(ArrayObject);
  const Identifier bad{mesh.first, 99};
  const char* none = nullptr;
  ExpectInvalidIdentifier([&] { scene.setConnectivity(mesh, group, 1.5f, array, bad); });
  ExpectInvalidIdentifier([&] { scene.setConnectivity(mesh, array, bad); });
  ExpectInvalidIdentifier([&] { scene.addComponent(mesh, array, bad); });
  ExpectInvalidIdentifier([&] { scene.addElementSet(mesh, group, 1, "Set", bad); });
  ExpectInvalidIdentifier([&] { scene.setResult(mesh, group, 1, "R", VectorVariable, bad); });
  ExpectInvalidIdentifier([&] { scene.setResult(mesh, "R", VectorVariable, bad); });
  ExpectInvalidIdentifier([&] { scene.setMaterial(mesh, bad); });
  ExpectInvalidIdentifier([&] { scene.setCoordinates(bad, group, 1, array); });
  ExpectCode(16, [&] { scene.setName(mesh, none); });
  ExpectCode(16, [&] { scene.setProperty(mesh, none, 1); });
  ExpectCode(16, [&] { scene.setProperty(mesh, "key", none); });
  ExpectCode(16, [&] { scene.setResult(mesh, group, none, "R", array); });
  ExpectCode(16, [&] { scene.setResult(mesh, group, 1, none, VectorVariable, array); });
  ExpectCode(16, [&] { scene.setApplicationInfo("name", none); });
  ExpectCode(16, [&] { scene.setColor(mesh, DiffusiveColor, nullptr, false); });
  for (std::uint64_t i = 0; i < scene.table().objectCount(); ++i) {
    EXPECT_TRUE(scene.table().record(i).properties.empty()) << "object " << i;
    EXPECT_TRUE(scene.table().record(i).attributes.empty()) << "object " << i;
    EXPECT_EQ("", scene.table().record(i).name) << "object " << i;
  }
  // A null scene title is the empty title, as in the constructor.
  scene.setTitle(none);
  EXPECT_EQ("", scene.table().title());
}
