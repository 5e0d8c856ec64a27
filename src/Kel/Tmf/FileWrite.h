#ifndef DOVWRITER_KEL_TMF_FILEWRITE_H
#define DOVWRITER_KEL_TMF_FILEWRITE_H

// The failures of writing a container file, raised alike whichever way a
// block's bytes go to the file.

#include <cstdint>
#include <cstdio>

namespace KelTmf {

// Code 10 "Unable to write to file".
[[noreturn]] void RaiseWriteFailure();

// Places the stream at `position`. Every placement is absolute, so a failed
// seek would put the bytes anywhere: it fails with code 10 "Saving the
// buffer failed" under `method`, or "Unable to write to file" where the
// seek failed flushing bytes the stream still buffered.
void SeekOrFail(std::FILE* stream, std::uint64_t position, const char* method);

// Writes `count` bytes at `position` and flushes: code 10 where they could
// not go out, as for any block.
void WriteAt(std::FILE* stream, std::uint64_t position, const unsigned char* bytes,
             std::uint64_t count, const char* method);

}  // namespace KelTmf

#endif
