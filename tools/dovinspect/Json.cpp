#include "Json.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "ValueNames.h"

namespace DovInspect {

namespace {

bool Continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The length of the valid UTF-8 sequence that starts at `at`, or 0. Over-long
// forms, surrogates and code points beyond U+10FFFF are not valid.
std::size_t Utf8Length(const std::string& text, std::size_t at) {
  const unsigned char lead = static_cast<unsigned char>(text[at]);
  std::size_t length = 0;
  unsigned char low = 0x80, high = 0xBF;  // range of the second byte
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (at + length > text.size()) return 0;
  const unsigned char second = static_cast<unsigned char>(text[at + 1]);
  if (second < low || second > high) return 0;
  for (std::size_t k = 2; k < length; ++k) {
    if (!Continuation(static_cast<unsigned char>(text[at + k]))) return 0;
  }
  return length;
}

void AppendEscaped(unsigned char byte, std::string& out) {
  switch (byte) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\t':
      out += "\\t";
      return;
    case '\r':
      out += "\\r";
      return;
    default:
      break;
  }
  char escaped[8];
  std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
  out += escaped;
}

}  // namespace

std::string JsonString(const std::string& bytes) {
  std::string out = "\"";
  for (std::size_t i = 0; i < bytes.size();) {
    const unsigned char byte = static_cast<unsigned char>(bytes[i]);
    if (byte >= 0x80) {
      const std::size_t length = Utf8Length(bytes, i);
      if (length > 0) {
        out.append(bytes, i, length);
        i += length;
        continue;
      }
    }
    if (byte < 0x20 || byte == 0x7F || byte >= 0x80 || byte == '"' || byte == '\\') {
      AppendEscaped(byte, out);
    } else {
      out += static_cast<char>(byte);
    }
    ++i;
  }
  return out + "\"";
}

JsonWriter& JsonWriter::Key(const std::string& name) {
  BeforeValue();
  out_ << JsonString(name) << ": ";
  afterKey_ = true;
  return *this;
}

JsonWriter& JsonWriter::String(const std::string& bytes) {
  BeforeValue();
  out_ << JsonString(bytes);
  return *this;
}

JsonWriter& JsonWriter::Number(double value) {
  BeforeValue();
  WriteNumber(value);
  return *this;
}

JsonWriter& JsonWriter::Number(float value) {
  BeforeValue();
  WriteNumber(value);
  return *this;
}

JsonWriter& JsonWriter::Array(const std::string& key, const float* values, std::size_t count) {
  Key(key);
  afterKey_ = false;
  out_ << "[";
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) out_ << ", ";
    WriteNumber(values[i]);
  }
  out_ << "]";
  return *this;
}

void JsonWriter::WriteNumber(double value) {
  out_ << (std::isfinite(value) ? FormatNumber(value) : "null");
}

// The shortest text that reads back as the same float, not the digits of
// the double it widens to.
void JsonWriter::WriteNumber(float value) {
  if (!std::isfinite(value)) {
    out_ << "null";
    return;
  }
  char text[32];
  for (int precision = 1; precision <= 9; ++precision) {
    std::snprintf(text, sizeof text, "%.*g", precision, double(value));
    if (std::strtof(text, nullptr) == value) break;
  }
  out_ << text;
}

JsonWriter& JsonWriter::Integer(std::int64_t value) {
  BeforeValue();
  out_ << value;
  return *this;
}

JsonWriter& JsonWriter::Unsigned(std::uint64_t value) {
  BeforeValue();
  out_ << value;
  return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
  BeforeValue();
  out_ << (value ? "true" : "false");
  return *this;
}

JsonWriter& JsonWriter::Null() {
  BeforeValue();
  out_ << "null";
  return *this;
}

void JsonWriter::Finish() { out_ << "\n"; }

JsonWriter& JsonWriter::Open(char bracket) {
  BeforeValue();
  out_ << bracket;
  empty_.push_back(true);
  return *this;
}

JsonWriter& JsonWriter::Close(char bracket) {
  const bool wasEmpty = empty_.back();
  empty_.pop_back();
  if (!wasEmpty) NewLine();
  out_ << bracket;
  return *this;
}

// A value behind a key follows on its line; any other value in a container
// begins a line of its own, after a comma unless it is the first.
void JsonWriter::BeforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (empty_.empty()) return;
  if (!empty_.back()) out_ << ",";
  empty_.back() = false;
  NewLine();
}

void JsonWriter::NewLine() { out_ << "\n" << std::string(2 * empty_.size(), ' '); }

}  // namespace DovInspect
