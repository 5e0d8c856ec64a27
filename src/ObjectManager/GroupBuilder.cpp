// Group objects: the assembly levels of a scene. A component's
// transformation becomes a group node of its own between the group and the
// component, so the tree holds transformations as plain nodes.

#include <algorithm>

#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

namespace {

// Copies up to `count` floats of a recorded vector over the defaults.
void copyFloats(const std::vector<float>* source, float* target, std::size_t count) {
  if (source == nullptr) return;
  std::copy_n(source->begin(), std::min(count, source->size()), target);
}

}  // namespace

void ObjectManager::writeGroup(std::uint64_t index) {
  const bool isRoot = index == root;
  KelDov::Group* group = nullptr;
  if (isRoot) {
    // The root group lives in the root entry itself and keeps the host's
    // attributes as they were recorded.
    group = new KelDov::Group(objects[index].name, objects[index].attributes);
    GetCurrentNode().value = group;
  } else {
    AddGroup(objects[index].name, readFlag(index, "Visibility", true));
  }

  const LinkList components = readLinks(index, "Components");
  const LinkList transformations = readLinks(index, "Transformations");
  bool holdsMesh = false;
  for (const std::uint64_t component : components)
    if (objects[component].type == MeshObject) holdsMesh = true;
  const bool flagRoot = isRoot && components.size() >= 2 && holdsMesh;

  // Steps run last pushed first: each component in order, under its
  // transformation group if it has one, then the end of the group.
  thenBuild([this, group, flagRoot] {
    MoveToParent();
    if (flagRoot) group->rootFlag = 1;
  });
  for (std::size_t i = components.size(); i-- > 0;) {
    const std::uint64_t transformation = linkAt(transformations, i);
    const std::uint64_t component = components[i];
    if (transformation != NoObject) thenBuild([this] { MoveToParent(); });
    thenBuild([this, component] { writeObject(component); });
    if (transformation != NoObject)
      thenBuild([this, transformation] { addTransformationGroup(transformation); });
  }
}

void ObjectManager::addTransformationGroup(std::uint64_t transformation) {
  std::unique_ptr<KelDov::Group> group(
      new KelDov::Group(objects[transformation].name, KelDov::AttributeMap()));
  // Without a recorded rotation a transformation reads 1, 0, 0, 0, which
  // differs from the constructor's 0, 0, 1, 0 on purpose: both reach files.
  const float identityRotation[4] = {1.0f, 0.0f, 0.0f, 0.0f};
  std::copy_n(identityRotation, 4, group->rotation);
  copyFloats(readProperty<std::vector<float>>(transformation, "Translation", {0.0f, 0.0f, 0.0f}),
             group->translation, 3);
  copyFloats(readProperty<std::vector<float>>(transformation, "Rotation",
                                              {1.0f, 0.0f, 0.0f, 0.0f}),
             group->rotation, 4);
  copyFloats(readProperty<std::vector<float>>(transformation, "Scale", {1.0f, 1.0f, 1.0f}),
             group->scale, 3);
  addChildNode(std::move(group));
}

}  // namespace Dov
}  // namespace Kel
