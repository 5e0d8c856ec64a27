// Arrays: how many elements setValues reads, and of which type it keeps them.

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "SceneTestSupport.h"

using namespace Kel::Dov;

TEST(Arrays, CountIsTuplesOfTheDimensionInForce) {
  InspectableScene scene;
  const Identifier array = scene.createObject(ArrayObject);
  const std::vector<float> numbers = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

  scene.setValues(array, numbers.data(), 5);
  EXPECT_EQ(std::vector<float>(numbers.begin(), numbers.begin() + 5), floats(scene, array, "Array"));
  ASSERT_NE(nullptr, scene.property<unsigned char>(array, "Dimension"));
  EXPECT_EQ(1, *scene.property<unsigned char>(array, "Dimension"));
  scene.setDimension(array, 3);
  EXPECT_EQ(5u, floats(scene, array, "Array").size()) << "a later dimension does not reshape";
  scene.setValues(array, numbers.data(), 5);
  EXPECT_EQ(numbers, floats(scene, array, "Array"));
  scene.setDimension(array, 0);
  scene.setValues(array, numbers.data(), 5);
  EXPECT_TRUE(floats(scene, array, "Array").empty());
  // A null pointer is fine when nothing is to be read, refused otherwise;
  // a refused or impossible size leaves the array alone.
  scene.setValues(array, static_cast<const float*>(nullptr), 5);
  scene.setDimension(array, 1);
  scene.setValues(array, numbers.data(), 1);
  ExpectCode(16, [&] { scene.setValues(array, static_cast<const float*>(nullptr), 2); });
  EXPECT_THROW(scene.setValues(array, numbers.data(), ~0ull / 2), std::length_error);
  EXPECT_EQ(std::vector<float>{1.0f}, floats(scene, array, "Array"));
}

TEST(Arrays, CountTimesDimensionThatWrapsIsTooLongForEveryWayIn) {
  InspectableScene scene;
  Scene_V2 lending;
  const Identifier array = scene.createObject(ArrayObject);
  const std::vector<double> numbers = {1, 2, 3, 4};
  scene.setDimension(array, 2);
  scene.setValues(array, numbers.data(), 2);
  const std::uint64_t wraps = (1ull << 63) + 1;  // x 2 is 2 modulo 2^64
  EXPECT_THROW(scene.setValues(array, numbers.data(), wraps), std::length_error);
  const Identifier lent = lending.createObject(ArrayObject);
  lending.setDimension(lent, 2);
  EXPECT_THROW(lending.lendValues(lent, numbers.data(), wraps), std::length_error);
  scene.setDimension(array, 255);
  EXPECT_THROW(scene.setValues(array, numbers.data(), 0xFEFEFEFEFEFEFEFFull), std::length_error)
      << "x 255 is 1 modulo 2^64";
  EXPECT_EQ(scene.property<std::vector<double>>(array, "Array")->size(), 4u);
}

TEST(Arrays, EachElementTypeKeepsItsOwnVectorType) {
  InspectableScene scene;
  const Identifier array = scene.createObject(ArrayObject);
  const unsigned char bytes[] = {1, 0xff};
  scene.setValues(array, reinterpret_cast<const signed char*>(bytes), 2);
  ASSERT_NE(nullptr, scene.property<std::vector<signed char>>(array, "Array"));
  EXPECT_EQ(-1, scene.property<std::vector<signed char>>(array, "Array")->at(1));
  EXPECT_EQ(nullptr, scene.property<std::vector<unsigned char>>(array, "Array"));
  const int ints[] = {-1, 2};
  scene.setValues(array, ints, 2);
  EXPECT_EQ(nullptr, scene.property<std::vector<unsigned int>>(array, "Array"));
  EXPECT_EQ((std::vector<int>{-1, 2}), *scene.property<std::vector<int>>(array, "Array"));
  const double doubles[] = {0.25};
  scene.setValues(array, doubles, 1);
  EXPECT_EQ(nullptr, scene.property<std::vector<float>>(array, "Array"));

  // Both spellings of a signed 64-bit number give one stored type.
  const std::int64_t fixed[] = {-3, 1ll << 40};
  const long long plain[] = {-3, 1ll << 40};
  for (int spelling = 0; spelling < 2; ++spelling) {
    spelling == 0 ? scene.setValues(array, fixed, 2) : scene.setValues(array, plain, 2);
    const auto* stored = scene.property<std::vector<long long>>(array, "Array");
    ASSERT_NE(nullptr, stored);
    EXPECT_EQ((std::vector<long long>{-3, 1ll << 40}), *stored);
  }
}
