#ifndef DOVWRITER_KEL_DOV_MATERIAL_H
#define DOVWRITER_KEL_DOV_MATERIAL_H

#include <cstdint>
#include <string>

#include "Kel/Dov/Node.h"

namespace KelTmf {
class Index;
}

namespace KelDov {

// Colours are red, green, blue, alpha.
class Material : public Node {
 public:
  Material();
  std::string TypeName() const override { return "Material"; }
  std::string Version() const override { return "0.3"; }
  virtual std::string RecordVersion() const { return "0.3"; }

  // Three draws of the thread's generator, each divided by 32767 in
  // single precision, become red, green and blue; alpha becomes 1.
  void SetRandomDiffuse();

  float diffuse[4];
  float specular[4];
  float emissive[4];
  float ambient[4];
  std::uint32_t extraWord = 0;
  float ambientFactor = 0.2f;
  std::uint8_t visible = 1;
};

// The framed record of a material, whole in one block of `stream`.
void PutMaterial(KelTmf::Index& index, const std::string& stream, const Material& material);

}  // namespace KelDov

#endif
