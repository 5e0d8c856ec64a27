// tree: the scene tree, one node a line, with its appearance.

#include <algorithm>
#include <sstream>

#include "Commands.h"
#include "Reading.h"
#include "TreeJson.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

std::string Numbers(const float* values, int count) {
  std::ostringstream text;
  text << "(";
  for (int i = 0; i < count; ++i) text << (i ? ", " : "") << values[i];
  text << ")";
  return text.str();
}

std::string AttributeText(const DovReader::Attribute& attribute) {
  std::string value;
  switch (attribute.kind) {
    case 0:
    case 1:
      value = std::to_string(attribute.word);
      break;
    case 2:
      value = "\"" + Readable(attribute.text) + "\"";
      break;
    case 3:
      value = std::to_string(attribute.longWord);
      break;
    default:
      value = "(kind " + std::to_string(attribute.kind) + ")";
  }
  return Readable(attribute.key) + "=" + value;
}

void PrintGroup(const DovReader::GroupContent& group, const std::string& indent,
                std::ostream& out) {
  const DovReader::Attribute* visible = group.attributes.Find("visible");
  out << (visible && visible->word == 0 ? " hidden" : " visible") << (group.rootFlag ? " root" : "")
      << "\n"
      << indent << "    translation " << Numbers(group.translation, 3) << " rotation "
      << Numbers(group.rotation, 4) << " scale " << Numbers(group.scale, 3) << "\n";
  std::string others;
  for (const DovReader::Attribute& attribute : group.attributes.entries) {
    if (attribute.key != "visible") others += " " + AttributeText(attribute);
  }
  if (!others.empty()) out << indent << "    attributes" << others << "\n";
}

void PrintMaterial(const DovReader::MaterialContent& material, const std::string& indent,
                   std::ostream& out) {
  out << (material.visible ? " visible" : " hidden") << "\n"
      << indent << "    diffuse " << Numbers(material.diffuse, 4) << " ambient "
      << Numbers(material.ambient, 4) << "\n"
      << indent << "    specular " << Numbers(material.specular, 4) << " emissive "
      << Numbers(material.emissive, 4) << "\n";
}

// Deeper entries are indented as far as this and show their depth as a
// number, so that a line never grows with the depth of the tree.
const std::uint32_t kMaxIndentDepth = 32;

int RunTree(const CommandLine& line, std::ostream& out, std::ostream&) {
  ModelFile model(line.positional[0]);
  if (line.Has("--json")) {
    PrintTreeJson(model, out);
    return kExitOk;
  }
  for (const DovReader::TreeRecord& record : model.Scene().Records()) {
    const std::uint32_t depth = model.DepthOf(record.id);
    const std::string indent(2 * std::min(depth, kMaxIndentDepth), ' ');
    out << indent;
    if (depth > kMaxIndentDepth) out << "(depth " << depth << ") ";
    out << "[" << record.id << "] "
        << (record.typeName.empty() ? "(empty)" : Readable(record.typeName)) << " \""
        << Readable(record.name) << "\"";
    if (record.group) {
      PrintGroup(*record.group, indent, out);
    } else if (record.material) {
      PrintMaterial(*record.material, indent, out);
    } else if (record.typeName == "Geometry") {
      out << " " << record.variables.size() << " variables\n";
    } else {
      out << "\n";
    }
  }
  return kExitOk;
}

}  // namespace

const Command& TreeCommand() {
  static const Command command{
      "tree",
      "Show the scene tree with transformations, colours and visibility.",
      "FILE [--json]",
      "One line per tree entry, indented by depth (beyond 32 levels the depth\n"
      "shows as a number): [entry id], node type and name.\n"
      "Groups add their visibility, translation, rotation, scale and other\n"
      "attributes; shapes their visibility and the four colours (red, green,\n"
      "blue, alpha) of their material; geometries their number of variables.\n\n"
      "Options:\n" DOVINSPECT_JSON_HELP,
      {kJsonOption},
      1,
      1,
      RunTree};
  return command;
}

}  // namespace DovInspect
