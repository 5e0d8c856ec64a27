#include "reader/LinkChains.h"

#include "reader/Container.h"

namespace DovReader {

// Walks each chain only as far as the first item whose end is known, and
// then gives that end to every item of the walk: each link is followed
// once. An item met again on the walk that reached it closes a cycle.
std::vector<std::size_t> ResolveChains(std::size_t count,
                                       const std::function<std::size_t(std::size_t)>& next) {
  enum State : unsigned char { Unknown, OnWalk, Known };
  std::vector<State> states(count, Unknown);
  std::vector<std::size_t> ends(count, NoLink);
  std::vector<std::size_t> walk;
  for (std::size_t start = 0; start < count; ++start) {
    std::size_t at = start;
    while (states[at] == Unknown) {
      states[at] = OnWalk;
      walk.push_back(at);
      const std::size_t after = next(at);
      if (after == NoLink) {
        ends[at] = at;
        break;
      }
      if (after >= count) throw ReadError("a link leads to no item");
      at = after;
    }
    if (states[at] == OnWalk && ends[at] == NoLink) throw ReadError("variable links form a cycle");
    for (std::size_t item : walk) {
      ends[item] = ends[at];
      states[item] = Known;
    }
    walk.clear();
  }
  return ends;
}

}  // namespace DovReader
