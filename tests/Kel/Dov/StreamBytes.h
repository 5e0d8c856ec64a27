#ifndef DOVWRITER_TESTS_KEL_DOV_STREAMBYTES_H
#define DOVWRITER_TESTS_KEL_DOV_STREAMBYTES_H

// What a stream holds while its blocks are still in memory, a builder for
// expected bytes, and scratch paths.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include <DovWriter/Exception.h>
#include <gtest/gtest.h>

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

// Expected bytes, written out independently of the library's coding helpers.
struct Le {
  Le& u8(std::initializer_list<unsigned char> values) {
    bytes.insert(bytes.end(), values);
    return *this;
  }
  Le& u32(std::initializer_list<std::uint32_t> values) {
    for (std::uint32_t value : values)
      for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    return *this;
  }
  Le& u64(std::uint64_t value) {
    return u32({static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(value >> 32)});
  }
  Le& text(const std::string& value) {
    u32({static_cast<std::uint32_t>(value.size())});
    bytes.insert(bytes.end(), value.begin(), value.end());
    return *this;
  }
  Le& zeros(std::size_t count) {
    bytes.insert(bytes.end(), count, 0);
    return *this;
  }
  Bytes bytes;
};

// A fresh path for a file that a test writes; `name` is unique per test.
inline std::string TempPath(const std::string& name) {
  const char* dir = std::getenv("DOVWRITER_TEST_TMP");
  const std::filesystem::path base = dir ? dir : "/tmp/dovwriter-tests";
  std::filesystem::create_directories(base);
  const std::filesystem::path path = base / name;
  std::filesystem::remove(path);
  return path.string();
}

// Runs `call`, expecting the library's exception with `code` whose text
// holds `mention`.
template <class Call>
void ExpectFailure(Call call, int code, const std::string& mention) {
  try {
    call();
    ADD_FAILURE() << "no exception, expected code " << code;
  } catch (const Kel::Util::Exception& e) {
    EXPECT_EQ(code, e.GetCode());
    EXPECT_NE(std::string::npos, std::string(e.what()).find(mention)) << e.what();
  }
}

}  // namespace DovTest

#endif
