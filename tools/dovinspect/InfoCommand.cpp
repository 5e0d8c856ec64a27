// info: what a model file holds, at a glance.

#include <cstdio>
#include <iomanip>
#include <map>

#include "Commands.h"
#include "FileHead.h"
#include "Json.h"
#include "Reading.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

struct BlockCounts {
  std::size_t all = 0, stream = 0, index = 0, pool = 0;
};

struct StreamSummary {
  std::string name;
  std::uint64_t blocks = 0, plain = 0, stored = 0;
};

struct SceneCounts {
  std::size_t entries = 0, groups = 0, shapes = 0, geometries = 0;
  std::size_t variables = 0, datasets = 0;
};

// What both printers show.
struct InfoReport {
  std::string path;
  std::uint64_t fileBytes = 0;
  std::string headVersion;
  DovReader::GlobalInformation information;
  BlockCounts blocks;
  std::vector<StreamSummary> streams;
  SceneCounts scene;
};

BlockCounts CountBlocks(const DovReader::Container& container) {
  BlockCounts counts;
  counts.all = container.Blocks().size();
  for (const DovReader::BlockInfo& block : container.Blocks()) {
    if (block.IsIndexBlock())
      ++counts.index;
    else if (block.IsPoolBlock())
      ++counts.pool;
    else
      ++counts.stream;
  }
  return counts;
}

std::vector<StreamSummary> SummarizeStreams(const DovReader::Container& container) {
  std::vector<StreamSummary> streams;
  for (const std::string& name : container.StreamNames()) {
    StreamSummary stream;
    stream.name = name;
    for (const DovReader::BlockInfo& block : container.Blocks()) {
      if (block.IsStreamBlock() && block.name == name) {
        stream.stored += block.size;
        ++stream.blocks;
      }
    }
    stream.plain = container.StreamLength(name);
    streams.push_back(stream);
  }
  return streams;
}

SceneCounts CountScene(const DovReader::Scene& scene) {
  std::map<std::string, std::size_t> nodes;
  SceneCounts counts;
  for (const DovReader::TreeRecord& record : scene.Records()) {
    ++nodes[record.typeName];
    counts.variables += record.variables.size();
    for (const DovReader::Variable& variable : record.variables)
      counts.datasets += !variable.linked;
  }
  counts.entries = scene.Records().size();
  counts.groups = nodes["Group"];
  counts.shapes = nodes["Shape"];
  counts.geometries = nodes["Geometry"];
  return counts;
}

InfoReport CollectInfo(const std::string& path) {
  ModelFile model(path);
  InfoReport report;
  report.path = path;
  report.fileBytes = model.Container().FileLength();
  report.headVersion = HeadVersion(path);
  report.information = model.Scene().Information();
  report.blocks = CountBlocks(model.Container());
  report.streams = SummarizeStreams(model.Container());
  report.scene = CountScene(model.Scene());
  return report;
}

void PrintStreams(const std::vector<StreamSummary>& streams, std::ostream& out) {
  out << "Streams:\n  " << std::left << std::setw(20) << "name" << std::right << std::setw(8)
      << "blocks" << std::setw(16) << "plain bytes" << std::setw(16) << "stored bytes"
      << std::setw(8) << "ratio"
      << "\n";
  for (const StreamSummary& stream : streams) {
    char ratio[32] = "-";
    if (stream.stored > 0) {
      std::snprintf(ratio, sizeof ratio, "%.2f", double(stream.plain) / double(stream.stored));
    }
    out << "  " << std::left << std::setw(20) << Readable(stream.name) << std::right << std::setw(8)
        << stream.blocks << std::setw(16) << stream.plain << std::setw(16) << stream.stored
        << std::setw(8) << ratio << "\n";
  }
}

void PrintText(const InfoReport& report, std::ostream& out) {
  const DovReader::GlobalInformation& info = report.information;
  const SceneCounts& scene = report.scene;
  out << "File:         " << report.path << " (" << report.fileBytes << " bytes)\n"
      << "Head:         format version " << report.headVersion << "\n"
      << "Application:  " << (info.applicationName.empty() ? "(not given)" : info.applicationName)
      << (info.applicationVersion.empty() ? "" : " " + info.applicationVersion) << "\n"
      << "Format:       " << info.formatVersion << " (information record " << info.version << ")\n"
      << "Created:      " << info.creationDate << "\n";
  if (!info.computerName.empty() || !info.userName.empty()) {
    out << "Written on:   " << info.computerName << " by " << info.userName << "\n";
  }
  if (!info.comment.empty()) out << "Comment:      " << info.comment << "\n";
  out << "Blocks:       " << report.blocks.all << " (" << report.blocks.stream << " stream, "
      << report.blocks.index << " index, " << report.blocks.pool << " pool)\n";
  PrintStreams(report.streams, out);
  out << "Scene:        " << scene.entries << " tree entries: " << scene.groups << " groups, "
      << scene.shapes << " shapes, " << scene.geometries << " geometries\n"
      << "Variables:    " << scene.variables << " (" << scene.datasets << " with a dataset, "
      << scene.variables - scene.datasets << " linked)\n";
}

void PrintJson(const InfoReport& report, std::ostream& out) {
  const DovReader::GlobalInformation& info = report.information;
  JsonWriter json(out);
  json.BeginObject().Field("file", report.path).Field("bytes", report.fileBytes);
  json.Field("headVersion", report.headVersion);
  json.Key("information").BeginObject();
  json.Field("recordVersion", info.version).Field("application", info.applicationName);
  json.Field("applicationVersion", info.applicationVersion);
  json.Field("formatVersion", info.formatVersion).Field("created", info.creationDate);
  json.Field("computer", info.computerName).Field("user", info.userName);
  json.Field("comment", info.comment).EndObject();
  json.Key("blocks").BeginObject().Field("all", report.blocks.all);
  json.Field("stream", report.blocks.stream).Field("index", report.blocks.index);
  json.Field("pool", report.blocks.pool).EndObject();
  json.Key("streams").BeginArray();
  for (const StreamSummary& stream : report.streams) {
    json.BeginObject().Field("name", stream.name).Field("blocks", stream.blocks);
    json.Field("plainBytes", stream.plain).Field("storedBytes", stream.stored).EndObject();
  }
  json.EndArray();
  const SceneCounts& scene = report.scene;
  json.Key("scene").BeginObject().Field("entries", scene.entries);
  json.Field("groups", scene.groups).Field("shapes", scene.shapes);
  json.Field("geometries", scene.geometries).Field("variables", scene.variables);
  json.Field("datasets", scene.datasets).Field("links", scene.variables - scene.datasets);
  json.EndObject().EndObject().Finish();
}

int RunInfo(const CommandLine& line, std::ostream& out, std::ostream&) {
  const InfoReport report = CollectInfo(line.positional[0]);
  if (line.Has("--json"))
    PrintJson(report, out);
  else
    PrintText(report, out);
  return kExitOk;
}

}  // namespace

const Command& InfoCommand() {
  static const Command command{
      "info",
      "Show the head, who wrote the file, its streams and the size of its scene.",
      "FILE [--json]",
      "Prints the format version of the head, the global information, the number\n"
      "of blocks, each stream with its size before and after compression, and the\n"
      "numbers of groups, shapes, geometries, variables and datasets.\n\n"
      "Options:\n" DOVINSPECT_JSON_HELP,
      {kJsonOption},
      1,
      1,
      RunInfo};
  return command;
}

}  // namespace DovInspect
