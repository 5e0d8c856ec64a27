#ifndef DOVINSPECT_TESTS_TESTMODEL_H
#define DOVINSPECT_TESTS_TESTMODEL_H

// A small model written through the public API, with what went into it.
//
// Group "Model"
//   mesh "Plate": 6 nodes in two rows, cells quad 0 1 4 3, triangles 1 2 5
//   and 1 5 4; node ids 101..106; element sets "Left" (cell 0), "Right"
//   (cells 1, 2, hidden) and "All" (cells 0 1 2); instance group "Time" with
//   the values 0.5, 1 and 2, and per value the results "Temperature" (per
//   node), "Damage" (per cell of the whole mesh) and "Displacement" (vector).
//   shape "Bolt", moved by (10, 0, 0): a geometry of one 8-node cell, which
//   takes the shape's name.

#include <cstdint>
#include <string>
#include <vector>

namespace ToolTest {

extern const float kTimes[3];
extern const std::vector<float> kPlateCoordinates;
extern const std::vector<float> kBoltCoordinates;

float Temperature(int time, int node);
float Damage(int time, int cell);

// Writes the model to `path`. A `heavyBlockLimit` other than 0 cuts "Heavy
// Data" into small blocks, so that the file needs an index block.
void WriteTestModel(const std::string& path, std::uint32_t heavyBlockLimit = 0);

}  // namespace ToolTest

#endif
