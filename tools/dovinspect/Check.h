#ifndef DOVINSPECT_CHECK_H
#define DOVINSPECT_CHECK_H

// What a model file means, beyond its structure: node indices within the
// coordinates, cells within the connectivity, results that fit the points
// or the cells, node ids that are whole numbers, coordinates and results
// that are finite, geometries that hold something. Each dataset is read
// once, in the order of the file, however many variables link to it.

#include <cstdint>
#include <string>
#include <vector>

#include "Model.h"

namespace DovInspect {

enum class Severity { Warning, Error };

struct Finding {
  Severity severity = Severity::Warning;
  std::uint32_t entry = 0;  // the geometry's tree entry
  std::string geometry;     // its path
  std::string variable;     // empty where the finding is about the geometry
  std::int64_t variableIndex = -1;
  std::int64_t index = -1;  // first value, node or cell concerned, or -1
  std::uint64_t count = 0;  // how many values share the finding, or 0
  std::string message;
};

// The findings, by geometry and variable in the order of the file.
std::vector<Finding> CheckModel(const std::vector<GeometryInfo>& geometries, ValueSource& values);

}  // namespace DovInspect

#endif
