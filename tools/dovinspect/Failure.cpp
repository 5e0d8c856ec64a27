#include "Failure.h"

#include <sstream>
#include <vector>

namespace DovInspect {

namespace {

std::vector<std::string> TrimmedLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string::npos) continue;
    lines.push_back(line.substr(begin, line.find_last_not_of(" \t") + 1 - begin));
  }
  return lines;
}

}  // namespace

// A text whose first line ends in a colon introduces a list of reasons: the
// first reason completes the line, the rest are counted.
std::string DescribeFailure(const std::exception& failure) {
  const std::vector<std::string> lines = TrimmedLines(failure.what());
  if (lines.empty()) return "unknown failure";
  std::string text = lines[0];
  if (text.back() == ':' && lines.size() > 1) {
    text += " " + lines[1];
    if (lines.size() > 2) text += " (and " + std::to_string(lines.size() - 2) + " more)";
  }
  return text;
}

}  // namespace DovInspect
