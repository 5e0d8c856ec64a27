#include "Kel/Dov/Geometry.h"

#include "Kel/Tmf/TmFile.h"
#include "Kel/Util/Raise.h"

namespace KelDov {

namespace {

bool UsesLinkedLayout(const std::string& version) {
  return version == "0.5" || version == "0.6" || version == "0.7";
}

// The type in the low 24 bits, the array's data type in the high 8.
std::uint32_t TypeWord(const Geometry::Variable& variable) {
  return static_cast<std::uint32_t>(variable.type) | (variable.array.dataType << 24);
}

// Byte size, width, and the array's stored flags and floats, in that order.
void PutArrayDescription(KelTmf::Index& index, const std::string& stream,
                         const NumericArray& array) {
  index.Put(stream, static_cast<std::uint32_t>(array.byteSize));
  index.Put(stream, array.GetWidth());
  index.Put(stream, array.firstFlag);
  index.Put(stream, array.secondFlag);
  index.Put(stream, array.firstFloat);
  index.Put(stream, array.secondFloat);
  index.Put(stream, array.thirdFlag);
}

}  // namespace

std::uint64_t Geometry::GetOrAddVariableIndex(const std::string& name) {
  for (std::size_t i = 0; i < variables.size(); ++i)
    if (variables[i].name == name) return i;
  Variable variable;
  variable.name = name;
  variables.push_back(variable);
  return variables.size() - 1;
}

void Geometry::WriteTm(KelTmf::TmFile& file, const std::string& lightStream,
                       const std::string& heavyStream, const std::string& attributeStream) const {
  const std::string version = Version();
  if (!UsesLinkedLayout(version)) {
    WriteTm_l05(file, lightStream, attributeStream);
    return;
  }
  KelTmf::Index& index = file.index;
  index.Put(lightStream, static_cast<std::uint32_t>(variables.size()));
  for (const Variable& variable : variables) {
    index.Put(lightStream, variable.name);
    index.Put(lightStream, TypeWord(variable));
    index.Put(lightStream, variable.linked);
    if (variable.linked) {
      index.Put(lightStream, variable.linkTarget.entryId);
      index.Put(lightStream, variable.linkTarget.variableIndex);
    } else {
      PutArrayDescription(index, lightStream, variable.array);
      auto offset = datasetOffsets.find(variable.name);
      if (offset == datasetOffsets.end()) KEL_RAISE_CODE(5, "KelDov::Geometry::WriteTm");
      if (version == "0.7") {
        index.Put(lightStream, offset->second);
      } else {
        index.Put(lightStream, static_cast<std::uint32_t>(offset->second));
      }
      if (version == "0.5") {
        // This layout carries the values themselves, so they must still be
        // in hand; the builders release theirs long before saving.
        if (variable.array.data == nullptr && variable.array.byteSize != 0)
          KEL_RAISE(3, "Values of the variable are no longer in memory",
                    "KelDov::Geometry::WriteTm");
        index.Put(heavyStream, variable.array.data, variable.array.byteSize);
      }
    }
    index.Put(lightStream, variable.vibration);
    WriteAttributeMap(index, attributeStream, variable.attributes);
  }
}

void Geometry::WriteTm_l05(KelTmf::TmFile& file, const std::string& lightStream,
                           const std::string& attributeStream) const {
  KelTmf::Index& index = file.index;
  index.Put(lightStream, static_cast<std::uint32_t>(variables.size()));
  for (const Variable& variable : variables) {
    index.Put(lightStream, variable.name);
    index.Put(lightStream, static_cast<std::uint32_t>(variable.type));
    auto offset = datasetOffsets.find(variable.name);
    if (offset == datasetOffsets.end()) KEL_RAISE_CODE(5, "KelDov::Geometry::WriteTm_l05");
    PutArrayDescription(index, lightStream, variable.array);
    index.Put(lightStream, variable.vibration);
    WriteAttributeMap(index, attributeStream, variable.attributes);
    index.Put(lightStream, offset->second);
  }
}

}  // namespace KelDov
