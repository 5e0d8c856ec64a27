#include "reader/Scene.h"

#include <algorithm>

#include "reader/SceneRecords.h"

namespace DovReader {

namespace {

// A tree record without a name, type name or version.
const std::uint64_t MinTreeRecordSize = 6 * 4 + 3 * 4 + 8;

// Streams that a scene had nothing to put into are never made, and read as
// empty; these two exist in every scene file.
std::vector<unsigned char> RequiredStream(const Container& container, const std::string& name) {
  const std::vector<std::string> names = container.StreamNames();
  if (std::find(names.begin(), names.end(), name) == names.end())
    throw ReadError("the file has no stream \"" + name + "\"");
  return container.ReadStream(name);
}

TreeRecord ReadTreeRecord(SceneCursor& tree) {
  TreeRecord record;
  record.id = tree.U32();
  record.parent = tree.U32();
  record.previousSibling = tree.U32();
  record.nextSibling = tree.U32();
  record.firstChild = tree.U32();
  record.lastChild = tree.U32();
  record.name = tree.Text();
  record.typeName = tree.Text();
  record.version = tree.Text();
  record.lightOffset = tree.U64();
  return record;
}

// The node's stored content. "Light Data" is read by the record's offset,
// which must be where the previous node's content ended, so that the
// stream is covered exactly; the other two are read in step with the walk.
void ReadNodeContent(TreeRecord& record, SceneCursor& light, SceneCursor& attributes,
                     SceneCursor& resources) {
  if (record.lightOffset != light.Position())
    light.Fail("entry " + std::to_string(record.id) + " has light offset " +
               std::to_string(record.lightOffset));
  if (record.typeName == "Group") {
    record.group = ReadGroup(light, attributes);
  } else if (record.typeName == "Shape") {
    record.material = ReadMaterialRecord(resources);
  } else if (record.typeName == "Geometry") {
    record.variables = ReadGeometry(record.version, light, attributes);
  }
}

}  // namespace

Scene Scene::Read(const Container& container) {
  Scene scene(container);
  const std::vector<unsigned char> infoBytes = RequiredStream(container, "Global Information");
  const std::vector<unsigned char> treeBytes = RequiredStream(container, "Dov Tree");
  const std::vector<unsigned char> lightBytes = container.ReadStream("Light Data");
  const std::vector<unsigned char> attributeBytes = container.ReadStream("Attributes");
  const std::vector<unsigned char> resourceBytes = container.ReadStream("Resources");

  SceneCursor info("Global Information", &infoBytes);
  if (info.Count(4) != 1) info.Fail("expected one global information record");
  scene.information = ReadGlobalInformationRecord(info);
  info.ExpectEnd();

  SceneCursor tree("Dov Tree", &treeBytes);
  SceneCursor light("Light Data", &lightBytes);
  SceneCursor attributes("Attributes", &attributeBytes);
  SceneCursor resources("Resources", &resourceBytes);
  const std::uint32_t count = tree.Count(MinTreeRecordSize);
  for (std::uint32_t i = 0; i < count; ++i) {
    TreeRecord record = ReadTreeRecord(tree);
    ReadNodeContent(record, light, attributes, resources);
    scene.AddRecord(std::move(record), tree);
  }
  for (const SceneCursor* cursor : {&tree, &light, &attributes, &resources}) cursor->ExpectEnd();
  scene.CheckSiblingLinks();
  scene.ResolveLinks();
  return scene;
}

std::size_t Scene::IndexOf(std::uint32_t id) const {
  // Ids ascend, which Read has checked.
  auto found = std::lower_bound(records.begin(), records.end(), id,
                                [](const TreeRecord& r, std::uint32_t v) { return r.id < v; });
  if (found != records.end() && found->id == id)
    return static_cast<std::size_t>(found - records.begin());
  throw ReadError("no tree entry with id " + std::to_string(id));
}

const TreeRecord& Scene::Record(std::uint32_t id) const { return records[IndexOf(id)]; }

std::uint32_t Scene::Depth(std::uint32_t id) const { return depths[IndexOf(id)]; }

const Variable& Scene::GetVariable(std::uint32_t entryId, std::uint32_t variableIndex) const {
  const TreeRecord& record = Record(entryId);
  if (variableIndex >= record.variables.size())
    throw ReadError("entry " + std::to_string(entryId) + " has no variable " +
                    std::to_string(variableIndex));
  return record.variables[variableIndex];
}

const Variable& Scene::ResolveVariable(std::uint32_t entryId, std::uint32_t variableIndex) const {
  GetVariable(entryId, variableIndex);
  const Position holder = holders[firstVariables[IndexOf(entryId)] + variableIndex];
  return records[holder.record].variables[holder.variable];
}

}  // namespace DovReader
