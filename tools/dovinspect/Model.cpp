#include "Model.h"

#include <Kel/Util/Coding.h>

namespace DovInspect {

std::vector<float> AsFloats(const std::vector<std::uint32_t>& words) {
  std::vector<float> values(words.size());
  for (std::size_t i = 0; i < words.size(); ++i) values[i] = Kel::Util::BitsToFloat(words[i]);
  return values;
}

}  // namespace DovInspect
