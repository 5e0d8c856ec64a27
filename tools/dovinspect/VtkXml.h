#ifndef DOVINSPECT_VTKXML_H
#define DOVINSPECT_VTKXML_H

// Writer of VTK XML unstructured grids (.vtu) with zlib-compressed binary
// data appended after the XML, in the layout of VTK's zlib compressor: per
// array a header of block count, block size, size of the last block and
// each block's compressed size, all UInt64, then the blocks. Arrays are
// handed over as producers that emit their values on demand, so that only
// one array is held plain at a time.
//
// A grid can hold several time steps: arrays tagged with a step are read by
// VTK for that step only, the others for every step.

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace DovInspect {

enum class VtkScalar { UInt8, Int32, UInt32, Int64, Float32, Float64 };

std::size_t ScalarSize(VtkScalar type);
const char* ScalarName(VtkScalar type);

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  virtual void Append(const unsigned char* bytes, std::size_t count) = 0;
};

// Little-endian emitters for producers; they encode in modest chunks.
void EmitUInt8(ByteSink& sink, const std::uint8_t* values, std::size_t count);
void EmitInt32(ByteSink& sink, const std::int32_t* values, std::size_t count);
void EmitUInt32(ByteSink& sink, const std::uint32_t* values, std::size_t count);
void EmitInt64(ByteSink& sink, const std::int64_t* values, std::size_t count);
void EmitFloat32(ByteSink& sink, const float* values, std::size_t count);

const int kEveryStep = -1;

struct VtkArray {
  std::string name;
  VtkScalar type = VtkScalar::Float32;
  unsigned components = 1;
  std::uint64_t tuples = 0;
  // Must emit exactly tuples * components values of `type`.
  std::function<void(ByteSink&)> produce;
  int timeStep = kEveryStep;

  std::uint64_t ByteCount() const { return tuples * components * ScalarSize(type); }
};

// A small array of the whole data set, written as text: strings if `texts`
// is used, else `numbers` of `type`.
struct VtkFieldArray {
  std::string name;
  std::vector<std::string> texts;
  std::vector<double> numbers;
  VtkScalar type = VtkScalar::Float64;
  unsigned components = 1;
};

struct VtuPiece {
  std::uint64_t points = 0;
  std::uint64_t cells = 0;
  VtkArray coordinates;   // Float32, 3 components, `points` tuples
  VtkArray connectivity;  // Int64, node indices of all cells
  VtkArray offsets;       // Int64, end of each cell in `connectivity`
  VtkArray types;         // UInt8, the VTK cell type of each cell
  std::vector<VtkArray> pointData;
  std::vector<VtkArray> cellData;
  std::vector<VtkFieldArray> fieldData;
  std::size_t timeSteps = 0;  // 0: no steps of its own
};

// Writes one piece. Throws ToolError if a producer emits a different number
// of bytes than its array declares, if zlib fails, or if the stream fails.
void WriteVtu(std::ostream& out, const VtuPiece& piece);

// `text` made safe for an XML attribute value: markup characters escaped,
// control characters (not allowed in XML 1.0) shown as '?'.
std::string XmlAttribute(const std::string& text);

}  // namespace DovInspect

#endif
