#ifndef DOVWRITER_KEL_DOV_GEOMETRY_H
#define DOVWRITER_KEL_DOV_GEOMETRY_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Kel/Dov/AttributeMap.h"
#include "Kel/Dov/Node.h"
#include "Kel/Dov/NumericArray.h"

namespace KelTmf {
class TmFile;
}

namespace KelDov {

// A variable anywhere in the tree: the tree entry of its geometry and its
// index there.
struct VariableRef {
  std::uint32_t entryId = 0;
  std::uint32_t variableIndex = 0;
};

class Geometry : public Node {
 public:
  // What the numbers of a variable are.
  enum VariableType : std::uint32_t {
    Coordinates = 1,
    PointConnectivity = 4,
    LineConnectivity = 5,
    CellConnectivity = 6,
    PolygonLengths = 9,
    ScalarValues = 12,
    VectorValues = 13,
    SixComponentValuesA = 14,
    SixComponentValuesB = 15,
    ElementIds = 16
  };

  struct Variable {
    std::string name;
    VariableType type = ScalarValues;
    std::uint8_t vibration = 0;
    AttributeMap attributes;
    NumericArray array;
    std::uint8_t linked = 0;
    VariableRef linkTarget;
  };

  explicit Geometry(const std::string& name) : Node(name) {}
  std::string TypeName() const override { return "Geometry"; }
  std::string Version() const override { return "0.7"; }

  std::uint64_t GetOrAddVariableIndex(const std::string& name);

  // Variable records to `lightStream`, their attributes to
  // `attributeStream`; `heavyStream` only for the oldest layouts.
  void WriteTm(KelTmf::TmFile& file, const std::string& lightStream,
               const std::string& heavyStream, const std::string& attributeStream) const;
  void WriteTm_l05(KelTmf::TmFile& file, const std::string& lightStream,
                   const std::string& attributeStream) const;

  std::vector<Variable> variables;
  std::map<std::string, std::uint64_t> datasetOffsets;
};

}  // namespace KelDov

#endif
