#ifndef DOVINSPECT_SUGGEST_H
#define DOVINSPECT_SUGGEST_H

// The names a user most likely meant when one is not found: those that hold
// the typed text, or else those within a few typing mistakes of it.

#include <string>
#include <vector>

namespace DovInspect {

// Up to `most` of `candidates`, best first, without repeats; empty when
// none is close.
std::vector<std::string> ClosestNames(const std::string& wanted,
                                      const std::vector<std::string>& candidates,
                                      std::size_t most = 3);

// "; closest: a, b" for the closest names, shown readably, or "".
std::string ClosestHint(const std::string& wanted, const std::vector<std::string>& candidates);

}  // namespace DovInspect

#endif
