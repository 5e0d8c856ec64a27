#include "ToolTestSupport.h"

#include <Kel/Util/Coding.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ToolTest {

namespace {

std::string ShellQuote(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// Each test runs as a process of its own, in parallel with the others: a
// directory carries the process id, and goes when the process ends.
struct ScratchDirs {
  ~ScratchDirs() {
    std::error_code ignored;
    for (const std::string& dir : dirs) std::filesystem::remove_all(dir, ignored);
  }
  std::vector<std::string> dirs;
};

}  // namespace

std::vector<double> Numbers(const std::string& text) {
  std::vector<double> values;
  std::stringstream stream(text);
  for (double value; stream >> value;) values.push_back(value);
  return values;
}

std::string ScratchDir(const std::string& name) {
  static ScratchDirs created;
  const char* base = std::getenv("DOVWRITER_TEST_TMP");
  std::filesystem::path dir = base ? base : "/tmp/dovwriter-tests";
  dir /= "tools-" + name + "-" + std::to_string(getpid());
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  created.dirs.push_back(dir.string());
  return dir.string();
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

ProcessResult RunProcess(const std::vector<std::string>& arguments) {
  static const std::string capture = ScratchDir("capture");
  std::string command;
  for (const std::string& argument : arguments) command += ShellQuote(argument) + " ";
  command += ">" + ShellQuote(capture + "/out") + " 2>" + ShellQuote(capture + "/err");
  int raw = std::system(command.c_str());
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFile(capture + "/out"),
          ReadFile(capture + "/err")};
}

bool HaveVtkPython() {
  static const bool have = RunProcess({"/usr/bin/python3", "-c", "import vtk"}).status == 0;
  return have;
}

std::map<std::string, VtkRecords> ReadWithVtk(const std::vector<std::string>& paths) {
  std::vector<std::string> command = {"/usr/bin/python3",
                                      DOVWRITER_SOURCE_DIR "/tests/tools/vtk_summary.py"};
  command.insert(command.end(), paths.begin(), paths.end());
  ProcessResult run = RunProcess(command);
  EXPECT_EQ(run.status, 0) << run.err;
  std::map<std::string, VtkRecords> summaries;
  std::stringstream lines(run.out);
  VtkRecords* current = nullptr;
  for (std::string line; std::getline(lines, line);) {
    std::size_t tab = line.find('\t');
    std::string kind = line.substr(0, tab);
    std::string rest = tab == std::string::npos ? "" : line.substr(tab + 1);
    std::replace(rest.begin(), rest.end(), '\t', ' ');
    if (kind == "file") {
      current = &summaries[rest];
    } else if (current) {
      (*current)[kind] = rest;
    }
  }
  return summaries;
}

FakeModel::GeometryInfo& FakeModel::Geometry(const std::string& name) {
  const std::uint32_t entry = static_cast<std::uint32_t>(geometries.size() + 2);
  geometries.push_back({entry, name, "Root/" + name, {}});
  return geometries.back();
}

void FakeModel::Add(GeometryInfo& g, const std::string& name, std::uint32_t type,
                    const std::vector<float>& values, std::uint8_t width) {
  std::vector<std::uint32_t> words;
  for (float v : values) words.push_back(Kel::Util::FloatBits(v));
  Add(g, name, type, words, DovInspect::kFloatData, width);
}

void FakeModel::Add(GeometryInfo& g, const std::string& name, std::uint32_t type,
                    const std::vector<std::uint32_t>& words, std::uint8_t dataType,
                    std::uint8_t width) {
  g.variables.push_back({g.variables.size(), name, type, dataType, width, words.size()});
  g.variables.back().offset = nextOffset;
  nextOffset += 4 * words.size() + 4;
  data[{g.entryId, g.variables.back().index}] = words;
}

void FakeModel::Link(GeometryInfo& g, const std::string& name, const GeometryInfo& target,
                     std::size_t index) {
  DovInspect::VariableInfo link = target.variables.at(index);
  link.index = g.variables.size();
  link.name = name;
  link.linked = true;
  link.linkEntry = target.entryId;
  link.linkIndex = static_cast<std::uint32_t>(index);
  g.variables.push_back(link);
  data[{g.entryId, link.index}] = data.at({target.entryId, index});
}

std::vector<std::uint32_t> FakeModel::Words(std::uint32_t entryId, std::size_t index) {
  return data.at({entryId, index});
}

}  // namespace ToolTest
