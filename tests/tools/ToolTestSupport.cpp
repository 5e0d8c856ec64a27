#include "ToolTestSupport.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

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

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> fields;
  std::stringstream stream(line);
  std::string field;
  while (std::getline(stream, field, '\t')) fields.push_back(field);
  return fields;
}

template <class T>
std::vector<T> Numbers(const std::string& text) {
  std::vector<T> values;
  std::stringstream stream(text);
  T value;
  while (stream >> value) values.push_back(value);
  return values;
}

void AddRecord(VtkFileSummary& summary, const std::vector<std::string>& f) {
  const std::string& kind = f[0];
  std::string rest = f.size() > 1 ? f[1] : "";
  if (kind == "points") summary.points = std::stol(rest);
  if (kind == "cells") summary.cells = std::stol(rest);
  if (kind == "coordinates") summary.coordinates = Numbers<double>(rest);
  if (kind == "celltypes") summary.cellTypes = Numbers<long>(rest);
  if (kind == "cellsizes") summary.cellSizes = Numbers<long>(rest);
  if (kind == "cellnodes") summary.cellNodes = Numbers<long>(rest);
  if (kind == "dataset") summary.dataSets.push_back(f[1] + " " + f[2] + " " + f[3]);
  if ((kind == "pointdata" || kind == "celldata") && f.size() >= 4) {
    VtkArraySummary array{std::stoi(f[2]), f[3], Numbers<double>(f.size() > 4 ? f[4] : "")};
    (kind == "pointdata" ? summary.pointData : summary.cellData)[f[1]] = array;
  }
}

}  // namespace

// Each test runs as a process of its own, in parallel with the others: a
// directory carries the process id, and goes when the process ends.
class ScratchDirs {
 public:
  ~ScratchDirs() {
    std::error_code ignored;
    for (const std::string& dir : dirs) std::filesystem::remove_all(dir, ignored);
  }
  std::vector<std::string> dirs;
};

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
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

ProcessResult RunProcess(const std::vector<std::string>& arguments) {
  static int counter = 0;
  std::string capture = ScratchDir("capture-" + std::to_string(++counter));
  std::string command;
  for (const std::string& argument : arguments) command += ShellQuote(argument) + " ";
  command += ">" + ShellQuote(capture + "/out") + " 2>" + ShellQuote(capture + "/err");
  ProcessResult result;
  int raw = std::system(command.c_str());
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.out = ReadFile(capture + "/out");
  result.err = ReadFile(capture + "/err");
  std::filesystem::remove_all(capture);
  return result;
}

bool HaveVtkPython() {
  static int have = -1;
  if (have < 0) {
    have = RunProcess({"/usr/bin/python3", "-c", "import vtk"}).status == 0 ? 1 : 0;
  }
  return have == 1;
}

std::map<std::string, VtkFileSummary> ReadWithVtk(const std::vector<std::string>& paths) {
  std::vector<std::string> command = {"/usr/bin/python3",
                                      DOVWRITER_SOURCE_DIR "/tests/tools/vtk_summary.py"};
  command.insert(command.end(), paths.begin(), paths.end());
  ProcessResult run = RunProcess(command);
  EXPECT_EQ(run.status, 0) << run.err;
  std::map<std::string, VtkFileSummary> summaries;
  std::stringstream lines(run.out);
  std::string line;
  VtkFileSummary* current = nullptr;
  while (std::getline(lines, line)) {
    std::vector<std::string> fields = SplitTabs(line);
    if (fields.empty()) continue;
    if (fields[0] == "file") {
      current = &summaries[fields[1]];
    } else if (current) {
      AddRecord(*current, fields);
    }
  }
  return summaries;
}

}  // namespace ToolTest
