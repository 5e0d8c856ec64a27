// Results, element sets, components, materials and application information:
// the setters that link objects to each other, and the recording step that
// keeps data per instance value on an instance group.

#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"
#include "ObjectManager/SetterSupport.h"

namespace Kel {
namespace Dov {

namespace {

// The two lists of the group that a kind of recording keeps its keys in.
struct KeyLists {
  char mark;
  const char* names;
  const char* indices;
};

const KeyLists kResultLists{ObjectManager::ResultKeyMark, "Result Names", "Result Indices"};
const KeyLists kElementSetLists{ObjectManager::ElementSetKeyMark, "Element Set Names",
                                "Element Set Indices"};

// Enters `text` into a list of distinct texts with its position index.
// Returns true if it was new.
bool EnterDistinct(TextList& list, IndexMap& positions, const std::string& text) {
  if (positions.count(text) != 0) return false;
  positions[text] = list.size();
  list.push_back(text);
  return true;
}

// A result's "Variable Type" and "Dimension" by its public kind; values
// outside the table count as scalars.
struct ResultShape {
  KelDov::Geometry::VariableType type;
  unsigned char width;
};

ResultShape ShapeOf(VariableType type) {
  switch (type) {
    case VectorVariable: return {KelDov::Geometry::VectorValues, 3};
    case SixComponentVariableA: return {KelDov::Geometry::SixComponentValuesA, 6};
    case SixComponentVariableB: return {KelDov::Geometry::SixComponentValuesB, 6};
    case ScalarVariable: break;
  }
  return {KelDov::Geometry::ScalarValues, 1};
}

void StoreResultShape(ObjectManager& manager, std::uint64_t array, VariableType type) {
  const ResultShape shape = ShapeOf(type);
  manager.storeProperty(array, "Variable Type", shape.type);
  manager.storeProperty(array, "Dimension", shape.width);
}

std::uint64_t AppendComponent(ObjectManager& manager, std::uint64_t parent, std::uint64_t child,
                              std::uint64_t transformation) {
  LinkList* components = manager.readProperty(parent, "Components", LinkList());
  LinkList* transformations = manager.readProperty(parent, "Transformations", LinkList());
  if (components == nullptr || transformations == nullptr) return 0;
  components->push_back(child);
  transformations->push_back(transformation);
  return components->size();
}

}  // namespace

void RecordInstance(ObjectManager& manager, RecordingKind kind, std::uint64_t mesh,
                    std::uint64_t group, const std::string& valueText, const std::string& name,
                    std::uint64_t object) {
  const KeyLists& lists = kind == RecordingKind::Result ? kResultLists : kElementSetLists;
  // One instance group per mesh: a later group replaces an earlier one.
  manager.storeProperty(mesh, "Instance Group", group);

  TextList* values = manager.readProperty(group, "Values", TextList());
  IndexMap* valueIndices = manager.readProperty(group, "Value Indices", IndexMap());
  TextList* names = manager.readProperty(group, lists.names, TextList());
  IndexMap* nameIndices = manager.readProperty(group, lists.indices, IndexMap());
  if (values == nullptr || valueIndices == nullptr || names == nullptr || nameIndices == nullptr)
    return;

  const std::string key = lists.mark + name;
  if (EnterDistinct(*names, *nameIndices, key) && kind == RecordingKind::ElementSet) {
    // Only the first set of a name stands in the mesh's own list.
    LinkList* meshSets = manager.readProperty(mesh, "Element Sets", LinkList());
    if (meshSets != nullptr) meshSets->push_back(object);
  }

  LinkList* links = manager.readProperty(group, key, LinkList());
  if (links == nullptr) return;
  // Values are told apart by their text, so 1, 1.0f and '1' are one value.
  EnterDistinct(*values, *valueIndices, valueText);
  links->push_back(object);
}

template <class T>
void ObjectManager::recordResult(std::uint64_t mesh, std::uint64_t group, const T& value,
                                 const std::string& name, std::uint64_t array) {
  RecordInstance(*this, RecordingKind::Result, mesh, group,
                 RequireValueText(value, "Kel::Dov::ObjectManager::recordResult"), name, array);
}

template <class T>
void ObjectManager::recordElementSet(std::uint64_t mesh, std::uint64_t group, const T& value,
                                     const std::string& name, std::uint64_t set) {
  RecordInstance(*this, RecordingKind::ElementSet, mesh, group,
                 RequireValueText(value, "Kel::Dov::ObjectManager::recordElementSet"), name, set);
}

void ObjectManager::setResult(const Identifier& mesh, const char* name, const Identifier& array) {
  // Without an instance group there is nowhere to record the result; the
  // arguments are checked and the name dropped.
  ValidateAll(*this, mesh, array);
  warnResultWithoutGroup(mesh.second, RequireText(name, "Kel::Dov::ObjectManager::setResult"),
                         array.second);
}

void ObjectManager::setResult(const Identifier& mesh, const char* name, VariableType type,
                              const Identifier& array) {
  ValidateAll(*this, mesh, array);
  const std::string resultName = RequireText(name, "Kel::Dov::ObjectManager::setResult");
  StoreResultShape(*this, array.second, type);
  warnResultWithoutGroup(mesh.second, resultName, array.second);
}

void ObjectManager::warnResultWithoutGroup(std::uint64_t mesh, const std::string& name,
                                           std::uint64_t array) {
  if (!diagnostics.active()) return;
  warn(WarningCode::ResultWithoutGroup, array,
       "setResult(\"" + name + "\") on " + describeObject(*this, mesh) + " with the values of " +
           describeObject(*this, array) +
           " has no instance group: nothing is recorded and the result does not reach the "
           "file; results reach it through the forms with an instance group and a value");
}

template <class T>
void ObjectManager::setResult(const Identifier& mesh, const Identifier& group, const T& value,
                              const char* name, const Identifier& array) {
  // "Variable Type" and "Dimension" stay as the host left them.
  ValidateAll(*this, mesh, group, array);
  const char* const method = "Kel::Dov::ObjectManager::setResult";
  const std::string text = RequireValueText(value, method);
  RecordInstance(*this, RecordingKind::Result, mesh.second, group.second, text,
                 RequireText(name, method), array.second);
}

template <class T>
void ObjectManager::setResult(const Identifier& mesh, const Identifier& group, const T& value,
                              const char* name, VariableType type, const Identifier& array) {
  ValidateAll(*this, mesh, group, array);
  const char* const method = "Kel::Dov::ObjectManager::setResult";
  const std::string text = RequireValueText(value, method);
  const std::string resultName = RequireText(name, method);
  StoreResultShape(*this, array.second, type);
  RecordInstance(*this, RecordingKind::Result, mesh.second, group.second, text, resultName,
                 array.second);
}

void ObjectManager::addElementSet(const Identifier& mesh, const Identifier& set) {
  // A set may stand in the list twice; nothing here compares.
  ValidateAll(*this, mesh, set);
  LinkList* sets = readProperty(mesh.second, "Element Sets", LinkList());
  if (sets != nullptr) sets->push_back(set.second);
}

template <class T>
void ObjectManager::addElementSet(const Identifier& mesh, const Identifier& group, const T& value,
                                  const Identifier& set) {
  // Keyed by the set's own name, which is what the mesh builder looks for.
  ValidateAll(*this, mesh, group, set);
  const std::string text = RequireValueText(value, "Kel::Dov::ObjectManager::addElementSet");
  storeProperty(set.second, "Instance Id", group.second);
  RecordInstance(*this, RecordingKind::ElementSet, mesh.second, group.second, text,
                 objects[set.second].name, set.second);
}

template <class T>
void ObjectManager::addElementSet(const Identifier& mesh, const Identifier& group, const T& value,
                                  const char* name, const Identifier& set) {
  ValidateAll(*this, mesh, group, set);
  const char* const method = "Kel::Dov::ObjectManager::addElementSet";
  const std::string text = RequireValueText(value, method);
  const std::string setName = RequireText(name, method);
  storeProperty(set.second, "Instance Id", group.second);
  RecordInstance(*this, RecordingKind::ElementSet, mesh.second, group.second, text, setName,
                 set.second);
}

std::uint64_t ObjectManager::addComponent(const Identifier& parent, const Identifier& child) {
  ValidateAll(*this, parent, child);
  return AppendComponent(*this, parent.second, child.second, NoObject);
}

std::uint64_t ObjectManager::addComponent(const Identifier& parent, const Identifier& child,
                                          const Identifier& transformation) {
  ValidateAll(*this, parent, child, transformation);
  return AppendComponent(*this, parent.second, child.second, transformation.second);
}

void ObjectManager::removeComponent(const Identifier& parent, const std::uint64_t& /*component*/) {
  // Components are never removed: addComponent returns a count, not a
  // position, so there is no number that would name one entry safely.
  validate(parent);
}

void ObjectManager::setMaterial(const Identifier& object, const Identifier& material) {
  ValidateAll(*this, object, material);
  storeProperty(object.second, "Material", material.second);
}

template <class T>
void ObjectManager::setApplicationInfo(const char* name, const T& value) {
  const char* const method = "Kel::Dov::ObjectManager::setApplicationInfo";
  const std::string applicationName = RequireText(name, method);
  const std::string version = RequireValueText(value, method);
  GetInformation().applicationName = applicationName;
  GetInformation().applicationVersion = version;
}

#define DOVWRITER_INSTANTIATE_RECORDING(T)                                                     \
  template void ObjectManager::recordResult<T>(std::uint64_t, std::uint64_t, T const&,        \
                                               const std::string&, std::uint64_t);            \
  template void ObjectManager::recordElementSet<T>(std::uint64_t, std::uint64_t, T const&,    \
                                                   const std::string&, std::uint64_t);        \
  template void ObjectManager::setResult<T>(const Identifier&, const Identifier&, T const&,   \
                                            const char*, const Identifier&);                   \
  template void ObjectManager::setResult<T>(const Identifier&, const Identifier&, T const&,   \
                                            const char*, VariableType, const Identifier&);     \
  template void ObjectManager::addElementSet<T>(const Identifier&, const Identifier&,         \
                                                T const&, const Identifier&);                  \
  template void ObjectManager::addElementSet<T>(const Identifier&, const Identifier&,         \
                                                T const&, const char*, const Identifier&);     \
  template void ObjectManager::setApplicationInfo<T>(const char*, T const&);
DOVWRITER_FOR_EACH_SHARED_VALUE_TYPE(DOVWRITER_INSTANTIATE_RECORDING)

}  // namespace Dov
}  // namespace Kel
