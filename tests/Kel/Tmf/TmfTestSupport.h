#ifndef DOVWRITER_TESTS_TMF_SUPPORT_H
#define DOVWRITER_TESTS_TMF_SUPPORT_H

// Helpers of the container and reader tests: scratch files, bytes, the
// stored form of a compressed block, and expectations on the library's
// exception.

#include <DovWriter/Exception.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "Kel/Tmf/TmFile.h"

namespace TmfTest {

using Bytes = std::vector<unsigned char>;

// A fresh path under the test directory, named after the running test.
inline std::string ScratchPath(const std::string& suffix = ".tmf") {
  const char* root = std::getenv("DOVWRITER_TEST_TMP");
  std::filesystem::path dir = root != nullptr ? root : "/tmp/dovwriter_tests";
  std::filesystem::create_directories(dir);
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::filesystem::path path =
      dir / (std::string("tmf_") + test->test_suite_name() + "_" + test->name() + suffix);
  std::filesystem::remove(path);
  return path.string();
}

inline Bytes ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteAll(const std::string& path, const Bytes& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

inline void Put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<unsigned char>(value >> (8 * i));
}

inline void Append32(Bytes& bytes, std::uint32_t value) {
  bytes.resize(bytes.size() + 4);
  Put32(bytes, bytes.size() - 4, value);
}

inline Bytes Pattern(std::size_t count, unsigned seed) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>((i * seed) >> 2);
  return bytes;
}

// Bytes that no compressor can shrink.
inline Bytes Noise(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(count);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}

// The plain bytes of a compressed block's stored form: the u32 plain
// length, then one zlib stream, which must inflate to exactly that many.
inline Bytes Inflated(const Bytes& stored) {
  const std::uint32_t length = stored[0] | stored[1] << 8 | stored[2] << 16 | stored[3] << 24;
  Bytes plain(length);
  uLongf size = length;
  EXPECT_EQ(uncompress(plain.data(), &size, stored.data() + 4, stored.size() - 4), Z_OK);
  EXPECT_EQ(size, length);
  return plain;
}

inline Bytes BlockBytes(const KelTmf::Block& block) {
  return Bytes(block.data, block.data + block.length);
}

// A file laid down by hand: head, a first index of `entries` padded with
// pool entries, then `body`.
struct Entry {
  std::string name;
  std::uint32_t size;
  std::uint8_t flags;
};

inline Bytes HandBuilt(const std::vector<Entry>& entries, const Bytes& body) {
  Bytes file{0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A, '1', '.', '1', 0};
  Append32(file, 2784);
  Append32(file, 20);
  for (std::size_t i = 0; i < 20; ++i) {
    const Entry entry = i < entries.size() ? entries[i] : Entry{"\vEmpty Block ", 0, 0};
    file.push_back(static_cast<unsigned char>(i + 1));
    Append32(file, 128);
    file.insert(file.end(), entry.name.begin(), entry.name.end());
    file.resize(file.size() + 128 - entry.name.size());
    Append32(file, entry.size);
    file.insert(file.end(), {entry.flags, 0});
  }
  file.insert(file.end(), body.begin(), body.end());
  return file;
}

// Runs `action` and expects the library's exception with this code and
// description.
template <class Action>
void ExpectFailure(Action&& action, std::int32_t code, const std::string& description) {
  try {
    action();
    ADD_FAILURE() << "no exception, expected code " << code;
  } catch (const Kel::Util::Exception& failure) {
    EXPECT_EQ(failure.GetCode(), code);
    EXPECT_EQ(std::string(failure.GetDescription()), description);
  }
}

// Opens `path`, writes the head, lets `fill` put and flush through the
// index, then writes everything out and closes.
template <class Fill>
void WriteContainer(const std::string& path, Fill&& fill) {
  KelTmf::TmFile file;
  file.OpenFileForWriting(path, true);
  file.WriteHead();
  fill(file);
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();
}

}  // namespace TmfTest

#endif
