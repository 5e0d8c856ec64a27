#include "VtkXml.h"

#include <Kel/Util/Coding.h>

#include <sstream>

#include "Cli.h"

namespace DovInspect {

namespace {

const char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Encodes base64 as bytes arrive; up to two bytes wait for their group.
class Base64Sink : public ByteSink {
 public:
  explicit Base64Sink(std::ostream& out) : out_(out) {}

  void Append(const unsigned char* bytes, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) {
      pending_[pendingCount_++] = bytes[i];
      if (pendingCount_ == 3) EncodeGroup();
    }
    total_ += count;
  }

  // Pads and writes the last group.
  void Finish() {
    if (pendingCount_ == 0) return;
    std::size_t used = pendingCount_;
    while (pendingCount_ < 3) pending_[pendingCount_++] = 0;
    char quad[4];
    Quad(quad);
    for (std::size_t i = used + 1; i < 4; ++i) quad[i] = '=';
    out_.write(quad, 4);
    pendingCount_ = 0;
  }

  std::uint64_t Total() const { return total_; }

 private:
  void Quad(char* quad) const {
    quad[0] = kBase64Alphabet[pending_[0] >> 2];
    quad[1] = kBase64Alphabet[((pending_[0] & 0x03) << 4) | (pending_[1] >> 4)];
    quad[2] = kBase64Alphabet[((pending_[1] & 0x0F) << 2) | (pending_[2] >> 6)];
    quad[3] = kBase64Alphabet[pending_[2] & 0x3F];
  }

  void EncodeGroup() {
    char quad[4];
    Quad(quad);
    out_.write(quad, 4);
    pendingCount_ = 0;
  }

  std::ostream& out_;
  unsigned char pending_[3] = {0, 0, 0};
  std::size_t pendingCount_ = 0;
  std::uint64_t total_ = 0;
};

class RawSink : public ByteSink {
 public:
  explicit RawSink(std::ostream& out) : out_(out) {}
  void Append(const unsigned char* bytes, std::size_t count) override {
    out_.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
    total_ += count;
  }
  std::uint64_t Total() const { return total_; }

 private:
  std::ostream& out_;
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

void CheckProduced(const VtkArray& array, std::uint64_t produced) {
  if (produced != array.ByteCount()) {
    throw ToolError("array '" + array.name + "' produced " + std::to_string(produced) +
                    " bytes instead of " + std::to_string(array.ByteCount()));
  }
}

void WriteHeaderBytes(ByteSink& sink, std::uint64_t byteCount) {
  unsigned char header[8];
  Kel::Util::EncodeFixed64(header, byteCount);
  sink.Append(header, sizeof header);
}

// Emits the <DataArray> element. With base64 the data goes inline, as one
// base64 text of the 8-byte length followed by the values; with raw data
// the element only points to its place in the appended section.
void WriteDataArray(std::ostream& out, const VtkArray& array, VtkEncoding encoding,
                    std::uint64_t& appendedOffset, const char* indent) {
  out << indent << "<DataArray type=\"" << ScalarName(array.type) << "\" Name=\""
      << XmlAttribute(array.name) << "\" NumberOfComponents=\"" << array.components << "\"";
  if (encoding == VtkEncoding::Raw) {
    out << " format=\"appended\" offset=\"" << appendedOffset << "\"/>\n";
    appendedOffset += 8 + array.ByteCount();
    return;
  }
  out << " format=\"binary\">\n" << indent << "  ";
  Base64Sink sink(out);
  WriteHeaderBytes(sink, array.ByteCount());
  if (array.produce) array.produce(sink);
  sink.Finish();
  CheckProduced(array, sink.Total() - 8);
  out << "\n" << indent << "</DataArray>\n";
}

void WriteArrayGroup(std::ostream& out, const char* tag, const std::vector<VtkArray>& arrays,
                     VtkEncoding encoding, std::uint64_t& appendedOffset) {
  if (arrays.empty()) return;
  out << "      <" << tag << ">\n";
  for (const VtkArray& array : arrays) {
    WriteDataArray(out, array, encoding, appendedOffset, "        ");
  }
  out << "      </" << tag << ">\n";
}

// The order in which arrays appear in the XML, which is also the order of
// their bytes in the appended section.
std::vector<const VtkArray*> ArraysInOrder(const VtuPiece& piece) {
  std::vector<const VtkArray*> order;
  for (const VtkArray& a : piece.pointData) order.push_back(&a);
  for (const VtkArray& a : piece.cellData) order.push_back(&a);
  order.push_back(&piece.coordinates);
  order.push_back(&piece.connectivity);
  order.push_back(&piece.offsets);
  order.push_back(&piece.types);
  return order;
}

void WriteAppended(std::ostream& out, const VtuPiece& piece) {
  out << "  <AppendedData encoding=\"raw\">\n   _";
  for (const VtkArray* array : ArraysInOrder(piece)) {
    RawSink sink(out);
    WriteHeaderBytes(sink, array->ByteCount());
    if (array->produce) array->produce(sink);
    CheckProduced(*array, sink.Total() - 8);
  }
  out << "\n  </AppendedData>\n";
}

}  // namespace

std::size_t ScalarSize(VtkScalar type) {
  switch (type) {
    case VtkScalar::UInt8:
      return 1;
    case VtkScalar::UInt32:
      return 4;
    case VtkScalar::Int64:
      return 8;
    case VtkScalar::Float32:
      return 4;
  }
  return 0;
}

const char* ScalarName(VtkScalar type) {
  switch (type) {
    case VtkScalar::UInt8:
      return "UInt8";
    case VtkScalar::UInt32:
      return "UInt32";
    case VtkScalar::Int64:
      return "Int64";
    case VtkScalar::Float32:
      return "Float32";
  }
  return "";
}

void EmitUInt8(ByteSink& sink, const std::uint8_t* values, std::size_t count) {
  sink.Append(values, count);
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

std::string Base64(const unsigned char* bytes, std::size_t count) {
  std::ostringstream out;
  Base64Sink sink(out);
  sink.Append(bytes, count);
  sink.Finish();
  return out.str();
}

std::string XmlAttribute(const std::string& text) {
  std::string result;
  for (unsigned char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += (c < 0x20 || c == 0x7F) ? '?' : static_cast<char>(c);
    }
  }
  return result;
}

void WriteVtu(std::ostream& out, const VtuPiece& piece, VtkEncoding encoding) {
  std::uint64_t appendedOffset = 0;
  out << "<?xml version=\"1.0\"?>\n"
      << "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\""
      << " header_type=\"UInt64\">\n"
      << "  <UnstructuredGrid>\n"
      << "    <Piece NumberOfPoints=\"" << piece.points << "\" NumberOfCells=\"" << piece.cells
      << "\">\n";
  WriteArrayGroup(out, "PointData", piece.pointData, encoding, appendedOffset);
  WriteArrayGroup(out, "CellData", piece.cellData, encoding, appendedOffset);
  WriteArrayGroup(out, "Points", {piece.coordinates}, encoding, appendedOffset);
  WriteArrayGroup(out, "Cells", {piece.connectivity, piece.offsets, piece.types}, encoding,
                  appendedOffset);
  out << "    </Piece>\n  </UnstructuredGrid>\n";
  if (encoding == VtkEncoding::Raw) WriteAppended(out, piece);
  out << "</VTKFile>\n";
  if (!out) throw ToolError("writing the VTK file failed");
}

}  // namespace DovInspect
