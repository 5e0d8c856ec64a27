#include "Kel/Tmf/BlockZlibCompressor.h"

#include <zlib.h>

#include <cstdlib>
#include <utility>
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

}  // namespace

// compress2's parameters: window 15, memory level 8, default strategy.
struct ZlibStream::State {
  z_stream stream{};
};

ZlibStream::ZlibStream(std::int32_t level, ByteSink sink)
    : state(new State), piece(PieceBytes), sink(std::move(sink)) {
  const int result = deflateInit(&state->stream, level);
  if (result != Z_OK) RaiseCompressionFailure(result);
  state->stream.next_out = piece.data();
  state->stream.avail_out = static_cast<uInt>(piece.size());
}

ZlibStream::~ZlibStream() { deflateEnd(&state->stream); }

void ZlibStream::Drain() {
  z_stream& stream = state->stream;
  const std::size_t ready = piece.size() - stream.avail_out;
  if (ready != 0) sink(piece.data(), ready);
  stream.next_out = piece.data();
  stream.avail_out = static_cast<uInt>(piece.size());
}

void ZlibStream::Deflate(int flush) {
  z_stream& stream = state->stream;
  for (;;) {
    const int result = deflate(&stream, flush);
    if (result == Z_STREAM_END) return Drain();
    if (result != Z_OK && result != Z_BUF_ERROR) RaiseCompressionFailure(result);
    if (stream.avail_out == 0) {
      Drain();
    } else if (stream.avail_in == 0 && flush == Z_NO_FLUSH) {
      return;  // all input taken; what is made waits in the piece
    }
  }
}

void ZlibStream::Feed(const unsigned char* bytes, std::uint64_t count) {
  // avail_in is 32-bit: large inputs go in slices.
  const std::uint64_t slice = std::uint64_t(1) << 30;
  while (count != 0) {
    const std::uint64_t now = count < slice ? count : slice;
    state->stream.next_in = const_cast<Bytef*>(bytes);
    state->stream.avail_in = static_cast<uInt>(now);
    Deflate(Z_NO_FLUSH);
    bytes += now;
    count -= now;
  }
}

std::uint64_t ZlibStream::Finish() {
  static const Bytef nothing = 0;
  state->stream.next_in = const_cast<Bytef*>(&nothing);
  state->stream.avail_in = 0;
  Deflate(Z_FINISH);
  return state->stream.total_out;
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
  block.Reset();
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
