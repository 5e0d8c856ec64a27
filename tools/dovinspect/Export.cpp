#include "Export.h"

#include <Kel/Util/Coding.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "Cli.h"
#include "Failure.h"
#include "Pvd.h"

namespace DovInspect {

namespace {

// Everything one piece needs while its file is written.
struct PieceContext {
  const GeometryInfo& geometry;
  ValueSource& source;
  std::vector<std::string>& warnings;
  std::string label;  // the geometry, and value, for messages
};

const VariableInfo& Variable(const PieceContext& context, int index) {
  return context.geometry.variables.at(static_cast<std::size_t>(index));
}

std::vector<std::uint32_t> Read(const PieceContext& context, int index) {
  if (index == kNone) return {};
  return context.source.Words(context.geometry.entryId, static_cast<std::size_t>(index));
}

void EmitNodeIndices(ByteSink& sink, const std::vector<std::uint32_t>& nodes, std::uint64_t used) {
  std::vector<std::int64_t> chunk;
  const std::uint64_t kChunk = 8192;
  for (std::uint64_t start = 0; start < used; start += kChunk) {
    std::uint64_t end = std::min(used, start + kChunk);
    chunk.assign(nodes.begin() + static_cast<std::ptrdiff_t>(start),
                 nodes.begin() + static_cast<std::ptrdiff_t>(end));
    EmitInt64(sink, chunk.data(), chunk.size());
  }
}

// Node ids are stored as floats; VTK gets them back as integers.
VtkArray NodeIdArray(const PieceContext& context, int index, std::uint64_t points) {
  const VariableInfo& variable = Variable(context, index);
  return {"Node Ids", VtkScalar::Int64, 1, points, [&context, index, variable](ByteSink& sink) {
            std::vector<std::uint32_t> words = Read(context, index);
            std::vector<std::int64_t> ids(words.size());
            for (std::size_t i = 0; i < words.size(); ++i) {
              ids[i] = variable.dataType == kFloatData
                           ? std::llround(Kel::Util::BitsToFloat(words[i]))
                           : static_cast<std::int64_t>(words[i]);
            }
            EmitInt64(sink, ids.data(), ids.size());
          }};
}

VtkArray ResultArray(const PieceContext& context, int index, std::uint64_t tuples) {
  const VariableInfo& variable = Variable(context, index);
  VtkScalar type = variable.dataType == kFloatData ? VtkScalar::Float32 : VtkScalar::UInt32;
  unsigned components = std::max<unsigned>(1, variable.width);
  return {SplitValueName(variable.name).base, type, components, tuples,
          [&context, index](ByteSink& sink) {
            std::vector<std::uint32_t> words = Read(context, index);
            EmitUInt32(sink, words.data(), words.size());  // floats travel by their bits
          }};
}

// Puts a result among the point or the cell data, by its number of tuples.
void AddResult(const PieceContext& context, int index, VtuPiece& piece) {
  const VariableInfo& variable = Variable(context, index);
  std::string what = "variable " + Readable(variable.name) + " of " + context.label;
  unsigned components = std::max<unsigned>(1, variable.width);
  if (variable.dataType != kFloatData && variable.dataType != kUnsignedData) {
    context.warnings.push_back(what + ": unknown element type, left out");
    return;
  }
  if (variable.count % components != 0) {
    context.warnings.push_back(what + ": " + std::to_string(variable.count) +
                               " values do not fill tuples of " + std::to_string(components));
    return;
  }
  std::uint64_t tuples = variable.count / components;
  if (tuples == piece.points) {
    piece.pointData.push_back(ResultArray(context, index, tuples));
  } else if (tuples == piece.cells) {
    piece.cellData.push_back(ResultArray(context, index, tuples));
  } else {
    context.warnings.push_back(what + ": " + std::to_string(tuples) + " tuples fit neither the " +
                               std::to_string(piece.points) + " points nor the " +
                               std::to_string(piece.cells) + " cells, left out");
  }
}

void WritePiece(const PieceContext& context, const PiecePlan& plan, const std::string& path,
                const ExportOptions& options) {
  std::vector<float> xyz = AsFloats(Read(context, plan.coordinates));
  if (xyz.size() % 3 != 0) {
    context.warnings.push_back(context.label +
                               ": coordinates are not whole triples; the rest "
                               "is left out");
    xyz.resize(xyz.size() - xyz.size() % 3);
  }
  std::vector<std::uint32_t> nodes = Read(context, plan.connectivity);
  std::vector<std::uint32_t> lengths = Read(context, plan.polylength);
  std::uint32_t connectivityType =
      plan.connectivity == kNone ? kPointConnectivity : Variable(context, plan.connectivity).type;
  VtuPiece piece;
  piece.points = xyz.size() / 3;
  CellLayout cells = BuildCells(nodes, lengths, connectivityType, piece.points, options.style);
  for (const std::string& warning : cells.warnings)
    context.warnings.push_back(context.label + ": " + warning);
  piece.cells = cells.types.size();
  piece.coordinates = {"Points", VtkScalar::Float32, 3, piece.points,
                       [&xyz](ByteSink& s) { EmitFloat32(s, xyz.data(), xyz.size()); }};
  piece.connectivity = {"connectivity", VtkScalar::Int64, 1, cells.usedNodes,
                        [&](ByteSink& s) { EmitNodeIndices(s, nodes, cells.usedNodes); }};
  piece.offsets = {"offsets", VtkScalar::Int64, 1, piece.cells, [&cells](ByteSink& s) {
                     EmitInt64(s, cells.offsets.data(), cells.offsets.size());
                   }};
  piece.types = {"types", VtkScalar::UInt8, 1, piece.cells,
                 [&cells](ByteSink& s) { EmitUInt8(s, cells.types.data(), cells.types.size()); }};
  if (plan.nodeIds != kNone) {
    if (Variable(context, plan.nodeIds).count == piece.points) {
      piece.pointData.push_back(NodeIdArray(context, plan.nodeIds, piece.points));
    } else {
      context.warnings.push_back(context.label + ": node ids do not match the points, left out");
    }
  }
  for (int index : plan.results) AddResult(context, index, piece);

  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw ToolError("cannot write " + path);
  WriteVtu(out, piece, options.encoding);
  out.close();
  if (!out) throw ToolError("writing " + path + " failed");
}

std::string PieceLabel(const GeometryInfo& geometry, const PiecePlan& piece) {
  std::string label = "geometry " + Readable(geometry.path);
  if (piece.timeIndex != kNone) label += " at value '" + Readable(piece.value) + "'";
  return label;
}

// Data sets of the collection. A geometry without instance values stands at
// every time step, so that it stays visible while the others change.
std::vector<PvdDataSet> CollectionEntries(const ExportPlan& plan,
                                          const std::vector<bool>& written) {
  std::vector<PvdDataSet> entries;
  for (std::size_t i = 0; i < plan.pieces.size(); ++i) {
    if (!written[i]) continue;
    const PiecePlan& piece = plan.pieces[i];
    unsigned part = static_cast<unsigned>(piece.geometry);
    if (piece.timeIndex != kNone) {
      entries.push_back(
          {plan.axis.times[static_cast<std::size_t>(piece.timeIndex)], part, piece.fileName});
    } else if (plan.axis.times.empty()) {
      entries.push_back({0.0, part, piece.fileName});
    } else {
      for (double time : plan.axis.times) entries.push_back({time, part, piece.fileName});
    }
  }
  std::stable_sort(entries.begin(), entries.end(), [](const PvdDataSet& a, const PvdDataSet& b) {
    return a.time < b.time || (a.time == b.time && a.part < b.part);
  });
  return entries;
}

std::vector<std::string> CollectionNotes(const std::vector<GeometryInfo>& geometries,
                                         const ExportPlan& plan) {
  std::vector<std::string> notes;
  for (std::size_t g = 0; g < geometries.size(); ++g) {
    notes.push_back("part " + std::to_string(g) + ": " + Readable(geometries[g].path));
  }
  if (!plan.axis.numeric) {
    for (std::size_t i = 0; i < plan.axis.values.size(); ++i) {
      notes.push_back("time " + std::to_string(i) + ": instance value '" +
                      Readable(plan.axis.values[i]) + "'");
    }
  }
  return notes;
}

}  // namespace

ExportReport RunExport(const std::vector<GeometryInfo>& geometries, const ExportPlan& plan,
                       ValueSource& source, const std::string& directory,
                       const std::string& collectionName, const ExportOptions& options,
                       const ExportProgress& progress) {
  ExportReport report;
  report.warnings = plan.notes;
  std::vector<bool> written(plan.pieces.size(), false);
  for (std::size_t i = 0; i < plan.pieces.size(); ++i) {
    const PiecePlan& piece = plan.pieces[i];
    const GeometryInfo& geometry = geometries[piece.geometry];
    PieceContext context{geometry, source, report.warnings, PieceLabel(geometry, piece)};
    std::string path = directory + "/" + piece.fileName;
    try {
      WritePiece(context, piece, path, options);
      written[i] = true;
      report.written.push_back(piece.fileName);
    } catch (const std::exception& e) {
      std::remove(path.c_str());
      report.failures.push_back(context.label + ": " + DescribeFailure(e));
    }
    if (progress) progress(i + 1, plan.pieces.size());
  }
  std::string collectionPath = directory + "/" + collectionName;
  std::ofstream out(collectionPath, std::ios::binary | std::ios::trunc);
  if (!out) throw ToolError("cannot write " + collectionPath);
  WritePvd(out, CollectionEntries(plan, written), CollectionNotes(geometries, plan));
  report.written.push_back(collectionName);
  return report;
}

}  // namespace DovInspect
