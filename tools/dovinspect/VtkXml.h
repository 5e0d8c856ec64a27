#ifndef DOVINSPECT_VTKXML_H
#define DOVINSPECT_VTKXML_H

// Writer of VTK XML unstructured grids (.vtu). Arrays are handed over as
// producers that emit their values on demand, so the writer never needs a
// second copy of a large array: with inline base64 the bytes are encoded as
// they come, with raw appended data they go straight to the stream.

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace DovInspect {

enum class VtkScalar { UInt8, UInt32, Int64, Float32 };

std::size_t ScalarSize(VtkScalar type);
const char* ScalarName(VtkScalar type);

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  virtual void Append(const unsigned char* bytes, std::size_t count) = 0;
};

// Little-endian emitters for producers; they encode in modest chunks.
void EmitUInt8(ByteSink& sink, const std::uint8_t* values, std::size_t count);
void EmitUInt32(ByteSink& sink, const std::uint32_t* values, std::size_t count);
void EmitInt64(ByteSink& sink, const std::int64_t* values, std::size_t count);
void EmitFloat32(ByteSink& sink, const float* values, std::size_t count);

struct VtkArray {
  std::string name;
  VtkScalar type = VtkScalar::Float32;
  unsigned components = 1;
  std::uint64_t tuples = 0;
  // Must emit exactly tuples * components values of `type`.
  std::function<void(ByteSink&)> produce;

  std::uint64_t ByteCount() const { return tuples * components * ScalarSize(type); }
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
};

enum class VtkEncoding { Base64, Raw };

// Writes one piece. Throws ToolError if a producer emits a different number
// of bytes than its array declares, or if the stream fails.
void WriteVtu(std::ostream& out, const VtuPiece& piece, VtkEncoding encoding);

// Base64 of a whole buffer; exposed for tests and for small texts.
std::string Base64(const unsigned char* bytes, std::size_t count);

// `text` made safe for an XML attribute value: markup characters escaped,
// control characters (not allowed in XML 1.0) shown as '?'.
std::string XmlAttribute(const std::string& text);

}  // namespace DovInspect

#endif
