#include "Kel/Tmf/TmFile.h"

#include "Kel/Log/Log.h"
#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace KelTmf {

const unsigned char FileMagic[8] = {0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A};
const char FileVersion[4] = "1.1";

TmFile::~TmFile() { TmFile::CloseFile(); }

void TmFile::CloseFile() {
  KEL_LOG(1000, "KelTmf::TmFile::CloseFile", "Closing file ...");
  if (stream == nullptr) return;
  std::fclose(stream);
  stream = nullptr;
  KEL_LOG(1000, "KelTmf::TmFile::CloseFile", "File closed.");
}

void TmFile::AbandonStream() {
  if (stream != nullptr) std::fclose(stream);
  stream = nullptr;
}

void TmFile::OpenFileForWriting(const std::string& path, bool overwrite) {
  if (!overwrite && Platform::FileExists(path.c_str()))
    KEL_RAISE(10, "File exists", "KelTmf::TmFile::OpenFileForWriting");
  OpenFile(path);
}

void TmFile::OpenFile(const std::string& path) {
  const char* const method = "KelTmf::TmFile::OpenFile";
  if (stream != nullptr) KEL_RAISE(16, "File stream is already in use", method);
  stream = std::fopen(path.c_str(), "wb");
  if (stream == nullptr) {
    const std::string text = "Unable to open file \"" + path + "\"";
    KEL_RAISE(16, text.c_str(), method);
  }
}

Block EncodeFileHead() {
  Block head;
  head.PutRaw(FileMagic, sizeof FileMagic);
  head.PutRaw(FileVersion, sizeof FileVersion);
  return head;
}

void TmFile::WriteHead() {
  Block head = EncodeFileHead();
  try {
    head.Write(stream, false);
  } catch (...) {
    head.Release();
    throw;
  }
  head.Release();
}

}  // namespace KelTmf
