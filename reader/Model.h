#ifndef DOVREADER_MODEL_H
#define DOVREADER_MODEL_H

// A model file as the people who look at it think of it: a tree of named
// nodes, each placed by the groups above it; meshes made of element sets;
// results over a series of instance values. The export of dovinspect, the
// ParaView reader and the Python module all stand on this layer, so its
// interface holds plain C++ types only.
//
// Pieces. The element sets of one mesh are geometries below one group,
// each through its shape, that share one set of points. They make one
// piece: the points once, the cells of every set after each other. Any
// other geometry is a piece of its own.
//
// Steps. The instance values of the whole model are its time steps: in
// ascending order where all of them are distinct numbers, else in order of
// first use (see TimeAxis).
//
// Values are read one variable at a time; the container keeps the last
// block it inflated, so that the file is never inflated whole.

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "reader/CellTypes.h"
#include "reader/Container.h"
#include "reader/Scene.h"
#include "reader/Transform.h"
#include "reader/ValueNames.h"

namespace DovReader {

enum class NodeKind { Group, Shape, Geometry, Other };

struct ModelNode {
  std::uint32_t id = 0;
  NodeKind kind = NodeKind::Other;
  std::string name;
  std::string path;  // names from the root down, joined by '/'; see kMaxPath
  std::uint32_t parent = 0;
  std::vector<std::uint32_t> children;
  Matrix4 matrix = IdentityMatrix();  // the groups from the root down to here
  bool hasColor = false;              // a shape, or below one
  std::array<float, 3> color{{0.8f, 0.8f, 0.8f}};  // that shape's diffuse colour
  bool visible = true;  // false if this node or one above it is hidden
};

// A path longer than this keeps only its end, behind ".../", so that the
// paths of a deep tree take space in proportion to its entries.
const std::size_t kMaxPath = 4096;

const int kNoStep = -1;
const int kNoVariable = -1;

// Which variable of a geometry plays which part at one step (or, with
// kNoStep, without instance values). A value's own variable replaces the
// plain one of the same name unless it holds no data.
struct GeometryRoles {
  int coordinates = kNoVariable;
  int connectivity = kNoVariable;
  int polylength = kNoVariable;
  int nodeIds = kNoVariable;
  std::map<std::string, int> results;  // by the data's own name
};

struct ModelPiece {
  std::string name;  // the mesh's, else the geometry's
  std::string path;
  std::vector<std::uint32_t> geometries;  // entry ids, element sets in file order
  Matrix4 matrix = IdentityMatrix();
  bool perValue = false;  // holds data per instance value
};

struct PointSet {
  std::vector<float> xyz;               // placed by the piece's matrix
  std::vector<std::int64_t> nodeIds;    // one per point, or none
  std::vector<std::string> warnings;    // data left out, and why
  std::uint64_t Count() const { return xyz.size() / 3; }
};

struct CellSet {
  std::vector<std::uint32_t> connectivity;  // node indices of all cells
  std::vector<std::int64_t> offsets;        // end of each cell in `connectivity`
  std::vector<std::uint8_t> types;          // CellType
  std::vector<std::int32_t> geometry;       // per cell, its geometry's position in the piece
  std::vector<std::string> warnings;
  std::uint64_t Count() const { return types.size(); }
};

struct FieldInfo {
  std::string name;  // the data's own name
  std::uint32_t entryId = 0;
  int index = kNoVariable;
  const Variable* holder = nullptr;  // after links: equal holders, equal data
  bool isFloat = true;               // else unsigned 32-bit integers
  unsigned components = 1;
  std::uint64_t values = 0;
};

enum class Association { Point, Cell, None };

// Point data if the tuples match the points, else cell data if they match
// the cells; None also where the values do not fill whole tuples.
Association Classify(const FieldInfo& field, std::uint64_t points, std::uint64_t cells);

class Model {
 public:
  // Throws ReadError if the file, its container or its scene is unreadable.
  explicit Model(const std::string& path);
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;

  const Scene& GetScene() const { return scene_; }
  const std::vector<ModelNode>& Nodes() const { return nodes_; }
  const ModelNode& Node(std::uint32_t id) const;
  const std::vector<ModelPiece>& Pieces() const { return pieces_; }
  const TimeAxis& Steps() const { return steps_; }

  GeometryRoles Roles(std::uint32_t geometry, int step) const;
  // True if a piece's points or cells are not the same data at every step.
  bool GeometryVaries(const ModelPiece& piece) const;

  // Counts from the variable records alone, without reading values: the
  // points of a piece, and the cells of one geometry.
  std::uint64_t PointCount(const ModelPiece& piece, int step) const;
  std::uint64_t CellCount(std::uint32_t geometry, int step) const;

  // One variable's values as 32-bit words (floats by their bits).
  std::vector<std::uint32_t> Values(std::uint32_t entryId, int index);
  PointSet ReadPoints(const ModelPiece& piece, int step);
  // The cells of every geometry of the piece, or of those at `positions`,
  // one geometry after the other.
  CellSet ReadCells(const ModelPiece& piece, int step, const PointSet& points, CellRule rule);
  CellSet ReadCells(const ModelPiece& piece, const std::vector<std::size_t>& positions, int step,
                    const PointSet& points, CellRule rule);
  // The results of the piece at a step, each name once, from the first
  // geometry that has it.
  std::vector<FieldInfo> Fields(const ModelPiece& piece, int step) const;

 private:
  // A geometry's variables by the data's own name, plain and per value.
  struct GeometryVariables {
    std::map<std::string, int> plain;
    std::map<std::string, std::map<std::string, int>> perValue;
  };

  std::size_t Position(std::uint32_t id) const;
  void BuildNodes();
  void CollectVariables();
  void BuildPieces();
  bool HoldsData(std::uint32_t entryId, int index) const;
  const Variable* Holder(std::uint32_t entryId, int index) const;
  const Variable* PointsKey(std::uint32_t geometry) const;
  bool IsMeshGroup(const ModelNode& group, std::vector<std::uint32_t>& geometries) const;
  void AppendCells(const ModelPiece& piece, std::size_t position, int step,
                   const PointSet& points, CellRule rule, CellSet& cells);

  Container container_;
  Scene scene_;
  std::vector<ModelNode> nodes_;  // in ascending id order
  std::map<std::uint32_t, GeometryVariables> variables_;
  std::vector<ModelPiece> pieces_;
  TimeAxis steps_;
};

}  // namespace DovReader

#endif
