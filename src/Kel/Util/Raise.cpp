#include "Kel/Util/Raise.h"

#include <cerrno>

#include "Kel/Log/Log.h"

namespace Kel {
namespace Util {

void Raise(std::int32_t code, const char* description, const char* file, std::uint32_t line,
           const char* method) {
  // Whoever catches a failure of a system call may still ask errno why; the
  // log line and the clock read on the way must not change it.
  const int reason = errno;
  LogRecord record(2000, file, line, method);
  record << description;
  Kel::Log::Publish(record);
  Exception failure(code, description, file, line, method);
  errno = reason;
  throw failure;
}

void Raise(std::int32_t code, const char* file, std::uint32_t line, const char* method) {
  Raise(code, Exception::CodeText(code), file, line, method);
}

}  // namespace Util
}  // namespace Kel
