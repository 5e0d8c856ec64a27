#include "reader/SceneCursor.h"

#include "reader/Container.h"
#include "Kel/Util/Coding.h"

namespace DovReader {

const unsigned char* SceneCursor::Raw(std::uint64_t count) {
  if (count > Left())
    Fail("needs " + std::to_string(count) + " bytes, " + std::to_string(Left()) + " left");
  const unsigned char* at = bytes->data() + position;
  position += count;
  return at;
}

std::uint8_t SceneCursor::U8() { return *Raw(1); }
std::uint32_t SceneCursor::U32() { return Kel::Util::DecodeFixed32(Raw(4)); }
std::uint64_t SceneCursor::U64() { return Kel::Util::DecodeFixed64(Raw(8)); }
float SceneCursor::F32() { return Kel::Util::BitsToFloat(U32()); }

std::string SceneCursor::Text() {
  const std::uint32_t length = U32();
  const unsigned char* text = Raw(length);
  return std::string(reinterpret_cast<const char*>(text), length);
}

std::uint32_t SceneCursor::Count(std::uint64_t minElementSize) {
  const std::uint32_t count = U32();
  if (count * minElementSize > Left())
    Fail("count " + std::to_string(count) + " cannot fit in the " + std::to_string(Left()) +
         " bytes left");
  return count;
}

void SceneCursor::Seek(std::uint64_t offset) {
  if (offset > Size()) Fail("offset " + std::to_string(offset) + " lies beyond the stream");
  position = offset;
}

void SceneCursor::Fail(const std::string& what) const {
  throw ReadError("\"" + stream + "\" at " + std::to_string(position) + ": " + what);
}

void SceneCursor::ExpectEnd() const {
  if (!AtEnd()) Fail(std::to_string(Left()) + " bytes left unread");
}

}  // namespace DovReader
