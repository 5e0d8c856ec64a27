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

BlockCoder::~BlockCoder() { libdeflate_free_compressor(compressor); }

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

std::uint64_t BlockCoder::CodeFast(const unsigned char* plain, std::uint32_t length,
                                   Buffer& stored) {
  if (compressor == nullptr) compressor = libdeflate_alloc_compressor(coding.level);
  if (compressor == nullptr) Fail(0, CompressMethod);
  const std::uint64_t bound = libdeflate_zlib_compress_bound(compressor, length);
  MakeRoom(stored, bound);
  const std::size_t size = libdeflate_zlib_compress(compressor, plain, length,
                                                    stored.data() + HeadBytes, bound);
  if (size == 0) throw Kel::Util::Exception(15, "Compression failed", __FILE__, __LINE__,
                                            CompressMethod);
  return HeadBytes + size;
}

}  // namespace KelTmf
