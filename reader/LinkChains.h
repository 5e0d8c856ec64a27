#ifndef DOVREADER_LINKCHAINS_H
#define DOVREADER_LINKCHAINS_H

// Chains of links among numbered items, such as variables that take their
// values from other variables: each item links to one other or to none.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace DovReader {

const std::size_t NoLink = SIZE_MAX;

// For each of `count` items, the item at the end of its chain: the first
// one reached through `next` that links to nothing. `next` gives the item
// that an item links to, or NoLink; it may throw for a link it cannot
// follow. A chain that comes back on itself is a ReadError. Each link is
// followed once, so the cost is linear in `count`.
std::vector<std::size_t> ResolveChains(std::size_t count,
                                       const std::function<std::size_t(std::size_t)>& next);

}  // namespace DovReader

#endif
