#ifndef DOVINSPECT_TESTS_TOOLTESTSUPPORT_H
#define DOVINSPECT_TESTS_TOOLTESTSUPPORT_H

// Helpers of the dovinspect tests: scratch directories, running programs,
// and reading exported files back through VTK's own Python reader.

#include <map>
#include <string>
#include <vector>

namespace ToolTest {

// A fresh, empty directory under DOVWRITER_TEST_TMP, removed when the test
// process ends.
std::string ScratchDir(const std::string& name);

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);

struct ProcessResult {
  int status = -1;
  std::string out;
  std::string err;
};
// Runs `arguments` (quoted for the shell) and collects both outputs.
ProcessResult RunProcess(const std::vector<std::string>& arguments);

struct VtkArraySummary {
  int components = 0;
  std::string type;
  std::vector<double> values;
};

struct VtkFileSummary {
  long points = -1;
  long cells = -1;
  std::vector<double> coordinates;
  std::vector<long> cellTypes;
  std::vector<long> cellSizes;
  std::vector<long> cellNodes;
  std::map<std::string, VtkArraySummary> pointData;
  std::map<std::string, VtkArraySummary> cellData;
  // For a .pvd: time, part and file of each data set.
  std::vector<std::string> dataSets;
};

// True if /usr/bin/python3 can import vtk.
bool HaveVtkPython();
// Reads every file with VTK; fails the calling test on a reader error.
std::map<std::string, VtkFileSummary> ReadWithVtk(const std::vector<std::string>& paths);

}  // namespace ToolTest

#endif
