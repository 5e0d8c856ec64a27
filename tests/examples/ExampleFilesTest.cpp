// The plate model written by the C++ example, the C example and the Fortran
// example: the three files hold the same streams, byte for byte, but for
// the creation date in "Global Information".

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "reader/Container.h"
#include "reader/Scene.h"

namespace {

std::string WriteWith(const std::string& program) {
  const char* directory = std::getenv("DOVWRITER_TEST_TMP");
  const std::filesystem::path base = directory != nullptr ? directory : "/tmp/dovwriter-tests";
  std::filesystem::create_directories(base);
  const std::string path =
      (base / ("example_" + std::filesystem::path(program).filename().string() + ".dov")).string();
  std::filesystem::remove(path);
  const std::string command = "'" + program + "' '" + path + "' > /dev/null";
  EXPECT_EQ(0, std::system(command.c_str())) << command;
  return path;
}

// Every field of the global information but the creation date.
std::vector<std::string> InformationBesidesDate(const DovReader::Container& file) {
  const DovReader::GlobalInformation info = DovReader::Scene::Read(file).Information();
  return {info.version,       info.applicationName, info.applicationVersion,
          info.formatVersion, info.computerName,    info.userName,
          info.comment};
}

void ExpectSameModel(const std::string& expectedPath, const std::string& actualPath) {
  const DovReader::Container expected = DovReader::Container::Open(expectedPath);
  const DovReader::Container actual = DovReader::Container::Open(actualPath);
  EXPECT_EQ(std::vector<std::string>(), actual.Verify());
  ASSERT_EQ(expected.StreamNames(), actual.StreamNames());
  for (const std::string& name : expected.StreamNames()) {
    if (name == "Global Information") continue;
    EXPECT_TRUE(expected.ReadStream(name) == actual.ReadStream(name))
        << name << " of " << actualPath;
  }
  EXPECT_EQ(InformationBesidesDate(expected), InformationBesidesDate(actual));
}

}  // namespace

TEST(ExampleFiles, CAndFortranExamplesWriteTheModelOfTheCppExample) {
  const std::string cpp = WriteWith(PLATE_MODEL_CPP);
  const DovReader::Container file = DovReader::Container::Open(cpp);
  ASSERT_EQ(6u, file.StreamNames().size());
  EXPECT_EQ("plate_model example", InformationBesidesDate(file)[1]);
  ExpectSameModel(cpp, WriteWith(PLATE_MODEL_C));
#ifdef PLATE_MODEL_FORTRAN
  ExpectSameModel(cpp, WriteWith(PLATE_MODEL_FORTRAN));
#endif
}
