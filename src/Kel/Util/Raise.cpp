#include "Kel/Util/Raise.h"

#include "Kel/Log/Log.h"

namespace Kel {
namespace Util {

void Raise(std::int32_t code, const char* description, const char* file, std::uint32_t line,
           const char* method) {
  LogRecord record(2000, file, line, method);
  record << description;
  Kel::Log::Publish(record);
  throw Exception(code, description, file, line, method);
}

void Raise(std::int32_t code, const char* file, std::uint32_t line, const char* method) {
  Raise(code, Exception::CodeText(code), file, line, method);
}

}  // namespace Util
}  // namespace Kel
