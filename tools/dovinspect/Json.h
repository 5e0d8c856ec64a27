#ifndef DOVINSPECT_JSON_H
#define DOVINSPECT_JSON_H

// A small writer of one JSON document, for the --json output of the
// commands: objects, arrays, keys and plain values, indented by two blanks.
// Names in model files are bytes; strings keep valid UTF-8 as it is and
// escape control bytes, and every byte that is no part of valid UTF-8, as
// \u00XX. Numbers that JSON cannot hold (NaN, infinities) become null.

#include <cstdint>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace DovInspect {

class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : out_(out) {}

  JsonWriter& BeginObject() { return Open('{'); }
  JsonWriter& EndObject() { return Close('}'); }
  JsonWriter& BeginArray() { return Open('['); }
  JsonWriter& EndArray() { return Close(']'); }
  JsonWriter& Key(const std::string& name);

  JsonWriter& String(const std::string& bytes);
  JsonWriter& Number(double value);
  JsonWriter& Number(float value);
  JsonWriter& Integer(std::int64_t value);
  JsonWriter& Unsigned(std::uint64_t value);
  JsonWriter& Bool(bool value);
  JsonWriter& Null();

  // Any of the above by the type of the value.
  template <class T>
  JsonWriter& Value(const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
      return Bool(value);
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
      return Integer(value);
    } else if constexpr (std::is_integral_v<T>) {
      return Unsigned(value);
    } else if constexpr (std::is_floating_point_v<T>) {
      return Number(value);
    } else {
      return String(std::string(value));
    }
  }
  template <class T>
  JsonWriter& Field(const std::string& key, const T& value) {
    Key(key);
    return Value(value);
  }
  // A key and a short array of numbers, on one line.
  JsonWriter& Array(const std::string& key, const float* values, std::size_t count);

  // Ends the document with a line feed.
  void Finish();

 private:
  JsonWriter& Open(char bracket);
  JsonWriter& Close(char bracket);
  void BeforeValue();
  void NewLine();
  void WriteNumber(double value);
  void WriteNumber(float value);

  std::ostream& out_;
  std::vector<bool> empty_;  // per open container: nothing in it yet
  bool afterKey_ = false;
};

// `bytes` as a quoted JSON string.
std::string JsonString(const std::string& bytes);

}  // namespace DovInspect

#endif
