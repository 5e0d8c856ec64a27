// A small host: builds a scene with one triangle mesh, two states of results
// and an element set, and shows what a bad identifier does.

#include <DovWriter/DovWriter.h>

#include <cstdint>
#include <cstdio>
#include <vector>

using namespace Kel::Dov;

int main() {
  Scene_V1 scene("hello scene");
  scene.setApplicationInfo("hello_scene", 1.5);

  const Identifier root = scene.createObject(GroupObject);
  const Identifier mesh = scene.createObject(MeshObject);
  const Identifier coordinates = scene.createObject(ArrayObject);
  const Identifier connectivity = scene.createObject(ArrayObject);
  const Identifier states = scene.createObject(InstanceGroupObject);
  const Identifier leftHalf = scene.createObject(ElementSetObject);
  scene.setName(root, "Model");
  scene.setTitle(mesh, "Plate");
  scene.setProperty(mesh, "Material", "steel");
  scene.setProperty(mesh, "Thickness", 2.5f);

  // Four nodes in the plane and two triangles.
  const std::vector<float> nodes = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
  const std::vector<unsigned int> cells = {0, 1, 2, 0, 2, 3};
  scene.setDimension(coordinates, 3);
  scene.setValues(coordinates, nodes.data(), nodes.size() / 3);
  scene.setDimension(connectivity, 3);
  scene.setValues(connectivity, cells.data(), cells.size() / 3);
  scene.setCoordinates(mesh, coordinates);
  scene.setConnectivity(mesh, connectivity);

  // A displacement per node for two load steps, recorded per instance value.
  for (std::int64_t step = 1; step <= 2; ++step) {
    const Identifier displacement = scene.createObject(ArrayObject);
    std::vector<float> values(nodes.size());
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = 0.01f * step * nodes[i];
    scene.setResult(mesh, states, step, "Displacement", VectorVariable, displacement);
    scene.setValues(displacement, values.data(), values.size() / 3);
  }

  const std::vector<unsigned int> leftCells = {0};
  scene.setValues(leftHalf, leftCells.data(), leftCells.size());
  scene.setName(leftHalf, "Left");
  scene.setColor(leftHalf, DiffusiveColor, 0.8f, 0.2f, 0.2f, 1.0f);
  scene.addElementSet(mesh, states, std::int64_t(1), leftHalf);

  std::printf("components of %s: %llu\n", scene.getName(root),
              static_cast<unsigned long long>(scene.addComponent(root, mesh)));
  std::printf("%s is of type %d; its arrays are named %s and %s\n", scene.getName(mesh),
              static_cast<int>(scene.getType(mesh)), scene.getName(coordinates),
              scene.getName(connectivity));

  // An identifier from another scene is refused with code 8.
  Scene_V1 other;
  const Identifier foreign = other.createObject(MeshObject);
  try {
    scene.setName(foreign, "never");
    std::printf("unexpected: a foreign identifier was accepted\n");
    return 1;
  } catch (const Kel::Util::Exception& error) {
    std::printf("caught code %d (%s):\n%s", static_cast<int>(error.GetCode()),
                error.GetDescription(), error.what());
  }
  return 0;
}
