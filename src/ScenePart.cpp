// The scene handle of one part of a file that several processes write:
// Scene_V2 with saveTo and closeFile taken over by their collective forms.

#include <DovWriter/ScenePart.h>

#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

PartGroup::~PartGroup() = default;

Scene_V2Part::Scene_V2Part(const char* title, PartGroup* group) : Scene_V2(title), group(group) {
  manager->markAsPart();
}

Scene_V2Part::~Scene_V2Part() { delete group; }

void Scene_V2Part::saveTo(const char* path, const char* /*unused*/, bool /*unusedFlag*/,
                          bool overwrite) {
  manager->saveToAsPart(*group, path, overwrite);
}

void Scene_V2Part::closeFile(const char* path) { manager->closeFileAsPart(*group, path); }

}  // namespace Dov
}  // namespace Kel
