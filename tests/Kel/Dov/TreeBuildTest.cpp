// Building the scene tree: nodes, variables, links and default colours.

#include <gtest/gtest.h>

#include <string>

#include "Kel/Dov/Tree.h"
#include "StreamBytes.h"
#include "Kel/Util/Coding.h"
#include "Platform/Platform.h"

namespace {

using DovTest::ExpectFailure;
using KelDov::AttributeMap;
using KelDov::AttributeValue;
using KelDov::Geometry;

AttributeMap Texts(std::initializer_list<std::pair<const char*, const char*>> pairs) {
  AttributeMap map;
  for (const auto& p : pairs) map[p.first] = AttributeValue::Text(p.second);
  return map;
}

KelDov::NumericArray Array(std::uint64_t byteSize, std::uint8_t width) {
  KelDov::NumericArray array;
  array.byteSize = byteSize;
  array.width = width;
  array.dataType = KelDov::DataTypeFloat;
  return array;
}

Geometry& GeometryAt(KelDov::Tree& tree, std::uint32_t id) {
  return dynamic_cast<Geometry&>(*tree[id].value);
}

TEST(TreeBuildTest, AddVariableAgainReplacesArrayAndOffsetAndMergesAttributes) {
  KelDov::Tree tree;
  tree.AddGeometry("g");
  KelDov::VariableRef first =
      tree.AddVariable("T", Geometry::ScalarValues, 40, Array(12, 1), Texts({{"Unit", "K"}, {"Step", "1"}}));
  KelDov::VariableRef second =
      tree.AddVariable("T", Geometry::VectorValues, 80, Array(24, 3), Texts({{"Step", "2"}}));
  tree.AddVariable("t", Geometry::ScalarValues, 0, Array(4, 1), AttributeMap());

  EXPECT_EQ(2u, first.entryId);
  EXPECT_EQ(0u, first.variableIndex);
  EXPECT_EQ(0u, second.variableIndex);
  Geometry& g = GeometryAt(tree, 2);
  ASSERT_EQ(2u, g.variables.size());  // "t" differs only in case: a new variable
  const Geometry::Variable& v = g.variables[0];
  EXPECT_EQ(Geometry::VectorValues, v.type);
  EXPECT_EQ(24u, v.array.byteSize);
  EXPECT_EQ(3u, v.array.width);
  EXPECT_EQ(80u, g.datasetOffsets.at("T"));
  EXPECT_EQ("K", v.attributes.at("Unit").GetText());
  EXPECT_EQ("2", v.attributes.at("Step").GetText());
}

TEST(TreeBuildTest, AttributeFilterDropsHostKeysAndFindsVibrationModes) {
  KelDov::Tree tree;
  tree.AddGeometry("g");
  tree.AddVariable("mode", Geometry::VectorValues, 0, Array(12, 3),
                   Texts({{"Category", "Vibration"}, {"Complex", "x"}, {"Contents", "x"},
                          {"DataSource", "x"}, {"DataType", "x"}, {"Structure", "x"},
                          {"Link.", "x"}, {"Link.Target", "x"}, {"Link", "kept"},
                          {"complex", "kept"}}));
  tree.AddVariable("other", Geometry::ScalarValues, 0, Array(4, 1), Texts({{"Category", "vibration"}}));
  Geometry& g = GeometryAt(tree, 2);
  const Geometry::Variable& mode = g.variables[0];
  EXPECT_EQ(1u, mode.vibration);
  std::string keys;
  for (const auto& entry : mode.attributes) keys += entry.first + ",";
  EXPECT_EQ("Category,Link,complex,", keys);
  EXPECT_EQ(0u, g.variables[1].vibration);

  // Vibration is worked out again on every call.
  tree.AddVariable("mode", Geometry::VectorValues, 0, Array(12, 3), AttributeMap());
  EXPECT_EQ(0u, g.variables[0].vibration);
  EXPECT_EQ(1u, g.variables[0].attributes.count("Category"));
}

TEST(TreeBuildTest, LinkVariableClearsAttributesAndMovesTheCursor) {
  KelDov::Tree tree;
  tree.AddGeometry("a");
  const KelDov::VariableRef target =
      tree.AddVariable("X", Geometry::Coordinates, 0, Array(36, 3), AttributeMap());
  tree.MoveToParent();
  tree.AddGeometry("b");
  const KelDov::VariableRef linked =
      tree.AddVariable("X", Geometry::Coordinates, 0, Array(36, 3), Texts({{"Unit", "m"}}));
  tree.MoveToParent();
  tree.AddGeometry("c");  // id 4, current

  tree.LinkVariable(linked, target);
  EXPECT_EQ(3u, tree.GetCurrentId());
  const Geometry::Variable& v = GeometryAt(tree, 3).variables[0];
  EXPECT_EQ(1u, v.linked);
  EXPECT_EQ(2u, v.linkTarget.entryId);
  EXPECT_EQ(0u, v.linkTarget.variableIndex);
  EXPECT_TRUE(v.attributes.empty());
  EXPECT_EQ(36u, v.array.byteSize);

  // Adding again does not undo the link.
  tree.AddVariable("X", Geometry::Coordinates, 8, Array(36, 3), AttributeMap());
  EXPECT_EQ(1u, v.linked);
}

TEST(TreeBuildTest, VariableOperationsRefuseEntriesWithoutAGeometry) {
  KelDov::Tree tree;
  tree.AddGroup("g");
  ExpectFailure([&] { tree.AddVariable("X", Geometry::Coordinates, 0, Array(0, 3), {}); }, 5, "");
  tree.AddGeometry("m");
  tree.AddVariable("X", Geometry::Coordinates, 0, Array(0, 3), AttributeMap());
  for (const KelDov::VariableRef& bad : {KelDov::VariableRef{3, 1}, {9, 0}, {2, 0}})
    ExpectFailure([&] { tree.LinkVariable(bad, KelDov::VariableRef{3, 0}); }, 5, "");
}

TEST(TreeBuildTest, RandomDiffuseRestartsWithEveryTreeAndTextsStopAtTheirArea) {
  auto diffuse = [] {
    KelDov::Tree tree;
    KelDov::Material m;
    m.SetRandomDiffuse();
    EXPECT_EQ(0x3E23D70Bu, Kel::Util::FloatBits(m.ambient[0]));  // not touched
    return std::vector<float>(m.diffuse, m.diffuse + 4);
  };
  const std::vector<float> first = diffuse();
  Platform::SeedRandom(0);
  std::vector<float> expected{0, 0, 0, 1.0f};
  for (int i = 0; i < 3; ++i) expected[i] = static_cast<float>(Platform::Random()) / 32767.0f;
  EXPECT_EQ(expected, first);
  EXPECT_EQ(first, diffuse());

  EXPECT_EQ(std::string(256, 'x'), AttributeValue::Text(std::string(300, 'x')).GetText());
  EXPECT_EQ("ab", AttributeValue::Text(std::string("ab\0cd", 5)).GetText());
}

}  // namespace
