#ifndef DOVWRITER_KEL_TMF_BLOCKCODING_H
#define DOVWRITER_KEL_TMF_BLOCKCODING_H

// Whole blocks compressed away from the index, on any thread, into the
// stored form of a compressed block: the u32 plain length, then one zlib
// stream. A failure is thrown as the library's exception, with the code and
// text the index would give, but it is not logged: the thread that meets it
// may not be the one that logs, so the host's thread logs it when it
// rethrows it.

#include <atomic>
#include <cstdint>

struct libdeflate_compressor;

namespace KelTmf {

// Bytes from malloc, owned; moved, never copied.
class Buffer {
 public:
  Buffer() = default;
  // Takes over `data` (from malloc or realloc) of `capacity` bytes.
  Buffer(unsigned char* data, std::uint64_t capacity) : bytes(data), room(capacity) {}
  ~Buffer();
  Buffer(Buffer&& other) noexcept;
  Buffer& operator=(Buffer&& other) noexcept;
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  // A buffer of `capacity` bytes; code 0 where there is no memory for it.
  static Buffer Allocate(std::uint64_t capacity);

  unsigned char* data() const { return bytes; }
  std::uint64_t capacity() const { return room; }
  // Gives up ownership; the buffer is empty afterwards.
  unsigned char* Release();

 private:
  unsigned char* bytes = nullptr;
  std::uint64_t room = 0;
};

// How blocks are compressed. Exact: compress2's stream at level 6, byte for
// byte, as the sequential write makes it. Fast: libdeflate's zlib stream at
// `level` (1 to 12), as small as zlib's and made in a fraction of the time;
// at levels up to 9 a block that samples show to be noise, such as the low
// byte planes of floating-point results, becomes a zlib stream of stored
// deflate blocks instead: deflate would spend as long on it as on any other
// block to save less than 2 % of it.
struct BlockCoding {
  bool fast = false;
  int level = 6;
};

// One per thread: a libdeflate compressor serves one thread at a time.
class BlockCoder {
 public:
  explicit BlockCoder(const BlockCoding& coding) : coding(coding) {}
  ~BlockCoder();
  BlockCoder(const BlockCoder&) = delete;
  BlockCoder& operator=(const BlockCoder&) = delete;

  // Compresses `length` plain bytes into `stored` (replaced where too
  // small) and returns the stored size. Looks at `cancelled` between
  // slices of a large block and gives up, returning 0, once it is set.
  std::uint64_t Code(const unsigned char* plain, std::uint32_t length, Buffer& stored,
                     const std::atomic<bool>& cancelled);

 private:
  std::uint64_t CodeExact(const unsigned char* plain, std::uint32_t length, Buffer& stored,
                          const std::atomic<bool>& cancelled);
  std::uint64_t CodeFast(const unsigned char* plain, std::uint32_t length, Buffer& stored);
  // Whether deflate would not shrink the block by even 2 %, judged by
  // compressing evenly spread samples of it quickly.
  bool LooksIncompressible(const unsigned char* plain, std::uint32_t length);

  BlockCoding coding;
  libdeflate_compressor* compressor = nullptr;
  libdeflate_compressor* sampler = nullptr;  // level 1, for the samples
  libdeflate_compressor* storer = nullptr;   // level 0: stored deflate blocks
  Buffer sampleOut;
};

}  // namespace KelTmf

#endif
