// The typed property store, text attributes and the value text rule.

#include <cstdint>
#include <string>
#include <vector>

#include "ObjectManager/ValueText.h"
#include "SceneTestSupport.h"

using namespace Kel::Dov;

TEST(PropertyStore, ReadsAreExactlyTypedAndInsertTheDefault) {
  InspectableScene scene;
  ObjectManager& table = scene.table();
  const std::uint64_t object = scene.createObject(ArrayObject).second;

  EXPECT_FALSE(table.hasProperty(object, "Dimension"));
  unsigned char* width = table.readProperty<unsigned char>(object, "Dimension", 4);
  ASSERT_NE(nullptr, width);
  EXPECT_EQ(4, *width);
  EXPECT_TRUE(table.hasProperty(object, "Dimension"));
  *width = 9;
  // Another type reads as null and leaves the value alone; no conversion.
  EXPECT_EQ(nullptr, table.readProperty<unsigned int>(object, "Dimension", 1));
  EXPECT_EQ(9, *table.readProperty<unsigned char>(object, "Dimension", 1));
  // Storing replaces a value of any type.
  table.storeProperty(object, "Array", std::vector<double>{1.0, 2.0});
  EXPECT_EQ(nullptr, table.readProperty<std::vector<float>>(object, "Array", {}));
  table.storeProperty(object, "Array", std::vector<float>{3.0f});
  EXPECT_EQ(nullptr, table.readProperty<std::vector<double>>(object, "Array", {}));
  EXPECT_EQ(std::vector<float>{3.0f}, *table.readProperty<std::vector<float>>(object, "Array", {}));
  // Keys are compared exactly.
  EXPECT_FALSE(table.hasProperty(object, "dimension"));
  EXPECT_FALSE(table.hasProperty(object, "Dimension "));
}

TEST(ValueText, EachElementTypeBecomesItsText) {
  const std::pair<std::string, std::string> cases[] = {
      {"A", ValueText(static_cast<unsigned char>(65))},
      {std::string(1, '\xff'), ValueText(static_cast<signed char>(-1))},
      {"-32768", ValueText(static_cast<short>(-32768))},
      {"18446744073709551615", ValueText(18446744073709551615ull)},
      {"0.5", ValueText(0.5f)}, {"2", ValueText(2.0)}, {"0.1", ValueText(0.1)},
      {"1.23457e+06", ValueText(1234567.0)}, {"1e-07", ValueText(1e-7)},
      {"Step 3", ValueText("Step 3")}};
  for (const auto& c : cases) EXPECT_EQ(c.first, c.second);
}

TEST(TextAttributes, SetPropertyStoresTheValueTextUnderTheHostsKey) {
  InspectableScene scene;
  const Identifier object = scene.createObject(GroupObject);
  scene.setProperty(object, "count", 7);
  scene.setProperty(object, "letter", static_cast<unsigned char>(0));
  scene.setProperty(object, "wide", std::int64_t(-5));
  scene.setProperty(object, "", 0.1);
  for (const auto& c : {std::pair<const char*, const char*>{"count", "7"}, {"letter", ""},
                        {"wide", "-5"}, {"", "0.1"}, {"COUNT", "<absent>"}})
    EXPECT_EQ(c.second, scene.attribute(object, c.first)) << c.first;
  // Attributes and properties never meet.
  scene.setDimension(object, 3);
  scene.setProperty(object, "Dimension", 8);
  EXPECT_EQ(3, *scene.property<unsigned char>(object, "Dimension"));
  EXPECT_EQ("8", scene.attribute(object, "Dimension"));
  // Long texts are cut to 255 bytes; the rest of the area is zero-filled.
  scene.setProperty(object, "long", std::string(300, 'L').c_str());
  EXPECT_EQ(std::string(255, 'L'), scene.attribute(object, "long"));
  scene.setProperty(object, "short", "ab");
  const auto& value = scene.table().record(object.second).attributes.at("short");
  for (std::size_t i = 2; i < sizeof value.value.text; ++i) ASSERT_EQ(0, value.value.text[i]) << i;
}
