#include "FuzzSupport.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <streambuf>

#include "Commands.h"
#include "Kel/Util/Coding.h"
#include "reader/Container.h"
#include "reader/Scene.h"

namespace DovFuzz {

namespace {

// An output stream that throws its bytes away: the fuzzers look at what a
// command does, not at what it prints.
class Discard : public std::streambuf {
 protected:
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

struct ScratchPaths {
  std::map<std::string, std::string> paths;
  ~ScratchPaths() {
    std::error_code ignored;
    for (const auto& entry : paths) std::filesystem::remove_all(entry.second, ignored);
  }
};

void PutU32(std::string& bytes, std::size_t at, std::uint32_t value) {
  Kel::Util::EncodeFixed32(reinterpret_cast<unsigned char*>(&bytes[at]), value);
}

// A compressed block: the plain length, then the zlib stream.
std::string Compressed(const std::string& plain) {
  uLongf length = compressBound(plain.size());
  std::string stored(4 + length, '\0');
  PutU32(stored, 0, static_cast<std::uint32_t>(plain.size()));
  compress2(reinterpret_cast<Bytef*>(&stored[4]), &length,
            reinterpret_cast<const Bytef*>(plain.data()), plain.size(), 6);
  stored.resize(4 + length);
  return stored;
}

int Run(const std::vector<std::string>& args) {
  Discard discard;
  std::ostream out(&discard);
  const int status = DovInspect::RunTool(args, out, out);
  const bool checkWarned = args[0] == "check" && status == DovInspect::kExitWarnings;
  if (status != DovInspect::kExitOk && status != DovInspect::kExitFailure && !checkWarned)
    Fail("dovinspect " + args[0] + " exited with " + std::to_string(status));
  return status;
}

}  // namespace

const char* const kSceneStreams[6] = {"Dov Tree",  "Light Data",         "Attributes",
                                      "Resources", "Global Information", "Heavy Data"};
const char kStreamEnd[4] = {'\x1F', '#', '|', '#'};

void Fail(const std::string& what) {
  std::fprintf(stderr, "\n*** %s\n", what.c_str());
  std::abort();
}

const std::string& ScratchPath(const std::string& name) {
  static ScratchPaths scratch;
  std::string& path = scratch.paths[name];
  if (path.empty()) {
    const char* base = std::getenv("TMPDIR");
    path = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/dovfuzz-" +
           std::to_string(getpid()) + "-" + name;
  }
  return path;
}

void WriteBytes(const std::string& path, const std::uint8_t* data, std::size_t size) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  if (!file) Fail("cannot write the scratch file " + path);
}

void ReadEverything(const std::string& path) {
  DovReader::Container::Verify(path);
  try {
    const DovReader::Container container = DovReader::Container::Open(path);
    for (const std::string& name : container.StreamNames()) {
      try {
        container.ReadStream(name);
      } catch (const DovReader::ReadError&) {
      }
    }
    const DovReader::Scene scene = DovReader::Scene::Read(container);
    for (const DovReader::TreeRecord& record : scene.Records()) {
      scene.Depth(record.id);
      for (std::uint32_t i = 0; i < record.variables.size(); ++i) {
        try {
          scene.ReadValues(record.id, i);
        } catch (const DovReader::ReadError&) {
        }
      }
    }
  } catch (const DovReader::ReadError&) {
  }
}

void RunEveryCommand(const std::string& path, unsigned entry, unsigned variable) {
  const bool sound = Run({"verify", path}) == DovInspect::kExitOk;
  for (const char* command : {"info", "tree", "vars"})
    if (Run({command, path}) != DovInspect::kExitOk && sound)
      Fail(std::string("dovinspect ") + command + " fails on a file that verify calls sound");
  Run({"check", path, "--json"});
  if (Run({"diff", path, path}) != DovInspect::kExitOk && sound)
    Fail("dovinspect diff finds a file that verify calls sound unlike itself");
  Run({"dump", path, "#" + std::to_string(entry), std::to_string(variable)});
  const std::string& exported = ScratchPath("export");
  Run({"export", path, exported});
  std::error_code ignored;
  std::filesystem::remove_all(exported, ignored);
}

Streams SplitStreams(const std::uint8_t* data, std::size_t size) {
  const char* at = reinterpret_cast<const char*>(data);
  const char* end = at + size;
  Streams streams;
  for (const char* name : kSceneStreams) {
    const char* stop = std::search(at, end, kStreamEnd, kStreamEnd + sizeof kStreamEnd);
    if (stop != at) streams.emplace_back(name, std::string(at, stop));
    at = stop == end ? end : stop + sizeof kStreamEnd;
  }
  std::stable_partition(streams.begin(), streams.end(),
                        [](const auto& stream) { return stream.first == "Heavy Data"; });
  return streams;
}

std::string JoinStreams(const Streams& streams) {
  std::string joined;
  for (const char* name : kSceneStreams) {
    if (name != kSceneStreams[0]) joined.append(kStreamEnd, sizeof kStreamEnd);
    for (const auto& stream : streams)
      if (stream.first == name) joined += stream.second;
  }
  return joined;
}

// Laid out here rather than through the library's index, so that the packing
// stays small and fast: a head, the first index with one entry per stream,
// and each stream as one compressed block.
void PackStreams(const std::string& path, const Streams& streams) {
  const unsigned char head[12] = {0x89, 'T', 'M', 'F', '\r', '\n', 0x1A, '\n', '1', '.', '1', 0};
  std::string index(8 + 20 * 139, '\0'), blocks;
  PutU32(index, 0, 2784);
  PutU32(index, 4, 20);
  for (std::size_t entry = 0; entry < 20; ++entry) {
    std::string name = "\vEmpty Block ", stored;
    if (entry < streams.size()) {
      name = streams[entry].first;
      stored = Compressed(streams[entry].second);
    }
    const std::size_t at = 8 + 139 * entry;
    index[at] = static_cast<char>(entry + 1);
    PutU32(index, at + 1, 128);
    index.replace(at + 5, name.size(), name);
    PutU32(index, at + 133, static_cast<std::uint32_t>(stored.size()));
    index[at + 137] = stored.empty() ? 0 : 1;
    blocks += stored;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(head), sizeof head);
  file << index << blocks;
  if (!file) Fail("cannot write the scratch file " + path);
}

}  // namespace DovFuzz
