#include "Kel/Dov/Group.h"

#include <cstddef>

#include "Kel/Tmf/Index.h"
#include "Kel/Util/Coding.h"

namespace KelDov {

Group::Group(const std::string& name, const AttributeMap& attributes)
    : Node(name), attributes(attributes) {}

void Group::SetVisible(bool visible) { attributes["visible"] = AttributeValue::Word(visible ? 1 : 0); }

namespace {

// raw(4 * count): the floats' bit patterns, least significant byte first.
template <std::size_t Count>
void PutFloats(KelTmf::Index& index, const std::string& stream, const float (&values)[Count]) {
  unsigned char bytes[4 * Count];
  for (std::size_t i = 0; i < Count; ++i)
    Kel::Util::EncodeFixed32(bytes + 4 * i, Kel::Util::FloatBits(values[i]));
  index.Put(stream, bytes, sizeof bytes);
}

}  // namespace

void WriteGroup(KelTmf::Index& index, const Group& group, const std::string& lightStream,
                const std::string& attributeStream) {
  PutFloats(index, lightStream, group.translation);
  PutFloats(index, lightStream, group.rotation);
  PutFloats(index, lightStream, group.scale);
  WriteAttributeMap(index, attributeStream, group.attributes);
  index.Put(lightStream, group.rootFlag);
}

}  // namespace KelDov
