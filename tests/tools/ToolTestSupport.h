#ifndef DOVINSPECT_TESTS_TOOLTESTSUPPORT_H
#define DOVINSPECT_TESTS_TOOLTESTSUPPORT_H

// Helpers of the dovinspect tests: scratch directories, running programs,
// reading exported files back through VTK's own Python reader, and a small
// model written through the public API (TestModel.cpp):
//
// Group "Model"
//   mesh "Plate": 6 nodes in two rows, cells quad 0 1 4 3, triangles 1 2 5
//   and 1 5 4; node ids 101..106; element sets "Left" (cell 0), "Right"
//   (cells 1, 2, hidden) and "All" (cells 0 1 2); instance group "Time" with
//   the values 0.5, 1 and 2, and per value the results "Temperature" (per
//   node), "Damage" (per cell of the whole mesh) and "Displacement" (vector).
//   shape "Bolt", moved by (10, 0, 0): a geometry of one 8-node cell, which
//   takes the shape's name.

#include <DovWriter/DovWriter.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "../support/HostCalls.h"
#include "Model.h"

namespace ToolTest {

extern const std::vector<float> kPlateCoordinates;
extern const std::vector<float> kBoltCoordinates;
float Temperature(int time, int node);
float Damage(int time, int cell);

using testsupport::makeArray;

// Writes the model to `path`. A `heavyBlockLimit` other than 0 cuts "Heavy
// Data" into small blocks, so that the file needs an index block.
// `temperatureChange` is added to the temperature of node 4 at time 1.
void WriteTestModel(const std::string& path, std::uint32_t heavyBlockLimit = 0,
                    float temperatureChange = 0);

// A fresh, empty directory under DOVWRITER_TEST_TMP, removed when the test
// process ends.
std::string ScratchDir(const std::string& name);
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& bytes);

struct ProcessResult {
  int status = -1;
  std::string out, err;
};
// Runs `arguments` (quoted for the shell) and collects both outputs.
ProcessResult RunProcess(const std::vector<std::string>& arguments);

// What VTK read from one file, by kind of record of vtk_summary.py: "counts"
// (points and cells), "coordinates", "celltypes", "cellnodes", "pointdata
// NAME" and "celldata NAME" (components, then the values) and, of a .pvd,
// "dataset N" (time, part and file of the Nth data set).
using VtkRecords = std::map<std::string, std::string>;
std::vector<double> Numbers(const std::string& text);

// True if /usr/bin/python3 can import vtk.
bool HaveVtkPython();
// Reads every file with VTK; fails the calling test on a reader error.
std::map<std::string, VtkRecords> ReadWithVtk(const std::vector<std::string>& paths);

// A model held in memory, for the parts of the tool that take geometries
// and a value source: each variable added gets a dataset of its own, at an
// offset of its own; Link adds one that shares an earlier one's dataset.
struct FakeModel : DovInspect::ValueSource {
  using GeometryInfo = DovInspect::GeometryInfo;
  GeometryInfo& Geometry(const std::string& name);
  void Add(GeometryInfo& g, const std::string& name, std::uint32_t type,
           const std::vector<float>& values, std::uint8_t width = 1);
  void Add(GeometryInfo& g, const std::string& name, std::uint32_t type,
           const std::vector<std::uint32_t>& words,
           std::uint8_t dataType = DovInspect::kUnsignedData, std::uint8_t width = 1);
  void Link(GeometryInfo& g, const std::string& name, const GeometryInfo& target,
            std::size_t index);
  std::vector<std::uint32_t> Words(std::uint32_t entryId, std::size_t index) override;

  std::vector<GeometryInfo> geometries;
  std::map<std::pair<std::uint32_t, std::size_t>, std::vector<std::uint32_t>> data;
  std::uint64_t nextOffset = 0;
};

}  // namespace ToolTest

#endif
