// Objects, names, titles and the identifier check.

#include <cstring>
#include <string>

#include "SceneTestSupport.h"

using namespace Kel::Dov;

TEST(ObjectTable, IndicesCountFromZeroAndTypesAreKeptUnchanged) {
  InspectableScene scene;
  const Identifier first = scene.createObject(GroupObject);
  const Identifier second = scene.createObject(static_cast<ObjectType>(-7));
  const Identifier third = scene.createObject(static_cast<ObjectType>(0x7fffffff));
  EXPECT_EQ(0u, first.second);
  EXPECT_EQ(1u, second.second);
  EXPECT_EQ(2u, third.second);
  EXPECT_EQ(first.first, second.first);
  EXPECT_EQ(GroupObject, scene.getType(first));
  EXPECT_EQ(-7, static_cast<int>(scene.getType(second)));
  EXPECT_EQ(0x7fffffff, static_cast<int>(scene.getType(third)));
  EXPECT_STREQ("", scene.getName(first));
  EXPECT_TRUE(scene.table().record(1).properties.empty()) << "reading changes nothing";
}

TEST(ObjectTable, NamesAndTitlesAreSeparateAndCopied) {
  EXPECT_EQ(InspectableScene(nullptr).table().title(), InspectableScene("").table().title());
  InspectableScene scene("First");
  const Identifier object = scene.createObject(MeshObject);
  scene.setTitle(object, "Plate");
  EXPECT_STREQ("Plate", scene.getName(object));
  EXPECT_EQ("First", scene.table().title());
  Scene_V0& base = scene;
  base.setTitle("Second");
  EXPECT_EQ("Second", scene.table().title());
  EXPECT_STREQ("Plate", scene.getName(object));
  char buffer[] = "Temporary";
  base.setName(object, buffer);
  std::strcpy(buffer, "Changed!!");
  EXPECT_STREQ("Temporary", scene.getName(object));
}

TEST(IdentifierCheck, ForeignOrOutOfRangeIdentifiersFailWithCode8) {
  Scene_V1 scene;
  Scene_V1 other;
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

TEST(IdentifierCheck, EveryIdentifierIsCheckedBeforeAnythingChanges) {
  InspectableScene scene;
  const Identifier mesh = scene.createObject(MeshObject);
  const Identifier group = scene.createObject(InstanceGroupObject);
  const Identifier connectivity = scene.createObject(ArrayObject);
  const Identifier bad{mesh.first, 99};
  auto untouched = [&] {
    for (std::uint64_t i = 0; i < scene.table().objectCount(); ++i) {
      EXPECT_TRUE(scene.table().record(i).properties.empty()) << "object " << i;
      EXPECT_STREQ("", scene.table().record(i).name.c_str()) << "object " << i;
    }
  };

  // The bad identifier is last: the earlier ones are fine, yet nothing moves.
  ExpectInvalidIdentifier([&] { scene.setConnectivity(mesh, group, 1.5f, connectivity, bad); });
  ExpectInvalidIdentifier([&] { scene.setConnectivity(mesh, connectivity, bad); });
  ExpectInvalidIdentifier([&] { scene.addComponent(mesh, connectivity, bad); });
  ExpectInvalidIdentifier([&] { scene.addElementSet(mesh, group, 1, "Set", bad); });
  ExpectInvalidIdentifier([&] { scene.setResult(mesh, group, 1, "R", VectorVariable, bad); });
  ExpectInvalidIdentifier([&] { scene.setResult(mesh, "R", VectorVariable, bad); });
  ExpectInvalidIdentifier([&] { scene.setMaterial(mesh, bad); });
  ExpectInvalidIdentifier([&] { scene.setCoordinates(bad, group, 1, connectivity); });
  untouched();
}

TEST(TextArguments, NullTextIsRefusedBeforeAnythingChanges) {
  InspectableScene scene;
  const Identifier mesh = scene.createObject(MeshObject);
  const Identifier group = scene.createObject(InstanceGroupObject);
  const Identifier array = scene.createObject(ArrayObject);
  const char* none = nullptr;
  ExpectCode(16, [&] { scene.setName(mesh, none); });
  ExpectCode(16, [&] { scene.setProperty(mesh, none, 1); });
  ExpectCode(16, [&] { scene.setProperty(mesh, "key", none); });
  ExpectCode(16, [&] { scene.setResult(mesh, group, none, "R", array); });
  ExpectCode(16, [&] { scene.setResult(mesh, group, 1, none, VectorVariable, array); });
  ExpectCode(16, [&] { scene.setApplicationInfo("name", none); });
  ExpectCode(16, [&] { scene.setColor(mesh, DiffusiveColor, nullptr, false); });
  for (std::uint64_t i = 0; i < scene.table().objectCount(); ++i)
    EXPECT_TRUE(scene.table().record(i).properties.empty());
  EXPECT_TRUE(scene.table().record(0).attributes.empty());
  // A null scene title is the empty title, as in the constructor.
  scene.setTitle(none);
  EXPECT_EQ("", scene.table().title());
}
