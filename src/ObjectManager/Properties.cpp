// Text attributes, arrays and their width.

#include <stdexcept>
#include <string>
#include <vector>

#include "Kel/Util/Raise.h"
#include "ObjectManager/ElementTypes.h"
#include "ObjectManager/ObjectManager.h"
#include "ObjectManager/SetterSupport.h"
#include "ObjectManager/ValueText.h"
#include "Platform/Platform.h"

namespace Kel {
namespace Dov {

template <class T>
void ObjectManager::setProperty(const Identifier& object, const char* key, const T& value) {
  validate(object);
  const char* const method = "Kel::Dov::ObjectManager::setProperty";
  const std::string name = RequireText(key, method);
  objects[object.second].attributes[name] = TextAttribute(RequireValueText(value, method));
}

void ObjectManager::setDimension(const Identifier& object, unsigned char dimension) {
  validate(object);
  storeProperty(object.second, "Dimension", dimension);
}

template <class T>
std::uint64_t ObjectManager::acceptValues(const Identifier& array, const T* values,
                                          std::uint64_t count, const char* method) {
  validate(array);
  // The width in force now decides how many elements are read; a later
  // setDimension does not reshape what is stored.
  const unsigned char* width = readProperty<unsigned char>(array.second, "Dimension", 1);
  const std::uint64_t perTuple = width != nullptr ? *width : 1;
  // Neither the element count nor its byte size may wrap: a wrapped product
  // would read a few elements where the host meant more than memory holds.
  // That holds whether the values are copied or lent.
  const std::uint64_t maxElements = std::vector<T>().max_size();
  if (perTuple != 0 && count > maxElements / perTuple)
    throw std::length_error(std::string(method) +
                            ": count x \"Dimension\" is more than an array can hold");
  const std::uint64_t elements = count * perTuple;
  if (elements != 0 && values == nullptr)
    KEL_RAISE(16, "Null array pointer with a non-zero count", method);
  return elements;
}

template <class T>
void ObjectManager::setValues(const Identifier& array, const T* values, std::uint64_t count) {
  const std::uint64_t elements =
      acceptValues(array, values, count, "Kel::Dov::ObjectManager::setValues");
  // One pass over the host's numbers, straight into the vector that the
  // property then takes over (moved, not copied again).
  std::vector<T> copy;
  Platform::ReserveForFilling(copy, static_cast<std::size_t>(elements));
  if (elements != 0) copy.assign(values, values + elements);
  storeProperty(array.second, "Array", std::move(copy));
}

template <class T>
void ObjectManager::lendValues(const Identifier& array, const T* values, std::uint64_t count) {
  const std::uint64_t elements =
      acceptValues(array, values, count, "Kel::Dov::ObjectManager::lendValues");
  // Only the place is kept: the host answers for the memory until the file
  // is finished or the scene is gone.
  storeProperty(array.second, "Array", ArrayView<T>(values, elements));
}

#define DOVWRITER_INSTANTIATE_SET_PROPERTY(T) \
  template void ObjectManager::setProperty<T>(const Identifier&, const char*, T const&);
DOVWRITER_FOR_EACH_SHARED_VALUE_TYPE(DOVWRITER_INSTANTIATE_SET_PROPERTY)

#define DOVWRITER_INSTANTIATE_SET_VALUES(T)                                            \
  template void ObjectManager::setValues<T>(const Identifier&, T const*, std::uint64_t); \
  template void ObjectManager::lendValues<T>(const Identifier&, T const*, std::uint64_t);
DOVWRITER_FOR_EACH_SHARED_ARRAY_TYPE(DOVWRITER_INSTANTIATE_SET_VALUES)

}  // namespace Dov
}  // namespace Kel
