#ifndef DOVWRITER_BENCH_MODEL_H
#define DOVWRITER_BENCH_MODEL_H

// A synthetic finite-element model of a chosen size: a structured block of
// nodes with gently curved coordinates, cut into hexahedra or tetrahedra,
// with consecutive element sets and smooth results over several states.
// Every array is made on demand, so that a writer can hand it over and free
// it before the next one exists.

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

enum class CellKind { Hexahedron, Tetrahedron };

struct ModelShape {
  CellKind kind = CellKind::Hexahedron;
  std::uint32_t nx = 0, ny = 0, nz = 0;  // nodes along each axis
  std::uint64_t nodes = 0;
  std::uint64_t cells = 0;
  std::uint32_t nodesPerCell = 0;
  std::uint64_t cellsPerSet = 100000;
  std::uint32_t states = 10;

  std::uint64_t SetCount() const { return (cells + cellsPerSet - 1) / cellsPerSet; }
  // Bytes of every array a host hands over: coordinates, connectivity,
  // node ids, element sets, and a vector and a scalar result per state.
  std::uint64_t HostBytes() const;
};

// The largest block of nodes that does not exceed `targetNodes` by much.
ModelShape PlanModel(std::uint64_t targetNodes, CellKind kind);
// Part `part` of `parts` slabs of `whole` along z; neighbouring slabs share
// a layer of nodes, as partitions of a mesh share their boundary.
ModelShape SliceModel(const ModelShape& whole, std::uint32_t part, std::uint32_t parts);
std::string CellKindName(CellKind kind);

std::vector<float> Coordinates(const ModelShape& shape);           // 3 per node
std::vector<std::uint32_t> Connectivity(const ModelShape& shape);  // nodesPerCell per cell
std::vector<std::uint32_t> NodeIds(const ModelShape& shape);
std::vector<std::uint32_t> ElementSet(const ModelShape& shape, std::uint64_t set);
std::vector<float> VectorResult(const ModelShape& shape, std::uint32_t state);  // 3 per node
std::vector<float> ScalarResult(const ModelShape& shape, std::uint32_t state);

}  // namespace bench

#endif
