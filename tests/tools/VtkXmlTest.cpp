// The VTK XML writer, checked against fixed base64 texts. VTK's own reader
// reads its files in the export tests.

#include <gtest/gtest.h>

#include <sstream>

#include "Cli.h"
#include "VtkXml.h"

namespace DovInspect {
namespace {

std::string Base64Of(const std::string& text) {
  return Base64(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

TEST(VtkXml, Base64MatchesKnownTextsAndStreamsAcrossCalls) {
  EXPECT_EQ(Base64Of(""), "");
  EXPECT_EQ(Base64Of("f"), "Zg==");
  EXPECT_EQ(Base64Of("fo"), "Zm8=");
  EXPECT_EQ(Base64Of("foo"), "Zm9v");
  EXPECT_EQ(Base64Of("foobar"), "Zm9vYmFy");
  const unsigned char high[] = {0xFF, 0xFE, 0x00, 0x3F};
  EXPECT_EQ(Base64(high, 4), "//4APw==");
}

TEST(VtkXml, AttributesAreEscapedAndControlBytesHidden) {
  EXPECT_EQ(XmlAttribute("a<b>&\"c\""), "a&lt;b&gt;&amp;&quot;c&quot;");
  EXPECT_EQ(XmlAttribute(std::string("Stress\x1ETime = 1")), "Stress?Time = 1");
}

TEST(VtkXml, InlineArrayCarriesLengthHeaderAndLittleEndianValues) {
  VtuPiece piece;
  std::vector<float> one = {1.0f};
  piece.points = 0;
  piece.coordinates = {"Points", VtkScalar::Float32, 3, 0, nullptr};
  piece.connectivity = {"connectivity", VtkScalar::Int64, 1, 0, nullptr};
  piece.offsets = {"offsets", VtkScalar::Int64, 1, 0, nullptr};
  piece.types = {"types", VtkScalar::UInt8, 1, 0, nullptr};
  piece.cellData.push_back(
      {"x", VtkScalar::Float32, 1, 1, [&](ByteSink& s) { EmitFloat32(s, one.data(), 1); }});
  std::ostringstream out;
  WriteVtu(out, piece, VtkEncoding::Base64);
  // 04 00 00 00 00 00 00 00 | 00 00 80 3F
  const unsigned char expected[] = {4, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x00, 0x80, 0x3F};
  EXPECT_NE(out.str().find(Base64(expected, sizeof expected)), std::string::npos) << out.str();
}

TEST(VtkXml, ProducerThatEmitsTooLittleIsRefused) {
  std::vector<float> xyz = {1, 2};
  VtuPiece piece;
  piece.points = 1;
  piece.coordinates = {"Points", VtkScalar::Float32, 3, 1,
                       [&](ByteSink& s) { EmitFloat32(s, xyz.data(), xyz.size()); }};
  piece.connectivity = {"connectivity", VtkScalar::Int64, 1, 0, nullptr};
  piece.offsets = {"offsets", VtkScalar::Int64, 1, 0, nullptr};
  piece.types = {"types", VtkScalar::UInt8, 1, 0, nullptr};
  for (VtkEncoding encoding : {VtkEncoding::Base64, VtkEncoding::Raw}) {
    std::ostringstream out;
    EXPECT_THROW(WriteVtu(out, piece, encoding), ToolError);
  }
}

}  // namespace
}  // namespace DovInspect
