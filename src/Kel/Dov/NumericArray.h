#ifndef DOVWRITER_KEL_DOV_NUMERICARRAY_H
#define DOVWRITER_KEL_DOV_NUMERICARRAY_H

#include <cstdint>

namespace KelDov {

// Describes one array of 4-byte values. The values themselves went to the
// heavy stream when the variable was added; `data` is only a view of the
// builder's buffer and goes stale with it.
class NumericArray {
 public:
  virtual std::uint8_t GetWidth() const { return width; }
  virtual std::uint64_t GetCount() const { return byteSize / 4; }

  const unsigned char* data = nullptr;
  std::uint64_t byteSize = 0;
  std::uint8_t width = 1;
  std::uint8_t spareByte = 0;
  std::uint32_t dataType = 0;  // 1: f32, 5: u32
  std::uint8_t firstFlag = 0;
  std::uint8_t secondFlag = 0;
  float firstFloat = 0.0f;
  float secondFloat = 0.0f;
  std::uint8_t thirdFlag = 0;
};

const std::uint32_t DataTypeFloat = 1;
const std::uint32_t DataTypeUnsigned = 5;

}  // namespace KelDov

#endif
