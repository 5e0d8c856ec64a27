#include <DovWriter/LogRecord.h>

#include <cstdio>
#include <cstring>

#include "Platform/Platform.h"

namespace Kel {
namespace Util {

LogRecord::LogRecord() : level(0), file(""), line(0), method(""), time(0) { message[0] = '\0'; }

LogRecord::LogRecord(std::uint16_t level_, const char* file_, std::uint32_t line_,
                     const char* method_)
    : level(level_), file(file_), line(line_), method(method_), time(Platform::Now()) {
  message[0] = '\0';
}

void LogRecord::Append(const char* text, std::size_t count) {
  std::size_t used = std::strlen(message);
  std::size_t room = MaxMessageLength - used;
  std::size_t n = 0;
  while (n < count && n < room && text[n] != '\0') ++n;
  std::memcpy(message + used, text, n);
  message[used + n] = '\0';
}

LogRecord& LogRecord::operator<<(const char* text) {
  if (text != nullptr) Append(text, MaxMessageLength);
  return *this;
}

LogRecord& LogRecord::operator<<(const std::string& text) {
  Append(text.c_str(), text.size());
  return *this;
}

namespace {
template <class T>
void AppendNumber(LogRecord& record, const char* format, T value) {
  char digits[32];
  int n = std::snprintf(digits, sizeof digits, format, value);
  if (n > 0) record.Append(digits, static_cast<std::size_t>(n));
}
}  // namespace

LogRecord& LogRecord::operator<<(int value) { AppendNumber(*this, "%d", value); return *this; }
LogRecord& LogRecord::operator<<(unsigned int value) { AppendNumber(*this, "%u", value); return *this; }
LogRecord& LogRecord::operator<<(long value) { AppendNumber(*this, "%ld", value); return *this; }
LogRecord& LogRecord::operator<<(unsigned long value) { AppendNumber(*this, "%lu", value); return *this; }
LogRecord& LogRecord::operator<<(long long value) { AppendNumber(*this, "%lld", value); return *this; }
LogRecord& LogRecord::operator<<(unsigned long long value) { AppendNumber(*this, "%llu", value); return *this; }

}  // namespace Util
}  // namespace Kel
