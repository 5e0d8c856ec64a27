#include "VtkXml.h"

#include <Kel/Util/Coding.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Cli.h"
#include "ValueNames.h"

namespace DovInspect {

namespace {

// VTK's own block size: 32 KiB of plain bytes per zlib block.
const std::size_t kBlockSize = 32768;

// Cuts the bytes into blocks and deflates each one as it fills, keeping
// only the compressed bytes.
class ZlibSink : public ByteSink {
 public:
  void Append(const unsigned char* bytes, std::size_t count) override {
    total_ += count;
    while (count > 0) {
      const std::size_t take = std::min(count, kBlockSize - block_.size());
      block_.insert(block_.end(), bytes, bytes + take);
      bytes += take;
      count -= take;
      if (block_.size() == kBlockSize) Deflate();
    }
  }

  // The header and the blocks, as they go into the appended data.
  std::string Finish() {
    const std::uint64_t last = block_.size();
    if (!block_.empty()) Deflate();
    std::string bytes;
    for (std::uint64_t word : {std::uint64_t{sizes_.size()}, std::uint64_t{kBlockSize}, last})
      AppendWord(bytes, word);
    for (std::uint64_t size : sizes_) AppendWord(bytes, size);
    return bytes + compressed_;
  }

  std::uint64_t Total() const { return total_; }

 private:
  static void AppendWord(std::string& bytes, std::uint64_t word) {
    unsigned char encoded[8];
    Kel::Util::EncodeFixed64(encoded, word);
    bytes.append(reinterpret_cast<const char*>(encoded), sizeof encoded);
  }

  void Deflate() {
    uLongf size = compressBound(static_cast<uLong>(block_.size()));
    std::string out(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(&out[0]), &size, block_.data(),
                  static_cast<uLong>(block_.size()), Z_DEFAULT_COMPRESSION) != Z_OK) {
      throw ToolError("zlib could not compress an array");
    }
    compressed_.append(out, 0, size);
    sizes_.push_back(size);
    block_.clear();
  }

  std::vector<unsigned char> block_;
  std::vector<std::uint64_t> sizes_;
  std::string compressed_;
  std::uint64_t total_ = 0;
};

// Encodes values chunk by chunk through `encode(dst, value)`.
template <class T, std::size_t Size, class Encode>
void EmitChunked(ByteSink& sink, const T* values, std::size_t count, Encode encode) {
  const std::size_t kChunk = 4096;
  unsigned char buffer[kChunk * Size];
  while (count > 0) {
    std::size_t n = count < kChunk ? count : kChunk;
    for (std::size_t i = 0; i < n; ++i) encode(buffer + i * Size, values[i]);
    sink.Append(buffer, n * Size);
    values += n;
    count -= n;
  }
}

std::string Compress(const VtkArray& array) {
  ZlibSink sink;
  if (array.produce) array.produce(sink);
  if (sink.Total() != array.ByteCount()) {
    throw ToolError("array '" + array.name + "' produced " + std::to_string(sink.Total()) +
                    " bytes instead of " + std::to_string(array.ByteCount()));
  }
  return sink.Finish();
}

// Shortest text that reads back as the same 32-bit float.
std::string FloatText(double value) {
  char text[32];
  for (int precision = 1; precision <= 9; ++precision) {
    std::snprintf(text, sizeof text, "%.*g", precision, value);
    if (std::strtof(text, nullptr) == static_cast<float>(value)) break;
  }
  return text;
}

std::string NumberText(double value, VtkScalar type) {
  if (type == VtkScalar::Float32) return FloatText(value);
  if (type == VtkScalar::Float64) return FormatNumber(value);
  return std::to_string(static_cast<long long>(value));
}

void WriteFieldArray(std::ostream& out, const VtkFieldArray& array) {
  const bool text = !array.texts.empty();
  const std::size_t tuples = text ? array.texts.size() : array.numbers.size() / array.components;
  out << "      <" << (text ? "Array type=\"String\"" : "DataArray type=\"");
  if (!text) out << ScalarName(array.type) << "\"";
  out << " Name=\"" << XmlAttribute(array.name) << "\" NumberOfComponents=\"" << array.components
      << "\" NumberOfTuples=\"" << tuples << "\" format=\"ascii\">\n        ";
  // Strings go as their byte values, each ended by a zero.
  for (const std::string& value : array.texts) {
    for (unsigned char c : value) out << unsigned(c) << ' ';
    out << "0 ";
  }
  for (double value : array.numbers) out << NumberText(value, array.type) << ' ';
  out << "\n      </" << (text ? "Array" : "DataArray") << ">\n";
}

void WriteFieldData(std::ostream& out, const std::vector<VtkFieldArray>& arrays) {
  if (arrays.empty()) return;
  out << "    <FieldData>\n";
  for (const VtkFieldArray& array : arrays) WriteFieldArray(out, array);
  out << "    </FieldData>\n";
}

// The <DataArray> element, pointing to its place in the appended data.
void WriteDataArray(std::ostream& out, const VtkArray& array, std::uint64_t offset) {
  out << "        <DataArray type=\"" << ScalarName(array.type) << "\" Name=\""
      << XmlAttribute(array.name) << "\" NumberOfComponents=\"" << array.components << "\"";
  if (array.timeStep != kEveryStep) out << " TimeStep=\"" << array.timeStep << "\"";
  out << " format=\"appended\" offset=\"" << offset << "\"/>\n";
}

// The arrays in the order of the XML, which is also the order of their
// bytes in the appended data.
std::vector<const VtkArray*> ArraysInOrder(const VtuPiece& piece) {
  std::vector<const VtkArray*> order;
  for (const VtkArray& a : piece.pointData) order.push_back(&a);
  for (const VtkArray& a : piece.cellData) order.push_back(&a);
  for (const VtkArray* a : {&piece.coordinates, &piece.connectivity, &piece.offsets, &piece.types})
    order.push_back(a);
  return order;
}

void WriteGroup(std::ostream& out, const char* tag, const std::vector<const VtkArray*>& arrays,
                const std::vector<std::string>& blobs, std::size_t& next, std::uint64_t& offset) {
  if (arrays.empty()) return;
  out << "      <" << tag << ">\n";
  for (const VtkArray* array : arrays) {
    WriteDataArray(out, *array, offset);
    offset += blobs[next++].size();
  }
  out << "      </" << tag << ">\n";
}

std::vector<const VtkArray*> Pointers(const std::vector<VtkArray>& arrays) {
  std::vector<const VtkArray*> pointers;
  for (const VtkArray& array : arrays) pointers.push_back(&array);
  return pointers;
}

void WriteTimeValues(std::ostream& out, std::size_t steps) {
  if (steps == 0) return;
  out << " TimeValues=\"";
  for (std::size_t step = 0; step < steps; ++step) out << (step ? " " : "") << step;
  out << "\"";
}

}  // namespace

std::size_t ScalarSize(VtkScalar type) {
  switch (type) {
    case VtkScalar::UInt8: return 1;
    case VtkScalar::Int32:
    case VtkScalar::UInt32:
    case VtkScalar::Float32: return 4;
    case VtkScalar::Int64:
    case VtkScalar::Float64: return 8;
  }
  return 0;
}

const char* ScalarName(VtkScalar type) {
  switch (type) {
    case VtkScalar::UInt8: return "UInt8";
    case VtkScalar::Int32: return "Int32";
    case VtkScalar::UInt32: return "UInt32";
    case VtkScalar::Int64: return "Int64";
    case VtkScalar::Float32: return "Float32";
    case VtkScalar::Float64: return "Float64";
  }
  return "";
}

void EmitUInt8(ByteSink& sink, const std::uint8_t* values, std::size_t count) {
  sink.Append(values, count);
}

void EmitInt32(ByteSink& sink, const std::int32_t* values, std::size_t count) {
  EmitChunked<std::int32_t, 4>(sink, values, count, [](unsigned char* dst, std::int32_t v) {
    Kel::Util::EncodeFixed32(dst, static_cast<std::uint32_t>(v));
  });
}

void EmitUInt32(ByteSink& sink, const std::uint32_t* values, std::size_t count) {
  EmitChunked<std::uint32_t, 4>(sink, values, count, Kel::Util::EncodeFixed32);
}

void EmitInt64(ByteSink& sink, const std::int64_t* values, std::size_t count) {
  EmitChunked<std::int64_t, 8>(sink, values, count, [](unsigned char* dst, std::int64_t v) {
    Kel::Util::EncodeFixed64(dst, static_cast<std::uint64_t>(v));
  });
}

void EmitFloat32(ByteSink& sink, const float* values, std::size_t count) {
  EmitChunked<float, 4>(sink, values, count, [](unsigned char* dst, float v) {
    Kel::Util::EncodeFixed32(dst, Kel::Util::FloatBits(v));
  });
}

std::string XmlAttribute(const std::string& text) {
  std::string result;
  for (unsigned char c : text) {
    switch (c) {
      case '&': result += "&amp;"; break;
      case '<': result += "&lt;"; break;
      case '>': result += "&gt;"; break;
      case '"': result += "&quot;"; break;
      default: result += (c < 0x20 || c == 0x7F) ? '?' : static_cast<char>(c);
    }
  }
  return result;
}

void WriteVtu(std::ostream& out, const VtuPiece& piece) {
  // Offsets go into the XML ahead of the data, so every array is
  // compressed first; only compressed bytes wait.
  std::vector<std::string> blobs;
  for (const VtkArray* array : ArraysInOrder(piece)) blobs.push_back(Compress(*array));

  out << "<?xml version=\"1.0\"?>\n"
      << "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\""
      << " header_type=\"UInt64\" compressor=\"vtkZLibDataCompressor\">\n"
      << "  <UnstructuredGrid";
  WriteTimeValues(out, piece.timeSteps);
  out << ">\n";
  WriteFieldData(out, piece.fieldData);
  out << "    <Piece NumberOfPoints=\"" << piece.points << "\" NumberOfCells=\"" << piece.cells
      << "\">\n";
  std::size_t next = 0;
  std::uint64_t offset = 0;
  WriteGroup(out, "PointData", Pointers(piece.pointData), blobs, next, offset);
  WriteGroup(out, "CellData", Pointers(piece.cellData), blobs, next, offset);
  WriteGroup(out, "Points", {&piece.coordinates}, blobs, next, offset);
  WriteGroup(out, "Cells", {&piece.connectivity, &piece.offsets, &piece.types}, blobs, next,
             offset);
  out << "    </Piece>\n  </UnstructuredGrid>\n  <AppendedData encoding=\"raw\">\n   _";
  for (const std::string& blob : blobs) out.write(blob.data(), static_cast<std::streamsize>(blob.size()));
  out << "\n  </AppendedData>\n</VTKFile>\n";
  if (!out) throw ToolError("writing the VTK file failed");
}

}  // namespace DovInspect
