// Shapes give what lies below them an appearance. Every new shape draws a
// random diffuse colour first, so the colours of a scene depend only on the
// order in which its shapes are built; recorded colours then replace it.

#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/ObjectManager.h"

#include "Kel/Util/Raise.h"

namespace Kel {
namespace Dov {

namespace {

// Red, green and blue of a recorded colour; its alpha reaches no node.
void copyRgb(const std::vector<float>* colour, float* target) {
  if (colour == nullptr || colour->size() < 3) return;
  for (int i = 0; i < 3; ++i) target[i] = (*colour)[i];
}

}  // namespace

void ObjectManager::writeShape(std::uint64_t index) {
  std::unique_ptr<KelDov::Shape> created(new KelDov::Shape(objects[index].name));
  created->material.SetRandomDiffuse();
  created->material.visible = readFlag(index, "Visibility", true) ? 1 : 0;
  KelDov::Shape* shape = addChildNode(std::move(created));

  // Steps run last pushed first: the component, its material, the end.
  thenBuild([this] { MoveToParent(); });
  const LinkList components = readLinks(index, "Components");
  if (components.empty()) return;
  const std::uint64_t component = components[0];
  const bool moreThanOne = components.size() > 1;
  thenBuild([this, shape, component, moreThanOne] {
    const std::uint64_t material = readLink(component, "Material");
    if (material != NoObject)
      copyRgb(readProperty<std::vector<float>>(material, "Diffusive", std::vector<float>()),
              shape->material.diffuse);
    if (moreThanOne) KEL_RAISE_CODE(13, "Kel::Dov::ObjectManager::writeShape");
  });
  // The component's node carries the shape's name; the table keeps the new
  // name, so later visits of the component carry it too.
  objects[component].name = objects[index].name;
  thenBuild([this, component] { writeObject(component); });
}

void ObjectManager::applySetColours(std::uint64_t set, KelDov::Material& material) {
  material.SetRandomDiffuse();
  const struct {
    const char* key;
    float* colour;
  } colours[] = {{"Diffusive", material.diffuse},
                 {"Specular", material.specular},
                 {"Emissive", material.emissive},
                 {"Ambient", material.ambient}};
  for (const auto& entry : colours) {
    if (hasProperty(set, entry.key))
      copyRgb(readProperty<std::vector<float>>(set, entry.key, std::vector<float>()), entry.colour);
  }
  // Last, so that an intensity wins over an explicit ambient colour and
  // scales the diffuse colour as it stands now.
  if (hasProperty(set, "Ambient Intensity")) {
    const float* intensity = readProperty<float>(set, "Ambient Intensity", 0.0f);
    if (intensity != nullptr)
      for (int i = 0; i < 4; ++i) material.ambient[i] = *intensity * material.diffuse[i];
  }
}

}  // namespace Dov
}  // namespace Kel
