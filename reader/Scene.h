#ifndef DOVREADER_SCENE_H
#define DOVREADER_SCENE_H

// The scene half of our reader: the global information, the tree records
// and each node's stored content, read back from the streams of a model
// file, and the values of each variable from "Heavy Data" with the byte
// planes undone. Every structural violation is a ReadError.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reader/Container.h"

namespace DovReader {

class SceneCursor;

// One entry of a stored attribute map. `word` holds kinds 0 and 1,
// `longWord` kind 3, `text` kind 2; other kinds carry no value.
struct Attribute {
  std::string key;
  std::uint8_t kind = 0;
  std::uint32_t word = 0;
  std::uint64_t longWord = 0;
  std::string text;
};

// The entries in stored (key) order.
struct AttributeList {
  std::vector<Attribute> entries;
  const Attribute* Find(const std::string& key) const;
};

struct GlobalInformation {
  std::uint32_t size = 0;
  std::string version;
  std::string applicationName;
  std::string applicationVersion;
  std::string formatVersion;
  std::string creationDate;
  std::string computerName;
  std::string userName;
  std::string comment;
};

struct GroupContent {
  float translation[3] = {};
  float rotation[4] = {};
  float scale[3] = {};
  std::uint8_t rootFlag = 0;
  AttributeList attributes;
};

// Fields that the record's version does not carry keep these values.
struct MaterialContent {
  std::uint32_t size = 0;
  std::string version;
  float diffuse[4] = {};
  float specular[4] = {};
  float emissive[4] = {};
  float ambient[4] = {};
  std::uint32_t extraWord = 0;
  float ambientFactor = 0.0f;
  std::uint8_t visible = 0;
};

struct Variable {
  std::string name;
  std::uint32_t typeWord = 0;  // as stored
  std::uint32_t type = 0;      // low 24 bits
  std::uint32_t dataType = 0;  // high 8 bits: 1 float, 5 unsigned
  std::uint8_t linked = 0;
  std::uint32_t linkEntryId = 0;
  std::uint32_t linkVariableIndex = 0;
  std::uint32_t byteSize = 0;
  std::uint8_t width = 0;
  std::uint8_t firstFlag = 0;
  std::uint8_t secondFlag = 0;
  float firstFloat = 0.0f;
  float secondFloat = 0.0f;
  std::uint8_t thirdFlag = 0;
  std::uint64_t offset = 0;
  std::uint8_t vibration = 0;
  AttributeList attributes;
};

struct TreeRecord {
  std::uint32_t id = 0;
  std::uint32_t parent = 0;
  std::uint32_t previousSibling = 0;
  std::uint32_t nextSibling = 0;
  std::uint32_t firstChild = 0;
  std::uint32_t lastChild = 0;
  std::string name;
  std::string typeName;
  std::string version;
  std::uint64_t lightOffset = 0;
  std::optional<GroupContent> group;        // type "Group"
  std::optional<MaterialContent> material;  // type "Shape"
  std::vector<Variable> variables;          // type "Geometry"
};

class Scene {
 public:
  // Reads and checks all scene streams. The container must outlive the
  // scene: values are fetched from it on demand.
  static Scene Read(const Container& container);

  const GlobalInformation& Information() const { return information; }
  const std::vector<TreeRecord>& Records() const { return records; }
  const TreeRecord& Record(std::uint32_t id) const;
  // Levels above the entry: 0 for the root.
  std::uint32_t Depth(std::uint32_t id) const;
  const Variable& GetVariable(std::uint32_t entryId, std::uint32_t variableIndex) const;
  // The variable that holds the values, after following links (resolved
  // once, when the scene is read).
  const Variable& ResolveVariable(std::uint32_t entryId, std::uint32_t variableIndex) const;

  // The values of a variable as 32-bit words, in their original order.
  std::vector<std::uint32_t> ReadValues(std::uint32_t entryId, std::uint32_t variableIndex) const;
  std::vector<float> ReadFloats(std::uint32_t entryId, std::uint32_t variableIndex) const;
  static std::vector<float> AsFloats(const std::vector<std::uint32_t>& words);

 private:
  explicit Scene(const Container& container) : container(&container) {}
  std::size_t IndexOf(std::uint32_t id) const;
  void AddRecord(TreeRecord record, const SceneCursor& tree);
  void CheckSiblingLinks() const;
  void ResolveLinks();

  // Where a variable stands: its record's index in `records` and its own
  // index in that record's variables.
  struct Position {
    std::size_t record;
    std::uint32_t variable;
  };

  const Container* container;
  GlobalInformation information;
  std::vector<TreeRecord> records;  // ascending ids, each parent before its children
  std::vector<std::uint32_t> depths;         // by record index
  std::vector<std::size_t> firstVariables;   // by record index: its first in `holders`
  std::vector<Position> holders;             // by variable, in record order: where its values are
};

// Reverses the byte-plane layout of a dataset of `bytes.size() / 4` values.
std::vector<std::uint32_t> DecodeDataset(const unsigned char* bytes, std::uint64_t byteSize,
                                         std::uint8_t width);

}  // namespace DovReader

#endif
