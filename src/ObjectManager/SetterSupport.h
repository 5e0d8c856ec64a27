#ifndef DOVWRITER_OBJECTMANAGER_SETTERSUPPORT_H
#define DOVWRITER_OBJECTMANAGER_SETTERSUPPORT_H

// Small helpers that the setters of the object table share.

#include <string>

#include "ObjectManager/ObjectManager.h"
#include "ObjectManager/ValueText.h"

namespace Kel {
namespace Dov {

// Checks every identifier, left to right; the first bad one throws.
template <class... Identifiers>
inline void ValidateAll(const ObjectManager& manager, const Identifiers&... identifiers) {
  (manager.validate(identifiers), ...);
}

// A copy of a text argument. A null pointer is refused with code 16 rather
// than read.
std::string RequireText(const char* text, const char* method);

// The value text of an instance value or attribute value; a null text
// pointer is refused like any other text argument.
template <class T>
inline std::string RequireValueText(const T& value, const char* /*method*/) {
  return ValueText(value);
}
inline std::string RequireValueText(const char* value, const char* method) {
  return RequireText(value, method);
}

// The recording step behind every per-value setter: makes sure the instance
// group lists the value text and the key (the mark byte of the kind and the
// name), then appends `object` to the key's link list. A new element set key
// also enters `object` into "Element Sets" of the mesh.
enum class RecordingKind { Result, ElementSet };
void RecordInstance(ObjectManager& manager, RecordingKind kind, std::uint64_t mesh,
                    std::uint64_t group, const std::string& valueText, const std::string& name,
                    std::uint64_t object);

}  // namespace Dov
}  // namespace Kel

#endif
