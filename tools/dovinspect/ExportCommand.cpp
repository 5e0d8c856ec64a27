// export: VTK files that ParaView opens.

#include <filesystem>
#include <system_error>

#include "Commands.h"
#include "Export.h"
#include "Progress.h"
#include "Reading.h"

namespace DovInspect {

namespace {

CellStyle ParseCellStyle(const std::string& text) {
  if (text == "surface") return CellStyle::Surface;
  if (text == "solid") return CellStyle::Solid;
  throw UsageError("--cells expects 'surface' or 'solid', not '" + text + "'");
}

void MakeDirectory(const std::string& directory) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error || !std::filesystem::is_directory(directory)) {
    throw ToolError("cannot create the directory " + directory + ": " + error.message());
  }
}

int RunExportCommand(const CommandLine& line, std::ostream& out, std::ostream& err) {
  const std::string& file = line.positional[0];
  const std::string& directory = line.positional[1];
  ExportOptions options;
  options.encoding = line.Has("--raw") ? VtkEncoding::Raw : VtkEncoding::Base64;
  options.style = ParseCellStyle(line.Value("--cells", "surface"));
  std::string collection = std::filesystem::path(file).stem().string() + ".pvd";
  collection = line.Value("--name", collection);

  ModelFile model(file);
  std::vector<GeometryInfo> geometries = model.Geometries();
  ExportPlan plan = PlanExport(geometries);
  MakeDirectory(directory);
  ExportReport report;
  {
    ProgressLine progress(err, ErrorIsTerminal());
    report = RunExport(
        geometries, plan, model, directory, collection, options,
        [&progress](std::size_t done, std::size_t total) { progress.Update(done, total); });
  }
  for (const std::string& warning : report.warnings) err << "warning: " << warning << "\n";
  for (const std::string& failure : report.failures) err << "error: " << failure << "\n";
  out << "Wrote " << report.written.size() - 1 << " pieces and " << directory << "/" << collection
      << "\n";
  return report.failures.empty() ? kExitOk : kExitFailure;
}

const std::string& ExportDetails() {
  static const std::string details =
      std::string(
          "Writes one VTK unstructured grid (.vtu) per geometry, or per geometry and\n"
          "instance value when the geometry holds data per instance value, and one\n"
          "collection (.pvd) that ParaView opens as a time series.\n\n"
          "Points come from \"Coordinates\" (a value's own coordinates if it has\n"
          "them), cells from \"Connectivity\" and \"Polylength\". Node ids become the\n"
          "point array \"Node Ids\". Every other variable becomes a point array if\n"
          "its number of tuples equals the number of points, else a cell array if it\n"
          "equals the number of cells; otherwise it is left out with a warning.\n\n"
          "Instance values that all read as distinct numbers are the times of the\n"
          "collection; otherwise the values count 0, 1, 2 ... in their order, and the\n"
          "collection notes which value each time stands for. A geometry without\n"
          "instance values stands at every time.\n\n") +
      CellMappingHelp() +
      "\nOptions:\n"
      "  --cells=STYLE  'surface' (default) or 'solid': how cells of 4, 5, 6 and 8\n"
      "                 nodes of a cell mesh are read\n"
      "  --raw          write the arrays as raw appended bytes instead of inline\n"
      "                 base64 (smaller and faster, not plain XML)\n"
      "  --name NAME    the collection's file name (default: FILE's name with .pvd)\n\n"
      "Exits with 1 if a piece could not be written; the others are still written.\n";
  return details;
}

}  // namespace

const Command& ExportCommand() {
  static const Command command{"export",
                               "Convert a model file to VTK files for ParaView.",
                               "FILE OUTDIR [--cells=surface|solid] [--raw] [--name NAME]",
                               ExportDetails().c_str(),
                               {{"--cells", true}, {"--raw", false}, {"--name", true}},
                               2,
                               2,
                               RunExportCommand};
  return command;
}

}  // namespace DovInspect
