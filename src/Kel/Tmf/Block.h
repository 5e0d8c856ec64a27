#ifndef DOVWRITER_KEL_TMF_BLOCK_H
#define DOVWRITER_KEL_TMF_BLOCK_H

// One data block of the container: a growable byte buffer into which values
// are appended in their stored encoding (little-endian, no tags, no
// alignment), and which is finally written to the file as a whole.

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace KelTmf {

struct BlockRecord;

// The two names that the container itself gives to blocks; 13 bytes each.
extern const std::string EmptyBlockName;  // "\vEmpty Block "
extern const std::string IndexBlockName;  // "\vIndex Block "

struct Block {
  // Buffers grow linearly by this step (or by one large item).
  static constexpr std::uint64_t GrowthStep = 0xA00000;
  // The most bytes a block holds: its length and position are 32-bit.
  static constexpr std::uint64_t MaxLength = 0xFFFFFFFF;

  unsigned char* data = nullptr;  // owned by whoever holds the block; realloc/free
  std::uint64_t capacity = 0;
  std::uint32_t length = 0;    // one past the last byte ever written
  std::uint32_t position = 0;  // where the next put goes

  void AllocateAdditionalMemory(const std::uint64_t& extra);
  void SetPosition(const std::uint32_t& newPosition);
  // Writes [0, length) at the stream's current place, optionally behind a
  // u32 length prefix.
  void Write(std::FILE* stream, bool withLengthPrefix) const;

  // Typed puts, one per stored encoding.
  void Put(bool value);                // u8
  void Put(std::uint8_t value);        // u8
  void Put(std::uint32_t value);       // u32
  void Put(std::uint64_t value);       // u64
  void Put(float value);               // f32
  void Put(const std::string& value);  // text
  // A string literal must not fall to the bool overload.
  void Put(const char* value) { Put(std::string(value)); }
  void Put(const std::vector<std::string>& values);    // list of text
  void Put(const std::vector<std::uint8_t>& values);   // list of u8
  void Put(const std::vector<std::uint32_t>& values);  // list of u32
  void Put(const std::vector<std::uint64_t>& values);  // list of u64
  void Put(const BlockRecord& record);                 // one 139-byte index entry
  void Put(const std::vector<BlockRecord>& records);   // u32 count + entries
  // raw(n): n bytes as they stand in memory.
  void PutRaw(const void* source, std::uint64_t count);
  // Makes room for `count` bytes at the write position (the growth rule for
  // variable-size values), advances the position past them and returns where
  // they go, so that a caller can encode straight into the block.
  unsigned char* Extend(std::uint64_t count);
  // Counts `count` bytes as put without holding them: for a block whose
  // bytes go straight on to the file. The same 4 GiB check as a put.
  void Skip(std::uint64_t count);

  // Releases the buffer; the bookkeeping fields keep their values.
  void Release();
  // Releases the buffer and forgets it: an empty block, as if new.
  void Reset() {
    Release();
    *this = Block();
  }
  // True once the bytes of the block have left memory for the file: they
  // can neither be written again nor be added to.
  bool ContentsReleased() const { return data == nullptr && length != 0; }

 private:
  // Fails (code 1) unless `count` more bytes at the write position keep the
  // block below 4 GiB.
  void RequireRoom(std::uint64_t count) const;
  // The growth rule: grows the buffer if `count` bytes at the position would
  // reach the capacity, and returns where they go.
  unsigned char* MakeRoom(std::uint64_t count, bool fixedSize);
  // Moves the position past `count` written bytes and raises the mark.
  void Advance(std::uint32_t count);
  void PutFixed(const unsigned char* bytes, std::uint32_t count);
  // The u32 element count in front of a list, refused if the list cannot fit.
  void PutCount(std::uint64_t count, std::uint64_t minimumElementSize);
};

}  // namespace KelTmf

#endif
