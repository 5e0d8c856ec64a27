#include "Kel/Dov/AttributeMap.h"

#include <algorithm>

#include "Kel/Tmf/Index.h"

namespace KelDov {

AttributeValue AttributeValue::Text(const std::string& text) {
  AttributeValue result;
  result.kind = 2;
  std::memcpy(result.value.text, text.data(), std::min(text.size(), TextAreaSize));
  return result;
}

AttributeValue AttributeValue::Word(std::uint32_t word) {
  AttributeValue result;
  result.kind = 0;
  result.value.word = word;
  return result;
}

std::string AttributeValue::GetText() const {
  const char* begin = value.text;
  return std::string(begin, std::find(begin, begin + TextAreaSize, '\0'));
}

AttributeLists MakeAttributeLists(const AttributeMap& map) {
  AttributeLists lists;
  for (const auto& entry : map) {
    const AttributeValue& value = entry.second;
    lists.keys.push_back(entry.first);
    lists.kinds.push_back(static_cast<std::uint8_t>(value.kind));
    switch (value.kind) {
      case 0: lists.kind0Words.push_back(value.value.word); break;
      case 1: lists.kind1Words.push_back(value.value.word); break;
      case 2: lists.kind2Texts.push_back(value.GetText()); break;
      case 3: lists.kind3LongWords.push_back(value.value.longWord); break;
      default: break;
    }
  }
  return lists;
}

void WriteAttributeMap(KelTmf::Index& index, const std::string& stream, const AttributeMap& map) {
  // Filled first and put afterwards, so the six lists follow each other in
  // the stream with nothing between them.
  const AttributeLists lists = MakeAttributeLists(map);
  index.Put(stream, lists.keys);
  index.Put(stream, lists.kinds);
  index.Put(stream, lists.kind0Words);
  index.Put(stream, lists.kind1Words);
  index.Put(stream, lists.kind3LongWords);
  index.Put(stream, lists.kind2Texts);
}

}  // namespace KelDov
