#ifndef DOVWRITER_OBJECTMANAGER_ELEMENTTYPES_H
#define DOVWRITER_OBJECTMANAGER_ELEMENTTYPES_H

// The closed list of element types that the template operations of the scene
// interface exist for, and the mapping of host spellings onto the forms that
// share one implementation inside the library.

#include <cstdint>
#include <type_traits>

// Every spelling a host may use. `long`/`unsigned long` stand beside
// `long long`/`unsigned long long` so that hosts using int64_t link as well.
#define DOVWRITER_FOR_EACH_NUMBER_TYPE(X) \
  X(signed char)                          \
  X(unsigned char)                        \
  X(short)                                \
  X(unsigned short)                       \
  X(int)                                  \
  X(unsigned int)                         \
  X(long)                                 \
  X(unsigned long)                        \
  X(long long)                            \
  X(unsigned long long)                   \
  X(float)                                \
  X(double)

#define DOVWRITER_FOR_EACH_ELEMENT_TYPE(X) \
  DOVWRITER_FOR_EACH_NUMBER_TYPE(X)        \
  X(const char*)

// The forms that the object table implements. A signed and an unsigned
// character give the same value text, and `long` is one of the two 64-bit
// spellings, so those host forms are folded onto one of these.
#define DOVWRITER_FOR_EACH_SHARED_NUMBER_TYPE(X) \
  X(unsigned char)                               \
  X(short)                                       \
  X(unsigned short)                              \
  X(int)                                         \
  X(unsigned int)                                \
  X(long long)                                   \
  X(unsigned long long)                          \
  X(float)                                       \
  X(double)

#define DOVWRITER_FOR_EACH_SHARED_VALUE_TYPE(X) \
  DOVWRITER_FOR_EACH_SHARED_NUMBER_TYPE(X)      \
  X(const char*)

// Arrays keep `signed char` apart from `unsigned char`: they are different
// element types of the stored vector.
#define DOVWRITER_FOR_EACH_SHARED_ARRAY_TYPE(X) \
  X(signed char)                                \
  DOVWRITER_FOR_EACH_SHARED_NUMBER_TYPE(X)

namespace Kel {
namespace Dov {

// The 64-bit spelling that stands for `long` (or the 32-bit one where
// `long` has 32 bits).
typedef std::conditional<sizeof(long) == sizeof(long long), long long, int>::type SharedLong;
typedef std::conditional<sizeof(unsigned long) == sizeof(unsigned long long), unsigned long long,
                         unsigned int>::type SharedUnsignedLong;
static_assert(sizeof(SharedLong) == sizeof(long), "no integer type of the size of long");
static_assert(sizeof(SharedUnsignedLong) == sizeof(unsigned long),
              "no integer type of the size of unsigned long");

// Array element type under which an array of T is stored.
template <class T>
struct SharedArrayType {
  typedef T type;
};
template <>
struct SharedArrayType<long> {
  typedef SharedLong type;
};
template <>
struct SharedArrayType<unsigned long> {
  typedef SharedUnsignedLong type;
};

// A value as the shared implementation takes it.
template <class T>
inline const T& SharedValue(const T& value) {
  return value;
}
inline const unsigned char& SharedValue(const signed char& value) {
  // Character types may alias each other; the byte is the same.
  return reinterpret_cast<const unsigned char&>(value);
}
inline SharedLong SharedValue(const long& value) { return static_cast<SharedLong>(value); }
inline SharedUnsignedLong SharedValue(const unsigned long& value) {
  return static_cast<SharedUnsignedLong>(value);
}

}  // namespace Dov
}  // namespace Kel

#endif
