// The file a mesh with many sets, node ids and values per state comes out
// as, pinned stream by stream. The digests were taken from the plain build
// path (node ids converted anew for every set); a faster path must write
// the very same bytes. The global information holds the time and the
// machine, so it is left out.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "ModelFile.h"

using namespace roadtest;
using Kel::Dov::GroupObject;
using Kel::Dov::MeshObject;

namespace {

std::uint64_t Fnv1a(const std::vector<unsigned char>& bytes) {
  std::uint64_t hash = 14695981039346656037ull;
  for (unsigned char byte : bytes) hash = (hash ^ byte) * 1099511628211ull;
  return hash;
}

void WriteStatesModel(const std::string& path) {
  Scene_V1 scene;
  const Identifier root = makeObject(scene, GroupObject, "Model");
  const Identifier mesh = makeObject(scene, MeshObject, "Part");
  scene.addComponent(root, mesh);
  // A strip of 6 quads over 14 nodes.
  Floats nodes;
  for (int i = 0; i < 7; ++i)
    for (int j = 0; j < 2; ++j) nodes.insert(nodes.end(), {float(i), float(j), 0.25f * i * j});
  Words quads;
  for (std::uint32_t q = 0; q < 6; ++q) quads.insert(quads.end(), {2 * q, 2 * q + 2, 2 * q + 3, 2 * q + 1});
  Words ids;
  for (std::uint32_t n = 0; n < 14; ++n) ids.push_back(1000 + 3 * n);
  scene.setCoordinates(mesh, makeArray(scene, nodes, 3));
  scene.setConnectivity(mesh, makeArray(scene, quads, 4));
  scene.setNodeIndices(mesh, makeArray(scene, ids));
  const Identifier states = makeObject(scene, Kel::Dov::InstanceGroupObject, "State");
  for (int state = 0; state < 2; ++state) {
    Floats displacement, pressure;
    for (std::uint32_t n = 0; n < 14; ++n) {
      displacement.insert(displacement.end(), {0.1f * n * state, 0.0f, -0.5f * state});
      pressure.push_back(100.0f + n + 10.0f * state);
    }
    scene.setResult(mesh, states, state, "Displacement", Kel::Dov::VectorVariable,
                    makeArray(scene, displacement, 3));
    scene.setResult(mesh, states, state, "Pressure", Kel::Dov::ScalarVariable,
                    makeArray(scene, pressure));
  }
  const std::vector<Words> sets{{0, 1}, {2, 3}, {4, 5}};
  for (std::size_t s = 0; s < sets.size(); ++s)
    scene.addElementSet(mesh, makeSet(scene, ("Set " + std::to_string(s + 1)).c_str(), sets[s]));
  closeScene(scene, root, path);
}

}  // namespace

TEST(StreamIdentity, ManySetsWithNodeIdsAndStatesWriteThePinnedBytes) {
  const std::string path = freshPath();
  WriteStatesModel(path);
  const DovReader::Container container = DovReader::Container::Open(path);
  EXPECT_EQ(container.Verify(), std::vector<std::string>());
  const std::vector<std::pair<std::string, std::uint64_t>> pinned{
      {"Heavy Data", 4724906910323944434ull}, {"Dov Tree", 13992655528379010416ull},
      {"Light Data", 13167130539515896226ull}, {"Attributes", 17508772710662040165ull},
      {"Resources", 7492029708367533046ull}};
  for (const auto& stream : pinned)
    EXPECT_EQ(Fnv1a(container.ReadStream(stream.first)), stream.second) << stream.first;
}
