#include "Kel/Tmf/FileWrite.h"

#include "Kel/Log/Log.h"
#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace KelTmf {

void RaiseWriteFailure() { KEL_RAISE(10, "Unable to write to file", "KelTmf::Block::Write"); }

void SeekOrFail(std::FILE* stream, std::uint64_t position, const char* method) {
  if (stream != nullptr && Platform::Seek64(stream, position) == 0) return;
  if (stream != nullptr && std::ferror(stream) != 0) RaiseWriteFailure();
  KEL_LOG(1000, method, "File positioning failed");
  KEL_RAISE(10, "Saving the buffer failed", method);
}

void WriteAt(std::FILE* stream, std::uint64_t position, const unsigned char* bytes,
             std::uint64_t count, const char* method) {
  SeekOrFail(stream, position, method);
  if (count != 0 && std::fwrite(bytes, 1, count, stream) != count) RaiseWriteFailure();
  // Only a flush shows whether the bytes could go out.
  if (std::fflush(stream) != 0 || std::ferror(stream) != 0) RaiseWriteFailure();
}

}  // namespace KelTmf
