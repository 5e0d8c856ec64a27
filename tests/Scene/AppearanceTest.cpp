// Colours, transformations, visibility and mesh types.

#include <memory>
#include <vector>

#include "SceneTestSupport.h"

using namespace Kel::Dov;

TEST(Appearance, ColourTypesChooseTheirKeys) {
  InspectableScene scene;
  const Identifier set = scene.createObject(ElementSetObject);
  const char* keys[] = {"Diffusive", "Specular", "Emissive", "Ambient", "Unknown Color Type"};
  for (int type = 0; type < 5; ++type) {
    scene.setColor(set, static_cast<ColorType>(type), 0.1f * type, 2.0f, -1.0f, 0.5f);
    EXPECT_EQ((std::vector<float>{0.1f * type, 2.0f, -1.0f, 0.5f}),
              *scene.property<std::vector<float>>(set, keys[type]));
  }
  scene.setColor(set, static_cast<ColorType>(-3), 9, 9, 9, 9);
  EXPECT_EQ((std::vector<float>{9, 9, 9, 9}),
            *scene.property<std::vector<float>>(set, "Unknown Color Type"));
  scene.setColor(set, DiffusiveColor, 1, 1, 1, 1);
  EXPECT_EQ((std::vector<float>{1, 1, 1, 1}), *scene.property<std::vector<float>>(set, "Diffusive"));
}

TEST(Appearance, PointerColourReadsAlphaOnlyWhenAsked) {
  InspectableScene scene;
  const Identifier set = scene.createObject(ElementSetObject);
  // Exactly three floats: reading a fourth would be caught by the sanitizer.
  std::unique_ptr<float[]> rgb(new float[3]{0.2f, 0.3f, 0.4f});
  scene.setColor(set, SpecularColor, rgb.get(), false);
  EXPECT_EQ((std::vector<float>{0.2f, 0.3f, 0.4f, 1.0f}),
            *scene.property<std::vector<float>>(set, "Specular"));
  const float rgba[] = {0.2f, 0.3f, 0.4f, 0.0f};
  scene.setColor(set, SpecularColor, rgba, true);
  EXPECT_EQ((std::vector<float>{0.2f, 0.3f, 0.4f, 0.0f}),
            *scene.property<std::vector<float>>(set, "Specular"));
}

TEST(Appearance, MeshTypesMapDownwardsToConnectivityTypes) {
  InspectableScene scene;
  const Identifier geometry = scene.createObject(GeometryObject);
  const struct {
    int meshType;
    int stored;
  } cases[] = {{0, 6}, {1, 5}, {2, 4}, {7, 6}, {-1, 6}};
  for (const auto& c : cases) {
    scene.setMeshType(geometry, static_cast<MeshType>(c.meshType));
    const auto* stored = scene.property<KelDov::Geometry::VariableType>(geometry, "Mesh Type");
    ASSERT_NE(nullptr, stored) << "stored as the geometry's variable type";
    EXPECT_EQ(c.stored, static_cast<int>(*stored)) << "mesh type " << c.meshType;
  }
}

TEST(Appearance, TransformationsAndSingleValuesAreStoredAsGiven) {
  InspectableScene scene;
  const Identifier object = scene.createObject(TransformationObject);
  scene.setTranslation(object, 1, 2, 3);
  scene.setRotation(object, 4, 5, 6, 7);
  scene.setScale(object, 0, -1, 8);
  scene.setAmbientIntensity(object, 0.25f);
  scene.setVisibility(object, true);
  scene.setVisibility(object, false);
  scene.setRandomColors(object);
  EXPECT_EQ((std::vector<float>{4, 5, 6, 7}), *scene.property<std::vector<float>>(object, "Rotation"));
  EXPECT_EQ((std::vector<float>{0, -1, 8}), *scene.property<std::vector<float>>(object, "Scale"));
  EXPECT_EQ(false, *scene.property<bool>(object, "Visibility"));
  EXPECT_EQ(5u, scene.table().record(object.second).properties.size())
      << "one entry per key; setRandomColors stores nothing";
}
