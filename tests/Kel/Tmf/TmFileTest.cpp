#include <gtest/gtest.h>

#include "Kel/Tmf/TmFile.h"
#include "TmfTestSupport.h"

using KelTmf::TmFile;

TEST(TmFileOpening, ExistingMissingAndBusyPaths) {
  const std::string path = TmfTest::ScratchPath();
  {
    TmFile file;
    file.OpenFileForWriting(path, false);  // created
    TmfTest::ExpectFailure([&] { file.OpenFile(path); }, 16, "File stream is already in use");
    file.WriteHead();
  }  // closed by the destructor
  EXPECT_EQ(TmfTest::ReadAll(path), (TmfTest::Bytes{0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A,
                                                    0x31, 0x2E, 0x31, 0x00}));

  TmFile refused;
  TmfTest::ExpectFailure([&] { refused.OpenFileForWriting(path, false); }, 10, "File exists");
  EXPECT_EQ(refused.stream, nullptr);
  refused.OpenFileForWriting(path, true);
  EXPECT_TRUE(TmfTest::ReadAll(path).empty());  // emptied before the first byte

  const std::string missing = TmfTest::ScratchPath("_no_such_dir") + "/model.tmf";
  TmFile nowhere;
  TmfTest::ExpectFailure([&] { nowhere.OpenFileForWriting(missing, false); }, 16,
                         "Unable to open file \"" + missing + "\"");
}

TEST(TmFileWriting, FullDeviceGivesCode10) {
  TmFile full;
  full.OpenFileForWriting("/dev/full", true);
  TmfTest::ExpectFailure([&] { full.WriteHead(); }, 10, "Unable to write to file");
  full.index.Put("S", std::uint8_t(1));
  TmfTest::ExpectFailure([&] { full.index.WriteAllBuffersToFileStream(full.stream); }, 10,
                         "Unable to write to file");
  // Also where the bytes go through zlib into the file as they are put.
  TmFile compressing;
  compressing.OpenFileForWriting("/dev/full", true);
  compressing.index.PutCompressed("Z", compressing.stream, 3,
                                  [](unsigned char* out, std::uint64_t, std::uint64_t) { out[0] = out[1] = out[2] = 7; });
  compressing.index.SetBlockFlags("Z", KelTmf::BlockFlagCompress);
  TmfTest::ExpectFailure(
      [&] { compressing.index.WriteAllBuffersToFileStream(compressing.stream); }, 10,
      "Unable to write to file");
}
