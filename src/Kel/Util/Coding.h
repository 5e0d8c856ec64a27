#ifndef DOVWRITER_KEL_UTIL_CODING_H
#define DOVWRITER_KEL_UTIL_CODING_H

// Little-endian encoding of fixed-width values. Every byte that the library
// lays down goes through these helpers: they shift bytes explicitly, so the
// result never depends on the host's byte order or on struct layout.

#include <cstdint>
#include <cstring>

namespace Kel {
namespace Util {

inline void EncodeFixed32(unsigned char* dst, std::uint32_t value) {
  dst[0] = static_cast<unsigned char>(value);
  dst[1] = static_cast<unsigned char>(value >> 8);
  dst[2] = static_cast<unsigned char>(value >> 16);
  dst[3] = static_cast<unsigned char>(value >> 24);
}

inline void EncodeFixed64(unsigned char* dst, std::uint64_t value) {
  EncodeFixed32(dst, static_cast<std::uint32_t>(value));
  EncodeFixed32(dst + 4, static_cast<std::uint32_t>(value >> 32));
}

inline std::uint32_t DecodeFixed32(const unsigned char* src) {
  return static_cast<std::uint32_t>(src[0]) | (static_cast<std::uint32_t>(src[1]) << 8) |
         (static_cast<std::uint32_t>(src[2]) << 16) | (static_cast<std::uint32_t>(src[3]) << 24);
}

inline std::uint64_t DecodeFixed64(const unsigned char* src) {
  return static_cast<std::uint64_t>(DecodeFixed32(src)) |
         (static_cast<std::uint64_t>(DecodeFixed32(src + 4)) << 32);
}

// The bit pattern of an IEEE 754 binary32 value, and back.
inline std::uint32_t FloatBits(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

inline float BitsToFloat(std::uint32_t bits) {
  float value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

}  // namespace Util
}  // namespace Kel

#endif
