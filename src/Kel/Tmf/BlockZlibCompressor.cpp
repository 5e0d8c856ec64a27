#include "Kel/Tmf/BlockZlibCompressor.h"

#include <zlib.h>

#include <cstdlib>
#include <vector>

#include "Kel/Util/Coding.h"

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

// Raises what a failed compress2 would: code 0 for memory, 15 otherwise.
void RaiseCompressionFailure(int result) {
  if (result == Z_MEM_ERROR) KEL_RAISE_CODE(0, CompressMethod);
  KEL_RAISE(15, "Compression failed", CompressMethod);
}

// One deflate stream with compress2's parameters (window 15, memory level
// 8, default strategy), ended whatever happens.
class Deflater {
 public:
  explicit Deflater(std::int32_t level) {
    const int result = deflateInit(&stream, level);
    if (result != Z_OK) RaiseCompressionFailure(result);
  }
  ~Deflater() { deflateEnd(&stream); }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  z_stream stream{};
};

}  // namespace

std::uint64_t BlockZlibCompressor::Stream(const Block& block, const Sink& sink) const {
  if (block.ContentsReleased()) KEL_RAISE_CODE(14, CompressMethod);
  unsigned char head[4];
  Kel::Util::EncodeFixed32(head, block.length);
  Deflater deflater(level);
  z_stream& stream = deflater.stream;
  // All input at once and Z_FINISH: deflate's output does not depend on
  // how its output space is cut, so this is compress2's stream.
  static const Bytef nothing = 0;
  stream.next_in = const_cast<Bytef*>(block.data != nullptr ? block.data : &nothing);
  stream.avail_in = block.length;
  std::vector<unsigned char> piece(StreamPieceBytes);
  sink(head, sizeof head);
  int result = Z_OK;
  while (result == Z_OK) {
    stream.next_out = piece.data();
    stream.avail_out = static_cast<uInt>(piece.size());
    result = deflate(&stream, Z_FINISH);
    if (result != Z_OK && result != Z_STREAM_END) RaiseCompressionFailure(result);
    sink(piece.data(), piece.size() - stream.avail_out);
  }
  return sizeof head + stream.total_out;
}

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
    RaiseCompressionFailure(result);
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
