#ifndef DOVWRITER_KEL_TMF_TMFILE_H
#define DOVWRITER_KEL_TMF_TMFILE_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "Kel/Tmf/Index.h"

namespace KelTmf {

// The eight bytes every container file starts with, then "1.1" and a NUL.
extern const unsigned char FileMagic[8];
extern const char FileVersion[4];

// The twelve head bytes in a block of their own; the caller releases it.
Block EncodeFileHead();

// One output file and its block table.
class TmFile {
 public:
  TmFile() = default;
  virtual ~TmFile();
  virtual void CloseFile();
  // Closes the stream after a failure, without the records of a regular
  // close, and whatever fclose says: the file is given up.
  void AbandonStream();

  TmFile(const TmFile&) = delete;
  TmFile& operator=(const TmFile&) = delete;

  // With overwrite false an existing file is refused (code 10).
  void OpenFileForWriting(const std::string& path, bool overwrite);
  void OpenFile(const std::string& path);
  void SetBlockFlags(const std::string& name, std::uint8_t flag) {
    index.SetBlockFlags(name, flag);
  }
  // Writes the twelve head bytes at the stream's current place (right after
  // opening, that is offset 0); a failed write raises code 10.
  void WriteHead();

  std::FILE* stream = nullptr;
  Index index;
};

}  // namespace KelTmf

#endif
