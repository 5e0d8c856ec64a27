// Whole scenes written by the tree and read back through the reader.

#include <gtest/gtest.h>

#include <cctype>
#include <map>

#include "Kel/Util/Coding.h"
#include "SceneTestSupport.h"

namespace {

using namespace SceneTest;
using KelDov::AttributeMap;
using KelDov::AttributeValue;
using KelDov::Geometry;

std::uint32_t NextWord(std::uint32_t& state) { return state = state * 1664525u + 1013904223u; }

// A scene with groups, shapes and geometries whose datasets, with a small
// block limit, spread "Heavy Data" over more blocks than the first index
// describes. The tree stays alive so that tests compare against it.
class SavedScene {
 public:
  explicit SavedScene(const std::string& file) : path(TempPath(file)) {
    tree.GetInformation().applicationName = "scene test";
    tree.GetInformation().applicationVersion = "7";
    tree.SetStreamFile(path, true);
    tree.GetFile().index.SetBlockLimit("Heavy Data", 300);
    BuildRootGroup();
    for (std::uint32_t s = 0; s < 12; ++s) BuildShapeWithGeometry(s);
    tree.AddGroup("hidden", false);
    tree.AddGeometry("empty geometry");
    tree.Save(tree.GetFile(), "");
  }

  KelDov::Tree tree;
  std::string path;
  // The values of every variable that holds its own dataset.
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint32_t>> values;

 private:
  void BuildRootGroup() {
    auto* root = new KelDov::Group("root", AttributeMap());
    tree.GetCurrentNode().value = root;
    root->rootFlag = 1;
    root->translation[0] = 1.5f;
    root->rotation[1] = -2.0f;
    root->scale[2] = 0.25f;
    root->SetVisible(true);
    root->attributes["k1"].kind = 1;
    root->attributes["k1"].value.word = 0xDEADBEEF;
    root->attributes["k3"].kind = 3;
    root->attributes["k3"].value.longWord = 0x123456789Aull;
    root->attributes["name"] = AttributeValue::Text("the root");
    root->attributes["odd"].kind = 9;
  }

  void BuildShapeWithGeometry(std::uint32_t s) {
    tree.AddNode();
    auto* shape = new KelDov::Shape("shape " + std::to_string(s));
    tree.GetCurrentNode().value = shape;
    shape->material.SetRandomDiffuse();
    shape->material.visible = s % 2;
    tree.AddGeometry("geometry " + std::to_string(s));

    AttributeMap vibration;
    vibration["Category"] = AttributeValue::Text("Vibration");
    vibration["DataType"] = AttributeValue::Text("dropped");
    vibration["Unit"] = AttributeValue::Text("Hz");
    const std::uint32_t n = 40 + 31 * s;
    AddDataset("Coordinates", Geometry::Coordinates, KelDov::DataTypeFloat, 3, 3 * n, AttributeMap());
    AddDataset("Connectivity", Geometry::CellConnectivity, KelDov::DataTypeUnsigned, 1, 4 * n,
               AttributeMap());
    AddDataset("Mode", Geometry::SixComponentValuesA, KelDov::DataTypeFloat, 6, 6 * s + 5, vibration);
    AddDataset("Plain", Geometry::ScalarValues, KelDov::DataTypeUnsigned, 0, 7, AttributeMap());
    if (s > 0) {
      AttributeMap unit;
      unit["Unit"] = AttributeValue::Text("m");
      const KelDov::VariableRef shared =
          tree.AddVariable("Shared", Geometry::Coordinates, 0, Array(0, 3, 1), unit);
      tree.LinkVariable(shared, KelDov::VariableRef{firstGeometry, 0});
    } else {
      firstGeometry = tree.GetCurrentId();
    }
    tree.MoveToParent();
    tree.MoveToParent();
  }

  static KelDov::NumericArray Array(std::uint64_t byteSize, std::uint8_t width,
                                    std::uint32_t dataType) {
    KelDov::NumericArray array;
    array.byteSize = byteSize;
    array.width = width;
    array.dataType = dataType;
    return array;
  }

  void AddDataset(const std::string& name, Geometry::VariableType type, std::uint32_t dataType,
                  std::uint8_t width, std::uint32_t count, const AttributeMap& attributes) {
    std::vector<std::uint32_t> words(count);
    for (auto& word : words) word = NextWord(seed);
    std::uint64_t offset;
    if (dataType == KelDov::DataTypeFloat) {
      std::vector<float> floats;
      for (std::uint32_t word : words) floats.push_back(Kel::Util::BitsToFloat(word & 0x3FFFFFFF));
      for (auto& word : words) word &= 0x3FFFFFFF;
      offset = tree.WriteStreamDataset(floats, width);
    } else {
      offset = tree.WriteStreamDataset(words, width);
    }
    const KelDov::VariableRef ref =
        tree.AddVariable(name, type, offset, Array(4ull * count, width, dataType), attributes);
    values[{ref.entryId, ref.variableIndex}] = words;
  }

  std::uint32_t seed = 99;
  std::uint32_t firstGeometry = 0;
};

void ExpectSameAttributes(const AttributeMap& written, const DovReader::AttributeList& read) {
  ASSERT_EQ(written.size(), read.entries.size());
  auto it = written.begin();
  for (const DovReader::Attribute& attribute : read.entries) {
    const AttributeValue& value = it->second;
    EXPECT_EQ(it->first, attribute.key);
    EXPECT_EQ(value.kind, attribute.kind) << attribute.key;
    if (value.kind <= 1) {
      EXPECT_EQ(value.value.word, attribute.word) << attribute.key;
    } else if (value.kind == 2) {
      EXPECT_EQ(value.GetText(), attribute.text) << attribute.key;
    } else if (value.kind == 3) {
      EXPECT_EQ(value.value.longWord, attribute.longWord) << attribute.key;
    }
    ++it;
  }
}

void ExpectSameColour(const float* written, const float* read) {
  for (int i = 0; i < 4; ++i) EXPECT_EQ(written[i], read[i]) << i;
}

void ExpectSameGroup(const KelDov::Group& group, const DovReader::GroupContent& read) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(group.translation[i], read.translation[i]);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(group.rotation[i], read.rotation[i]);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(group.scale[i], read.scale[i]);
  EXPECT_EQ(group.rootFlag, read.rootFlag);
  ExpectSameAttributes(group.attributes, read.attributes);
}

void ExpectSameMaterial(const KelDov::Material& material, const DovReader::MaterialContent& read) {
  EXPECT_EQ(84u, read.size);
  EXPECT_EQ("0.3", read.version);
  ExpectSameColour(material.diffuse, read.diffuse);
  ExpectSameColour(material.specular, read.specular);
  ExpectSameColour(material.emissive, read.emissive);
  ExpectSameColour(material.ambient, read.ambient);
  EXPECT_EQ(material.ambientFactor, read.ambientFactor);
  EXPECT_EQ(material.visible, read.visible);
}

void ExpectSameVariables(const Geometry& geometry, const std::vector<DovReader::Variable>& read) {
  ASSERT_EQ(geometry.variables.size(), read.size());
  for (std::size_t i = 0; i < read.size(); ++i) {
    const Geometry::Variable& v = geometry.variables[i];
    const DovReader::Variable& r = read[i];
    EXPECT_EQ(v.name, r.name);
    EXPECT_EQ(static_cast<std::uint32_t>(v.type), r.type);
    EXPECT_EQ(v.array.dataType, r.dataType);
    EXPECT_EQ(v.vibration, r.vibration);
    EXPECT_EQ(v.linked, r.linked);
    if (v.linked) {
      EXPECT_EQ(v.linkTarget.entryId, r.linkEntryId);
      EXPECT_EQ(v.linkTarget.variableIndex, r.linkVariableIndex);
    } else {
      EXPECT_EQ(v.array.byteSize, r.byteSize);
      EXPECT_EQ(v.array.width, r.width);
      EXPECT_EQ(geometry.datasetOffsets.at(v.name), r.offset);
    }
    ExpectSameAttributes(v.attributes, r.attributes);
  }
}

// "Wed Mar 05 14:07:09 2025 " and a time zone name of the platform's.
bool LooksLikeCreationDate(const std::string& text) {
  const std::string pattern = "Aaa Aaa 00 00:00:00 0000 ";
  if (text.size() < pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char p = pattern[i], c = text[i];
    const bool ok = p == 'A' ? std::isupper(static_cast<unsigned char>(c)) != 0
                    : p == 'a' ? std::islower(static_cast<unsigned char>(c)) != 0
                    : p == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0
                               : c == p;
    if (!ok) return false;
  }
  return true;
}

TEST(SceneReadTest, EverythingWrittenComesBack) {
  SavedScene saved("scene-roundtrip.dov");
  const DovReader::Container container = DovReader::Container::Open(saved.path);
  EXPECT_TRUE(container.Verify().empty());
  const DovReader::Scene scene = DovReader::Scene::Read(container);

  const DovReader::GlobalInformation& info = scene.Information();
  EXPECT_EQ("0.1", info.version);
  EXPECT_EQ("scene test", info.applicationName);
  EXPECT_EQ("7", info.applicationVersion);
  EXPECT_EQ("1.1", info.formatVersion);
  EXPECT_EQ(42u + info.creationDate.size() + 10 + 1, info.size);
  EXPECT_TRUE(info.computerName.empty() && info.userName.empty() && info.comment.empty());
  EXPECT_TRUE(LooksLikeCreationDate(info.creationDate)) << info.creationDate;

  ASSERT_EQ(saved.tree.size(), scene.Records().size());
  auto entry = saved.tree.begin();
  int groups = 0, shapes = 0, geometries = 0;
  for (const DovReader::TreeRecord& record : scene.Records()) {
    const auto& e = entry->second;
    SCOPED_TRACE(record.id);
    EXPECT_EQ(e.id, record.id);
    EXPECT_EQ(e.parent, record.parent);
    EXPECT_EQ(e.previousSibling, record.previousSibling);
    EXPECT_EQ(e.nextSibling, record.nextSibling);
    EXPECT_EQ(e.firstChild, record.firstChild);
    EXPECT_EQ(e.lastChild, record.lastChild);
    EXPECT_EQ(e.value->name, record.name);
    EXPECT_EQ(e.value->TypeName(), record.typeName);
    EXPECT_EQ(e.value->Version(), record.version);
    if (auto group = dynamic_cast<const KelDov::Group*>(e.value)) {
      ++groups;
      ASSERT_TRUE(record.group.has_value());
      ExpectSameGroup(*group, *record.group);
    } else if (auto shape = dynamic_cast<const KelDov::Shape*>(e.value)) {
      ++shapes;
      ASSERT_TRUE(record.material.has_value());
      ExpectSameMaterial(shape->material, *record.material);
    } else if (auto geometry = dynamic_cast<const Geometry*>(e.value)) {
      ++geometries;
      ExpectSameVariables(*geometry, record.variables);
    }
    ++entry;
  }
  EXPECT_EQ(2, groups);
  EXPECT_EQ(12, shapes);
  EXPECT_EQ(13, geometries);
}

TEST(SceneReadTest, ValuesComeBackFromManyBlocksAndThroughLinks) {
  SavedScene saved("scene-values.dov");
  const DovReader::Container container = DovReader::Container::Open(saved.path);
  const DovReader::Scene scene = DovReader::Scene::Read(container);

  int heavyBlocks = 0, indexBlocks = 0;
  for (const DovReader::BlockInfo& block : container.Blocks()) {
    heavyBlocks += block.IsStreamBlock() && block.name == "Heavy Data";
    indexBlocks += block.IsIndexBlock();
  }
  EXPECT_GT(heavyBlocks, 20);
  EXPECT_EQ(1, indexBlocks);

  for (const auto& item : saved.values) {
    const std::uint32_t entryId = item.first.first, index = item.first.second;
    EXPECT_EQ(item.second, scene.ReadValues(entryId, index)) << entryId << ":" << index;
  }
  const DovReader::TreeRecord& firstGeometry = scene.Record(3);
  ASSERT_EQ("Geometry", firstGeometry.typeName);
  const std::vector<std::uint32_t>& coordinates = saved.values.at({3, 0});
  const std::vector<float> asFloats = DovReader::Scene::AsFloats(coordinates);
  for (const DovReader::TreeRecord& record : scene.Records()) {
    if (record.typeName != "Geometry" || record.id == 3 || record.variables.size() < 5) continue;
    EXPECT_EQ("Shared", record.variables[4].name);
    EXPECT_EQ(coordinates, scene.ReadValues(record.id, 4));
    EXPECT_EQ(asFloats, scene.ReadFloats(record.id, 4));
    EXPECT_EQ(&firstGeometry.variables[0], &scene.ResolveVariable(record.id, 4));
  }
}

}  // namespace
