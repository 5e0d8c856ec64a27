#include "Pvd.h"

#include "Cli.h"
#include "ValueNames.h"
#include "VtkXml.h"

namespace DovInspect {

namespace {

// "--" may not appear inside an XML comment.
std::string CommentText(const std::string& text) {
  std::string result = XmlAttribute(text);
  std::size_t at;
  while ((at = result.find("--")) != std::string::npos) result.replace(at, 2, "- -");
  return result;
}

}  // namespace

void WritePvd(std::ostream& out, const std::vector<PvdDataSet>& dataSets,
              const std::vector<std::string>& notes) {
  out << "<?xml version=\"1.0\"?>\n"
      << "<VTKFile type=\"Collection\" version=\"0.1\" byte_order=\"LittleEndian\">\n";
  for (const std::string& note : notes) out << "  <!-- " << CommentText(note) << " -->\n";
  out << "  <Collection>\n";
  for (const PvdDataSet& dataSet : dataSets) {
    out << "    <DataSet timestep=\"" << FormatNumber(dataSet.time) << "\" group=\"\" part=\""
        << dataSet.part << "\" file=\"" << XmlAttribute(dataSet.file) << "\"/>\n";
  }
  out << "  </Collection>\n</VTKFile>\n";
  if (!out) throw ToolError("writing the collection file failed");
}

}  // namespace DovInspect
