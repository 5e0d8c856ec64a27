#include "Kel/Tmf/BlockZlibCompressor.h"

#include <zlib.h>

#include <cstdlib>

#include "Kel/Util/Raise.h"

namespace KelTmf {

namespace {

const char* const CompressMethod = "KelTmf::BlockZlibCompressor::operator ()";

// The output buffer: 1.2 times the input plus 12, worked out in single
// precision. It exceeds what zlib needs for any input, even incompressible.
std::uint64_t OutputBound(std::uint32_t plainLength) {
  const float scaled = static_cast<float>(plainLength) * 1.2f;
  return static_cast<std::uint64_t>(scaled) + 12;
}

}  // namespace

void BlockZlibCompressor::operator()(Block& block) {
  if (block.ContentsReleased()) KEL_RAISE_CODE(14, CompressMethod);
  const std::uint32_t plainLength = block.length;
  const std::uint64_t bound = OutputBound(plainLength);
  unsigned char* output = nullptr;
  try {
    output = static_cast<unsigned char*>(std::malloc(bound));
  } catch (...) {
    output = nullptr;
  }
  if (output == nullptr) KEL_RAISE_CODE(0, CompressMethod);

  uLongf outputLength = static_cast<uLongf>(bound);
  // An empty block still becomes a valid stream (of the empty input).
  static const Bytef nothing = 0;
  const Bytef* input = block.data != nullptr ? block.data : &nothing;
  const int result = compress2(output, &outputLength, input, plainLength, level);
  if (result != Z_OK) {
    // The block keeps its plain contents, so nothing is lost; the caller
    // learns that this block could not be transformed.
    std::free(output);
    if (result == Z_MEM_ERROR) KEL_RAISE_CODE(0, CompressMethod);
    KEL_RAISE(15, "Compression failed", CompressMethod);
  }

  // The plain buffer is given up only now that the compressed form exists,
  // and before the block grows again, to keep the peak of memory low.
  block.Release();
  block = Block();
  try {
    block.Put(plainLength);
    block.PutRaw(output, outputLength);
  } catch (...) {
    std::free(output);
    throw;
  }
  std::free(output);
}

}  // namespace KelTmf
