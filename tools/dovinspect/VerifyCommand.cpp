// verify: a full structural check of the container and the scene streams.

#include <algorithm>
#include <exception>

#include "Commands.h"
#include "Failure.h"
#include "FileHead.h"
#include "Json.h"
#include "Reading.h"
#include "ValueNames.h"
#include "Verify.h"

namespace DovInspect {

namespace {

struct DatasetRange {
  std::uint64_t begin, end;
  const DovReader::TreeRecord* record;  // the owner, named only in a violation
  std::size_t variable;
};

std::string Owner(const ModelFile& model, const DovReader::TreeRecord& record, std::size_t i) {
  return "variable " + std::to_string(i) + " '" + Readable(record.variables[i].name) + "' of [" +
         std::to_string(record.id) + "] " + Readable(model.PathOf(record.id));
}

// Every dataset must lie inside "Heavy Data", hold whole 4-byte values, and
// share no byte with another dataset: a shared array is stored as a link.
void CheckDatasets(const ModelFile& model, std::vector<std::string>& violations) {
  const std::uint64_t heavy = model.Container().StreamLength("Heavy Data");
  std::vector<DatasetRange> ranges;
  for (const DovReader::TreeRecord& record : model.Scene().Records()) {
    for (std::size_t i = 0; i < record.variables.size(); ++i) {
      const DovReader::Variable& variable = record.variables[i];
      if (variable.linked || variable.byteSize == 0) continue;
      std::uint64_t end = variable.offset + variable.byteSize;
      if (variable.byteSize % 4 != 0) {
        violations.push_back(Owner(model, record, i) + ": byte size " +
                             std::to_string(variable.byteSize) + " is not a multiple of 4");
      }
      if (end > heavy || end < variable.offset) {
        violations.push_back(
            Owner(model, record, i) + ": dataset at " + std::to_string(variable.offset) + " of " +
            std::to_string(variable.byteSize) + " bytes lies beyond \"Heavy Data\" (" +
            std::to_string(heavy) + " bytes)");
        continue;
      }
      ranges.push_back({variable.offset, end, &record, i});
    }
  }
  std::sort(ranges.begin(), ranges.end(),
            [](const DatasetRange& a, const DatasetRange& b) { return a.begin < b.begin; });
  for (std::size_t i = 1; i < ranges.size(); ++i) {
    if (ranges[i].begin < ranges[i - 1].end) {
      violations.push_back(Owner(model, *ranges[i].record, ranges[i].variable) +
                           ": dataset overlaps that of " +
                           Owner(model, *ranges[i - 1].record, ranges[i - 1].variable));
    }
  }
}

}  // namespace

std::vector<std::string> VerifyModel(const std::string& path) {
  // A file of another kind is one finding, not a list of what its bytes
  // would mean as an index.
  if (std::optional<std::string> why = WhyNotAModelFile(path)) return {*why};
  std::vector<std::string> violations = DovReader::Container::Verify(path);
  if (!violations.empty()) return violations;  // the scene cannot be trusted either
  try {
    ModelFile model(path);
    CheckDatasets(model, violations);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& e) {
    violations.push_back("scene: " + DescribeFailure(e));
  }
  return violations;
}

namespace {

int RunVerify(const CommandLine& line, std::ostream& out, std::ostream&) {
  const std::string& path = line.positional[0];
  std::vector<std::string> violations = VerifyModel(path);
  if (line.Has("--json")) {
    JsonWriter json(out);
    json.BeginObject().Field("file", path).Field("sound", violations.empty());
    json.Key("violations").BeginArray();
    for (const std::string& violation : violations) json.String(violation);
    json.EndArray().EndObject().Finish();
    return violations.empty() ? kExitOk : kExitFailure;
  }
  for (const std::string& violation : violations) out << path << ": " << violation << "\n";
  if (!violations.empty()) return kExitFailure;
  out << path << ": sound\n";
  return kExitOk;
}

}  // namespace

const Command& VerifyCommand() {
  static const Command command{
      "verify",
      "Check the structure of a model file.",
      "FILE [--json]",
      "Checks the head, the chain of indexes, every block (each compressed block\n"
      "must inflate to its stated length), the scene streams (global information,\n"
      "tree records, groups, materials, geometries and their attributes, links\n"
      "between variables), and that every dataset lies inside \"Heavy Data\" without\n"
      "overlapping another. Blocks are inflated one at a time.\n\n"
      "Prints 'FILE: sound' and exits with 0, or prints one line per violation\n"
      "and exits with 1. A file that is no model file is one violation that\n"
      "says why. 'check' looks at what the values mean.\n\n"
      "Options:\n" DOVINSPECT_JSON_HELP,
      {kJsonOption},
      1,
      1,
      RunVerify};
  return command;
}

}  // namespace DovInspect
