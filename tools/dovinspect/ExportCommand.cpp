// export: VTK files that ParaView opens.

#include <filesystem>
#include <system_error>

#include "Commands.h"
#include "Export.h"
#include "FileHead.h"
#include "Progress.h"
#include "reader/Model.h"

namespace DovInspect {

namespace {

DovReader::CellRule ParseCellRule(const std::string& text) {
  if (text == "shape") return DovReader::CellRule::ByShape;
  if (text == "surface") return DovReader::CellRule::Surface;
  if (text == "solid") return DovReader::CellRule::Solid;
  throw UsageError("--cells expects 'shape', 'surface' or 'solid', not '" + text + "'");
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
  options.rule = ParseCellRule(line.Value("--cells", "shape"));
  options.series = line.Has("--series");
  std::string collection = std::filesystem::path(file).stem().string() + ".pvd";
  collection = line.Value("--name", collection);

  RequireModelFile(file);
  DovReader::Model model(file);
  const ExportPlan plan = PlanExport(model, options.series);
  MakeDirectory(directory);
  ExportReport report;
  {
    ProgressLine progress(err, ErrorIsTerminal());
    report = RunExport(
        model, plan, directory, collection, options,
        [&progress](std::size_t done, std::size_t total) { progress.Update(done, total); });
  }
  for (const std::string& warning : report.warnings) err << "warning: " << warning << "\n";
  for (const std::string& failure : report.failures) err << "error: " << failure << "\n";
  const std::size_t files = report.written.size() - (options.series ? 1 : 0);
  out << "Wrote " << files << " files to " << directory;
  if (options.series) out << " and " << directory << "/" << collection;
  out << "\n";
  return report.failures.empty() ? kExitOk : kExitFailure;
}

const std::string& ExportDetails() {
  static const std::string details =
      std::string(
          "Writes one VTK unstructured grid (.vtu) per piece of the model: a mesh\n"
          "with the points once and the cells of all its element sets, or any other\n"
          "geometry on its own. Points stand where the groups above them place\n"
          "them. The cell data \"Element Set\" numbers each cell's set; the field\n"
          "data name the sets (\"Element Set Names\") and give their \"Diffuse\n"
          "Color\" and \"Visibility\", and the piece's \"Tree Path\". Data are\n"
          "zlib-compressed binary, as VTK's own writer leaves them.\n\n"
          "Node ids become the point array \"Node Ids\". Every other variable becomes\n"
          "a point array if its number of tuples equals the number of points, else a\n"
          "cell array if it equals the number of cells; otherwise it is left out\n"
          "with a warning.\n\n"
          "Instance values are time steps: ascending numbers where all of them are\n"
          "distinct numbers, else in order of first use. A piece with data per value\n"
          "holds all steps in its one file (VTK counts them 0, 1, 2 ...; the field\n"
          "data \"Instance Values\" name them), unless its points or cells change\n"
          "from value to value: then it gets one file per step, with the step's time\n"
          "as \"TimeValue\". With --series every such piece gets one file per step,\n"
          "and a collection (.pvd) that ParaView opens with the values as times.\n\n") +
      DovReader::CellRuleHelp() +
      "\nOptions:\n"
      "  --cells=RULE   'shape' (default), 'surface' or 'solid': how cells of 4, 5,\n"
      "                 6 and 8 nodes of a cell mesh are typed\n"
      "  --series       one file per piece and step, and a .pvd collection\n"
      "  --name NAME    the collection's file name (default: FILE's name with .pvd)\n\n"
      "Exits with 1 if a file could not be written; the others are still written.\n";
  return details;
}

}  // namespace

const Command& ExportCommand() {
  static const Command command{"export",
                               "Convert a model file to VTK files for ParaView.",
                               "FILE OUTDIR [--cells=shape|surface|solid] [--series] [--name NAME]",
                               ExportDetails().c_str(),
                               {{"--cells", true}, {"--series", false}, {"--name", true}},
                               2,
                               2,
                               RunExportCommand};
  return command;
}

}  // namespace DovInspect
