#ifndef DOVWRITER_TESTS_KEL_DOV_STREAMBYTES_H
#define DOVWRITER_TESTS_KEL_DOV_STREAMBYTES_H

// What a stream holds while its blocks are still in memory, and byte
// builders for the expected values.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "Kel/Tmf/Index.h"

namespace DovTest {

typedef std::vector<unsigned char> Bytes;

inline bool HasStream(KelTmf::Index& index, const std::string& name) {
  return index.limiters.count(name) != 0;
}

inline Bytes StreamBytes(KelTmf::Index& index, const std::string& name) {
  Bytes bytes;
  if (!HasStream(index, name)) return bytes;
  for (std::uint64_t number : index.limiters.at(name).blocks) {
    const KelTmf::Block& block = index.blocks[number];
    bytes.insert(bytes.end(), block.data, block.data + block.length);
  }
  return bytes;
}

inline void Append(Bytes& out, std::initializer_list<unsigned char> bytes) {
  out.insert(out.end(), bytes);
}

inline void AppendU32(Bytes& out, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

inline void AppendU64(Bytes& out, std::uint64_t value) {
  AppendU32(out, static_cast<std::uint32_t>(value));
  AppendU32(out, static_cast<std::uint32_t>(value >> 32));
}

inline void AppendText(Bytes& out, const std::string& text) {
  AppendU32(out, static_cast<std::uint32_t>(text.size()));
  out.insert(out.end(), text.begin(), text.end());
}

inline void AppendZeros(Bytes& out, std::size_t count) { out.insert(out.end(), count, 0); }

// A fresh path for a file that a test writes; `name` is unique per test.
inline std::string TempPath(const std::string& name) {
  const char* dir = std::getenv("DOVWRITER_TEST_TMP");
  const std::filesystem::path base = dir ? dir : "/tmp/dovwriter-tests";
  std::filesystem::create_directories(base);
  const std::filesystem::path path = base / name;
  std::filesystem::remove(path);
  return path.string();
}

}  // namespace DovTest

#endif
