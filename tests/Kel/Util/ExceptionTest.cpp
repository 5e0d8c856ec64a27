#include <DovWriter/Exception.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Platform/Platform.h"

using Kel::Util::Exception;

namespace {

// what() matches the text for one of the clock readings around the
// construction (a second may tick in between).
void ExpectText(const Exception& error, std::int64_t before, const std::string& name,
                const std::string& description, const std::string& file, unsigned line,
                const std::string& method) {
  const std::string text = error.what();
  for (std::int64_t t = before; t <= Platform::Now(); ++t)
    if (text == "Exception \"" + name + "\" raised. \nDescription : " + description +
                    " \n       File : " + file + " \n       Line : " + std::to_string(line) +
                    " \n     Method : " + method + " \n       Time : " + Platform::CTimeText(t) +
                    " \n")
      return;
  ADD_FAILURE() << "unexpected text:\n" << text;
}

}  // namespace

TEST(ExceptionText, DescribedExceptionHasTheExactMultiLineText) {
  const std::int64_t before = Platform::Now();
  const Exception error(10, "File exists", "src/Kel/Tmf/TmFile.cpp", 88,
                        "KelTmf::TmFile::OpenFileForWriting");
  ExpectText(error, before, "Write Error", "File exists",
             "src/Kel/Tmf/TmFile.cpp", 88, "KelTmf::TmFile::OpenFileForWriting");
  EXPECT_EQ(10, error.GetCode());
  EXPECT_STREQ("File exists", error.GetDescription());
  // The text ends with the line that holds one blank behind ctime's line feed.
  const std::string text = error.what();
  EXPECT_EQ("\n \n", text.substr(text.size() - 3));
}

TEST(ExceptionText, ConstructorWithoutDescriptionUsesTheTextOfTheCodeAndCopiesKeepAll) {
  const char* method = "KelTmf::Index::Put";
  const std::int64_t before = Platform::Now();
  const Exception error(5, "src/Kel/Tmf/Index.cpp", 412, method);
  ExpectText(error, before, "Element Not Found", "Element Not Found",
             "src/Kel/Tmf/Index.cpp", 412, "KelTmf::Index::Put");
  EXPECT_STREQ("Element Not Found", error.GetDescription());

  const Exception copy(error);
  Exception assigned(0, "x", "y", 1, "z");
  assigned = error;
  for (const Exception* other : {&copy, static_cast<const Exception*>(&assigned)}) {
    EXPECT_EQ(5, other->GetCode());
    EXPECT_STREQ(error.GetDescription(), other->GetDescription());
    EXPECT_STREQ(error.what(), other->what());
  }
}

TEST(ExceptionText, LongDescriptionAndTextAreCutWithoutFailure) {
  const std::string description(6000, 'd');
  const std::string file(1000, 'f');
  const Exception error(1, description.c_str(), file.c_str(), 1, "M");
  EXPECT_EQ(std::string(5120, 'd'), error.GetDescription());
  // 5,632 bytes including the terminating NUL.
  EXPECT_EQ(Exception::MaxWhatLength - 1, std::strlen(error.what()));
  EXPECT_EQ(0, std::strncmp(error.what(), "Exception \"Out of Bounds\" raised. \n", 35));
}
