#include "Kel/Tmf/TmFile.h"

#include "Kel/Log/Log.h"

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

}  // namespace KelTmf
