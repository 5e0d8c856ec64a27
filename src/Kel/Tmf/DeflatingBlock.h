#ifndef DOVWRITER_KEL_TMF_DEFLATINGBLOCK_H
#define DOVWRITER_KEL_TMF_DEFLATINGBLOCK_H

// A compressed block whose place in the file is known before its bytes
// are: they go through zlib straight into the file as they come, behind a
// four-byte gap that takes the plain length once the block ends. The block
// itself never holds them, so a large stream costs no buffer of a block.

#include <cstdint>
#include <cstdio>

#include "Kel/Tmf/BlockZlibCompressor.h"

namespace KelTmf {

class DeflatingBlock {
 public:
  DeflatingBlock(std::uint64_t number, std::uint64_t position, std::FILE* stream,
                 std::int32_t level);

  std::uint64_t Number() const { return number; }
  std::uint64_t Position() const { return position; }
  void Feed(const unsigned char* bytes, std::uint64_t count) { zlib.Feed(bytes, count); }
  // Ends the zlib stream, writes the plain length in front of it and
  // returns the block's stored size.
  std::uint64_t Finish(std::uint32_t plainLength);

 private:
  // Writes at the block's place plus `offset`, or fails with code 10.
  void WriteAt(std::uint64_t offset, const unsigned char* bytes, std::size_t count);

  std::uint64_t number;
  std::uint64_t position;
  std::FILE* stream;
  std::uint64_t written = 0;  // zlib bytes in the file so far
  ZlibStream zlib;
};

}  // namespace KelTmf

#endif
