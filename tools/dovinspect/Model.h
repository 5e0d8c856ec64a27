#ifndef DOVINSPECT_MODEL_H
#define DOVINSPECT_MODEL_H

// What the commands need to know of a model file, independent of how the
// reader lays it out: the geometries with their variables, and a way to get
// one variable's values at a time.

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
  std::uint64_t offset = 0;  // of the values in "Heavy Data", links followed
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

// Gives the values of one variable as 32-bit words (floats by their bits),
// links followed and reordering undone.
class ValueSource {
 public:
  virtual ~ValueSource() = default;
  virtual std::vector<std::uint32_t> Words(std::uint32_t entryId, std::size_t variableIndex) = 0;
};

}  // namespace DovInspect

#endif
