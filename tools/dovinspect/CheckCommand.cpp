// check: what the values of a model file mean, beyond its structure.

#include "Check.h"
#include "Commands.h"
#include "Json.h"
#include "Reading.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

const char* SeverityName(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

void PrintText(const std::string& path, const std::vector<Finding>& findings, std::size_t errors,
               std::ostream& out) {
  for (const Finding& finding : findings) {
    out << path << ": " << SeverityName(finding.severity) << ": "
        << (finding.geometry.empty() ? "(no name)" : Readable(finding.geometry)) << " (#"
        << finding.entry << ")";
    if (!finding.variable.empty()) out << " " << Readable(finding.variable);
    if (finding.index >= 0) out << "[" << finding.index << "]";
    out << ": " << finding.message << "\n";
  }
  if (findings.empty()) {
    out << path << ": no findings\n";
  } else {
    out << path << ": " << Counted(errors, "error") << ", "
        << Counted(findings.size() - errors, "warning") << "\n";
  }
}

void PrintJson(const std::string& path, const std::vector<Finding>& findings, std::size_t errors,
               std::ostream& out) {
  JsonWriter json(out);
  json.BeginObject().Field("file", path).Field("errors", errors);
  json.Field("warnings", findings.size() - errors).Key("findings").BeginArray();
  for (const Finding& finding : findings) {
    json.BeginObject().Field("severity", SeverityName(finding.severity));
    json.Field("entry", finding.entry).Field("geometry", finding.geometry).Key("variable");
    finding.variable.empty() ? json.Null() : json.String(finding.variable);
    json.Key("index");
    finding.index < 0 ? json.Null() : json.Integer(finding.index);
    json.Field("count", finding.count).Field("message", finding.message).EndObject();
  }
  json.EndArray().EndObject().Finish();
}

int RunCheck(const CommandLine& line, std::ostream& out, std::ostream&) {
  const std::string& path = line.positional[0];
  ModelFile model(path);
  const std::vector<Finding> findings = CheckModel(model.Geometries(), model);
  std::size_t errors = 0;
  for (const Finding& finding : findings) errors += finding.severity == Severity::Error;
  if (line.Has("--json"))
    PrintJson(path, findings, errors, out);
  else
    PrintText(path, findings, errors, out);
  if (errors > 0) return kExitFailure;
  return findings.empty() ? kExitOk : kExitWarnings;
}

}  // namespace

const Command& CheckCommand() {
  static const Command command{
      "check",
      "Check what the values mean: indices, cells, results, ids, numbers.",
      "FILE [--json]",
      "Reads every dataset once, in the order of the file, and reports one line\n"
      "per finding: 'FILE: error|warning: GEOMETRY (#ID) VARIABLE[INDEX]: what',\n"
      "where INDEX is the first value concerned; then a line with the totals.\n\n"
      "Errors: node indices beyond the coordinates; cells that run past the\n"
      "connectivity (the polylength needs more node indices than it holds);\n"
      "coordinates that are not finite; node ids that are not whole numbers.\n"
      "Warnings: results whose tuple count matches neither the points nor the\n"
      "cells; results that are not finite; node ids that do not match the points\n"
      "or lie above 2^24; connectivity that no cell uses; empty geometries.\n"
      "Data given per instance value is checked against the mesh at that value.\n"
      "'verify' checks the structure of the file.\n\n"
      "Exit status: 0 no findings, 1 errors, 3 warnings only.\n\n"
      "Options:\n" DOVINSPECT_JSON_HELP,
      {kJsonOption},
      1,
      1,
      RunCheck};
  return command;
}

}  // namespace DovInspect
