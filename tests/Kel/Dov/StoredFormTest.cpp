// The bytes that the scene tree lays down in its streams.

#include <gtest/gtest.h>

#include "Kel/Dov/FramedRecord.h"
#include "Kel/Dov/Tree.h"
#include "StreamBytes.h"

namespace {

using namespace DovTest;
using KelDov::AttributeMap;
using KelDov::AttributeValue;
using KelDov::Geometry;

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

  Le expected;
  expected.u32({1}).text("visible").u32({1}).u8({0}).u32({1, 0}).zeros(12);
  expected.u32({5}).text("B").text("a").text("ab").text("c").text("d");
  expected.u32({5}).u8({2, 0, 1, 3, 7}).u32({1, 7, 1, 9, 1}).u64(0x1122334455667788ull);
  expected.u32({1}).text("x");
  EXPECT_EQ(expected.bytes, StreamBytes(index, "A"));
}

class OldMaterial : public KelDov::Material {
 public:
  explicit OldMaterial(std::string version) : version(std::move(version)) {}
  std::string RecordVersion() const override { return version; }
  std::string version;
};

TEST(StoredFormTest, OlderMaterialRecordsLeaveOutLaterFields) {
  KelTmf::Index old;
  KelDov::PutMaterial(old, "R", OldMaterial("0.1"));
  KelDov::PutMaterial(old, "R", OldMaterial("0.2"));
  const Bytes both = StreamBytes(old, "R");
  ASSERT_EQ(79u + 83u, both.size());
  EXPECT_EQ(Le().u32({79}).bytes, Bytes(both.begin(), both.begin() + 4));
  EXPECT_EQ(Le().u32({83}).bytes, Bytes(both.begin() + 79, both.begin() + 83));
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
  AttributeMap mode;
  mode["Category"] = AttributeValue::Text("Vibration");
  const std::uint64_t beyond4GiB = 0x140000000ull;
  tree.AddVariable("X", Geometry::Coordinates, beyond4GiB, Array(36, 3, 1), mode);
  const KelDov::VariableRef l =
      tree.AddVariable("L", Geometry::CellConnectivity, 0, Array(8, 1, 5), AttributeMap());
  tree.LinkVariable(l, KelDov::VariableRef{3, 0});
  tree.SaveTree(tree.GetFile());
  KelTmf::Index& index = tree.GetFile().index;

  Le light;
  light.u32({0, 2});  // the empty geometry, then two variables
  light.text("X").u32({0x01000001}).u8({0}).u32({36}).u8({3, 0, 0}).zeros(8).u8({0});
  light.u64(beyond4GiB).u8({1});  // a vibration mode
  light.text("L").u32({0x05000006}).u8({1}).u32({3, 0}).u8({0});
  EXPECT_EQ(light.bytes, StreamBytes(index, "Light Data"));
}

class VersionedGeometry : public Geometry {
 public:
  VersionedGeometry(std::string version) : Geometry("v"), version(std::move(version)) {}
  std::string Version() const override { return version; }
  std::string version;
};

TEST(StoredFormTest, OlderGeometryLayoutsAndMissingOffsets) {
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
  // 0.6 keeps the low 32 bits of the offset; 0.4 has no data type and puts
  // the whole offset after the attributes.
  EXPECT_EQ(Le().u32({1}).text("S").u32({0x0100000C}).u8({0}).u32({8}).u8({1, 0, 0}).zeros(9)
                .u32({0x10}).u8({1}).bytes,
            StreamBytes(file.index, "L6"));
  EXPECT_EQ(Le().u32({1}).text("S").u32({12, 8}).u8({1, 0, 0}).zeros(9).u8({1})
                .u64(0x100000010ull).bytes,
            StreamBytes(file.index, "L4"));
  EXPECT_EQ(Bytes(48, 0), StreamBytes(file.index, "A"));
  EXPECT_FALSE(HasStream(file.index, "H"));

  VersionedGeometry v07("0.7"), old("0.4");
  v07.GetOrAddVariableIndex("orphan");
  old.GetOrAddVariableIndex("orphan");
  ExpectFailure([&] { v07.WriteTm(file, "L", "H", "A"); }, 5, "KelDov::Geometry::WriteTm");
  ExpectFailure([&] { old.WriteTm(file, "L", "H", "A"); }, 5, "KelDov::Geometry::WriteTm_l05");
  // A linked variable needs no offset.
  VersionedGeometry linked("0.7");
  linked.GetOrAddVariableIndex("l");
  linked.variables[0].linked = 1;
  linked.WriteTm(file, "L2", "H", "A2");
  EXPECT_EQ(4u + 18 + 1, StreamBytes(file.index, "L2").size());
}

}  // namespace
