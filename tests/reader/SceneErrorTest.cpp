// Damaged and inconsistent scene files: every violation is a ReadError.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "../Kel/Dov/StreamBytes.h"
#include "Kel/Dov/Tree.h"
#include "reader/Container.h"
#include "reader/Scene.h"

namespace {

using DovTest::Bytes;
using DovTest::TempPath;

typedef std::vector<std::pair<std::string, Bytes>> Streams;

// Every stream of a file, in the order of their first blocks.
Streams ReadAllStreams(const std::string& path) {
  const DovReader::Container container = DovReader::Container::Open(path);
  Streams streams;
  for (const std::string& name : container.StreamNames())
    streams.emplace_back(name, container.ReadStream(name));
  return streams;
}

// A container file holding exactly `streams`, each compressed.
void WriteStreams(const std::string& path, const Streams& streams) {
  KelDov::Tree tree;  // only for the head; none of its own streams is put
  tree.SetStreamFile(path, true);
  KelTmf::Index& index = tree.GetFile().index;
  for (const auto& stream : streams) {
    index.Put(stream.first, stream.second.data(), stream.second.size());
    index.SetBlockFlags(stream.first, KelTmf::BlockFlagCompress);
  }
  index.WriteAllBuffersToFileStream(tree.GetFile().stream);
  tree.GetFile().CloseFile();
}

Bytes& StreamIn(Streams& streams, const std::string& name) {
  for (auto& stream : streams)
    if (stream.first == name) return stream.second;
  ADD_FAILURE() << "no stream " << name;
  return streams.emplace_back(name, Bytes()).second;
}

using KelDov::Geometry;

const char* const SceneStreams[] = {"Dov Tree", "Light Data", "Attributes", "Resources",
                                    "Global Information"};

// A small scene with every kind of stored content.
std::string SaveSmallScene(const std::string& file) {
  const std::string path = TempPath(file);
  KelDov::Tree tree;
  tree.SetStreamFile(path, true);
  tree.AddGroup("g", true);
  tree.AddNode();
  tree.GetCurrentNode().value = new KelDov::Shape("s");
  tree.AddGeometry("m");
  KelDov::NumericArray array;
  array.byteSize = 12;
  array.width = 3;
  array.dataType = KelDov::DataTypeFloat;
  const KelDov::AttributeMap attributes{{"Unit", KelDov::AttributeValue::Text("m")}};
  const std::uint64_t offset = tree.WriteStreamDataset(std::vector<float>{1, 2, 3}, 3);
  tree.AddVariable("X", Geometry::Coordinates, offset, array, attributes);
  const KelDov::VariableRef y = tree.AddVariable("Y", Geometry::Coordinates, 0, array, attributes);
  tree.LinkVariable(y, KelDov::VariableRef{4, 0});
  tree.Save(tree.GetFile(), "");
  return path;
}

// `reason`, if given, must appear in the error's text.
void ExpectReadError(const std::string& path, const std::string& what,
                     const std::string& reason = "") {
  try {
    DovReader::Scene::Read(DovReader::Container::Open(path));
    ADD_FAILURE() << "no ReadError: " << what;
  } catch (const DovReader::ReadError& e) {
    EXPECT_NE(std::string::npos, std::string(e.what()).find(reason)) << what << ": " << e.what();
  }
}

TEST(SceneErrorTest, EveryCutAndEveryExtraByteIsFound) {
  const Streams sound = ReadAllStreams(SaveSmallScene("scene-error-base.dov"));
  const std::string path = TempPath("scene-error-variant.dov");
  WriteStreams(path, sound);
  ASSERT_NO_THROW(DovReader::Scene::Read(DovReader::Container::Open(path)));

  for (const char* name : SceneStreams) {
    Streams copy = sound;
    const std::size_t size = StreamIn(copy, name).size();
    ASSERT_GT(size, 0u) << name;
    // Each file costs a block buffer per stream, so two cuts per stream (in
    // a middle record and in the last value) and one extra byte.
    for (std::size_t length : {size / 2, size - 1, size + 1}) {
      Streams damaged = sound;
      StreamIn(damaged, name).resize(length);
      WriteStreams(path, damaged);
      ExpectReadError(path, std::string(name) + " of " + std::to_string(length) + " bytes");
    }
  }
}

TEST(SceneErrorTest, MissingStreamsAndImpossibleCounts) {
  const Streams sound = ReadAllStreams(SaveSmallScene("scene-error-counts-base.dov"));
  const std::string path = TempPath("scene-error-counts.dov");
  for (const char* required : {"Dov Tree", "Global Information"}) {
    Streams missing;
    for (const auto& stream : sound)
      if (stream.first != required) missing.push_back(stream);
    WriteStreams(path, missing);
    ExpectReadError(path, std::string("without ") + required, "has no stream");
  }
  for (const char* name : {"Dov Tree", "Light Data", "Attributes", "Global Information"}) {
    Streams huge = sound;
    Bytes& bytes = StreamIn(huge, name);
    // The first count of each of these streams, set to the largest value.
    const std::size_t at = std::string(name) == "Light Data" ? 41 : 0;
    for (int i = 0; i < 4; ++i) bytes[at + i] = 0xFF;
    WriteStreams(path, huge);
    ExpectReadError(path, std::string("huge count in ") + name, "cannot fit");
  }
}

TEST(SceneErrorTest, InconsistentRecords) {
  const Streams sound = ReadAllStreams(SaveSmallScene("scene-error-records-base.dov"));
  const std::string path = TempPath("scene-error-records.dov");
  auto expectWith = [&](const char* name, auto change, const char* reason) {
    Streams damaged = sound;
    change(StreamIn(damaged, name));
    WriteStreams(path, damaged);
    ExpectReadError(path, name, reason);
  };
  // "Dov Tree": the count, the 44-byte record of the empty root, then the
  // record of the group: id at 48, parent at 52, last child at 68, its
  // light offset at 93. A parent that is not lower, and a child link that
  // the parents contradict, would let a walk over the tree loop.
  expectWith("Dov Tree", [](Bytes& b) { b[93] = 1; }, "has light offset 1");
  expectWith("Dov Tree", [](Bytes& b) { b[48] = 1; }, "do not ascend");
  expectWith("Dov Tree", [](Bytes& b) { b[52] = 2; }, "parent 2, which is not lower");
  expectWith("Dov Tree", [](Bytes& b) { b[68] = 2; },
             "last child 2, but the parent links make it 3");
  expectWith("Resources", [](Bytes& b) { b[0] = 3; }, "bad record size 3");
  expectWith("Resources", [](Bytes& b) { b[0] = 80; }, "larger than its size field");
  // The group's map holds "visible" of kind 0; claim kind 1 instead.
  expectWith("Attributes", [](Bytes& b) { b[19] = 1; }, "kind 1 too short");
  // The linked flag of "X": after the group's 41 bytes, the count, the
  // name and the type word.
  expectWith("Light Data", [](Bytes& b) { b[41 + 4 + 5 + 4] = 2; }, "linked flag 2");
}

TEST(SceneErrorTest, BrokenLinksAndDatasets) {
  const std::string path = TempPath("scene-error-links.dov");
  KelDov::NumericArray array;
  array.byteSize = 8;
  array.width = 1;
  auto save = [&](auto build) {
    KelDov::Tree tree;
    tree.SetStreamFile(path, true);
    tree.AddGeometry("m");
    build(tree);
    tree.Save(tree.GetFile(), "");
  };

  save([&](KelDov::Tree& tree) {
    const KelDov::VariableRef a = tree.AddVariable("a", Geometry::ScalarValues, 0, array, {});
    tree.LinkVariable(a, KelDov::VariableRef{2, 7});
  });
  ExpectReadError(path, "link to a missing variable", "has no variable 7");

  save([&](KelDov::Tree& tree) {
    const KelDov::VariableRef a = tree.AddVariable("a", Geometry::ScalarValues, 0, array, {});
    const KelDov::VariableRef b = tree.AddVariable("b", Geometry::ScalarValues, 0, array, {});
    tree.LinkVariable(a, b);
    tree.LinkVariable(b, a);
  });
  ExpectReadError(path, "links in a cycle", "cycle");

  // A dataset that lies beyond "Heavy Data" is found when its values are read.
  save([&](KelDov::Tree& tree) {
    const std::uint64_t offset = tree.WriteStreamDataset(std::vector<std::uint32_t>{1, 2}, 1);
    tree.AddVariable("fits", Geometry::ScalarValues, offset, array, {});
    tree.AddVariable("beyond", Geometry::ScalarValues, offset + 4, array, {});
    KelDov::NumericArray odd = array;
    odd.byteSize = 6;
    tree.AddVariable("odd", Geometry::ScalarValues, offset, odd, {});
  });
  const DovReader::Container container = DovReader::Container::Open(path);
  const DovReader::Scene scene = DovReader::Scene::Read(container);
  EXPECT_EQ((std::vector<std::uint32_t>{1, 2}), scene.ReadValues(2, 0));
  EXPECT_THROW(scene.ReadValues(2, 1), DovReader::ReadError);
  EXPECT_THROW(scene.ReadValues(2, 2), DovReader::ReadError);
  EXPECT_THROW(scene.ReadValues(2, 3), DovReader::ReadError);
  EXPECT_THROW(scene.ReadValues(9, 0), DovReader::ReadError);
}

}  // namespace
