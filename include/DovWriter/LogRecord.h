#ifndef DOVWRITER_LOGRECORD_H
#define DOVWRITER_LOGRECORD_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Export.h"

namespace Kel {
namespace Util {

// One log message. Built on the caller's stack, so it holds its text in a
// fixed array; appends beyond the capacity are cut, never overflow.
struct DOVWRITER_API LogRecord {
  static constexpr std::size_t MaxMessageLength = 5120;

  std::uint16_t level;
  char message[MaxMessageLength + 1];
  const char* file;
  std::uint32_t line;
  const char* method;
  std::int64_t time;

  LogRecord();
  LogRecord(std::uint16_t level, const char* file, std::uint32_t line, const char* method);

  LogRecord& operator<<(const char* text);
  LogRecord& operator<<(const std::string& text);
  LogRecord& operator<<(int value);
  LogRecord& operator<<(unsigned int value);
  LogRecord& operator<<(long value);
  LogRecord& operator<<(unsigned long value);
  LogRecord& operator<<(long long value);
  LogRecord& operator<<(unsigned long long value);

  // Appends at most `count` bytes of `text`, up to the capacity.
  void Append(const char* text, std::size_t count);
};

}  // namespace Util
}  // namespace Kel

#endif
