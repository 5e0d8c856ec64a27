#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

ObjectManager::ObjectManager(const char* title) : sceneTitle(title != nullptr ? title : "") {}

}  // namespace Dov
}  // namespace Kel
