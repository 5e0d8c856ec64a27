// dump: the values of one variable, one tuple a line.

#include <Kel/Util/Coding.h>

#include <cstdio>
#include <cstdlib>
#include <optional>

#include "Commands.h"
#include "Reading.h"
#include "Suggest.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

GeometryInfo OneGeometry(const ModelFile& model, const std::string& selector) {
  const std::vector<GeometryInfo> all = model.Geometries();
  std::vector<GeometryInfo> exact;
  for (const GeometryInfo& g : SelectGeometries(all, selector)) {
    if (g.path == selector || selector[0] == '#') exact.push_back(g);
  }
  if (exact.empty()) throw ToolError(NoGeometryAt(all, selector));
  if (exact.size() > 1) {
    std::string ids;
    for (const GeometryInfo& g : exact) ids += " #" + std::to_string(g.entryId);
    throw ToolError("'" + selector + "' names several geometries; choose one of" + ids);
  }
  return exact.front();
}

bool SameNumber(const std::string& a, const std::string& b) {
  char* endA = nullptr;
  char* endB = nullptr;
  const double x = std::strtod(a.c_str(), &endA), y = std::strtod(b.c_str(), &endB);
  return !a.empty() && !b.empty() && *endA == '\0' && *endB == '\0' && x == y;
}

// "NAME=VALUE" of --at: an instance group and one of its values, which
// matches as text or, where both read as numbers, as the same number.
struct InstanceChoice {
  std::string group, value;
  bool Matches(const ValueName& name) const {
    return name.perValue && name.group == group &&
           (name.value == value || SameNumber(name.value, value));
  }
};

InstanceChoice ParseAt(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) throw UsageError("--at expects NAME=VALUE, not '" + text + "'");
  return {Unescape(text.substr(0, equals)), Unescape(text.substr(equals + 1))};
}

// The instance values under which `base` is stored, as "Group = value", at
// most ten of them named.
std::string ValuesOf(const GeometryInfo& geometry, const std::string& base) {
  std::string list;
  std::size_t count = 0;
  for (const VariableInfo& variable : geometry.variables) {
    const ValueName name = SplitValueName(variable.name);
    if (!name.perValue || name.base != base) continue;
    if (++count <= 10) list += (list.empty() ? "" : ", ") + Readable(name.group + "=" + name.value);
  }
  if (count > 10) list += ", and " + std::to_string(count - 10) + " more";
  return list;
}

[[noreturn]] void NoVariable(const GeometryInfo& geometry, const std::string& selector,
                             const std::string& why) {
  // Data given per instance value is offered by its plain name.
  std::vector<std::string> names;
  for (const VariableInfo& variable : geometry.variables) {
    const ValueName name = SplitValueName(variable.name);
    names.push_back(name.perValue ? name.base : variable.name);
  }
  throw ToolError("geometry " + Readable(geometry.path) + " has no variable '" + selector + "'" +
                  why + ClosestHint(Unescape(selector), names));
}

// A variable by its name (\xHH escapes allowed) or its index; with --at, by
// the plain name of data given per instance value.
const VariableInfo& OneVariable(const GeometryInfo& geometry, const std::string& selector,
                                const std::optional<InstanceChoice>& at) {
  const std::string name = Unescape(selector);
  for (const VariableInfo& variable : geometry.variables) {
    const ValueName parts = SplitValueName(variable.name);
    if (at ? parts.base == name && at->Matches(parts) : variable.name == name) return variable;
  }
  if (!at && !selector.empty() && selector.find_first_not_of("0123456789") == std::string::npos &&
      selector.size() < 10) {
    std::size_t index = std::stoul(selector);
    if (index < geometry.variables.size()) return geometry.variables[index];
  }
  const std::string values = ValuesOf(geometry, name);
  if (values.empty()) NoVariable(geometry, selector, at ? " given per instance value" : "");
  throw ToolError("'" + selector + "' of " + Readable(geometry.path) +
                  " is given per instance value" +
                  (at ? ", not at " + Readable(at->group + "=" + at->value) : "") +
                  "; choose one with --at: " + values);
}

void PrintWord(std::uint32_t word, std::uint8_t dataType, std::ostream& out) {
  if (dataType == kFloatData) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", Kel::Util::BitsToFloat(word));
    out << text;
  } else {
    out << word;
  }
}

int RunDump(const CommandLine& line, std::ostream& out, std::ostream& err) {
  std::uint64_t limit = line.Number("--limit", UINT64_MAX);
  std::optional<InstanceChoice> at;
  if (line.Has("--at")) at = ParseAt(line.Value("--at", ""));
  ModelFile model(line.positional[0]);
  GeometryInfo geometry = OneGeometry(model, line.positional[1]);
  const VariableInfo& variable = OneVariable(geometry, line.positional[2], at);
  std::vector<std::uint32_t> words = model.Words(geometry.entryId, variable.index);
  std::size_t width = variable.width == 0 ? 1 : variable.width;
  std::uint64_t tuples = (words.size() + width - 1) / width;
  for (std::uint64_t t = 0; t < tuples && t < limit; ++t) {
    out << t << ":";
    for (std::size_t k = t * width; k < words.size() && k < (t + 1) * width; ++k) {
      out << " ";
      PrintWord(words[k], variable.dataType, out);
    }
    out << "\n";
  }
  if (tuples > limit) err << "(" << tuples - limit << " more tuples not shown)\n";
  return kExitOk;
}

}  // namespace

const Command& DumpCommand() {
  static const Command command{
      "dump",
      "Print the values of one variable.",
      "FILE GEOMETRY VARIABLE [--at NAME=VALUE] [--limit N]",
      "GEOMETRY is \"#ID\" (a tree entry id) or the path of names from the root, as\n"
      "'vars' shows them. VARIABLE is the variable's name, with \\x1E for the byte\n"
      "0x1E of per-value names, or its index; with --at, the plain name of data\n"
      "given per instance value. Links are followed and the byte planes of the\n"
      "stored dataset are undone. One tuple (width values) a line, preceded by its\n"
      "index; floats with 9 significant digits. A name that is not found is\n"
      "answered with the closest names.\n\n"
      "Options:\n"
      "  --at NAME=VALUE   the instance value VALUE of the instance group NAME,\n"
      "                    e.g. --at Time=0.5 (numbers match by value: 0.50 too)\n"
      "  --limit N         print at most N tuples\n",
      {{"--at", true}, {"--limit", true}},
      3,
      3,
      RunDump};
  return command;
}

}  // namespace DovInspect
