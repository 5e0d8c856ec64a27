// What each kind of exception becomes at the C boundary: a return code
// equal to the thread's last error code, with its description and message.

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <thread>

#include "Kel/Util/Raise.h"
#include "bindings/c/CallGuard.h"

namespace {

struct Case {
  int code;
  const char* description;
  const char* messageStart;
};

template <class Throw>
void ExpectFailure(Throw throwIt, const Case& expected) {
  EXPECT_EQ(expected.code, DovC::Guard(throwIt));
  EXPECT_EQ(expected.code, dov_last_error_code());
  EXPECT_STREQ(expected.description, dov_last_error_description());
  EXPECT_EQ(0, std::string(dov_last_error_message()).rfind(expected.messageStart, 0))
      << dov_last_error_message();
}

}  // namespace

TEST(CallGuard, EveryExceptionBecomesACodeAndTheLastError) {
  ExpectFailure([] { KEL_RAISE(18, "cycle", "method"); },
                {18, "cycle", "Exception \"Model Error\" raised. \nDescription : cycle"});
  // 0 means success at the boundary, so the library's memory code moves.
  ExpectFailure([] { KEL_RAISE_CODE(0, "method"); },
                {DOV_ERROR_OUT_OF_MEMORY, "Memory Allocation Error", "Exception \"Memory"});
  ExpectFailure([] { throw std::bad_alloc(); },
                {DOV_ERROR_OUT_OF_MEMORY, "Memory Allocation Error", "std::bad_alloc"});
  ExpectFailure([] { throw std::length_error("vector::_M_default_append"); },
                {DOV_ERROR_LENGTH, "Length Error", "vector::_M_default_append"});
  ExpectFailure([] { throw std::runtime_error("odd"); },
                {DOV_ERROR_UNEXPECTED, "Unexpected Error", "odd"});
  ExpectFailure([] { throw 42; },
                {DOV_ERROR_UNEXPECTED, "Unexpected Error", "an exception of an unknown type"});
  EXPECT_EQ(0, DovC::Guard([] {}));
  EXPECT_EQ(DOV_ERROR_UNEXPECTED, dov_last_error_code()) << "a success leaves the last failure";

  // Each thread sees its own last failure.
  int otherThreadCode = -100;
  std::thread([&] { otherThreadCode = dov_last_error_code(); }).join();
  EXPECT_EQ(0, otherThreadCode);
}
