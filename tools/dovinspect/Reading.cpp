#include "Reading.h"


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
  info.linked = variable.linked != 0;
  info.linkEntry = variable.linkEntryId;
  info.linkIndex = variable.linkVariableIndex;
  return info;
}

}  // namespace

ModelFile::ModelFile(const std::string& path)
    : path_(path),
      container_(DovReader::Container::Open(path)),
      scene_(DovReader::Scene::Read(container_)),
      heavy_(container_, path) {}

std::string ModelFile::PathOf(std::uint32_t entryId) const {
  std::string path;
  for (std::uint32_t id = entryId; id != 0; id = scene_.Record(id).parent) {
    const std::string& name = scene_.Record(id).name;
    path = path.empty() ? name : name + "/" + path;
  }
  return path;
}

int ModelFile::DepthOf(std::uint32_t entryId) const {
  int depth = 0;
  for (std::uint32_t id = scene_.Record(entryId).parent; id != 0; id = scene_.Record(id).parent) {
    ++depth;
  }
  return depth;
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
  return heavy_.Values(scene_.ResolveVariable(entryId, static_cast<std::uint32_t>(variableIndex)));
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

}  // namespace DovInspect
