// The reads of the builders, with their defaults. A key that holds a value
// of another type counts as absent, as the property store defines.

#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

bool ObjectManager::readFlag(std::uint64_t index, const std::string& key, bool fallback) {
  const bool* value = readProperty<bool>(index, key, fallback);
  return value != nullptr ? *value : fallback;
}

std::uint64_t ObjectManager::readLink(std::uint64_t index, const std::string& key) {
  const std::uint64_t* value = readProperty<std::uint64_t>(index, key, NoObject);
  return value != nullptr ? *value : NoObject;
}

LinkList ObjectManager::readLinks(std::uint64_t index, const std::string& key) {
  const LinkList* value = readProperty<LinkList>(index, key, LinkList());
  return value != nullptr ? *value : LinkList();
}

std::uint8_t ObjectManager::readDimension(std::uint64_t index) {
  const unsigned char* value = readProperty<unsigned char>(index, "Dimension", 1);
  return value != nullptr ? *value : 1;
}

template <class T>
ArrayView<T> ObjectManager::readArray(std::uint64_t index) {
  ArrayView<T> view;
  if (index == NoObject) return view;
  // Like every read here, an absent key is first given the fallback (an
  // empty copy of T), which later reads of the object then find.
  readProperty<std::vector<T>>(index, "Array", std::vector<T>());
  viewOf(objects[index].properties["Array"], view);
  return view;
}

template ArrayView<float> ObjectManager::readArray<float>(std::uint64_t);
template ArrayView<std::uint32_t> ObjectManager::readArray<std::uint32_t>(std::uint64_t);

}  // namespace Dov
}  // namespace Kel
