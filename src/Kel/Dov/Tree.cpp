#include "Kel/Dov/Tree.h"

#include <memory>

#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace KelDov {

const std::string HeavyDataStream("Heavy Data");
const std::string DovTreeStream("Dov Tree");
const std::string LightDataStream("Light Data");
const std::string AttributesStream("Attributes");
const std::string ResourcesStream("Resources");
const std::string GlobalInformationStream("Global Information");
const std::string ViewPointsStream("View Points");

bool IsDroppedAttributeKey(const std::string& key) {
  return key == "Complex" || key == "Contents" || key == "DataSource" || key == "DataType" ||
         key == "Structure" || key.compare(0, 5, "Link.") == 0;
}

namespace {

bool IsVibrationMode(const AttributeMap& attributes) {
  auto category = attributes.find("Category");
  return category != attributes.end() && category->second.kind == 2 &&
         category->second.GetText() == "Vibration";
}

}  // namespace

Tree::Tree() {
  // Default colours are drawn from the thread's generator; every new
  // scene starts the sequence again so that its colours are reproducible.
  Platform::SeedRandom(0);
}

Tree::~Tree() {
  for (auto& entry : entries) delete entry.second.value;
}

void Tree::AddGroup(const std::string& name) { AddNodeHolding(new Group(name, AttributeMap())); }

void Tree::AddGroup(const std::string& name, bool visible) {
  Group* group = new Group(name, AttributeMap());
  group->SetVisible(visible);
  AddNodeHolding(group);
}

void Tree::AddGeometry(const std::string& name) { AddNodeHolding(new Geometry(name)); }

void Tree::AddNodeHolding(Node* node) {
  std::unique_ptr<Node> owned(node);
  AddNode();
  GetCurrentNode().value = owned.release();
}

Geometry& Tree::CurrentGeometry(const char* method) {
  Geometry* geometry = dynamic_cast<Geometry*>(GetCurrentNode().value);
  if (geometry == nullptr) KEL_RAISE(5, "The current tree entry holds no geometry", method);
  return *geometry;
}

VariableRef Tree::AddVariable(const std::string& name, Geometry::VariableType type,
                              std::uint64_t offset, const NumericArray& array,
                              const AttributeMap& attributes) {
  Geometry& geometry = CurrentGeometry("KelDov::Tree::AddVariable");
  const std::uint64_t index = geometry.GetOrAddVariableIndex(name);
  Geometry::Variable& variable = geometry.variables[index];
  variable.type = type;
  variable.vibration = IsVibrationMode(attributes) ? 1 : 0;
  for (const auto& entry : attributes)
    if (!IsDroppedAttributeKey(entry.first)) variable.attributes[entry.first] = entry.second;
  variable.array = array;
  geometry.datasetOffsets[name] = offset;
  VariableRef ref;
  ref.entryId = currentId;
  ref.variableIndex = static_cast<std::uint32_t>(index);
  return ref;
}

void Tree::LinkVariable(const VariableRef& variable, const VariableRef& target) {
  SetCurrentId(variable.entryId);
  Geometry& geometry = CurrentGeometry("KelDov::Tree::LinkVariable");
  if (variable.variableIndex >= geometry.variables.size())
    KEL_RAISE(5, "The geometry has no variable of that index", "KelDov::Tree::LinkVariable");
  Geometry::Variable& linked = geometry.variables[variable.variableIndex];
  linked.linkTarget = target;
  linked.linked = 1;
  linked.attributes.clear();
}

}  // namespace KelDov
