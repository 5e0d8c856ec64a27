#include "Kel/Tmf/BlockCoding.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

#include "Kel/Util/Coding.h"
#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace KelTmf {

namespace {

const char* const CompressMethod = "KelTmf::BlockZlibCompressor::operator ()";
const char* const AllocateMethod = "KelTmf::Block::AllocateAdditionalMemory";
const std::uint64_t HeadBytes = 4;
// zlib takes and gives at most this much per call; between slices a
// cancelled block is given up.
const std::uint64_t Slice = std::uint64_t(4) << 20;

// The test for noise. Sixteen samples of 8 KiB cost less than a hundredth
// of compressing a 4 MiB block. On the byte planes of a 10^7-node model,
// one block in seven had every sample above 98 %; those blocks took a fifth
// of libdeflate's time at level 6, and storing them made the file 0.3 %
// larger. A block with one compressible sample is compressed, so a block
// that only partly holds noise keeps what deflate saves on the rest. Levels
// from 10 on are asked for to make the smallest file, and keep the search.
const int Samples = 16;
const std::uint32_t SampleBytes = 8192;
const double NoiseRatio = 0.98;
const int MaxSampledLevel = 9;

// Thrown, not logged: see the header.
[[noreturn]] void Fail(std::int32_t code, const char* method) {
  throw Kel::Util::Exception(code, Kel::Util::Exception::CodeText(code), __FILE__, __LINE__,
                             method);
}

[[noreturn]] void FailCompression(int zlibResult) {
  if (zlibResult == Z_MEM_ERROR) Fail(0, CompressMethod);
  throw Kel::Util::Exception(15, "Compression failed", __FILE__, __LINE__, CompressMethod);
}

// `stored` with room for the head and `bound` bytes of stream. A new buffer
// gets an eighth more, so that it serves the next blocks too, which differ
// in size a little; only the bytes compression writes take memory. Large
// pages: faulted in 4 KiB at a time, the first fill of a block's stream
// cost some 8 % of its compression time on a virtual machine.
void MakeRoom(Buffer& stored, std::uint64_t bound) {
  if (stored.capacity() >= HeadBytes + bound) return;
  stored = Buffer();
  stored = Buffer::Allocate(HeadBytes + bound + bound / 8);
  Platform::AdviseLargeBuffer(stored.data(), stored.capacity());
}

libdeflate_compressor* Compressor(libdeflate_compressor*& compressor, int level) {
  if (compressor == nullptr) compressor = libdeflate_alloc_compressor(level);
  if (compressor == nullptr) Fail(0, CompressMethod);
  return compressor;
}

}  // namespace

Buffer::~Buffer() { std::free(bytes); }

Buffer::Buffer(Buffer&& other) noexcept : bytes(other.bytes), room(other.room) {
  other.bytes = nullptr;
  other.room = 0;
}

Buffer& Buffer::operator=(Buffer&& other) noexcept {
  if (this != &other) {
    std::free(bytes);
    room = other.room;
    bytes = other.Release();
  }
  return *this;
}

Buffer Buffer::Allocate(std::uint64_t capacity) {
  void* data = std::malloc(std::max<std::uint64_t>(capacity, 1));
  if (data == nullptr) Fail(0, AllocateMethod);
  return Buffer(static_cast<unsigned char*>(data), capacity);
}

unsigned char* Buffer::Release() {
  unsigned char* data = bytes;
  bytes = nullptr;
  room = 0;
  return data;
}

BlockCoder::~BlockCoder() {
  libdeflate_free_compressor(compressor);
  libdeflate_free_compressor(sampler);
  libdeflate_free_compressor(storer);
}

std::uint64_t BlockCoder::Code(const unsigned char* plain, std::uint32_t length, Buffer& stored,
                               const std::atomic<bool>& cancelled) {
  const std::uint64_t size =
      coding.fast ? CodeFast(plain, length, stored) : CodeExact(plain, length, stored, cancelled);
  // The index keeps a block's stored size in 32 bits, whoever writes the
  // block; data that does not shrink could grow past them.
  if (size > std::numeric_limits<std::uint32_t>::max())
    throw Kel::Util::Exception(1, "Value too large: a block holds less than 4 GiB", __FILE__,
                               __LINE__, "KelTmf::Block::Put");
  if (size != 0) Kel::Util::EncodeFixed32(stored.data(), length);
  return size;
}

std::uint64_t BlockCoder::CodeExact(const unsigned char* plain, std::uint32_t length,
                                    Buffer& stored, const std::atomic<bool>& cancelled) {
  // compress2's parameters, fed in slices: deflate's output depends on the
  // bytes alone, not on how they come in, so the stream is compress2's.
  const std::uint64_t bound = compressBound(length);
  MakeRoom(stored, bound);
  z_stream stream{};
  int result = deflateInit(&stream, coding.level);
  if (result != Z_OK) FailCompression(result);
  static const Bytef nothing = 0;
  stream.next_in = const_cast<Bytef*>(length != 0 ? plain : &nothing);
  std::uint64_t unread = length;
  while (result == Z_OK) {
    if (cancelled.load(std::memory_order_relaxed)) break;
    if (stream.avail_in == 0) {
      stream.avail_in = static_cast<uInt>(std::min(unread, Slice));
      unread -= stream.avail_in;
    }
    stream.next_out = stored.data() + HeadBytes + stream.total_out;
    stream.avail_out = static_cast<uInt>(std::min(bound - stream.total_out, Slice));
    result = deflate(&stream, unread == 0 ? Z_FINISH : Z_NO_FLUSH);
  }
  const std::uint64_t size = HeadBytes + stream.total_out;
  deflateEnd(&stream);
  if (result == Z_STREAM_END) return size;
  if (result == Z_OK) return 0;  // cancelled
  FailCompression(result);
}

bool BlockCoder::LooksIncompressible(const unsigned char* plain, std::uint32_t length) {
  if (coding.level > MaxSampledLevel || length < std::uint64_t(Samples) * SampleBytes)
    return false;
  libdeflate_compressor* quick = Compressor(sampler, 1);
  // A sample that does not fit in 98 % of its size is not compressible
  // enough, and libdeflate then gives 0: the buffer need not hold more.
  const std::size_t room = static_cast<std::size_t>(SampleBytes * NoiseRatio);
  if (sampleOut.capacity() < room) sampleOut = Buffer::Allocate(room);
  const std::uint64_t step = (length - SampleBytes) / (Samples - 1);
  for (int i = 0; i < Samples; ++i) {
    const unsigned char* sample = plain + i * step;
    if (libdeflate_deflate_compress(quick, sample, SampleBytes, sampleOut.data(), room) != 0)
      return false;
  }
  return true;
}

std::uint64_t BlockCoder::CodeFast(const unsigned char* plain, std::uint32_t length,
                                   Buffer& stored) {
  libdeflate_compressor* chosen = LooksIncompressible(plain, length)
                                      ? Compressor(storer, 0)
                                      : Compressor(compressor, coding.level);
  const std::uint64_t bound = libdeflate_zlib_compress_bound(chosen, length);
  MakeRoom(stored, bound);
  const std::size_t size = libdeflate_zlib_compress(chosen, plain, length,
                                                    stored.data() + HeadBytes, bound);
  if (size == 0) throw Kel::Util::Exception(15, "Compression failed", __FILE__, __LINE__,
                                            CompressMethod);
  return HeadBytes + size;
}

}  // namespace KelTmf
