// The VTK XML writer, checked against fixed base64 texts and read back by
// VTK's own reader in both encodings.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Cli.h"
#include "ToolTestSupport.h"
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

// Two triangles sharing an edge, with one point and one cell array.
VtuPiece TwoTriangles(std::vector<float>& xyz, std::vector<std::int64_t>& nodes,
                      std::vector<std::int64_t>& ends, std::vector<std::uint8_t>& types,
                      std::vector<float>& temperature, std::vector<std::uint32_t>& ids) {
  xyz = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0.5f};
  nodes = {0, 1, 2, 0, 2, 3};
  ends = {3, 6};
  types = {5, 5};
  temperature = {10, 20, 30, 40.25f};
  ids = {7, 4000000000u};
  VtuPiece piece;
  piece.points = 4;
  piece.cells = 2;
  piece.coordinates = {"Points", VtkScalar::Float32, 3, 4,
                       [&](ByteSink& s) { EmitFloat32(s, xyz.data(), xyz.size()); }};
  piece.connectivity = {"connectivity", VtkScalar::Int64, 1, 6,
                        [&](ByteSink& s) { EmitInt64(s, nodes.data(), nodes.size()); }};
  piece.offsets = {"offsets", VtkScalar::Int64, 1, 2,
                   [&](ByteSink& s) { EmitInt64(s, ends.data(), ends.size()); }};
  piece.types = {"types", VtkScalar::UInt8, 1, 2,
                 [&](ByteSink& s) { EmitUInt8(s, types.data(), types.size()); }};
  piece.pointData.push_back({"Temperature", VtkScalar::Float32, 1, 4, [&](ByteSink& s) {
                               EmitFloat32(s, temperature.data(), temperature.size());
                             }});
  piece.cellData.push_back({"Element Ids", VtkScalar::UInt32, 1, 2, [&](ByteSink& s) {
                              EmitUInt32(s, ids.data(), ids.size());
                            }});
  return piece;
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

TEST(VtkXml, VtkReadsBothEncodingsBack) {
  if (!ToolTest::HaveVtkPython()) GTEST_SKIP() << "no python3 vtk";
  std::string dir = ToolTest::ScratchDir("vtkxml");
  std::vector<float> xyz, temperature;
  std::vector<std::int64_t> nodes, ends;
  std::vector<std::uint8_t> types;
  std::vector<std::uint32_t> ids;
  VtuPiece piece = TwoTriangles(xyz, nodes, ends, types, temperature, ids);
  std::vector<std::string> paths = {dir + "/inline.vtu", dir + "/raw.vtu"};
  for (std::size_t i = 0; i < 2; ++i) {
    std::ofstream out(paths[i], std::ios::binary);
    WriteVtu(out, piece, i == 0 ? VtkEncoding::Base64 : VtkEncoding::Raw);
  }
  auto summaries = ToolTest::ReadWithVtk(paths);
  ASSERT_EQ(summaries.size(), 2u);
  for (const std::string& path : paths) {
    SCOPED_TRACE(path);
    const ToolTest::VtkFileSummary& s = summaries[path];
    EXPECT_EQ(s.points, 4);
    EXPECT_EQ(s.cells, 2);
    EXPECT_EQ(s.coordinates, std::vector<double>(xyz.begin(), xyz.end()));
    EXPECT_EQ(s.cellTypes, (std::vector<long>{5, 5}));
    EXPECT_EQ(s.cellNodes, (std::vector<long>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(s.pointData.at("Temperature").values,
              (std::vector<double>{10, 20, 30, 40.25}));
    EXPECT_EQ(s.cellData.at("Element Ids").values, (std::vector<double>{7, 4000000000.0}));
    EXPECT_EQ(s.cellData.at("Element Ids").type, "unsigned int");
  }
}

}  // namespace
}  // namespace DovInspect
