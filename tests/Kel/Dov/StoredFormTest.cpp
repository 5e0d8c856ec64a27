// The bytes that the scene tree lays down in its streams.

#include <gtest/gtest.h>

#include "Kel/Dov/FramedRecord.h"
#include "Kel/Dov/Tree.h"
#include "Kel/Util/Coding.h"
#include "StreamBytes.h"

namespace {

using namespace DovTest;
using KelDov::AttributeMap;
using KelDov::AttributeValue;
using KelDov::Geometry;

void AppendEmptyAttributeMap(Bytes& out) { AppendZeros(out, 24); }

// Fields 1 to 6 of a tree record.
void AppendLinks(Bytes& out, std::initializer_list<std::uint32_t> idAndLinks) {
  for (std::uint32_t value : idAndLinks) AppendU32(out, value);
}

template <class Call>
void ExpectFailure(Call call, int code, const std::string& method) {
  try {
    call();
    ADD_FAILURE() << "no exception";
  } catch (const Kel::Util::Exception& e) {
    EXPECT_EQ(code, e.GetCode());
    EXPECT_NE(std::string::npos, std::string(e.what()).find(method)) << e.what();
  }
}

TEST(StoredFormTest, RootGroupR) {
  KelDov::Tree tree;
  tree.GetCurrentNode().value = new KelDov::Group("R", AttributeMap());
  tree.SaveTree(tree.GetFile());
  KelTmf::Index& index = tree.GetFile().index;

  Bytes dovTree;
  AppendU32(dovTree, 1);
  AppendLinks(dovTree, {1, 0, 0, 0, 0, 0});
  Append(dovTree, {0x01, 0, 0, 0, 0x52});
  Append(dovTree, {0x05, 0, 0, 0, 0x47, 0x72, 0x6F, 0x75, 0x70});
  Append(dovTree, {0x03, 0, 0, 0, 0x30, 0x2E, 0x34});
  AppendZeros(dovTree, 8);
  ASSERT_EQ(57u, dovTree.size());
  EXPECT_EQ(dovTree, StreamBytes(index, "Dov Tree"));

  Bytes light;
  AppendZeros(light, 12);
  Append(light, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x3F, 0, 0, 0, 0});
  for (int i = 0; i < 3; ++i) Append(light, {0, 0, 0x80, 0x3F});
  Append(light, {0});
  EXPECT_EQ(light, StreamBytes(index, "Light Data"));
  EXPECT_EQ(Bytes(24, 0), StreamBytes(index, "Attributes"));
  EXPECT_FALSE(HasStream(index, "Resources"));
}

TEST(StoredFormTest, EmptyTreeHasOneRecordOf44Bytes) {
  KelDov::Tree tree;
  tree.SaveTree(tree.GetFile());
  KelTmf::Index& index = tree.GetFile().index;
  Bytes expected;
  AppendU32(expected, 1);
  AppendLinks(expected, {1, 0, 0, 0, 0, 0});
  AppendZeros(expected, 12 + 8);
  EXPECT_EQ(expected, StreamBytes(index, "Dov Tree"));
  for (const char* name : {"Light Data", "Attributes", "Resources", "Heavy Data"})
    EXPECT_FALSE(HasStream(index, name)) << name;
}

TEST(StoredFormTest, AttributeMapsAreSixListsInKindOrder0132) {
  KelTmf::Index index;
  KelDov::Group hidden("h", AttributeMap());
  hidden.SetVisible(true);
  hidden.SetVisible(false);
  KelDov::WriteAttributeMap(index, "A", hidden.attributes);

  AttributeMap map;
  map["a"] = AttributeValue::Word(7);
  map["B"] = AttributeValue::Text("x");
  map["ab"].kind = 1;
  map["ab"].value.word = 9;
  map["c"].kind = 3;
  map["c"].value.longWord = 0x1122334455667788ull;
  map["d"].kind = 7;  // unknown kinds keep key and kind only
  map["d"].value.word = 5;
  KelDov::WriteAttributeMap(index, "A", map);

  Bytes expected;
  AppendU32(expected, 1);
  AppendText(expected, "visible");
  AppendU32(expected, 1);
  Append(expected, {0});
  AppendU32(expected, 1);
  AppendU32(expected, 0);
  AppendZeros(expected, 12);

  AppendU32(expected, 5);
  for (const char* key : {"B", "a", "ab", "c", "d"}) AppendText(expected, key);
  AppendU32(expected, 5);
  Append(expected, {2, 0, 1, 3, 7});
  AppendU32(expected, 1);
  AppendU32(expected, 7);
  AppendU32(expected, 1);
  AppendU32(expected, 9);
  AppendU32(expected, 1);
  AppendU64(expected, 0x1122334455667788ull);
  AppendU32(expected, 1);
  AppendText(expected, "x");
  EXPECT_EQ(expected, StreamBytes(index, "A"));
}

class OldMaterial : public KelDov::Material {
 public:
  explicit OldMaterial(std::string version) : version(std::move(version)) {}
  std::string RecordVersion() const override { return version; }
  std::string version;
};

TEST(StoredFormTest, MaterialRecordIsFramedAndVersioned) {
  KelTmf::Index index;
  KelDov::PutMaterial(index, "Resources", KelDov::Material());
  Bytes expected;
  AppendU32(expected, 84);
  AppendText(expected, "0.3");
  for (std::uint32_t bits : {0x3F4CCCCDu, 0x3F4CCCCDu, 0x3F4CCCCDu, 0x3F800000u,  // diffuse
                             0u, 0u, 0u, 0x3F800000u,                          // specular
                             0u, 0u, 0u, 0x3F800000u,                          // emissive
                             0x3E23D70Bu, 0x3E23D70Bu, 0x3E23D70Bu, 0x3E4CCCCDu,  // ambient
                             0u, 0x3E4CCCCDu})                                 // extra, factor
    AppendU32(expected, bits);
  Append(expected, {1});
  EXPECT_EQ(expected, StreamBytes(index, "Resources"));

  // Older versions leave out the fields that came later.
  KelTmf::Index old;
  KelDov::PutMaterial(old, "R", OldMaterial("0.1"));
  KelDov::PutMaterial(old, "R", OldMaterial("0.2"));
  const Bytes both = StreamBytes(old, "R");
  ASSERT_EQ(79u + 83u, both.size());
  EXPECT_EQ(79u, Kel::Util::DecodeFixed32(both.data()));
  EXPECT_EQ(83u, Kel::Util::DecodeFixed32(both.data() + 79));
}

KelDov::NumericArray Array(std::uint64_t byteSize, std::uint8_t width, std::uint32_t dataType) {
  KelDov::NumericArray array;
  array.byteSize = byteSize;
  array.width = width;
  array.dataType = dataType;
  return array;
}

TEST(StoredFormTest, GeometryRecordsLinkedAndUnlinked) {
  KelDov::Tree tree;
  tree.AddGeometry("empty");
  tree.MoveToParent();
  tree.AddGeometry("g");
  AttributeMap unit;
  unit["Unit"] = AttributeValue::Text("m");
  const std::uint64_t beyond4GiB = 0x140000000ull;
  tree.AddVariable("X", Geometry::Coordinates, beyond4GiB, Array(36, 3, 1), unit);
  const KelDov::VariableRef l =
      tree.AddVariable("L", Geometry::CellConnectivity, 0, Array(8, 1, 5), unit);
  tree.LinkVariable(l, KelDov::VariableRef{3, 0});
  tree.SaveTree(tree.GetFile());
  KelTmf::Index& index = tree.GetFile().index;

  Bytes light;
  AppendU32(light, 0);  // the empty geometry
  AppendU32(light, 2);
  AppendText(light, "X");
  AppendU32(light, 0x01000001);
  Append(light, {0});
  AppendU32(light, 36);
  Append(light, {3, 0, 0});
  AppendZeros(light, 8);
  Append(light, {0});
  AppendU64(light, beyond4GiB);
  Append(light, {0});
  ASSERT_EQ(4u + 4 + 34 + 1, light.size());
  AppendText(light, "L");
  AppendU32(light, 0x05000006);
  Append(light, {1});
  AppendU32(light, 3);
  AppendU32(light, 0);
  Append(light, {0});
  ASSERT_EQ(4u + 4 + 35 + 19, light.size());
  EXPECT_EQ(light, StreamBytes(index, "Light Data"));

  Bytes attributes;
  AppendU32(attributes, 1);
  AppendText(attributes, "Unit");
  AppendU32(attributes, 1);
  Append(attributes, {2});
  AppendZeros(attributes, 12);
  AppendU32(attributes, 1);
  AppendText(attributes, "m");
  AppendEmptyAttributeMap(attributes);  // the linked variable's
  EXPECT_EQ(attributes, StreamBytes(index, "Attributes"));
}

class VersionedGeometry : public Geometry {
 public:
  VersionedGeometry(std::string version) : Geometry("v"), version(std::move(version)) {}
  std::string Version() const override { return version; }
  std::string version;
};

TEST(StoredFormTest, OlderGeometryLayouts) {
  KelTmf::TmFile file;
  VersionedGeometry v06("0.6"), v04("0.4");
  for (Geometry* g : {static_cast<Geometry*>(&v06), static_cast<Geometry*>(&v04)}) {
    g->variables.resize(1);
    g->variables[0].name = "S";
    g->variables[0].type = Geometry::ScalarValues;
    g->variables[0].array = Array(8, 1, 1);
    g->variables[0].vibration = 1;
    g->datasetOffsets["S"] = 0x100000010ull;
  }
  v06.WriteTm(file, "L6", "H", "A");
  v04.WriteTm(file, "L4", "H", "A");

  Bytes six;
  AppendU32(six, 1);
  AppendText(six, "S");
  AppendU32(six, 0x0100000C);
  Append(six, {0});
  AppendU32(six, 8);
  Append(six, {1, 0, 0});
  AppendZeros(six, 9);
  AppendU32(six, 0x10);  // low 32 bits only
  Append(six, {1});
  EXPECT_EQ(six, StreamBytes(file.index, "L6"));

  Bytes four;
  AppendU32(four, 1);
  AppendText(four, "S");
  AppendU32(four, 12);  // no data type
  AppendU32(four, 8);
  Append(four, {1, 0, 0});
  AppendZeros(four, 9);
  Append(four, {1});
  AppendU64(four, 0x100000010ull);  // after the attributes, in its own place
  EXPECT_EQ(four, StreamBytes(file.index, "L4"));
  EXPECT_EQ(Bytes(48, 0), StreamBytes(file.index, "A"));
  EXPECT_FALSE(HasStream(file.index, "H"));
}

TEST(StoredFormTest, VariableWithoutDatasetOffsetFailsTheSave) {
  KelTmf::TmFile file;
  VersionedGeometry v07("0.7"), v04("0.4");
  v07.GetOrAddVariableIndex("orphan");
  v04.GetOrAddVariableIndex("orphan");
  ExpectFailure([&] { v07.WriteTm(file, "L", "H", "A"); }, 5, "KelDov::Geometry::WriteTm");
  ExpectFailure([&] { v04.WriteTm(file, "L", "H", "A"); }, 5, "KelDov::Geometry::WriteTm_l05");

  // A linked variable needs no offset.
  VersionedGeometry linked("0.7");
  linked.GetOrAddVariableIndex("l");
  linked.variables[0].linked = 1;
  linked.WriteTm(file, "L2", "H", "A2");
  EXPECT_EQ(4u + 18 + 1, StreamBytes(file.index, "L2").size());
}

}  // namespace
