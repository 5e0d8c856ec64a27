#ifndef DOVINSPECT_EXPORT_H
#define DOVINSPECT_EXPORT_H

// Carries out an export plan: reads one file's worth of a piece at a time,
// writes its .vtu and, for a series, the .pvd collection last.

#include <functional>
#include <string>
#include <vector>

#include "ExportPlan.h"
#include "reader/Model.h"

namespace DovInspect {

struct ExportOptions {
  DovReader::CellRule rule = DovReader::CellRule::ByShape;
  bool series = false;  // a file per piece and step, and a .pvd
};

struct ExportReport {
  std::vector<std::string> written;   // file names, a collection last
  std::vector<std::string> warnings;  // data left out, with the reason
  std::vector<std::string> failures;  // files that could not be written
};

using ExportProgress = std::function<void(std::size_t done, std::size_t total)>;

// Writes into `directory`, which must exist. A file that fails is reported
// and left out of the collection; the others are still written.
ExportReport RunExport(DovReader::Model& model, const ExportPlan& plan,
                       const std::string& directory, const std::string& collectionName,
                       const ExportOptions& options, const ExportProgress& progress);

}  // namespace DovInspect

#endif
