// dump: the values of one variable, one tuple a line.

#include <Kel/Util/Coding.h>

#include <cstdio>

#include "Commands.h"
#include "Reading.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

GeometryInfo OneGeometry(const ModelFile& model, const std::string& selector) {
  std::vector<GeometryInfo> found = SelectGeometries(model.Geometries(), selector);
  std::vector<GeometryInfo> exact;
  for (const GeometryInfo& g : found) {
    if (g.path == selector || selector[0] == '#') exact.push_back(g);
  }
  if (exact.empty()) throw ToolError("no geometry at '" + selector + "'");
  if (exact.size() > 1) {
    std::string ids;
    for (const GeometryInfo& g : exact) ids += " #" + std::to_string(g.entryId);
    throw ToolError("'" + selector + "' names several geometries; choose one of" + ids);
  }
  return exact.front();
}

// A variable by its name (\xHH escapes allowed) or by its index.
const VariableInfo& OneVariable(const GeometryInfo& geometry, const std::string& selector) {
  std::string name = Unescape(selector);
  for (const VariableInfo& variable : geometry.variables) {
    if (variable.name == name) return variable;
  }
  if (!selector.empty() && selector.find_first_not_of("0123456789") == std::string::npos &&
      selector.size() < 10) {
    std::size_t index = std::stoul(selector);
    if (index < geometry.variables.size()) return geometry.variables[index];
  }
  throw ToolError("geometry " + Readable(geometry.path) + " has no variable '" + selector + "'");
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
  ModelFile model(line.positional[0]);
  GeometryInfo geometry = OneGeometry(model, line.positional[1]);
  const VariableInfo& variable = OneVariable(geometry, line.positional[2]);
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
      "FILE GEOMETRY VARIABLE [--limit N]",
      "GEOMETRY is \"#ID\" (a tree entry id) or the path of names from the root, as\n"
      "'vars' shows them. VARIABLE is the variable's name, with \\x1E for the byte\n"
      "0x1E of per-value names, or its index. Links are followed and the byte\n"
      "planes of the stored dataset are undone. One tuple (width values) a line,\n"
      "preceded by its index; floats with 9 significant digits.\n\n"
      "Options:\n  --limit N   print at most N tuples\n",
      {{"--limit", true}},
      3,
      3,
      RunDump};
  return command;
}

}  // namespace DovInspect
