// Colours and mesh types as the scene stores them.

#include <memory>
#include <vector>

#include "SceneTestSupport.h"

using namespace Kel::Dov;

TEST(Appearance, ColourTypesChooseTheirKeysAndPointersReadAlphaOnlyWhenAsked) {
  InspectableScene scene;
  const Identifier set = scene.createObject(ElementSetObject);
  const char* keys[] = {"Diffusive", "Specular", "Emissive", "Ambient", "Unknown Color Type"};
  for (int type : {0, 1, 2, 3, 4, -3}) {
    scene.setColor(set, static_cast<ColorType>(type), 0.1f * type, 2.0f, -1.0f, 0.5f);
    EXPECT_EQ((std::vector<float>{0.1f * type, 2.0f, -1.0f, 0.5f}), floats(scene, set, keys[type < 0 ? 4 : type]));
  }
  // Exactly three floats: reading a fourth would be caught by the sanitizer.
  std::unique_ptr<float[]> rgb(new float[3]{0.2f, 0.3f, 0.4f});
  scene.setColor(set, SpecularColor, rgb.get(), false);
  EXPECT_EQ((std::vector<float>{0.2f, 0.3f, 0.4f, 1.0f}), floats(scene, set, "Specular"));
  const float rgba[] = {0.2f, 0.3f, 0.4f, 0.0f};
  scene.setColor(set, SpecularColor, rgba, true);
  EXPECT_EQ((std::vector<float>{0.2f, 0.3f, 0.4f, 0.0f}), floats(scene, set, "Specular"));
  // Transformations, visibility and random colours store one entry per key.
  scene.setVisibility(set, true);
  scene.setVisibility(set, false);
  scene.setRandomColors(set);
  EXPECT_EQ(false, *scene.property<bool>(set, "Visibility"));
  EXPECT_EQ(6u, scene.table().record(set.second).properties.size());
}

TEST(Appearance, MeshTypesMapDownwardsToConnectivityTypes) {
  InspectableScene scene;
  const Identifier geometry = scene.createObject(GeometryObject);
  for (const auto& c : {std::pair<int, int>{0, 6}, {1, 5}, {2, 4}, {7, 6}, {-1, 6}}) {
    scene.setMeshType(geometry, static_cast<MeshType>(c.first));
    const auto* stored = scene.property<KelDov::Geometry::VariableType>(geometry, "Mesh Type");
    ASSERT_NE(nullptr, stored) << "stored as the geometry's variable type";
    EXPECT_EQ(c.second, static_cast<int>(*stored)) << "mesh type " << c.first;
  }
}
