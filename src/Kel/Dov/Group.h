#ifndef DOVWRITER_KEL_DOV_GROUP_H
#define DOVWRITER_KEL_DOV_GROUP_H

#include <cstdint>
#include <string>

#include "Kel/Dov/AttributeMap.h"
#include "Kel/Dov/Node.h"

namespace KelDov {

class Group : public Node {
 public:
  Group(const std::string& name, const AttributeMap& attributes);
  std::string TypeName() const override { return "Group"; }
  std::string Version() const override { return "0.4"; }

  // Stores "visible" as a kind-0 word, 1 or 0.
  void SetVisible(bool visible);

  float translation[3] = {0.0f, 0.0f, 0.0f};
  float rotation[4] = {0.0f, 0.0f, 1.0f, 0.0f};
  float scale[3] = {1.0f, 1.0f, 1.0f};
  AttributeMap attributes;
  std::uint8_t rootFlag = 0;
};

// The stored form: 40 bytes of transformation to `lightStream`, the
// attributes to `attributeStream`, then the root flag to `lightStream`.
void WriteGroup(KelTmf::Index& index, const Group& group, const std::string& lightStream,
                const std::string& attributeStream);

}  // namespace KelDov

#endif
