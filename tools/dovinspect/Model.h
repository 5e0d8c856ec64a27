#ifndef DOVINSPECT_MODEL_H
#define DOVINSPECT_MODEL_H

// What the commands need to know of a model file, independent of how the
// reader lays it out: the geometries with their variables.

#include <cstdint>
#include <string>
#include <vector>

namespace DovInspect {

// Element types of a variable's values (the high byte of its type word).
const std::uint8_t kFloatData = 1;
const std::uint8_t kUnsignedData = 5;

struct VariableInfo {
  std::size_t index = 0;
  std::string name;
  std::uint32_t type = 0;  // without the element type
  std::uint8_t dataType = 0;
  std::uint8_t width = 0;
  std::uint64_t count = 0;  // number of 4-byte values, links followed
  bool linked = false;
  std::uint32_t linkEntry = 0;
  std::uint32_t linkIndex = 0;
};

struct GeometryInfo {
  std::uint32_t entryId = 0;
  std::string name;
  std::string path;  // names from the root down, joined by '/'
  std::vector<VariableInfo> variables;
};

}  // namespace DovInspect

#endif
