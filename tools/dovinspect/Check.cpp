#include "Check.h"

#include <Kel/Util/Coding.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>

#include "ValueNames.h"

namespace DovInspect {

namespace {

using Kel::Util::BitsToFloat;

enum class Role { Coordinates, Connectivity, Polylength, NodeIds, Result, Other };

Role RoleOf(const VariableInfo& variable) {
  switch (variable.type) {
    case 1:
      return Role::Coordinates;
    case 4:
    case 5:
    case 6:
      return Role::Connectivity;
    case 9:
      return Role::Polylength;
    case 12:
      return SplitValueName(variable.name).base == "Node Ids" ? Role::NodeIds : Role::Result;
    case 13:
    case 14:
    case 15:
    case 16:
      return Role::Result;
    default:
      return Role::Other;
  }
}

// The mesh a variable belongs to at its instance value: data given for
// that value where there is some, the geometry's own otherwise.
struct MeshSizes {
  std::optional<std::uint64_t> points, cells, connectivity;
};

// One variable to check against the dataset that holds its values. Findings
// about the values alone go with the first variable of a dataset only.
struct Use {
  const GeometryInfo* geometry;
  const VariableInfo* variable;
  Role role;
  MeshSizes mesh;
  bool first;
};

struct Dataset {
  std::uint32_t entry = 0;
  std::size_t index = 0;
  std::vector<Use> uses;
};

// How many values meet a condition, and the first of them.
struct Tally {
  std::uint64_t count = 0, first = 0;
  std::uint32_t firstWord = 0;
  void Add(std::uint64_t at, std::uint32_t word) {
    if (count++ == 0) {
      first = at;
      firstWord = word;
    }
  }
};

std::string FloatText(std::uint32_t word) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", BitsToFloat(word));
  return text;
}

class Checker {
 public:
  explicit Checker(std::vector<Finding>& findings) : findings_(findings) {}

  void Check(const Use& use, const std::vector<std::uint32_t>& words) {
    use_ = &use;
    switch (use.role) {
      case Role::Coordinates:
        return Coordinates(words);
      case Role::Connectivity:
        return Connectivity(words);
      case Role::Polylength:
        return Polylength(words);
      case Role::NodeIds:
        return NodeIds(words);
      case Role::Result:
        return Result(words);
      case Role::Other:
        return;
    }
  }

 private:
  void Report(Severity severity, const Tally& tally, const std::string& message) {
    Finding finding;
    finding.severity = severity;
    finding.entry = use_->geometry->entryId;
    finding.geometry = use_->geometry->path;
    finding.variable = use_->variable->name;
    finding.variableIndex = static_cast<std::int64_t>(use_->variable->index);
    finding.index = tally.count ? static_cast<std::int64_t>(tally.first) : -1;
    finding.count = tally.count;
    finding.message = message;
    findings_.push_back(finding);
  }

  template <class Condition>
  static Tally Count(const std::vector<std::uint32_t>& words, Condition condition) {
    Tally tally;
    for (std::size_t i = 0; i < words.size(); ++i) {
      if (condition(words[i])) tally.Add(i, words[i]);
    }
    return tally;
  }

  static bool Finite(std::uint32_t word) { return std::isfinite(BitsToFloat(word)); }

  void Coordinates(const std::vector<std::uint32_t>& words) {
    if (!use_->first) return;
    if (words.size() % 3 != 0) {
      Report(
          Severity::Error, {},
          "value count " + std::to_string(words.size()) + " is no whole number of nodes of three");
    }
    Tally bad = Count(words, [](std::uint32_t w) { return !Finite(w); });
    if (bad.count) {
      Report(Severity::Error, bad,
             "coordinates that are not finite: " + std::to_string(bad.count) + " (first: node " +
                 std::to_string(bad.first / 3) + ", " + FloatText(bad.firstWord) + ")");
    }
  }

  void Connectivity(const std::vector<std::uint32_t>& words) {
    if (!use_->mesh.points) return;
    const std::uint64_t points = *use_->mesh.points;
    Tally beyond = Count(words, [points](std::uint32_t w) { return w >= points; });
    if (beyond.count) {
      Report(Severity::Error, beyond,
             "node indices beyond the " + std::to_string(points) +
                 " points: " + std::to_string(beyond.count) +
                 " (first: " + std::to_string(beyond.firstWord) + ")");
    }
  }

  void Polylength(const std::vector<std::uint32_t>& words) {
    if (!use_->mesh.connectivity) return;
    const std::uint64_t held = *use_->mesh.connectivity;
    std::uint64_t needed = 0;
    Tally past;
    for (std::size_t cell = 0; cell < words.size(); ++cell) {
      needed += words[cell];
      if (needed > held) past.Add(cell, words[cell]);
    }
    if (needed > held) {
      Report(Severity::Error, past,
             "cells that run past the connectivity: " + std::to_string(past.count) +
                 " (the cells need " + std::to_string(needed) + " node indices, it holds " +
                 std::to_string(held) + ")");
    } else if (needed < held) {
      Report(Severity::Warning, {},
             "the cells use " + std::to_string(needed) + " of the " + std::to_string(held) +
                 " node indices of the connectivity");
    }
  }

  void NodeIds(const std::vector<std::uint32_t>& words) {
    if (use_->mesh.points && words.size() != *use_->mesh.points) {
      Report(Severity::Warning, {},
             "node id count " + std::to_string(words.size()) + " is not the point count " +
                 std::to_string(*use_->mesh.points));
    }
    if (!use_->first) return;
    Tally broken = Count(words, [](std::uint32_t w) {
      const float id = BitsToFloat(w);
      return !std::isfinite(id) || id != std::floor(id);
    });
    if (broken.count) {
      Report(Severity::Error, broken,
             "node ids that are not whole numbers: " + std::to_string(broken.count) +
                 " (first: " + FloatText(broken.firstWord) + ")");
    }
    Tally high = Count(words, [](std::uint32_t w) { return BitsToFloat(w) > 16777216.0f; });
    if (high.count) {
      Report(Severity::Warning, high,
             "node ids above 16777216, where a 32-bit float does not hold every whole "
             "number, so that they may have been rounded: " +
                 std::to_string(high.count) + " (first: " + FloatText(high.firstWord) + ")");
    }
  }

  void Result(const std::vector<std::uint32_t>& words) {
    const MeshSizes& mesh = use_->mesh;
    const std::uint64_t width = use_->variable->width ? use_->variable->width : 1;
    const std::uint64_t tuples = words.size() / width;
    if (mesh.points && tuples != *mesh.points && (!mesh.cells || tuples != *mesh.cells)) {
      Report(Severity::Warning, {},
             "tuple count " + std::to_string(tuples) + " matches neither the point count " +
                 std::to_string(*mesh.points) + " nor the cell count " +
                 std::to_string(mesh.cells.value_or(0)));
    }
    if (!use_->first || use_->variable->dataType != kFloatData) return;
    Tally bad = Count(words, [](std::uint32_t w) { return !Finite(w); });
    if (bad.count) {
      Report(Severity::Warning, bad,
             "values that are not finite: " + std::to_string(bad.count) +
                 " (first: " + FloatText(bad.firstWord) + ")");
    }
  }

  std::vector<Finding>& findings_;
  const Use* use_ = nullptr;
};

// The variables of each role by instance value ("" for the geometry's own).
using RoleTable = std::map<std::string, std::map<Role, const VariableInfo*>>;

std::string StateOf(const VariableInfo& variable) {
  const ValueName name = SplitValueName(variable.name);
  return name.perValue ? name.group + kValueSeparator + name.value : "";
}

RoleTable TabulateRoles(const GeometryInfo& geometry) {
  RoleTable table;
  for (const VariableInfo& variable : geometry.variables) {
    table[StateOf(variable)].emplace(RoleOf(variable), &variable);
  }
  return table;
}

std::optional<std::uint64_t> SizeOf(const RoleTable& table, const std::string& state, Role role,
                                    std::uint64_t perTuple) {
  for (const std::string& key : {state, std::string()}) {
    auto found = table.find(key);
    if (found == table.end()) continue;
    auto variable = found->second.find(role);
    if (variable != found->second.end()) return variable->second->count / perTuple;
  }
  return std::nullopt;
}

MeshSizes SizesAt(const RoleTable& table, const std::string& state) {
  return {SizeOf(table, state, Role::Coordinates, 3), SizeOf(table, state, Role::Polylength, 1),
          SizeOf(table, state, Role::Connectivity, 1)};
}

void CheckEmpty(const GeometryInfo& geometry, std::vector<Finding>& findings) {
  bool coordinates = false, points = false;
  for (const VariableInfo& variable : geometry.variables) {
    if (RoleOf(variable) != Role::Coordinates) continue;
    coordinates = true;
    points = points || variable.count >= 3;
  }
  if (points) return;
  Finding finding;
  finding.entry = geometry.entryId;
  finding.geometry = geometry.path;
  finding.message = geometry.variables.empty() ? "empty geometry: no variables"
                    : coordinates              ? "empty geometry: no points"
                                               : "empty geometry: no coordinates";
  findings.push_back(finding);
}

// Every variable with values, under the offset of the dataset that holds
// them, so that the datasets can be read in the order of the file.
std::map<std::uint64_t, Dataset> PlanReads(const std::vector<GeometryInfo>& geometries) {
  std::map<std::uint64_t, Dataset> datasets;
  for (const GeometryInfo& geometry : geometries) {
    const RoleTable table = TabulateRoles(geometry);
    for (const VariableInfo& variable : geometry.variables) {
      const Role role = RoleOf(variable);
      if (role == Role::Other || variable.count == 0) continue;
      auto inserted =
          datasets.emplace(variable.offset, Dataset{geometry.entryId, variable.index, {}});
      Dataset& dataset = inserted.first->second;
      dataset.uses.push_back(
          {&geometry, &variable, role, SizesAt(table, StateOf(variable)), inserted.second});
    }
  }
  return datasets;
}

}  // namespace

std::vector<Finding> CheckModel(const std::vector<GeometryInfo>& geometries, ValueSource& values) {
  std::vector<Finding> findings;
  for (const GeometryInfo& geometry : geometries) CheckEmpty(geometry, findings);
  Checker checker(findings);
  for (const auto& entry : PlanReads(geometries)) {
    const Dataset& dataset = entry.second;
    const std::vector<std::uint32_t> words = values.Words(dataset.entry, dataset.index);
    for (const Use& use : dataset.uses) checker.Check(use, words);
  }
  std::map<std::uint32_t, std::size_t> position;
  for (const GeometryInfo& geometry : geometries)
    position.emplace(geometry.entryId, position.size());
  std::stable_sort(findings.begin(), findings.end(), [&](const Finding& a, const Finding& b) {
    return std::make_pair(position[a.entry], a.variableIndex) <
           std::make_pair(position[b.entry], b.variableIndex);
  });
  return findings;
}

}  // namespace DovInspect
