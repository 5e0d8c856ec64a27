#include "Suggest.h"

#include <algorithm>
#include <cctype>

#include "ValueNames.h"

namespace DovInspect {

namespace {

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Levenshtein distance, one row at a time.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

}  // namespace

std::vector<std::string> ClosestNames(const std::string& wanted,
                                      const std::vector<std::string>& candidates,
                                      std::size_t most) {
  const std::string key = Lower(wanted);
  // Names that hold the typed text are the answer where there are any;
  // otherwise those within a few typing mistakes, the nearest first.
  std::vector<std::string> holding;
  std::vector<std::pair<std::size_t, std::string>> near;
  const std::size_t limit = std::max<std::size_t>(2, key.size() / 5);
  for (const std::string& candidate : candidates) {
    const std::string lower = Lower(candidate);
    if (!key.empty() && lower.find(key) != std::string::npos) {
      holding.push_back(candidate);
    } else if (const std::size_t distance = EditDistance(key, lower); distance <= limit) {
      near.emplace_back(distance, candidate);
    }
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  if (holding.empty()) {
    for (const auto& entry : near) holding.push_back(entry.second);
  }
  std::vector<std::string> names;
  for (const std::string& name : holding) {
    if (names.size() == most) break;
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  return names;
}

std::string ClosestHint(const std::string& wanted, const std::vector<std::string>& candidates) {
  std::string hint;
  for (const std::string& name : ClosestNames(wanted, candidates)) {
    hint += (hint.empty() ? "; closest: " : ", ") + Readable(name);
  }
  return hint;
}

}  // namespace DovInspect
