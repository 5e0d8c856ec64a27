// The first version of the scene handle: objects, names, title and text
// attributes. Every operation forwards to the scene's ObjectManager.

#include <DovWriter/Scene.h>

#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

Scene_V0::Scene_V0() : Scene_V0(nullptr) {}

Scene_V0::Scene_V0(const char* title) : manager(new ObjectManager(title)) {}

Scene_V0::~Scene_V0() {
  delete manager;
  manager = nullptr;
}

// A scene owns its file and table, so a handle cannot be copied. These two
// exist for the linker only and leave the target alone.
Scene_V0::Scene_V0(const Scene_V0&) : manager(nullptr) {}

Scene_V0& Scene_V0::operator=(const Scene_V0&) { return *this; }

Identifier Scene_V0::createObject(ObjectType type) { return manager->createObject(type); }

ObjectType Scene_V0::getType(const Identifier& object) const { return manager->getType(object); }

const char* Scene_V0::getName(const Identifier& object) const { return manager->getName(object); }

void Scene_V0::setName(const Identifier& object, const char* name) {
  manager->setName(object, name);
}

void Scene_V0::setTitle(const char* title) { manager->setTitle(title); }

void Scene_V0::validate(const Identifier& object) const { manager->validate(object); }

template <class T>
void Scene_V0::setProperty(const Identifier& object, const char* key, const T& value) {
  manager->setProperty(object, key, SharedValue(value));
}

#define DOVWRITER_EXPORT_SET_PROPERTY(T) \
  template void Scene_V0::setProperty<T>(const Identifier&, const char*, T const&);
DOVWRITER_FOR_EACH_ELEMENT_TYPE(DOVWRITER_EXPORT_SET_PROPERTY)

}  // namespace Dov
}  // namespace Kel
