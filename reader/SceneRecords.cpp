#include "reader/SceneRecords.h"

#include <cstdint>

namespace DovReader {

namespace {

const char* const RecordVersions[] = {"0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7"};

// A field introduced by `introducedIn` is stored unless the record's
// version is an older one.
bool HasField(const std::string& version, const std::string& introducedIn) {
  for (const char* known : RecordVersions) {
    if (introducedIn == known) return true;
    if (version == known) return false;
  }
  return true;
}

template <class Element, class ReadOne>
std::vector<Element> ReadList(SceneCursor& cursor, std::uint64_t minElementSize, ReadOne readOne) {
  const std::uint32_t count = cursor.Count(minElementSize);
  std::vector<Element> list;
  list.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) list.push_back(readOne());
  return list;
}

template <std::size_t Count>
void ReadFloats(SceneCursor& cursor, float (&values)[Count]) {
  for (float& value : values) value = cursor.F32();
}

// Takes the next value of one kind's list; running out is a violation.
template <class T>
T Next(const SceneCursor& cursor, const std::vector<T>& list, std::size_t& used, int kind) {
  if (used >= list.size()) cursor.Fail("attribute list of kind " + std::to_string(kind) + " too short");
  return list[used++];
}

// Framed records: reads the size, lets `readFields` read what it knows and
// steps to the end of the frame, which must hold what was read.
template <class ReadFields>
std::uint32_t ReadFramed(SceneCursor& cursor, ReadFields readFields) {
  const std::uint64_t start = cursor.Position();
  const std::uint32_t size = cursor.U32();
  if (size < 4 || size - 4 > cursor.Left()) cursor.Fail("bad record size " + std::to_string(size));
  readFields();
  if (cursor.Position() - start > size) cursor.Fail("record is larger than its size field");
  cursor.Seek(start + size);
  return size;
}

}  // namespace

const Attribute* AttributeList::Find(const std::string& key) const {
  for (const Attribute& attribute : entries)
    if (attribute.key == key) return &attribute;
  return nullptr;
}

AttributeList ReadAttributeMap(SceneCursor& cursor) {
  const auto keys = ReadList<std::string>(cursor, 4, [&] { return cursor.Text(); });
  const auto kinds = ReadList<std::uint8_t>(cursor, 1, [&] { return cursor.U8(); });
  const auto words0 = ReadList<std::uint32_t>(cursor, 4, [&] { return cursor.U32(); });
  const auto words1 = ReadList<std::uint32_t>(cursor, 4, [&] { return cursor.U32(); });
  const auto longWords = ReadList<std::uint64_t>(cursor, 8, [&] { return cursor.U64(); });
  const auto texts = ReadList<std::string>(cursor, 4, [&] { return cursor.Text(); });
  if (kinds.size() != keys.size()) cursor.Fail("attribute keys and kinds differ in number");

  AttributeList list;
  std::size_t used0 = 0, used1 = 0, used2 = 0, used3 = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    Attribute attribute;
    attribute.key = keys[i];
    attribute.kind = kinds[i];
    switch (attribute.kind) {
      case 0: attribute.word = Next(cursor, words0, used0, 0); break;
      case 1: attribute.word = Next(cursor, words1, used1, 1); break;
      case 2: attribute.text = Next(cursor, texts, used2, 2); break;
      case 3: attribute.longWord = Next(cursor, longWords, used3, 3); break;
      default: break;
    }
    list.entries.push_back(attribute);
  }
  if (used0 != words0.size() || used1 != words1.size() || used2 != texts.size() ||
      used3 != longWords.size())
    cursor.Fail("attribute value lists hold more values than their kinds name");
  return list;
}

GlobalInformation ReadGlobalInformationRecord(SceneCursor& cursor) {
  GlobalInformation info;
  info.size = ReadFramed(cursor, [&] {
    info.version = cursor.Text();
    info.applicationName = cursor.Text();
    info.applicationVersion = cursor.Text();
    info.formatVersion = cursor.Text();
    info.creationDate = cursor.Text();
    info.computerName = cursor.Text();
    info.userName = cursor.Text();
    info.comment = cursor.Text();
  });
  return info;
}

MaterialContent ReadMaterialRecord(SceneCursor& cursor) {
  MaterialContent material;
  material.size = ReadFramed(cursor, [&] {
    material.version = cursor.Text();
    ReadFloats(cursor, material.diffuse);
    ReadFloats(cursor, material.specular);
    ReadFloats(cursor, material.emissive);
    ReadFloats(cursor, material.ambient);
    material.extraWord = cursor.U32();
    if (HasField(material.version, "0.2")) material.ambientFactor = cursor.F32();
    if (HasField(material.version, "0.3")) material.visible = cursor.U8();
  });
  return material;
}

GroupContent ReadGroup(SceneCursor& light, SceneCursor& attributes) {
  GroupContent group;
  ReadFloats(light, group.translation);
  ReadFloats(light, group.rotation);
  ReadFloats(light, group.scale);
  group.attributes = ReadAttributeMap(attributes);
  group.rootFlag = light.U8();
  return group;
}

namespace {

void ReadArrayDescription(SceneCursor& light, Variable& variable) {
  variable.byteSize = light.U32();
  variable.width = light.U8();
  variable.firstFlag = light.U8();
  variable.secondFlag = light.U8();
  variable.firstFloat = light.F32();
  variable.secondFloat = light.F32();
  variable.thirdFlag = light.U8();
}

void SplitTypeWord(Variable& variable) {
  variable.type = variable.typeWord & 0xFFFFFF;
  variable.dataType = variable.typeWord >> 24;
}

// Versions "0.6" and "0.7": link fields, offset of 32 or 64 bits.
Variable ReadLinkedLayout(bool longOffset, SceneCursor& light, SceneCursor& attributes) {
  Variable variable;
  variable.name = light.Text();
  variable.typeWord = light.U32();
  SplitTypeWord(variable);
  variable.linked = light.U8();
  if (variable.linked > 1) light.Fail("linked flag " + std::to_string(variable.linked));
  if (variable.linked) {
    variable.linkEntryId = light.U32();
    variable.linkVariableIndex = light.U32();
  } else {
    ReadArrayDescription(light, variable);
    variable.offset = longOffset ? light.U64() : light.U32();
  }
  variable.vibration = light.U8();
  variable.attributes = ReadAttributeMap(attributes);
  return variable;
}

// The oldest layout: no links, the type without data type, offset last.
Variable ReadOldLayout(SceneCursor& light, SceneCursor& attributes) {
  Variable variable;
  variable.name = light.Text();
  variable.typeWord = light.U32();
  variable.type = variable.typeWord;
  ReadArrayDescription(light, variable);
  variable.vibration = light.U8();
  variable.attributes = ReadAttributeMap(attributes);
  variable.offset = light.U64();
  return variable;
}

}  // namespace

std::vector<Variable> ReadGeometry(const std::string& version, SceneCursor& light,
                                   SceneCursor& attributes) {
  // Version "0.5" keeps values inline in "Heavy Data" at save time; no
  // file of ours holds one, and its values could not be located.
  if (version == "0.5") light.Fail("geometry version 0.5 is not supported");
  const bool linkedLayout = version == "0.6" || version == "0.7";
  // The smallest variable record: a linked one with an empty name.
  // (The old layout: name, type, array description and vibration take 25
  // bytes, the offset 8.)
  const std::uint32_t minRecord = linkedLayout ? 18 : 25 + 8;
  const std::uint32_t count = light.Count(minRecord);
  std::vector<Variable> variables;
  for (std::uint32_t i = 0; i < count; ++i)
    variables.push_back(linkedLayout ? ReadLinkedLayout(version == "0.7", light, attributes)
                                     : ReadOldLayout(light, attributes));
  return variables;
}

}  // namespace DovReader
