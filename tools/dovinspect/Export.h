#ifndef DOVINSPECT_EXPORT_H
#define DOVINSPECT_EXPORT_H

// Carries out an export plan: reads the values of one piece at a time,
// writes its .vtu, and finally the .pvd collection.

#include <functional>
#include <string>
#include <vector>

#include "CellTypes.h"
#include "ExportPlan.h"
#include "Model.h"
#include "VtkXml.h"

namespace DovInspect {

struct ExportOptions {
  VtkEncoding encoding = VtkEncoding::Base64;
  CellStyle style = CellStyle::Surface;
};

struct ExportReport {
  std::vector<std::string> written;   // file names, the collection last
  std::vector<std::string> warnings;  // data left out, with the reason
  std::vector<std::string> failures;  // pieces that could not be written
};

using ExportProgress = std::function<void(std::size_t done, std::size_t total)>;

// Writes into `directory`, which must exist. A piece that fails is reported
// and left out of the collection; the others are still written.
ExportReport RunExport(const std::vector<GeometryInfo>& geometries, const ExportPlan& plan,
                       ValueSource& source, const std::string& directory,
                       const std::string& collectionName, const ExportOptions& options,
                       const ExportProgress& progress);

}  // namespace DovInspect

#endif
