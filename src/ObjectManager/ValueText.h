#ifndef DOVWRITER_OBJECTMANAGER_VALUETEXT_H
#define DOVWRITER_OBJECTMANAGER_VALUETEXT_H

// How a value of an element type becomes text: the form in which attributes
// hold host values and in which instance values are told apart. Two values
// with the same text are the same instance value, whatever their types.

#include <locale>
#include <sstream>
#include <string>

#include "Kel/Dov/AttributeMap.h"

namespace Kel {
namespace Dov {

// A character is the byte itself: 65 gives "A", not "65".
inline std::string ValueText(unsigned char value) {
  return std::string(1, static_cast<char>(value));
}
inline std::string ValueText(signed char value) {
  return std::string(1, static_cast<char>(value));
}

// Text is taken as it stands. A null pointer is refused by the callers.
inline std::string ValueText(const char* value) { return std::string(value); }

// Numbers as a stream in its default state writes them: decimal, and six
// significant digits for floating point (0.5 gives "0.5", 2.0 gives "2",
// 1234567.0 gives "1.23457e+06"). The classic locale keeps a host's global
// locale from adding digit grouping.
template <class T>
inline std::string ValueText(const T& value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << value;
  return stream.str();
}

// A text attribute (kind 2): the text in a zero-filled 256-byte area, cut to
// 255 bytes so that the area always ends in NUL.
inline KelDov::AttributeValue TextAttribute(const std::string& text) {
  KelDov::AttributeValue attribute;
  attribute.kind = 2;
  const std::size_t length = text.size() < KelDov::AttributeValue::TextAreaSize - 1
                                 ? text.size()
                                 : KelDov::AttributeValue::TextAreaSize - 1;
  text.copy(attribute.value.text, length);
  return attribute;
}

}  // namespace Dov
}  // namespace Kel

#endif
