#ifndef DOVWRITER_TESTS_TMF_SUPPORT_H
#define DOVWRITER_TESTS_TMF_SUPPORT_H

// Shared helpers of the container tests: scratch files, whole-file reads,
// a log capture, and expectations on the library's exception.

#include <DovWriter/Exception.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Kel/Log/Logger.h"
#include "Kel/Tmf/TmFile.h"

namespace TmfTest {

using Bytes = std::vector<unsigned char>;

// A fresh path under the test directory, named after the running test.
inline std::string ScratchPath(const std::string& suffix = ".tmf") {
  const char* root = std::getenv("DOVWRITER_TEST_TMP");
  std::filesystem::path dir = root != nullptr ? root : "/tmp/dovwriter_tests";
  std::filesystem::create_directories(dir);
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::string("tmf_") + test->test_suite_name() + "_" + test->name() + suffix;
  for (char& c : name)
    if (c == '/') c = '_';
  std::filesystem::path path = dir / name;
  std::filesystem::remove(path);
  return path.string();
}

inline Bytes ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline Bytes Le32(std::uint32_t value) {
  return {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
          static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)};
}

inline void Append(Bytes& to, const Bytes& more) { to.insert(to.end(), more.begin(), more.end()); }

inline Bytes BlockBytes(const KelTmf::Block& block) {
  return Bytes(block.data, block.data + block.length);
}

// Collects every published log line while alive (one capture at a time).
class LogCapture {
 public:
  LogCapture() {
    Lines().clear();
    Enabled() = true;
    static bool installed = false;
    if (!installed) {
      Kel::Log::Logger& logger = Kel::Log::Logger::Instance();
      logger.AddFilter<Kel::Log::LevelFilter<1000>>("tmf test capture");
      logger.AddPublisher("tmf test capture", new Publisher());
      logger.SetFilter("tmf test capture", "tmf test capture");
      installed = true;
    }
  }
  ~LogCapture() { Enabled() = false; }
  void Clear() { Lines().clear(); }
  // Messages alone, without "file : line @ ".
  std::vector<std::string> Messages() const {
    std::vector<std::string> messages;
    for (const std::string& line : Lines()) {
      const std::size_t at = line.find(" @ ");
      messages.push_back(line.substr(at + 3, line.size() - at - 4));
    }
    return messages;
  }

 private:
  class Publisher : public Kel::Log::Publisher {
   public:
    void Publish(const char* text) override {
      if (Enabled()) Lines().push_back(text);
    }
    void Flush() override {}
  };
  static std::vector<std::string>& Lines() {
    static std::vector<std::string> lines;
    return lines;
  }
  static bool& Enabled() {
    static bool enabled = false;
    return enabled;
  }
};

// Runs `action` and expects the library's exception with this code and
// description.
template <class Action>
void ExpectFailure(Action&& action, std::int32_t code, const std::string& description) {
  try {
    action();
    ADD_FAILURE() << "no exception, expected code " << code;
  } catch (const Kel::Util::Exception& failure) {
    EXPECT_EQ(failure.GetCode(), code);
    EXPECT_EQ(std::string(failure.GetDescription()), description);
  }
}

// Opens `path`, writes the head, lets `fill` put and flush through the
// index, then writes everything out and closes.
template <class Fill>
void WriteContainer(const std::string& path, Fill&& fill) {
  KelTmf::TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  fill(file);
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();
}

}  // namespace TmfTest

#endif
