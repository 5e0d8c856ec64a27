#include "ExportPlan.h"

#include <cstdio>
#include <map>

#include "ValueNames.h"

namespace DovInspect {

namespace {

using DovReader::kNoStep;
using DovReader::kNoVariable;

std::string FileName(std::size_t piece, const std::string& name, int step) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "%03zu_", piece);
  std::string file = prefix + SafeFileName(name);
  if (step != kNoStep) {
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, "_t%03d", step);
    file += suffix;
  }
  return file + ".vtu";
}

bool HasPoints(const DovReader::Model& model, const DovReader::ModelPiece& piece, int step) {
  for (std::uint32_t geometry : piece.geometries)
    if (model.Roles(geometry, step).coordinates != kNoVariable) return true;
  return false;
}

// One file holds every step only where VTK reads it back faithfully: the
// same points and cells at every step, and each result at every step (a
// result missing at a step would show the data of the step before).
bool FitsOneFile(const DovReader::Model& model, const DovReader::ModelPiece& piece) {
  if (model.GeometryVaries(piece)) return false;
  const int steps = static_cast<int>(model.Steps().values.size());
  std::map<std::string, int> present;
  for (int step = 0; step < steps; ++step)
    for (const DovReader::FieldInfo& field : model.Fields(piece, step)) ++present[field.name];
  for (const auto& entry : present)
    if (entry.second != steps) return false;
  return true;
}

}  // namespace

std::string SafeFileName(const std::string& text) {
  std::string result;
  for (char c : text) {
    bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                 c == '-' || c == '_' || c == '.';
    result += plain ? c : '_';
  }
  return result.empty() ? "unnamed" : result;
}

ExportPlan PlanExport(const DovReader::Model& model, bool series) {
  ExportPlan plan;
  const int steps = static_cast<int>(model.Steps().values.size());
  for (std::size_t p = 0; p < model.Pieces().size(); ++p) {
    const DovReader::ModelPiece& piece = model.Pieces()[p];
    std::vector<ExportFile> files;
    if (!piece.perValue) {
      files.push_back({p, kNoStep, false, FileName(p, piece.name, kNoStep)});
    } else if (series || !FitsOneFile(model, piece)) {
      for (int step = 0; step < steps; ++step)
        files.push_back({p, step, false, FileName(p, piece.name, step)});
    } else {
      files.push_back({p, kNoStep, true, FileName(p, piece.name, kNoStep)});
    }
    for (const ExportFile& file : files) {
      const int geometryStep = file.everyStep ? 0 : file.step;
      if (HasPoints(model, piece, geometryStep)) {
        plan.files.push_back(file);
        continue;
      }
      std::string at = file.step == kNoStep
                           ? ""
                           : " at value '" + Readable(model.Steps().values[file.step]) + "'";
      plan.notes.push_back("piece " + Readable(piece.path) + at + " has no coordinates and is left out");
    }
  }
  return plan;
}

}  // namespace DovInspect
