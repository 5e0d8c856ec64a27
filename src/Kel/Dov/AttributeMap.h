#ifndef DOVWRITER_KEL_DOV_ATTRIBUTEMAP_H
#define DOVWRITER_KEL_DOV_ATTRIBUTEMAP_H

// Text attributes under keys of the host's, as they reach groups and
// variables in the file.

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace KelTmf {
class Index;
}

namespace KelDov {

// Kind 0 and 1: a 32-bit word; 2: text; 3: a 64-bit word.
struct AttributeValue {
  static constexpr std::size_t TextAreaSize = 256;

  std::uint32_t kind = 0;
  union {
    std::uint32_t word;
    std::uint64_t longWord;
    char text[TextAreaSize];
  } value;

  AttributeValue() { std::memset(&value, 0, sizeof value); }

  // Kind 2. The text is cut at 256 bytes; a text that fills the whole area
  // has no terminator in it.
  static AttributeValue Text(const std::string& text);
  // Kind 0.
  static AttributeValue Word(std::uint32_t word);
  // The text of a kind-2 value, up to its first NUL or the end of the area.
  std::string GetText() const;
};

// std::string orders by unsigned bytes, the shorter key first on a tie:
// exactly the order the stored form needs.
typedef std::map<std::string, AttributeValue> AttributeMap;

// The six lists of the stored form, filled in map order.
struct AttributeLists {
  std::vector<std::string> keys;
  std::vector<std::uint8_t> kinds;
  std::vector<std::uint32_t> kind0Words;
  std::vector<std::uint32_t> kind1Words;
  std::vector<std::uint64_t> kind3LongWords;
  std::vector<std::string> kind2Texts;
};

// A kind above 3 contributes its key and kind, and no value.
AttributeLists MakeAttributeLists(const AttributeMap& map);

// The stored form: six parallel lists (keys, kinds, words of kind 0, words of
// kind 1, long words of kind 3, texts of kind 2), put back to back.
void WriteAttributeMap(KelTmf::Index& index, const std::string& stream, const AttributeMap& map);

}  // namespace KelDov

#endif
