// The third version of the scene handle: write options, lent arrays and
// diagnostics. Every operation forwards to the scene's ObjectManager.

#include <DovWriter/Scene_V2.h>

#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

Scene_V2::Scene_V2() : Scene_V1() {}

Scene_V2::Scene_V2(const char* title) : Scene_V1(title) {}

void Scene_V2::setWriteOptions(const WriteOptions& options) { manager->setWriteOptions(options); }

template <class T>
void Scene_V2::lendValues(const Identifier& array, const T* values, std::uint64_t count) {
  typedef typename SharedArrayType<T>::type Stored;
  static_assert(sizeof(Stored) == sizeof(T), "shared array type of another size");
  manager->lendValues(array, reinterpret_cast<const Stored*>(values), count);
}

void Scene_V2::setDiagnostics(DiagnosticHandler handler, void* user) {
  manager->setDiagnostics(handler, user);
}

#define DOVWRITER_EXPORT_LEND_VALUES(T) \
  template void Scene_V2::lendValues<T>(const Identifier&, T const*, std::uint64_t);
DOVWRITER_FOR_EACH_NUMBER_TYPE(DOVWRITER_EXPORT_LEND_VALUES)

}  // namespace Dov
}  // namespace Kel
