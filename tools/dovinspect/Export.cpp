#include "Export.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>

#include "Cli.h"
#include "Failure.h"
#include "Pvd.h"
#include "ValueNames.h"
#include "VtkXml.h"

namespace DovInspect {

namespace {

using DovReader::FieldInfo;
using DovReader::kNoStep;

// Everything one file needs while it is written.
struct FileContext {
  DovReader::Model& model;
  const DovReader::ModelPiece& piece;
  std::vector<std::string>& warnings;
  std::string label;  // the piece, and value, for messages
};

void EmitNodeIndices(ByteSink& sink, const std::vector<std::uint32_t>& nodes) {
  std::vector<std::int64_t> chunk;
  const std::size_t kChunk = 8192;
  for (std::size_t start = 0; start < nodes.size(); start += kChunk) {
    const std::size_t end = std::min(nodes.size(), start + kChunk);
    chunk.assign(nodes.begin() + static_cast<std::ptrdiff_t>(start),
                 nodes.begin() + static_cast<std::ptrdiff_t>(end));
    EmitInt64(sink, chunk.data(), chunk.size());
  }
}

VtkArray ResultArray(DovReader::Model& model, const FieldInfo& field, int timeStep) {
  VtkScalar type = field.isFloat ? VtkScalar::Float32 : VtkScalar::UInt32;
  return {field.name, type, field.components, field.values / field.components,
          [&model, field](ByteSink& sink) {
            std::vector<std::uint32_t> words = model.Values(field.entryId, field.index);
            EmitUInt32(sink, words.data(), words.size());  // floats travel by their bits
          },
          timeStep};
}

// Puts a result among the point or the cell data, by its number of tuples.
void AddResult(const FileContext& context, const FieldInfo& field, int timeStep, VtuPiece& vtu) {
  switch (DovReader::Classify(field, vtu.points, vtu.cells)) {
    case DovReader::Association::Point:
      vtu.pointData.push_back(ResultArray(context.model, field, timeStep));
      return;
    case DovReader::Association::Cell:
      vtu.cellData.push_back(ResultArray(context.model, field, timeStep));
      return;
    case DovReader::Association::None:
      break;
  }
  std::string at = timeStep == kEveryStep
                       ? ""
                       : " at value '" + Readable(context.model.Steps().values[timeStep]) + "'";
  context.warnings.push_back(context.label + ": result " + Readable(field.name) + at + ": " +
                             std::to_string(field.values) + " values in tuples of " +
                             std::to_string(field.components) + " fit neither the " +
                             std::to_string(vtu.points) + " points nor the " +
                             std::to_string(vtu.cells) + " cells, left out");
}

// In a file of every step, a result that is the same data at every step is
// written once; the others once per step, tagged with it. VTK's reader
// keeps its place among the arrays only if all tagged arrays come first,
// in the same order at every step, so arrays for every step go last.
void AddResultsOfEveryStep(const FileContext& context, VtuPiece& vtu) {
  const int steps = static_cast<int>(context.model.Steps().values.size());
  std::vector<std::vector<FieldInfo>> perStep;
  std::map<std::string, std::set<const DovReader::Variable*>> holders;
  std::map<std::string, int> present;
  for (int step = 0; step < steps; ++step) {
    perStep.push_back(context.model.Fields(context.piece, step));
    for (const FieldInfo& field : perStep.back()) {
      holders[field.name].insert(field.holder);
      ++present[field.name];
    }
  }
  auto constant = [&](const std::string& name) {
    return present[name] == steps && holders[name].size() == 1;
  };
  for (int step = 0; step < steps; ++step)
    for (const FieldInfo& field : perStep[static_cast<std::size_t>(step)])
      if (!constant(field.name)) AddResult(context, field, step, vtu);
  for (const FieldInfo& field : perStep[0])
    if (constant(field.name)) AddResult(context, field, kEveryStep, vtu);
}

// What the piece's element sets look like, and which steps the file holds.
std::vector<VtkFieldArray> FieldData(const FileContext& context, const ExportFile& file) {
  VtkFieldArray names{"Element Set Names", {}, {}, VtkScalar::Float64, 1};
  VtkFieldArray colors{"Diffuse Color", {}, {}, VtkScalar::Float32, 3};
  VtkFieldArray visible{"Visibility", {}, {}, VtkScalar::UInt8, 1};
  for (std::uint32_t geometry : context.piece.geometries) {
    const DovReader::ModelNode& node = context.model.Node(geometry);
    names.texts.push_back(node.name);
    colors.numbers.insert(colors.numbers.end(), node.color.begin(), node.color.end());
    visible.numbers.push_back(node.visible ? 1 : 0);
  }
  std::vector<VtkFieldArray> arrays = {names, colors, visible};
  arrays.push_back({"Tree Path", {context.piece.path}, {}, VtkScalar::Float64, 1});
  const DovReader::TimeAxis& steps = context.model.Steps();
  if (file.everyStep) arrays.push_back({"Instance Values", steps.values, {}, VtkScalar::Float64, 1});
  if (file.step != kNoStep) {
    const std::size_t step = static_cast<std::size_t>(file.step);
    // VTK reads "TimeValue" as the time of a file of one step.
    arrays.push_back({"TimeValue", {}, {steps.times[step]}, VtkScalar::Float64, 1});
    arrays.push_back({"Instance Value", {steps.values[step]}, {}, VtkScalar::Float64, 1});
  }
  return arrays;
}

void WriteFile(const FileContext& context, const ExportFile& file, const std::string& path,
               const ExportOptions& options) {
  const int geometryStep = file.everyStep ? 0 : file.step;
  const DovReader::PointSet points = context.model.ReadPoints(context.piece, geometryStep);
  const DovReader::CellSet cells =
      context.model.ReadCells(context.piece, geometryStep, points, options.rule);
  for (const auto* list : {&points.warnings, &cells.warnings})
    for (const std::string& warning : *list) context.warnings.push_back(context.label + ": " + warning);

  VtuPiece vtu;
  vtu.points = points.Count();
  vtu.cells = cells.Count();
  vtu.coordinates = {"Points", VtkScalar::Float32, 3, vtu.points,
                     [&](ByteSink& s) { EmitFloat32(s, points.xyz.data(), points.xyz.size()); }};
  vtu.connectivity = {"connectivity", VtkScalar::Int64, 1, cells.connectivity.size(),
                      [&](ByteSink& s) { EmitNodeIndices(s, cells.connectivity); }};
  vtu.offsets = {"offsets", VtkScalar::Int64, 1, vtu.cells,
                 [&](ByteSink& s) { EmitInt64(s, cells.offsets.data(), cells.offsets.size()); }};
  vtu.types = {"types", VtkScalar::UInt8, 1, vtu.cells,
               [&](ByteSink& s) { EmitUInt8(s, cells.types.data(), cells.types.size()); }};
  if (file.everyStep) {
    vtu.timeSteps = context.model.Steps().values.size();
    AddResultsOfEveryStep(context, vtu);
  } else {
    for (const FieldInfo& field : context.model.Fields(context.piece, file.step))
      AddResult(context, field, kEveryStep, vtu);
  }
  vtu.cellData.push_back({"Element Set", VtkScalar::Int32, 1, vtu.cells, [&](ByteSink& s) {
                            EmitInt32(s, cells.geometry.data(), cells.geometry.size());
                          }});
  if (!points.nodeIds.empty()) {
    vtu.pointData.push_back({"Node Ids", VtkScalar::Int64, 1, vtu.points, [&](ByteSink& s) {
                               EmitInt64(s, points.nodeIds.data(), points.nodeIds.size());
                             }});
  }
  vtu.fieldData = FieldData(context, file);

  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw ToolError("cannot write " + path);
  WriteVtu(out, vtu);
  out.close();
  if (!out) throw ToolError("writing " + path + " failed");
}

std::string FileLabel(const DovReader::Model& model, const ExportFile& file) {
  std::string label = "piece " + Readable(model.Pieces()[file.piece].path);
  if (file.step != kNoStep) label += " at value '" + Readable(model.Steps().values[file.step]) + "'";
  return label;
}

// Data sets of the collection. A file without a step of its own stands at
// every time step, so that it stays visible while the others change.
std::vector<PvdDataSet> CollectionEntries(const DovReader::Model& model, const ExportPlan& plan,
                                          const std::vector<bool>& written) {
  const std::vector<double>& times = model.Steps().times;
  std::vector<PvdDataSet> entries;
  for (std::size_t i = 0; i < plan.files.size(); ++i) {
    if (!written[i]) continue;
    const ExportFile& file = plan.files[i];
    const unsigned part = static_cast<unsigned>(file.piece);
    if (file.step != kNoStep) {
      entries.push_back({times[static_cast<std::size_t>(file.step)], part, file.fileName});
    } else if (times.empty()) {
      entries.push_back({0.0, part, file.fileName});
    } else {
      for (double time : times) entries.push_back({time, part, file.fileName});
    }
  }
  std::stable_sort(entries.begin(), entries.end(), [](const PvdDataSet& a, const PvdDataSet& b) {
    return a.time < b.time || (a.time == b.time && a.part < b.part);
  });
  return entries;
}

std::vector<std::string> CollectionNotes(const DovReader::Model& model) {
  std::vector<std::string> notes;
  for (std::size_t p = 0; p < model.Pieces().size(); ++p)
    notes.push_back("part " + std::to_string(p) + ": " + Readable(model.Pieces()[p].path));
  const DovReader::TimeAxis& steps = model.Steps();
  if (!steps.numeric) {
    for (std::size_t i = 0; i < steps.values.size(); ++i)
      notes.push_back("time " + std::to_string(i) + ": instance value '" +
                      Readable(steps.values[i]) + "'");
  }
  return notes;
}

void WriteCollection(const DovReader::Model& model, const ExportPlan& plan,
                     const std::vector<bool>& written, const std::string& path) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw ToolError("cannot write " + path);
  WritePvd(out, CollectionEntries(model, plan, written), CollectionNotes(model));
}

}  // namespace

ExportReport RunExport(DovReader::Model& model, const ExportPlan& plan,
                       const std::string& directory, const std::string& collectionName,
                       const ExportOptions& options, const ExportProgress& progress) {
  ExportReport report;
  report.warnings = plan.notes;
  std::vector<bool> written(plan.files.size(), false);
  for (std::size_t i = 0; i < plan.files.size(); ++i) {
    const ExportFile& file = plan.files[i];
    FileContext context{model, model.Pieces()[file.piece], report.warnings, FileLabel(model, file)};
    const std::string path = directory + "/" + file.fileName;
    try {
      WriteFile(context, file, path, options);
      written[i] = true;
      report.written.push_back(file.fileName);
    } catch (const std::exception& e) {
      std::remove(path.c_str());
      report.failures.push_back(context.label + ": " + DescribeFailure(e));
    }
    if (progress) progress(i + 1, plan.files.size());
  }
  if (options.series) {
    WriteCollection(model, plan, written, directory + "/" + collectionName);
    report.written.push_back(collectionName);
  }
  return report;
}

}  // namespace DovInspect
