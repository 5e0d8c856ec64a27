// vars: the variables of each geometry.

#include <iomanip>

#include "Commands.h"
#include "Json.h"
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

void PrintText(const ModelFile& model, const std::vector<GeometryInfo>& geometries,
               std::ostream& out) {
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
}

void WriteVariableJson(const DovReader::Variable& stored, const VariableInfo& variable,
                       JsonWriter& json) {
  const ValueName name = SplitValueName(variable.name);
  json.BeginObject().Field("index", variable.index).Field("name", variable.name);
  json.Field("base", name.base);
  if (name.perValue) {
    json.Field("instanceGroup", name.group).Field("instanceValue", name.value);
  }
  json.Field("type", variable.type).Field("data", DataTypeName(variable.dataType));
  json.Field("width", unsigned(variable.width)).Field("values", variable.count);
  if (variable.linked) {
    json.Key("link").BeginObject().Field("entry", variable.linkEntry);
    json.Field("variable", variable.linkIndex).EndObject();
  } else {
    json.Field("offset", stored.offset);
  }
  json.EndObject();
}

void PrintJson(const ModelFile& model, const std::vector<GeometryInfo>& geometries,
               std::ostream& out) {
  JsonWriter json(out);
  json.BeginObject().Field("file", model.FilePath()).Key("geometries").BeginArray();
  for (const GeometryInfo& geometry : geometries) {
    json.BeginObject().Field("entry", geometry.entryId).Field("path", geometry.path);
    json.Key("variables").BeginArray();
    const DovReader::TreeRecord& record = model.Scene().Record(geometry.entryId);
    for (const VariableInfo& variable : geometry.variables) {
      WriteVariableJson(record.variables[variable.index], variable, json);
    }
    json.EndArray().EndObject();
  }
  json.EndArray().EndObject().Finish();
}

int RunVars(const CommandLine& line, std::ostream& out, std::ostream&) {
  ModelFile model(line.positional[0]);
  std::string selector = line.positional.size() > 1 ? line.positional[1] : "";
  const std::vector<GeometryInfo> all = model.Geometries();
  std::vector<GeometryInfo> geometries = SelectGeometries(all, selector);
  if (geometries.empty() && !selector.empty()) throw ToolError(NoGeometryAt(all, selector));
  if (line.Has("--json"))
    PrintJson(model, geometries, out);
  else
    PrintText(model, geometries, out);
  return kExitOk;
}

}  // namespace

const Command& VarsCommand() {
  static const Command command{
      "vars",
      "Show the variables of each geometry.",
      "FILE [PATH] [--json]",
      "PATH chooses geometries: \"#ID\" for a tree entry id, or the names from the\n"
      "root down joined by '/', which also chooses every geometry below a group.\n"
      "Each variable shows its index, name, type, element type (float or uint),\n"
      "width, number of values (of its target, for a link), and where its values\n"
      "stand: the dataset offset in \"Heavy Data\", or the entry and variable it\n"
      "links to. Control bytes in names are shown as \\xHH: data per instance value\n"
      "reads 'name\\x1Egroup = value'.\n\n"
      "Options:\n" DOVINSPECT_JSON_HELP,
      {kJsonOption},
      1,
      2,
      RunVars};
  return command;
}

}  // namespace DovInspect
