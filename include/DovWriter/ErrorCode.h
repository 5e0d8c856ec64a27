#ifndef DOVWRITER_ERRORCODE_H
#define DOVWRITER_ERRORCODE_H

// The codes that Kel::Util::Exception::GetCode() returns, by name, so that a
// host can write `error.GetErrorCode() == ErrorCode::WriteError` instead of
// a bare 10. The names follow the texts of the codes, which what() shows;
// the text of 16 keeps its old spelling, the enumerator does not.

#include <cstdint>

namespace Kel {
namespace Util {

enum class ErrorCode : std::int32_t {
  MemoryAllocationError = 0,
  OutOfBounds = 1,
  UnknownVersion = 2,
  NotInitialized = 3,
  ElementExists = 4,
  ElementNotFound = 5,
  InvalidMethod = 6,
  InvalidEnumeration = 7,
  InvalidObject = 8,  // a bad Identifier
  ReadError = 9,
  WriteError = 10,
  FormatNotSupported = 11,
  BadCasting = 12,
  NotImplemented = 13,
  MismatchError = 14,
  SystemError = 15,
  MiscellaneousError = 16,  // also a null text argument and refused options
  ZeroLength = 17,
  ModelError = 18,  // closeFile refuses a scene it cannot build
  StateError = 19,  // a call out of order
  // 20 is not assigned.
  InvalidException = 21
};

// The text of a code as what() names it ("Write Error" for WriteError);
// "Invalid Exception" for a number outside the table.
constexpr const char* ErrorCodeText(ErrorCode code) {
  switch (code) {
    case ErrorCode::MemoryAllocationError: return "Memory Allocation Error";
    case ErrorCode::OutOfBounds: return "Out of Bounds";
    case ErrorCode::UnknownVersion: return "Unknown Version";
    case ErrorCode::NotInitialized: return "Not Initialized";
    case ErrorCode::ElementExists: return "Element Exists";
    case ErrorCode::ElementNotFound: return "Element Not Found";
    case ErrorCode::InvalidMethod: return "Invalid Method";
    case ErrorCode::InvalidEnumeration: return "Invalid Enumeration";
    case ErrorCode::InvalidObject: return "Invalid Object";
    case ErrorCode::ReadError: return "Read Error";
    case ErrorCode::WriteError: return "Write Error";
    case ErrorCode::FormatNotSupported: return "Format Not Supported";
    case ErrorCode::BadCasting: return "Bad Casting";
    case ErrorCode::NotImplemented: return "Not Implemented";
    case ErrorCode::MismatchError: return "Mis-match Error";
    case ErrorCode::SystemError: return "System Error";
    case ErrorCode::MiscellaneousError: return "Miscelleneous Error";
    case ErrorCode::ZeroLength: return "Zero Length";
    case ErrorCode::ModelError: return "Model Error";
    case ErrorCode::StateError: return "State Error";
    default: return "Invalid Exception";
  }
}

}  // namespace Util
}  // namespace Kel

#endif
