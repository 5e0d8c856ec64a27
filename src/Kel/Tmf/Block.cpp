#include "Kel/Tmf/Block.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "Kel/Tmf/FileWrite.h"
#include "Kel/Tmf/Index.h"
#include "Kel/Util/Coding.h"
#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace KelTmf {

const std::string EmptyBlockName("\vEmpty Block ");
const std::string IndexBlockName("\vIndex Block ");

namespace {

const char* const PutMethod = "KelTmf::Block::Put";

}  // namespace

void Block::AllocateAdditionalMemory(const std::uint64_t& extra) {
  const std::uint64_t wanted = capacity + extra;
  void* grown =
      wanted <= std::numeric_limits<std::size_t>::max() ? std::realloc(data, wanted) : nullptr;
  if (grown == nullptr) KEL_RAISE_CODE(0, "KelTmf::Block::AllocateAdditionalMemory");
  data = static_cast<unsigned char*>(grown);
  capacity = wanted;
  Platform::AdviseLargeBuffer(data, capacity);
}

void Block::SetPosition(const std::uint32_t& newPosition) {
  if (newPosition > length) KEL_RAISE(1, "Invalid block position", "KelTmf::Block::SetPosition");
  position = newPosition;
}

void Block::RequireRoom(std::uint64_t count) const {
  // Lengths and positions are 32-bit on disk and in memory; a value that
  // would carry the block to 4 GiB or beyond is refused rather than wrapped.
  if (count > MaxLength - position)
    KEL_RAISE(1, "Value too large: a block holds less than 4 GiB", PutMethod);
}

unsigned char* Block::MakeRoom(std::uint64_t count, bool fixedSize) {
  RequireRoom(count);
  // An exact fit counts as full, so the buffer always has a spare byte.
  if (position + count >= capacity)
    AllocateAdditionalMemory(fixedSize ? GrowthStep : std::max<std::uint64_t>(count, GrowthStep));
  return data + position;
}

void Block::Advance(std::uint32_t count) {
  position += count;
  if (position > length) length = position;
}

void Block::PutFixed(const unsigned char* bytes, std::uint32_t count) {
  std::memcpy(MakeRoom(count, true), bytes, count);
  Advance(count);
}

void Block::Put(bool value) { Put(static_cast<std::uint8_t>(value ? 1 : 0)); }

void Block::Put(std::uint8_t value) { PutFixed(&value, 1); }

void Block::Put(std::uint32_t value) {
  unsigned char bytes[4];
  Kel::Util::EncodeFixed32(bytes, value);
  PutFixed(bytes, sizeof bytes);
}

void Block::Put(std::uint64_t value) {
  unsigned char bytes[8];
  Kel::Util::EncodeFixed64(bytes, value);
  PutFixed(bytes, sizeof bytes);
}

void Block::Put(float value) { Put(Kel::Util::FloatBits(value)); }

void Block::Put(const std::string& value) {
  RequireRoom(4 + static_cast<std::uint64_t>(value.size()));
  Put(static_cast<std::uint32_t>(value.size()));
  PutRaw(value.data(), value.size());
}

void Block::PutCount(std::uint64_t count, std::uint64_t minimumElementSize) {
  // Checked up front so that the count in front of a list cannot wrap.
  if (count > MaxLength) RequireRoom(count);
  RequireRoom(4 + count * minimumElementSize);
  Put(static_cast<std::uint32_t>(count));
}

void Block::Put(const std::vector<std::string>& values) {
  PutCount(values.size(), 4);
  for (const std::string& value : values) Put(value);
}

void Block::Put(const std::vector<std::uint8_t>& values) {
  PutCount(values.size(), 1);
  for (std::uint8_t value : values) Put(value);
}

void Block::Put(const std::vector<std::uint32_t>& values) {
  PutCount(values.size(), 4);
  for (std::uint32_t value : values) Put(value);
}

void Block::Put(const std::vector<std::uint64_t>& values) {
  PutCount(values.size(), 8);
  for (std::uint64_t value : values) Put(value);
}

void Block::Put(const BlockRecord& record) {
  RequireRoom(IndexEntrySize);
  const std::uint32_t start = position;
  Put(record.id);
  Put(IndexNameFieldSize);
  // The name field has strncpy semantics: zero-filled behind the name, cut
  // without terminator at the field's size.
  unsigned char name[IndexNameFieldSize] = {};
  std::memcpy(name, record.name.data(),
              std::min<std::size_t>(record.name.size(), IndexNameFieldSize));
  PutFixed(name, IndexNameFieldSize);
  Put(record.size);
  Put(record.flags);
  Put(record.reserved);
  assert(position - start == IndexEntrySize);
  (void)start;
}

void Block::Put(const std::vector<BlockRecord>& records) {
  PutCount(records.size(), IndexEntrySize);
  for (const BlockRecord& record : records) Put(record);
}

void Block::PutRaw(const void* source, std::uint64_t count) {
  unsigned char* target = MakeRoom(count, false);
  if (count != 0) std::memcpy(target, source, count);
  Advance(static_cast<std::uint32_t>(count));
}

unsigned char* Block::Extend(std::uint64_t count) {
  unsigned char* target = MakeRoom(count, false);
  Advance(static_cast<std::uint32_t>(count));
  return target;
}

void Block::Skip(std::uint64_t count) {
  RequireRoom(count);
  Advance(static_cast<std::uint32_t>(count));
}

void Block::Write(std::FILE* stream, bool withLengthPrefix) const {
  // A block whose buffer went to the file already cannot be written again.
  if (ContentsReleased() || stream == nullptr) RaiseWriteFailure();
  bool written = true;
  try {
    if (withLengthPrefix) {
      unsigned char prefix[4];
      Kel::Util::EncodeFixed32(prefix, length);
      written = std::fwrite(prefix, 1, sizeof prefix, stream) == sizeof prefix;
    }
    if (written && length != 0) written = std::fwrite(data, 1, length, stream) == length;
    // The stream buffers; only a flush shows whether the bytes could go out
    // (a full disk, for one, is reported here and not by fwrite).
    if (written) written = std::fflush(stream) == 0 && std::ferror(stream) == 0;
  } catch (...) {
    written = false;
  }
  if (!written) RaiseWriteFailure();
}

void Block::Release() {
  std::free(data);
  data = nullptr;
}

}  // namespace KelTmf
