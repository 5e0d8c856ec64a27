#include <gtest/gtest.h>

#include <fstream>

#include "Kel/Tmf/TmFile.h"
#include "TmfTestSupport.h"

using KelTmf::TmFile;
using TmfTest::Bytes;

namespace {

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace

TEST(TmFileOpening, OverwriteDecidesAboutExistingFiles) {
  const std::string path = TmfTest::ScratchPath();
  {
    TmFile file;
    file.OpenFileForWriting(path, false);  // created
    EXPECT_NE(file.stream, nullptr);
    TmfTest::ExpectFailure([&] { file.OpenFile(path); }, 16, "File stream is already in use");
  }
  WriteText(path, "old contents");
  TmFile refused;
  TmfTest::ExpectFailure([&] { refused.OpenFileForWriting(path, false); }, 10, "File exists");
  EXPECT_EQ(refused.stream, nullptr);
  EXPECT_EQ(TmfTest::ReadAll(path).size(), 12u);

  TmFile overwriting;
  overwriting.OpenFileForWriting(path, true);
  EXPECT_TRUE(TmfTest::ReadAll(path).empty());  // emptied before the first byte
}

TEST(TmFileOpening, MissingDirectoryIsCode16WithThePath) {
  const std::string path = TmfTest::ScratchPath("_no_such_dir") + "/model.tmf";
  TmFile file;
  TmfTest::ExpectFailure([&] { file.OpenFileForWriting(path, false); }, 16,
                         "Unable to open file \"" + path + "\"");
  EXPECT_EQ(file.stream, nullptr);
}

TEST(TmFileClosing, CloseLogsAndIsHarmlessWhenClosed) {
  TmfTest::LogCapture log;
  {
    TmFile file;
    file.CloseFile();
    EXPECT_EQ(log.Messages(), (std::vector<std::string>{"Closing file ..."}));
    file.OpenFileForWriting(TmfTest::ScratchPath(), true);
    log.Clear();
  }  // the destructor closes an open stream
  EXPECT_EQ(log.Messages(), (std::vector<std::string>{"Closing file ...", "File closed."}));
}

TEST(TmFileHead, HeadIsMagicAndVersion) {
  const std::string path = TmfTest::ScratchPath();
  TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  file.CloseFile();
  EXPECT_EQ(TmfTest::ReadAll(path),
            (Bytes{0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A, 0x31, 0x2E, 0x31, 0x00}));

  TmFile full;
  full.OpenFileForWriting("/dev/full", true);
  TmfTest::ExpectFailure([&] { full.WriteHead(); }, 10, "Unable to write to file");
}
