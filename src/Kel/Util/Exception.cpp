#include <DovWriter/Exception.h>

#include <cstring>
#include <string>

#include "Platform/Platform.h"

namespace Kel {
namespace Util {

const char* Exception::CodeText(std::int32_t code) {
  return ErrorCodeText(static_cast<ErrorCode>(code));
}

Exception::Exception(std::int32_t code_, const char* description, const char* file,
                     std::uint32_t line, const char* method)
    : code(code_), record(2000, file, line, method) {
  record << description;
  Format();
}

Exception::Exception(std::int32_t code_, const char* file, std::uint32_t line, const char*& method)
    : Exception(code_, CodeText(code_), file, line, method) {}

Exception::Exception(const Exception& other)
    : std::exception(other), code(other.code), record(other.record) {
  std::memcpy(whatText, other.whatText, sizeof whatText);
}

Exception& Exception::operator=(const Exception& other) {
  if (this != &other) {
    std::exception::operator=(other);
    code = other.code;
    record = other.record;
    std::memcpy(whatText, other.whatText, sizeof whatText);
  }
  return *this;
}

Exception::~Exception() noexcept {}

const char* Exception::what() const noexcept { return whatText; }

std::int32_t Exception::GetCode() const { return code; }

const char* Exception::GetDescription() const { return record.message; }

void Exception::Format() {
  const std::string when = Platform::CTimeText(record.time);
  Platform::FormatText(whatText, sizeof whatText,
                       "Exception \"%s\" raised. \n%11s : %s \n%11s : %s \n%11s : %lu \n%11s : %s "
                       "\n%11s : %s \n",
                       CodeText(code), "Description", record.message, "File", record.file, "Line",
                       static_cast<unsigned long>(record.line), "Method", record.method, "Time",
                       when.c_str());
}

}  // namespace Util
}  // namespace Kel
