#include "reader/Model.h"

#include <algorithm>
#include <set>

namespace DovReader {

namespace {

NodeKind KindOf(const std::string& typeName) {
  if (typeName == "Group") return NodeKind::Group;
  if (typeName == "Shape") return NodeKind::Shape;
  if (typeName == "Geometry") return NodeKind::Geometry;
  return NodeKind::Other;
}

// Material records older than "0.3" have no visibility field: visible.
bool ShapeVisible(const MaterialContent& material) {
  return material.version == "0.1" || material.version == "0.2" || material.visible != 0;
}

// A group shows its own visibility as the attribute "visible".
bool GroupVisible(const GroupContent& group) {
  const Attribute* visible = group.attributes.Find("visible");
  return visible == nullptr || visible->kind > 1 || visible->word != 0;
}

// The placement, colour and visibility a node takes from its parent and
// then changes by its own content.
void Inherit(const ModelNode& parent, ModelNode& node) {
  node.path = parent.path + "/" + node.name;
  if (node.path.size() > kMaxPath) node.path = ".../" + node.path.substr(node.path.size() - kMaxPath);
  node.matrix = parent.matrix;
  node.hasColor = parent.hasColor;
  node.color = parent.color;
  node.visible = parent.visible;
}

void ApplyContent(const TreeRecord& record, ModelNode& node) {
  if (record.group) {
    node.matrix = Multiply(node.matrix, GroupMatrix(*record.group));
    node.visible = node.visible && GroupVisible(*record.group);
  }
  if (record.material) {
    node.hasColor = true;
    std::copy_n(record.material->diffuse, 3, node.color.begin());
    node.visible = node.visible && ShapeVisible(*record.material);
  }
}

}  // namespace

Association Classify(const FieldInfo& field, std::uint64_t points, std::uint64_t cells) {
  if (field.values % field.components != 0) return Association::None;
  const std::uint64_t tuples = field.values / field.components;
  if (tuples == points) return Association::Point;
  if (tuples == cells) return Association::Cell;
  return Association::None;
}

Model::Model(const std::string& path)
    : container_(Container::Open(path)), scene_(Scene::Read(container_)) {
  BuildNodes();
  CollectVariables();
  BuildPieces();
}

std::size_t Model::Position(std::uint32_t id) const {
  auto found = std::lower_bound(nodes_.begin(), nodes_.end(), id,
                                [](const ModelNode& node, std::uint32_t v) { return node.id < v; });
  if (found == nodes_.end() || found->id != id)
    throw ReadError("no tree entry with id " + std::to_string(id));
  return static_cast<std::size_t>(found - nodes_.begin());
}

const ModelNode& Model::Node(std::uint32_t id) const { return nodes_[Position(id)]; }

// Nodes are made in ascending id order. Reading the scene refused any entry
// whose parent does not come before it, so every parent is made first.
void Model::BuildNodes() {
  for (const TreeRecord& record : scene_.Records()) {
    ModelNode node;
    node.id = record.id;
    node.kind = KindOf(record.typeName);
    node.name = record.name;
    node.parent = record.parent;
    node.path = record.name;
    if (record.parent != 0) Inherit(Node(record.parent), node);
    ApplyContent(record, node);
    nodes_.push_back(node);
    if (record.parent != 0) nodes_[Position(record.parent)].children.push_back(node.id);
  }
}

void Model::CollectVariables() {
  std::vector<std::string> valuesInOrder;
  std::set<std::string> seen;
  for (const TreeRecord& record : scene_.Records()) {
    if (record.typeName != "Geometry") continue;
    GeometryVariables& variables = variables_[record.id];
    for (std::size_t i = 0; i < record.variables.size(); ++i) {
      const ValueName name = SplitValueName(record.variables[i].name);
      const int index = static_cast<int>(i);
      if (!name.perValue) {
        variables.plain[name.base] = index;
        continue;
      }
      variables.perValue[name.value][name.base] = index;
      if (seen.insert(name.value).second) valuesInOrder.push_back(name.value);
    }
  }
  steps_ = TimeAxis::FromValues(valuesInOrder);
}

const Variable* Model::Holder(std::uint32_t entryId, int index) const {
  if (index == kNoVariable) return nullptr;
  return &scene_.ResolveVariable(entryId, static_cast<std::uint32_t>(index));
}

bool Model::HoldsData(std::uint32_t entryId, int index) const {
  const Variable* holder = Holder(entryId, index);
  return holder->byteSize >= 4 && (holder->dataType == 1 || holder->dataType == 5);
}

GeometryRoles Model::Roles(std::uint32_t geometry, int step) const {
  auto found = variables_.find(geometry);
  if (found == variables_.end()) return GeometryRoles();
  std::map<std::string, int> chosen = found->second.plain;
  if (step != kNoStep) {
    auto own = found->second.perValue.find(steps_.values.at(static_cast<std::size_t>(step)));
    if (own != found->second.perValue.end()) {
      for (const auto& entry : own->second)
        if (HoldsData(geometry, entry.second) || !chosen.count(entry.first))
          chosen[entry.first] = entry.second;
    }
  }
  auto take = [&chosen](const char* name) {
    auto it = chosen.find(name);
    if (it == chosen.end()) return kNoVariable;
    const int index = it->second;
    chosen.erase(it);
    return index;
  };
  GeometryRoles roles;
  roles.coordinates = take("Coordinates");
  roles.connectivity = take("Connectivity");
  roles.polylength = take("Polylength");
  roles.nodeIds = take("Node Ids");
  for (const auto& entry : chosen)
    if (HoldsData(geometry, entry.second)) roles.results.insert(entry);
  return roles;
}

// The data that holds a geometry's points: plain, or at the first step
// that has them.
const Variable* Model::PointsKey(std::uint32_t geometry) const {
  for (int step = kNoStep; step < static_cast<int>(steps_.values.size()); ++step) {
    const int coordinates = Roles(geometry, step).coordinates;
    if (coordinates != kNoVariable && HoldsData(geometry, coordinates))
      return Holder(geometry, coordinates);
  }
  return nullptr;
}

// A mesh: a group whose children are all shapes of one geometry each, all
// on the same points.
bool Model::IsMeshGroup(const ModelNode& group, std::vector<std::uint32_t>& geometries) const {
  geometries.clear();
  const Variable* points = nullptr;
  for (std::uint32_t child : group.children) {
    const ModelNode& shape = Node(child);
    if (shape.kind != NodeKind::Shape || shape.children.size() != 1) return false;
    const ModelNode& geometry = Node(shape.children[0]);
    if (geometry.kind != NodeKind::Geometry) return false;
    const Variable* key = PointsKey(geometry.id);
    if (key == nullptr || (points != nullptr && key != points)) return false;
    points = key;
    geometries.push_back(geometry.id);
  }
  return !geometries.empty();
}

void Model::BuildPieces() {
  std::set<std::uint32_t> placed;
  std::vector<std::uint32_t> geometries;
  for (const ModelNode& node : nodes_) {
    if (node.kind != NodeKind::Group || !IsMeshGroup(node, geometries)) continue;
    ModelPiece piece;
    piece.name = node.name.empty() ? Node(geometries[0]).name : node.name;
    piece.path = node.path;
    piece.geometries = geometries;
    pieces_.push_back(piece);
    placed.insert(geometries.begin(), geometries.end());
  }
  for (const ModelNode& node : nodes_) {
    if (node.kind != NodeKind::Geometry || placed.count(node.id)) continue;
    ModelPiece piece;
    piece.name = node.name;
    piece.path = node.path;
    piece.geometries = {node.id};
    pieces_.push_back(piece);
  }
  for (ModelPiece& piece : pieces_) {
    // Shapes and geometries place nothing: all geometries of a piece stand
    // where its group puts them.
    piece.matrix = Node(piece.geometries[0]).matrix;
    for (std::uint32_t geometry : piece.geometries)
      piece.perValue = piece.perValue || !variables_[geometry].perValue.empty();
  }
  std::sort(pieces_.begin(), pieces_.end(), [](const ModelPiece& a, const ModelPiece& b) {
    return a.geometries[0] < b.geometries[0];
  });
}

}  // namespace DovReader
