#include <DovWriter/DovWriter.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Kel/Log/Log.h"
#include "Kel/Log/Logger.h"
#include "Kel/Util/Raise.h"

using Kel::Util::LogRecord;

namespace {

// A fresh path for this test; ctest runs each test in its own process, so
// the log singleton starts empty in every test.
std::string TestPath(const std::string& suffix) {
  const char* dir = std::getenv("DOVWRITER_TEST_TMP");
  const std::filesystem::path base = dir != nullptr ? dir : "/tmp/dovwriter-tests";
  std::filesystem::create_directories(base);
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::filesystem::path path =
      base / (std::string(info->test_suite_name()) + "." + info->name() + suffix);
  std::filesystem::remove(path);
  return path.string();
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

TEST(LogRecordText, AppendsNumbersAndCutsAtCapacity) {
  LogRecord record(1000, "a/b.cpp", 3, "M");
  record << "Writing buffer " << 12u << " of " << -3 << " at " << 18446744073709551615ull;
  EXPECT_STREQ("Writing buffer 12 of -3 at 18446744073709551615", record.message);

  LogRecord full(1000, "a/b.cpp", 3, "M");
  full << std::string(5000, 'x') << std::string(500, 'y');
  EXPECT_EQ(std::string(5000, 'x') + std::string(120, 'y'), full.message);
  full << "more" << 7;
  EXPECT_EQ(LogRecord::MaxMessageLength, std::string(full.message).size());
}

TEST(LogFormatting, FileNameLineAndMessageAtOrAboveTheFilterLevel) {
  Kel::Log::DefaultFormatter format;
  LogRecord record(2000, "Kel/Tmf/Block", 167, "KelTmf::Block::AllocateAdditionalMemory");
  record << "Memory Allocation Error";
  EXPECT_EQ("Block : 167 @ Memory Allocation Error\n", format(record));
  LogRecord windows(1000, "C:\\src\\Kel\\Tmf\\Index.cpp", 5, "M");
  windows << "x";
  EXPECT_EQ("Index.cpp : 5 @ x\n", format(windows));

  Kel::Log::LevelFilter<1000> progress;
  for (std::uint16_t level : {999, 1000, 2000, 65535}) {
    record.level = level;
    EXPECT_EQ(level >= 1000, progress(record)) << level;
  }
}

// One test, since the log singleton lives for the whole process.
TEST(LogRouting, OneTraceFileGetsEveryRecordAtOrAboveTheLevelFlushedAtOnce) {
  KEL_LOG(1000, "Test::Progress", "before any trace file");
  EXPECT_THROW(KEL_RAISE_CODE(5, "Test::Failure"), Kel::Util::Exception);
  // The failure created the logger, but it has no route to send anything.
  EXPECT_FALSE(Kel::Log::Active());

  const std::string path = TestPath(".log");
  const std::string second = TestPath(".second.log");
  std::ofstream(path) << "stale content\n";
  Kel::Dov::logTraceToFile(path.c_str());
  ASSERT_TRUE(Kel::Log::Active());
  EXPECT_EQ("", ReadFile(path)) << "an existing file is emptied";
  Kel::Dov::logTraceToFile(second.c_str());
  EXPECT_FALSE(std::filesystem::exists(second));

  LogRecord low(999, "x/Low.cpp", 1, "M");
  low << "below every filter";
  Kel::Log::Publish(low);
  KEL_LOG(1000, "Test::Progress", "Writing buffer " << 3 << " to stream.");
  // Read while the stream is still open: each record is flushed at once.
  const std::string progressLine = ReadFile(path);
  EXPECT_EQ(0u, progressLine.find("LogTest.cpp : "));
  EXPECT_EQ(" @ Writing buffer 3 to stream.\n", progressLine.substr(progressLine.find(" @ ")));

  Kel::Dov::Scene_V1 scene;
  EXPECT_THROW(scene.validate(Kel::Dov::Identifier{0, 0}), Kel::Util::Exception);
  const std::string failureLine = ReadFile(path).substr(progressLine.size());
  EXPECT_EQ(0u, failureLine.find("ObjectManager.cpp : "));
  EXPECT_EQ(" @ Invalid Identifier\n", failureLine.substr(failureLine.find(" @ ")));
}
