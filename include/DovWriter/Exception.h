#ifndef DOVWRITER_EXCEPTION_H
#define DOVWRITER_EXCEPTION_H

#include <cstdint>
#include <exception>

#include "ErrorCode.h"
#include "Export.h"
#include "LogRecord.h"

namespace Kel {
namespace Util {

// The one exception of the library. GetCode() gives the numeric code,
// GetDescription() the plain description, what() a multi-line report with
// description, source file, line, method and time.
class DOVWRITER_API Exception : public std::exception {
 public:
  static constexpr std::size_t MaxWhatLength = 5632;

  Exception(std::int32_t code, const char* description, const char* file,
            std::uint32_t line, const char* method);
  // The description is the text of the code.
  Exception(std::int32_t code, const char* file, std::uint32_t line, const char*& method);
  Exception(const Exception& other);
  Exception& operator=(const Exception& other);
  ~Exception() noexcept override;

  const char* what() const noexcept override;
  virtual std::int32_t GetCode() const;
  virtual const char* GetDescription() const;
  // GetCode() by name.
  ErrorCode GetErrorCode() const { return static_cast<ErrorCode>(GetCode()); }

  // The name of a code ("Write Error" for 10), or "Invalid Exception" for a
  // number outside the table.
  static const char* CodeText(std::int32_t code);

 private:
  void Format();

  std::int32_t code;
  LogRecord record;
  char whatText[MaxWhatLength];
};

}  // namespace Util
}  // namespace Kel

#endif
