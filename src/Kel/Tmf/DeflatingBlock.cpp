#include "Kel/Tmf/DeflatingBlock.h"

#include "Kel/Tmf/FileWrite.h"
#include "Kel/Util/Coding.h"

namespace KelTmf {

namespace {

const std::uint64_t HeadBytes = 4;

}  // namespace

DeflatingBlock::DeflatingBlock(std::uint64_t number, std::uint64_t position, std::FILE* stream,
                               std::int32_t level)
    : number(number),
      position(position),
      stream(stream),
      zlib(level, [this](const unsigned char* bytes, std::size_t count) {
        WriteAt(HeadBytes + written, bytes, count);
        written += count;
      }) {}

void DeflatingBlock::WriteAt(std::uint64_t offset, const unsigned char* bytes, std::size_t count) {
  // Every write is placed: nothing else may have moved the stream since.
  SeekOrFail(stream, position + offset, "KelTmf::Index::WriteBufferToFileStream");
  if (std::fwrite(bytes, 1, count, stream) != count) RaiseWriteFailure();
}

std::uint64_t DeflatingBlock::Finish(std::uint32_t plainLength) {
  zlib.Finish();
  unsigned char head[HeadBytes];
  Kel::Util::EncodeFixed32(head, plainLength);
  WriteAt(0, head, sizeof head);
  // Only a flush shows whether the bytes could go out.
  if (std::fflush(stream) != 0 || std::ferror(stream) != 0) RaiseWriteFailure();
  return HeadBytes + written;
}

}  // namespace KelTmf
