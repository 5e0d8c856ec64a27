#include "Kel/Dov/Material.h"

#include <cassert>

#include "Kel/Dov/FramedRecord.h"
#include "Kel/Tmf/Index.h"
#include "Platform/Platform.h"

namespace KelDov {

namespace {

const char* const RecordVersions[] = {"0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7"};
const std::uint32_t MaterialRecordSize = 84;  // for the version "0.3" we write

void SetColour(float (&colour)[4], float red, float green, float blue, float alpha) {
  colour[0] = red;
  colour[1] = green;
  colour[2] = blue;
  colour[3] = alpha;
}

void PutColour(KelTmf::Block& block, const float (&colour)[4]) {
  for (float component : colour) block.Put(component);
}

}  // namespace

bool RecordHasField(const std::string& version, const std::string& introducedIn) {
  for (const char* older : RecordVersions) {
    if (introducedIn == older) return true;
    if (version == older) return false;
  }
  return true;
}

Material::Material() : Node(std::string()) {
  SetColour(diffuse, 0.8f, 0.8f, 0.8f, 1.0f);
  SetColour(specular, 0.0f, 0.0f, 0.0f, 1.0f);
  // Nothing ever assigns the emissive alpha; it is stored, so it gets a
  // fixed, opaque value.
  SetColour(emissive, 0.0f, 0.0f, 0.0f, 1.0f);
  // Formed in single precision from the default diffuse colour.
  const float factor = 0.2f;
  SetColour(ambient, diffuse[0] * factor, diffuse[1] * factor, diffuse[2] * factor,
            diffuse[3] * factor);
}

void Material::SetRandomDiffuse() {
  // Three draws in order: red, green, blue.
  for (int i = 0; i < 3; ++i)
    diffuse[i] = static_cast<float>(Platform::Random()) / 32767.0f;
  diffuse[3] = 1.0f;
}

void PutMaterial(KelTmf::Index& index, const std::string& stream, const Material& material) {
  const std::string version = material.RecordVersion();
  index.PutRecord(stream, [&](KelTmf::Block& block) {
    const std::uint32_t size = PutFramedRecord(block, version, [&](KelTmf::Block& b) {
      PutColour(b, material.diffuse);
      PutColour(b, material.specular);
      PutColour(b, material.emissive);
      PutColour(b, material.ambient);
      b.Put(material.extraWord);
      if (RecordHasField(version, "0.2")) b.Put(material.ambientFactor);
      if (RecordHasField(version, "0.3")) b.Put(material.visible);
    });
    assert(version != "0.3" || size == MaterialRecordSize);
    (void)size;
    (void)MaterialRecordSize;
  });
}

}  // namespace KelDov
