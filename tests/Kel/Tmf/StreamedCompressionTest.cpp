// A compressed block goes to the file as zlib produces it, fed and emitted
// in pieces. These tests hold that stream to compress2's on the whole block,
// which the in-memory transformation makes.

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>

#include "Kel/Tmf/BlockZlibCompressor.h"
#include "Kel/Util/Coding.h"
#include "TmfTestSupport.h"

using KelTmf::Block;
using KelTmf::BlockZlibCompressor;
using KelTmf::ZlibStream;
using TmfTest::Bytes;
using TmfTest::Noise;

namespace {

// Byte planes of a smooth float field, the typical content of heavy data.
Bytes SmoothPlanes(std::size_t values) {
  Bytes bytes(4 * values);
  for (std::size_t i = 0; i < values; ++i) {
    const std::uint32_t bits = Kel::Util::FloatBits(std::sin(0.001f * i) * 100.0f);
    for (int plane = 0; plane < 4; ++plane)
      bytes[plane * values + i] = static_cast<unsigned char>(bits >> (8 * plane));
  }
  return bytes;
}

// [u32 length][compress2 at level 6]: what a compressed block must hold.
Bytes Compress2Form(const Bytes& plain) {
  Bytes out(compressBound(plain.size()));
  uLongf length = out.size();
  static const Bytef nothing = 0;
  EXPECT_EQ(compress2(out.data(), &length, plain.empty() ? &nothing : plain.data(), plain.size(), 6),
            Z_OK);
  out.resize(length);
  out.insert(out.begin(), 4, 0);
  TmfTest::Put32(out, 0, static_cast<std::uint32_t>(plain.size()));
  return out;
}

Bytes InMemoryForm(const Bytes& plain) {
  Block block;
  if (!plain.empty()) block.PutRaw(plain.data(), plain.size());
  BlockZlibCompressor compressor(6);
  compressor(block);
  Bytes form = TmfTest::BlockBytes(block);
  block.Release();
  return form;
}

std::vector<Bytes> Samples() {
  Bytes repetitive(3 * ZlibStream::PieceBytes + 5);
  for (std::size_t i = 0; i < repetitive.size(); ++i) repetitive[i] = static_cast<unsigned char>(i % 251);
  // Noise larger than a piece makes a stream of several output pieces.
  return {Bytes(), Bytes{42}, Noise(70000, 1), Noise(2 * ZlibStream::PieceBytes + 3, 2),
          repetitive, SmoothPlanes(700000)};
}

}  // namespace

TEST(StreamedCompression, InputCutAnywhereGivesCompress2sStreamInBoundedPieces) {
  std::mt19937 random(7);
  for (const Bytes& plain : Samples()) {
    Bytes streamed;
    std::size_t pieces = 0;
    KelTmf::ZlibStream zlib(6, [&](const unsigned char* bytes, std::size_t count) {
      EXPECT_LE(count, ZlibStream::PieceBytes);
      streamed.insert(streamed.end(), bytes, bytes + count);
      ++pieces;
    });
    for (std::size_t at = 0; at < plain.size();) {
      const std::size_t cut = std::min<std::size_t>(plain.size() - at, 1 + random() % 90000);
      zlib.Feed(plain.data() + at, cut);
      at += cut;
    }
    const std::uint64_t length = zlib.Finish();
    EXPECT_EQ(length, streamed.size());
    if (streamed.size() > 2 * ZlibStream::PieceBytes) {
      EXPECT_GT(pieces, 2u);
    }
    // Behind the four-byte plain length that the block form puts in front.
    TmfTest::Append32(streamed, static_cast<std::uint32_t>(plain.size()));
    std::rotate(streamed.begin(), streamed.end() - 4, streamed.end());
    EXPECT_EQ(streamed, Compress2Form(plain)) << "plain size " << plain.size();
    EXPECT_EQ(streamed, InMemoryForm(plain)) << "plain size " << plain.size();
  }
}

TEST(StreamedCompression, BadLevelFailsLikeTheTransformation) {
  TmfTest::ExpectFailure([&] { ZlibStream(42, [](const unsigned char*, std::size_t) {}); }, 15,
                         "Compression failed");
}
