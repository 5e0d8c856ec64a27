// The model layer: the cell-typing rule on cells the library's demo files
// do not hold, and placements composed down a path of rotated and scaled
// groups.

#include <DovWriter/DovWriter.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "../Kel/Dov/StreamBytes.h"
#include "reader/CellTypes.h"
#include "reader/Model.h"

namespace {

using namespace DovReader;
using Types = std::vector<std::uint8_t>;

// The corners of a unit cube in the usual hexahedron order, the apex of a
// pyramid, and a flat octagon lifted far from the origin.
const std::vector<float> kPoints = {
    0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1,  // 0..7
    0.5f, 0.5f, 1,                                                        // 8
    1e5f, 1e5f, 1e5f, 1e5f + 1, 1e5f, 1e5f + 1, 1e5f + 2, 1e5f + 1, 1e5f + 2,
    1e5f + 2, 1e5f + 2, 1e5f + 2, 1e5f + 1, 1e5f + 3, 1e5f + 1, 1e5f, 1e5f + 2, 1e5f,
    1e5f - 1, 1e5f + 1, 1e5f - 1, 1e5f - 1, 1e5f + 0.5f, 1e5f - 1};  // 9..16, plane x = z

Types TypesOf(const std::vector<std::uint32_t>& nodes, const std::vector<std::uint32_t>& lengths,
              CellRule rule, std::uint32_t connectivity = kCellConnectivity) {
  return BuildCells(nodes, lengths, connectivity, kPoints, rule).types;
}

TEST(CellTypes, ShapeDecidesUnlessARuleIsGiven) {
  const std::vector<std::uint32_t> nodes = {0, 1, 2, 4,           // tetra
                                            0, 1, 2, 3, 8,        // pyramid
                                            0, 1, 2, 4, 5, 6,     // wedge
                                            0, 1, 2, 3, 4, 5, 6, 7,  // hexahedron
                                            0, 1, 2, 3,           // flat quad
                                            9, 10, 11, 12, 13, 14, 15, 16};  // flat, far out
  const std::vector<std::uint32_t> lengths = {4, 5, 6, 8, 4, 8};
  EXPECT_EQ(TypesOf(nodes, lengths, CellRule::ByShape),
            (Types{kTetra, kPyramid, kWedge, kHexahedron, kQuad, kPolygon}));
  EXPECT_EQ(TypesOf(nodes, lengths, CellRule::Surface),
            (Types{kQuad, kPolygon, kPolygon, kPolygon, kQuad, kPolygon}));
  EXPECT_EQ(TypesOf(nodes, lengths, CellRule::Solid),
            (Types{kTetra, kPyramid, kWedge, kHexahedron, kTetra, kHexahedron}));
  // Points and lines stay what their connectivity type says.
  EXPECT_EQ(TypesOf({0, 1, 2, 4}, {4}, CellRule::ByShape, kLineConnectivity), (Types{kPolyLine}));
  EXPECT_EQ(TypesOf({0, 1, 2, 4}, {4}, CellRule::Solid, kPointConnectivity), (Types{kPolyVertex}));

  EXPECT_THROW(BuildCells({0, 17}, {2}, kCellConnectivity, kPoints, CellRule::ByShape), ReadError);
  EXPECT_THROW(BuildCells({0, 1}, {3}, kCellConnectivity, kPoints, CellRule::ByShape), ReadError);
  CellLayout extra = BuildCells({0, 1, 2, 4}, {3}, kCellConnectivity, kPoints, CellRule::ByShape);
  EXPECT_EQ(extra.usedNodes, 3u);
  EXPECT_EQ(extra.warnings.size(), 1u);
}

// Root "World" -> group "Arm", moved by (5, 0, 0) -> shape "Tip", turned a
// quarter about z and scaled by 2 -> geometry with the points (1, 0, 0) and
// (0, 0, 1).
std::string WritePlacedModel() {
  using namespace Kel::Dov;
  const std::string path = DovTest::TempPath("placed.dov");
  Scene_V1 scene;
  const Identifier world = scene.createObject(GroupObject);
  scene.setName(world, "World");
  const Identifier arm = scene.createObject(GroupObject);
  scene.setName(arm, "Arm");
  const Identifier move = scene.createObject(TransformationObject);
  scene.setTranslation(move, 5, 0, 0);
  const Identifier turn = scene.createObject(TransformationObject);
  scene.setName(turn, "Turn");
  scene.setRotation(turn, 0, 0, 1, static_cast<float>(M_PI / 2));
  scene.setScale(turn, 2, 2, 2);
  const Identifier coordinates = scene.createObject(ArrayObject);
  const float xyz[] = {1, 0, 0, 0, 0, 1};
  scene.setValues(coordinates, xyz, 6);
  const Identifier geometry = scene.createObject(GeometryObject);
  scene.setCoordinates(geometry, coordinates);
  scene.setMeshType(geometry, static_cast<MeshType>(2));  // points alone
  const Identifier tip = scene.createObject(ShapeObject);
  scene.setName(tip, "Tip");
  scene.setVisibility(tip, false);
  scene.addComponent(tip, geometry);
  scene.addComponent(arm, tip, turn);
  scene.addComponent(world, arm, move);
  scene.createDefaultViews(world);
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
  return path;
}

TEST(Model, PlacesGeometriesByTheGroupsAboveThem) {
  Model model(WritePlacedModel());
  ASSERT_EQ(model.Pieces().size(), 1u);
  const ModelPiece& piece = model.Pieces()[0];
  EXPECT_EQ(piece.path, "World//Arm/Turn");  // the unnamed group of the move
  EXPECT_EQ(piece.name, "Turn");
  const PointSet points = model.ReadPoints(piece, kNoStep);
  ASSERT_EQ(points.xyz.size(), 6u);
  const std::vector<float> expected = {5, 2, 0, 5, 0, 2};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(points.xyz[i], expected[i], 1e-5) << i;
  const ModelNode& geometry = model.Node(piece.geometries[0]);
  EXPECT_EQ(geometry.path, "World//Arm/Turn/Tip/Tip");
  EXPECT_FALSE(geometry.visible);
  EXPECT_TRUE(model.Node(1).visible);
  EXPECT_TRUE(geometry.hasColor);
  EXPECT_EQ(model.ReadCells(piece, kNoStep, points, CellRule::ByShape).types,
            (Types{kVertex, kVertex}));
}

}  // namespace
