#ifndef DOVINSPECT_EXPORTPLAN_H
#define DOVINSPECT_EXPORTPLAN_H

// Which VTK files an export makes and what goes into each: one piece per
// geometry, or per geometry and instance value when the geometry has data
// per instance value. The plan only looks at names and types; reading the
// values comes later, one piece at a time.

#include <string>
#include <vector>

#include "Model.h"
#include "ValueNames.h"

namespace DovInspect {

const int kNone = -1;

struct PiecePlan {
  std::size_t geometry = 0;  // position in the geometry list, the part of the .pvd
  std::string value;         // the instance value, empty for a geometry without values
  int timeIndex = kNone;     // position of `value` on the time axis
  std::string fileName;
  // Variable indices in the geometry; kNone where absent.
  int coordinates = kNone;
  int connectivity = kNone;
  int polylength = kNone;
  int nodeIds = kNone;
  std::vector<int> results;  // everything else that has values
};

struct ExportPlan {
  TimeAxis axis;  // all instance values of the model
  std::vector<PiecePlan> pieces;
  std::vector<std::string> notes;  // geometries that cannot be exported, and why
};

ExportPlan PlanExport(const std::vector<GeometryInfo>& geometries);

// A name made of letters, digits, '-', '_' and '.', never empty.
std::string SafeFileName(const std::string& text);

}  // namespace DovInspect

#endif
