// info: what a model file holds, at a glance.

#include <cstdio>
#include <fstream>
#include <iomanip>
#include <map>

#include "Commands.h"
#include "Reading.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

// The version text of the head: the four bytes behind the magic number,
// up to the first zero byte.
std::string HeadVersion(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char head[12] = {};
  in.read(head, sizeof head);
  std::string version(head + 8, 4);
  return version.substr(0, version.find('\0'));
}

void PrintBlocks(const DovReader::Container& container, std::ostream& out) {
  std::size_t stream = 0, index = 0, pool = 0;
  for (const DovReader::BlockInfo& block : container.Blocks()) {
    if (block.IsIndexBlock())
      ++index;
    else if (block.IsPoolBlock())
      ++pool;
    else
      ++stream;
  }
  out << "Blocks:       " << container.Blocks().size() << " (" << stream << " stream, " << index
      << " index, " << pool << " pool)\n";
}

void PrintStreams(const DovReader::Container& container, std::ostream& out) {
  out << "Streams:\n  " << std::left << std::setw(20) << "name" << std::right << std::setw(8)
      << "blocks" << std::setw(16) << "plain bytes" << std::setw(16) << "stored bytes"
      << std::setw(8) << "ratio"
      << "\n";
  for (const std::string& name : container.StreamNames()) {
    std::uint64_t stored = 0, blocks = 0;
    for (const DovReader::BlockInfo& block : container.Blocks()) {
      if (block.IsStreamBlock() && block.name == name) {
        stored += block.size;
        ++blocks;
      }
    }
    std::uint64_t plain = container.StreamLength(name);
    char ratio[32] = "-";
    if (stored > 0) std::snprintf(ratio, sizeof ratio, "%.2f", double(plain) / double(stored));
    out << "  " << std::left << std::setw(20) << Readable(name) << std::right << std::setw(8)
        << blocks << std::setw(16) << plain << std::setw(16) << stored << std::setw(8) << ratio
        << "\n";
  }
}

void PrintScene(const DovReader::Scene& scene, std::ostream& out) {
  std::map<std::string, std::size_t> nodes;
  std::size_t variables = 0, datasets = 0;
  for (const DovReader::TreeRecord& record : scene.Records()) {
    ++nodes[record.typeName];
    variables += record.variables.size();
    for (const DovReader::Variable& variable : record.variables) datasets += !variable.linked;
  }
  out << "Scene:        " << scene.Records().size() << " tree entries: " << nodes["Group"]
      << " groups, " << nodes["Shape"] << " shapes, " << nodes["Geometry"] << " geometries\n"
      << "Variables:    " << variables << " (" << datasets << " with a dataset, "
      << variables - datasets << " linked)\n";
}

int RunInfo(const CommandLine& line, std::ostream& out, std::ostream&) {
  const std::string& path = line.positional[0];
  ModelFile model(path);
  const DovReader::GlobalInformation& info = model.Scene().Information();
  out << "File:         " << path << " (" << model.Container().FileLength() << " bytes)\n"
      << "Head:         format version " << HeadVersion(path) << "\n"
      << "Application:  " << (info.applicationName.empty() ? "(not given)" : info.applicationName)
      << (info.applicationVersion.empty() ? "" : " " + info.applicationVersion) << "\n"
      << "Format:       " << info.formatVersion << " (information record " << info.version << ")\n"
      << "Created:      " << info.creationDate << "\n";
  if (!info.computerName.empty() || !info.userName.empty()) {
    out << "Written on:   " << info.computerName << " by " << info.userName << "\n";
  }
  if (!info.comment.empty()) out << "Comment:      " << info.comment << "\n";
  PrintBlocks(model.Container(), out);
  PrintStreams(model.Container(), out);
  PrintScene(model.Scene(), out);
  return kExitOk;
}

}  // namespace

const Command& InfoCommand() {
  static const Command command{
      "info",
      "Show the head, who wrote the file, its streams and the size of its scene.",
      "FILE",
      "Prints the format version of the head, the global information, the number\n"
      "of blocks, each stream with its size before and after compression, and the\n"
      "numbers of groups, shapes, geometries, variables and datasets.\n",
      {},
      1,
      1,
      RunInfo};
  return command;
}

}  // namespace DovInspect
