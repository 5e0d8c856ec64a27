#include <cstring>

#include "Kel/Util/Coding.h"
#include "reader/Scene.h"

namespace DovReader {

std::vector<std::uint32_t> DecodeDataset(const unsigned char* bytes, std::uint64_t byteSize,
                                         std::uint8_t width) {
  const std::uint64_t count = byteSize / 4;
  std::vector<std::uint32_t> values(count);
  const std::uint64_t items = width == 0 ? 0 : count / width;
  for (std::uint64_t k = 0; k < width; ++k) {
    const unsigned char* plane = bytes + 4 * items * k;
    for (std::uint64_t i = 0; i < items; ++i)
      values[k + i * width] = static_cast<std::uint32_t>(plane[i]) |
                              static_cast<std::uint32_t>(plane[items + i]) << 8 |
                              static_cast<std::uint32_t>(plane[2 * items + i]) << 16 |
                              static_cast<std::uint32_t>(plane[3 * items + i]) << 24;
  }
  // Values that fill no item (all of them for width 0) stand as they were.
  for (std::uint64_t i = items * width; i < count; ++i)
    values[i] = Kel::Util::DecodeFixed32(bytes + 4 * i);
  return values;
}

std::vector<std::uint32_t> Scene::ReadValues(std::uint32_t entryId,
                                             std::uint32_t variableIndex) const {
  const Variable& variable = ResolveVariable(entryId, variableIndex);
  if (variable.byteSize % 4 != 0)
    throw ReadError("variable \"" + variable.name + "\" has a byte size that is no multiple of 4");
  if (variable.byteSize == 0) return std::vector<std::uint32_t>();
  const std::vector<unsigned char> bytes =
      container->ReadStreamRange("Heavy Data", variable.offset, variable.byteSize);
  if (bytes.size() != variable.byteSize)
    throw ReadError("dataset of \"" + variable.name + "\" is cut short");
  return DecodeDataset(bytes.data(), variable.byteSize, variable.width);
}

std::vector<float> Scene::AsFloats(const std::vector<std::uint32_t>& words) {
  std::vector<float> floats;
  floats.reserve(words.size());
  for (std::uint32_t word : words) floats.push_back(Kel::Util::BitsToFloat(word));
  return floats;
}

std::vector<float> Scene::ReadFloats(std::uint32_t entryId, std::uint32_t variableIndex) const {
  return AsFloats(ReadValues(entryId, variableIndex));
}

}  // namespace DovReader
