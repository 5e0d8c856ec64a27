#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "Kel/Tmf/BlockZlibCompressor.h"
#include "Kel/Util/Coding.h"
#include "TmfTestSupport.h"

using KelTmf::Block;
using TmfTest::Bytes;

namespace {

Bytes Inflate(const Bytes& compressed, std::size_t plainLength) {
  Bytes plain(plainLength + 1);
  uLongf length = plain.size();
  EXPECT_EQ(uncompress(plain.data(), &length, compressed.data(), compressed.size()), Z_OK);
  plain.resize(length);
  return plain;
}

Bytes CompressedForm(const Bytes& plain) {
  Block block;
  if (!plain.empty()) block.PutRaw(plain.data(), plain.size());
  KelTmf::BlockZlibCompressor compressor(6);
  KelTmf::BlockTransformation& transformation = compressor;
  transformation(block);
  EXPECT_EQ(block.position, block.length);
  Bytes bytes = TmfTest::BlockBytes(block);
  block.Release();
  return bytes;
}

}  // namespace

TEST(BlockCompression, EmptyBlockBecomesTheTwelveByteEmptyStream) {
  EXPECT_EQ(CompressedForm(Bytes()),
            (Bytes{0, 0, 0, 0, 0x78, 0x9C, 0x03, 0x00, 0x00, 0x00, 0x00, 0x01}));
}

TEST(BlockCompression, LengthPrefixThenAStreamThatInflatesBack) {
  std::mt19937 random(7);
  Bytes repetitive(100000);
  for (std::size_t i = 0; i < repetitive.size(); ++i) repetitive[i] = static_cast<unsigned char>(i % 13);
  Bytes noise(70000);
  for (unsigned char& byte : noise) byte = static_cast<unsigned char>(random());
  for (const Bytes& plain : {repetitive, noise, Bytes{42}}) {
    const Bytes stored = CompressedForm(plain);
    ASSERT_GE(stored.size(), 4u);
    EXPECT_EQ(Kel::Util::DecodeFixed32(stored.data()), plain.size());
    EXPECT_EQ(Inflate(Bytes(stored.begin() + 4, stored.end()), plain.size()), plain);
  }
}

TEST(BlockCompression, AFailedCompressionKeepsThePlainBytes) {
  Block block;
  block.Put(std::string("keep me"));
  KelTmf::BlockZlibCompressor invalidLevel(42);
  TmfTest::ExpectFailure([&] { invalidLevel(block); }, 15, "Compression failed");
  EXPECT_EQ(TmfTest::BlockBytes(block), (Bytes{7, 0, 0, 0, 'k', 'e', 'e', 'p', ' ', 'm', 'e'}));
  block.Release();
}
