// vars: the variables of each geometry.

#include <iomanip>

#include "Commands.h"
#include "Reading.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

const char* DataTypeName(std::uint8_t dataType) {
  switch (dataType) {
    case kFloatData:
      return "float";
    case kUnsignedData:
      return "uint";
    case 0:
      return "none";
    default:
      return "?";
  }
}

void PrintVariable(const DovReader::Variable& stored, const VariableInfo& variable,
                   std::ostream& out) {
  out << "  " << std::setw(4) << variable.index << "  " << std::left << std::setw(36)
      << Readable(variable.name) << std::right << std::setw(6) << variable.type << "  " << std::left
      << std::setw(6) << DataTypeName(variable.dataType) << std::right << std::setw(5)
      << unsigned(variable.width) << std::setw(12) << variable.count << "  ";
  if (variable.linked) {
    out << "link to [" << variable.linkEntry << "] #" << variable.linkIndex << "\n";
  } else {
    out << "dataset at " << stored.offset << "\n";
  }
}

int RunVars(const CommandLine& line, std::ostream& out, std::ostream&) {
  ModelFile model(line.positional[0]);
  std::string selector = line.positional.size() > 1 ? line.positional[1] : "";
  std::vector<GeometryInfo> geometries = SelectGeometries(model.Geometries(), selector);
  if (geometries.empty() && !selector.empty()) {
    throw ToolError("no geometry at '" + selector + "'");
  }
  for (const GeometryInfo& geometry : geometries) {
    out << "[" << geometry.entryId << "] " << Readable(geometry.path) << "\n";
    if (geometry.variables.empty()) continue;
    out << "  " << std::setw(4) << "#"
        << "  " << std::left << std::setw(36) << "name" << std::right << std::setw(6) << "type"
        << "  " << std::left << std::setw(6) << "data" << std::right << std::setw(5) << "width"
        << std::setw(12) << "values"
        << "  stored\n";
    const DovReader::TreeRecord& record = model.Scene().Record(geometry.entryId);
    for (const VariableInfo& variable : geometry.variables) {
      PrintVariable(record.variables[variable.index], variable, out);
    }
  }
  return kExitOk;
}

}  // namespace

const Command& VarsCommand() {
  static const Command command{
      "vars",
      "Show the variables of each geometry.",
      "FILE [PATH]",
      "PATH chooses geometries: \"#ID\" for a tree entry id, or the names from the\n"
      "root down joined by '/', which also chooses every geometry below a group.\n"
      "Each variable shows its index, name, type, element type (float or uint),\n"
      "width, number of values (of its target, for a link), and where its values\n"
      "stand: the dataset offset in \"Heavy Data\", or the entry and variable it\n"
      "links to. Control bytes in names are shown as \\xHH: data per instance value\n"
      "reads 'name\\x1Egroup = value'.\n",
      {},
      1,
      2,
      RunVars};
  return command;
}

}  // namespace DovInspect
