#include "Failure.h"

namespace DovInspect {

std::string DescribeFailure(const std::exception& failure) {
  std::string text = failure.what();
  std::size_t end = text.find('\n');
  if (end != std::string::npos) text.resize(end);
  return text.empty() ? "unknown failure" : text;
}

}  // namespace DovInspect
