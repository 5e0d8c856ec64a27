#include "Reading.h"

#include "Cli.h"
#include "FileHead.h"
#include "Suggest.h"

namespace DovInspect {

namespace {

VariableInfo Describe(const DovReader::Scene& scene, std::uint32_t entryId, std::size_t index,
                      const DovReader::Variable& variable) {
  const DovReader::Variable& holder =
      scene.ResolveVariable(entryId, static_cast<std::uint32_t>(index));
  VariableInfo info;
  info.index = index;
  info.name = variable.name;
  info.type = variable.type;
  info.dataType = static_cast<std::uint8_t>(variable.dataType);
  info.width = holder.width;
  info.count = holder.byteSize / 4;
  info.offset = holder.offset;
  info.linked = variable.linked != 0;
  info.linkEntry = variable.linkEntryId;
  info.linkIndex = variable.linkVariableIndex;
  return info;
}

}  // namespace

// A file of another kind is told apart by its head before the reader tries
// to make an index of its bytes.
ModelFile::ModelFile(const std::string& path)
    : path_((RequireModelFile(path), path)),
      container_(DovReader::Container::Open(path)),
      scene_(DovReader::Scene::Read(container_)) {}

std::string ModelFile::PathOf(std::uint32_t entryId) const {
  // Collected from the entry up, as far as can be shown, so that the walk
  // stops early in a deep tree. Empty names at the entry's end of the path
  // add no separator.
  const std::size_t room = kMaxShownPath - 3;  // for "..."
  std::vector<const std::string*> names;
  std::size_t length = 0;
  std::uint32_t id = entryId;
  for (; id != 0; id = scene_.Record(id).parent) {
    const std::string& name = scene_.Record(id).name;
    if (length + name.size() + 1 > room) break;
    length += name.size() + 1;
    if (!names.empty() || !name.empty()) names.push_back(&name);
  }
  const std::string& own = scene_.Record(entryId).name;
  if (id == entryId) return "..." + own.substr(own.size() - room);
  std::string path = id == 0 ? "" : "...";
  for (auto name = names.rbegin(); name != names.rend(); ++name)
    path += (name == names.rbegin() && id == 0 ? "" : "/") + **name;
  return path;
}

std::vector<GeometryInfo> ModelFile::Geometries() const {
  std::vector<GeometryInfo> geometries;
  for (const DovReader::TreeRecord& record : scene_.Records()) {
    if (record.typeName != "Geometry") continue;
    GeometryInfo geometry;
    geometry.entryId = record.id;
    geometry.name = record.name;
    geometry.path = PathOf(record.id);
    for (std::size_t i = 0; i < record.variables.size(); ++i) {
      geometry.variables.push_back(Describe(scene_, record.id, i, record.variables[i]));
    }
    geometries.push_back(geometry);
  }
  return geometries;
}

std::vector<std::uint32_t> ModelFile::Words(std::uint32_t entryId, std::size_t variableIndex) {
  return scene_.ReadValues(entryId, static_cast<std::uint32_t>(variableIndex));
}

std::vector<GeometryInfo> SelectGeometries(const std::vector<GeometryInfo>& all,
                                           const std::string& selector) {
  if (selector.empty()) return all;
  std::vector<GeometryInfo> selected;
  if (selector[0] == '#') {
    for (const GeometryInfo& g : all) {
      if ("#" + std::to_string(g.entryId) == selector) selected.push_back(g);
    }
    return selected;
  }
  for (const GeometryInfo& g : all) {
    bool below = g.path.size() > selector.size() &&
                 g.path.compare(0, selector.size(), selector) == 0 &&
                 g.path[selector.size()] == '/';
    if (g.path == selector || below) selected.push_back(g);
  }
  return selected;
}

std::string NoGeometryAt(const std::vector<GeometryInfo>& all, const std::string& selector) {
  // A selector may name a group, so the groups above each geometry count.
  std::vector<std::string> paths;
  for (const GeometryInfo& g : all) {
    for (std::size_t slash = g.path.find('/'); slash != std::string::npos;
         slash = g.path.find('/', slash + 1)) {
      paths.push_back(g.path.substr(0, slash));
    }
    paths.push_back(g.path);
  }
  return "no geometry at '" + selector + "'" + ClosestHint(selector, paths);
}

}  // namespace DovInspect
