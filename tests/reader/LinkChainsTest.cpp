#include <gtest/gtest.h>

#include "reader/Container.h"
#include "reader/LinkChains.h"

using DovReader::NoLink;
using DovReader::ResolveChains;

// Each link is followed once, however long the chains: a file of one long
// chain of variable links costs as much to read as any other file of its
// size. Following every chain to its end again would take 4.5 million steps
// here.
TEST(LinkChains, EveryLinkIsFollowedOnce) {
  const std::size_t count = 3000;
  std::size_t steps = 0;
  const std::vector<std::size_t> ends = ResolveChains(count, [&](std::size_t item) {
    ++steps;
    return item + 1 < count ? item + 1 : NoLink;
  });
  EXPECT_EQ(ends, std::vector<std::size_t>(count, count - 1));
  EXPECT_LE(steps, 2 * count);
}

TEST(LinkChains, ChainsThatComeBackAreRefused) {
  const std::vector<std::vector<std::size_t>> cyclic = {
      {0},                   // links to itself
      {1, 2, 0},             // a ring
      {NoLink, 2, 3, 4, 2},  // a tail into a ring
  };
  for (const std::vector<std::size_t>& links : cyclic)
    EXPECT_THROW(ResolveChains(links.size(), [&](std::size_t item) { return links[item]; }),
                 DovReader::ReadError);
  const std::vector<std::size_t> tree = {NoLink, 0, 0, 1, 3};
  EXPECT_EQ(ResolveChains(tree.size(), [&](std::size_t item) { return tree[item]; }),
            std::vector<std::size_t>(5, 0));
}
