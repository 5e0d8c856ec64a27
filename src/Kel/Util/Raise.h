#ifndef DOVWRITER_KEL_UTIL_RAISE_H
#define DOVWRITER_KEL_UTIL_RAISE_H

// How every failure leaves the library: first a level-2000 record with the
// same text goes to the log, then the exception is thrown. So with a trace
// log attached, each failure shows up there even if someone catches it.

#include <DovWriter/Exception.h>

#include <cstdint>

namespace Kel {
namespace Util {

[[noreturn]] void Raise(std::int32_t code, const char* description, const char* file,
                        std::uint32_t line, const char* method);
// The description is the text of the code.
[[noreturn]] void Raise(std::int32_t code, const char* file, std::uint32_t line,
                        const char* method);

}  // namespace Util
}  // namespace Kel

// KEL_RAISE(code, method) or KEL_RAISE(code, description, method).
#define KEL_RAISE_CODE(code, method) ::Kel::Util::Raise((code), __FILE__, __LINE__, (method))
#define KEL_RAISE(code, description, method) \
  ::Kel::Util::Raise((code), (description), __FILE__, __LINE__, (method))

#endif
