#include "ExportPlan.h"

#include <cstdio>
#include <map>

namespace DovInspect {

namespace {

// The variables of one geometry at one instance value (or without one),
// by the data's own name; the later of two equal names wins.
using VariablesByName = std::map<std::string, int>;

struct GeometryParts {
  VariablesByName shared;           // names without a value
  std::vector<std::string> values;  // in order of first appearance
  std::map<std::string, VariablesByName> perValue;
};

GeometryParts SortVariables(const GeometryInfo& geometry) {
  GeometryParts parts;
  for (const VariableInfo& variable : geometry.variables) {
    ValueName name = SplitValueName(variable.name);
    int index = static_cast<int>(variable.index);
    if (!name.perValue) {
      parts.shared[name.base] = index;
      continue;
    }
    if (!parts.perValue.count(name.value)) parts.values.push_back(name.value);
    parts.perValue[name.value][name.base] = index;
  }
  return parts;
}

int Take(VariablesByName& variables, const char* name) {
  auto it = variables.find(name);
  if (it == variables.end()) return kNone;
  int index = it->second;
  variables.erase(it);
  return index;
}

bool HasValues(const GeometryInfo& geometry, int index) {
  return geometry.variables[static_cast<std::size_t>(index)].count > 0 &&
         geometry.variables[static_cast<std::size_t>(index)].dataType != 0;
}

// Merges shared and per-value variables, the per-value ones taking
// precedence, and assigns the mesh roles.
PiecePlan MakePiece(const GeometryInfo& geometry, VariablesByName variables) {
  PiecePlan piece;
  piece.coordinates = Take(variables, "Coordinates");
  piece.connectivity = Take(variables, "Connectivity");
  piece.polylength = Take(variables, "Polylength");
  piece.nodeIds = Take(variables, "Node Ids");
  for (const auto& entry : variables) {
    if (HasValues(geometry, entry.second)) piece.results.push_back(entry.second);
  }
  return piece;
}

std::string PieceFileName(std::size_t geometry, const std::string& name, int timeIndex) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "%03zu_", geometry);
  std::string file = prefix + SafeFileName(name);
  if (timeIndex != kNone) {
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, "_t%03d", timeIndex);
    file += suffix;
  }
  return file + ".vtu";
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

ExportPlan PlanExport(const std::vector<GeometryInfo>& geometries) {
  std::vector<GeometryParts> sorted;
  std::vector<std::string> allValues;
  for (const GeometryInfo& geometry : geometries) {
    sorted.push_back(SortVariables(geometry));
    for (const std::string& value : sorted.back().values) {
      bool known = false;
      for (const std::string& v : allValues) known = known || v == value;
      if (!known) allValues.push_back(value);
    }
  }
  ExportPlan plan;
  plan.axis = TimeAxis::FromValues(allValues);
  for (std::size_t g = 0; g < geometries.size(); ++g) {
    const GeometryParts& parts = sorted[g];
    std::vector<std::string> values = parts.values;
    if (values.empty()) values.push_back("");
    for (const std::string& value : values) {
      VariablesByName variables = parts.shared;
      auto own = parts.perValue.find(value);
      if (own != parts.perValue.end()) {
        // A per-value variable without data (one whose arrays were of an
        // element type the writer does not keep) leaves the shared one in place.
        for (const auto& entry : own->second) {
          if (HasValues(geometries[g], entry.second) || !variables.count(entry.first)) {
            variables[entry.first] = entry.second;
          }
        }
      }
      PiecePlan piece = MakePiece(geometries[g], variables);
      if (piece.coordinates == kNone) {
        plan.notes.push_back("geometry " + Readable(geometries[g].path) +
                             (parts.values.empty() ? "" : " at value '" + Readable(value) + "'") +
                             " has no coordinates and is left out");
        continue;
      }
      piece.geometry = g;
      piece.value = value;
      piece.timeIndex = parts.values.empty() ? kNone : plan.axis.IndexOf(value);
      piece.fileName = PieceFileName(g, geometries[g].name, piece.timeIndex);
      plan.pieces.push_back(piece);
    }
  }
  return plan;
}

}  // namespace DovInspect
