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

const std::vector<float>& ObjectManager::readFloatArray(std::uint64_t index) {
  static const std::vector<float> none;
  if (index == NoObject) return none;
  const std::vector<float>* value = readProperty<std::vector<float>>(index, "Array", none);
  return value != nullptr ? *value : none;
}

const std::vector<std::uint32_t>& ObjectManager::readIndexArray(std::uint64_t index) {
  static const std::vector<std::uint32_t> none;
  if (index == NoObject) return none;
  const std::vector<std::uint32_t>* value =
      readProperty<std::vector<std::uint32_t>>(index, "Array", none);
  return value != nullptr ? *value : none;
}

}  // namespace Dov
}  // namespace Kel
