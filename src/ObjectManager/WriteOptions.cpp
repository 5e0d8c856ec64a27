// The options a host of the third interface version may set: how the file
// is written, lent arrays, and where diagnostics go.

#include "Kel/Util/Raise.h"
#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

namespace {
const char* const SetWriteOptionsMethod = "Kel::Dov::ObjectManager::setWriteOptions";
}  // namespace

void ObjectManager::setWriteOptions(const WriteOptions& requested) {
  // The blocks of a file are cut one way from its first dataset to its
  // last; a change half way would leave them cut two ways.
  if (fileState == FileState::Building || fileState == FileState::Finished)
    KEL_RAISE(19, "setWriteOptions after closeFile has started building", SetWriteOptionsMethod);
  if (requested.encoding != Encoding::Exact && requested.encoding != Encoding::Fast)
    KEL_RAISE(16, "setWriteOptions: unknown encoding", SetWriteOptionsMethod);
  if (requested.encoding == Encoding::Fast && (requested.level < 1 || requested.level > 12))
    KEL_RAISE(16, "setWriteOptions: the Fast level must lie in 1..12", SetWriteOptionsMethod);
  options = requested;
}

template <class T>
void ObjectManager::lendValues(const Identifier& array, const T* values, std::uint64_t count) {
  // Until arrays can be held by reference, a lent array is copied like any
  // other (after the same checks, acceptValues): the file is the same, only
  // the memory is not saved yet.
  setValues(array, values, count);
}

void ObjectManager::setDiagnostics(DiagnosticHandler handler, void* user) {
  diagnostics.attach(handler, user);
}

#define DOVWRITER_INSTANTIATE_LEND_VALUES(T) \
  template void ObjectManager::lendValues<T>(const Identifier&, T const*, std::uint64_t);
DOVWRITER_FOR_EACH_SHARED_ARRAY_TYPE(DOVWRITER_INSTANTIATE_LEND_VALUES)

}  // namespace Dov
}  // namespace Kel
