#ifndef DOVREADER_SCENECURSOR_H
#define DOVREADER_SCENECURSOR_H

// A bounds-checked read position in one stream of a model file. Every read
// that would run past the end, and every count that could not fit in what
// is left, is a ReadError naming the stream: a damaged file never makes the
// reader touch memory it does not own or allocate what the file cannot
// hold.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace DovReader {

class SceneCursor {
 public:
  SceneCursor(std::string stream, const std::vector<unsigned char>* bytes)
      : stream(std::move(stream)), bytes(bytes) {}

  std::uint8_t U8();
  std::uint32_t U32();
  std::uint64_t U64();
  float F32();
  std::string Text();
  // A u32 element count, checked against the bytes left when each element
  // takes at least `minElementSize` bytes.
  std::uint32_t Count(std::uint64_t minElementSize);
  const unsigned char* Raw(std::uint64_t count);

  std::uint64_t Position() const { return position; }
  std::uint64_t Size() const { return bytes->size(); }
  std::uint64_t Left() const { return Size() - position; }
  bool AtEnd() const { return position == Size(); }
  // Moves to `offset`, which must lie within the stream.
  void Seek(std::uint64_t offset);
  const std::string& Stream() const { return stream; }

  // A ReadError that names the stream and the position.
  [[noreturn]] void Fail(const std::string& what) const;
  void ExpectEnd() const;

 private:
  std::string stream;
  const std::vector<unsigned char>* bytes;
  std::uint64_t position = 0;
};

}  // namespace DovReader

#endif
