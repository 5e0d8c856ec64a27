// The three operations of the handles that reach past the object table:
// binding the file, naming the root, and closing.

#include <DovWriter/Scene.h>

#include <string>

#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

void Scene_V0::saveTo(const char* path, const char* /*unused*/, bool /*unusedFlag*/,
                      bool overwrite) {
  manager->refusePartAlone("Kel::Dov::Scene_V0::saveTo");
  manager->saveTo(path, overwrite);
}

void Scene_V0::closeFile(const char* path) {
  manager->refusePartAlone("Kel::Dov::Scene_V0::closeFile");
  // A null path names no file, so it matches none: nothing happens, as for
  // any other path that differs from the one given to saveTo().
  if (path == nullptr) {
    manager->explainIgnoredClose(path);
    return;
  }
  manager->closeFile(std::string(path));
}

void Scene_V1::createDefaultViews(const Identifier& root) { manager->createDefaultViews(root); }

}  // namespace Dov
}  // namespace Kel
