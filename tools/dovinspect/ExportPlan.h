#ifndef DOVINSPECT_EXPORTPLAN_H
#define DOVINSPECT_EXPORTPLAN_H

// Which VTK files an export makes: one per piece of the model, holding all
// of its time steps, unless its points or cells change from one instance
// value to the next, a result is missing at some value, or a series is
// asked for; then one file per piece and step. The plan only looks at names and types; values are read later, one
// file at a time.

#include <string>
#include <vector>

#include "reader/Model.h"

namespace DovInspect {

struct ExportFile {
  std::size_t piece = 0;             // position in the model's pieces, the part of a .pvd
  int step = DovReader::kNoStep;     // the one step the file holds
  bool everyStep = false;            // the file holds all steps of the model
  std::string fileName;
};

struct ExportPlan {
  std::vector<ExportFile> files;
  std::vector<std::string> notes;  // pieces that cannot be exported, and why
};

ExportPlan PlanExport(const DovReader::Model& model, bool series);

// A name made of letters, digits, '-', '_' and '.', never empty.
std::string SafeFileName(const std::string& text);

}  // namespace DovInspect

#endif
