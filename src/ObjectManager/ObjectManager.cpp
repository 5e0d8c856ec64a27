#include "ObjectManager/ObjectManager.h"

#include "Kel/Util/Raise.h"
#include "ObjectManager/SetterSupport.h"

namespace Kel {
namespace Dov {

namespace {
const char* const kValidateMethod = "Kel::Dov::ObjectManager::validate";
}  // namespace

ObjectManager::ObjectManager(const char* title) : sceneTitle(title != nullptr ? title : "") {}

Identifier ObjectManager::createObject(ObjectType type) {
  ObjectRecord record;
  record.type = type;
  objects.push_back(std::move(record));
  return Identifier{reinterpret_cast<std::uint64_t>(this), objects.size() - 1};
}

void ObjectManager::validate(const Identifier& object) const {
  // The first word only tells scenes apart; it is never used as a pointer.
  if (object.first != reinterpret_cast<std::uint64_t>(this) || object.second >= objects.size())
    KEL_RAISE(8, "Invalid Identifier", kValidateMethod);
}

ObjectType ObjectManager::getType(const Identifier& object) const {
  validate(object);
  return objects[object.second].type;
}

const char* ObjectManager::getName(const Identifier& object) const {
  validate(object);
  return objects[object.second].name.c_str();
}

void ObjectManager::setName(const Identifier& object, const char* name) {
  validate(object);
  objects[object.second].name = RequireText(name, "Kel::Dov::ObjectManager::setName");
}

void ObjectManager::setTitle(const char* title) {
  // Like the constructor, a null title means the empty one.
  sceneTitle = title != nullptr ? title : "";
}

std::string RequireText(const char* text, const char* method) {
  if (text == nullptr) KEL_RAISE(16, "Null text argument", method);
  return std::string(text);
}

}  // namespace Dov
}  // namespace Kel
