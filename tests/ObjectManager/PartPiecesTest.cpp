// The order in which the pieces of several parts lie in a file, and when a
// part can know where its next piece goes.

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ObjectManager/PartPieces.h"

using namespace Kel::Dov;

TEST(PartPieces, APieceIsPlacedOnceEveryPieceInFrontOfItIsKnown) {
  PieceTable table(3);
  PieceSize front;
  // The first part's first piece leads the file.
  ASSERT_TRUE(table.before(0, 0, front));
  EXPECT_EQ(0u, front.blocks + front.stored + front.plain);
  // Part 2's first piece waits for the first pieces of parts 0 and 1.
  table.add(0, PieceSize{2, 100, 1000});
  EXPECT_FALSE(table.before(2, 0, front));
  table.add(1, PieceSize{3, 50, 500});
  ASSERT_TRUE(table.before(2, 0, front));
  EXPECT_EQ(5u, front.blocks);
  EXPECT_EQ(150u, front.stored);
  EXPECT_EQ(1500u, front.plain);
  // Part 0's second piece lies behind the whole first round.
  EXPECT_FALSE(table.before(0, 1, front));
  table.add(2, PieceSize{1, 10, 100});
  ASSERT_TRUE(table.before(0, 1, front));
  EXPECT_EQ(160u, front.stored);
  // A part that has ended takes no room in later rounds.
  table.add(0, PieceSize{1, 7, 70});
  EXPECT_FALSE(table.before(2, 1, front));
  table.end(1);
  ASSERT_TRUE(table.before(2, 1, front));
  EXPECT_EQ(167u, front.stored);
  EXPECT_EQ(7u, front.blocks);
  EXPECT_FALSE(table.othersEnded(2));
  table.end(0);
  EXPECT_TRUE(table.othersEnded(2));
  EXPECT_FALSE(table.allEnded());

  std::vector<std::pair<int, std::size_t>> order;
  table.inFileOrder([&](int part, std::size_t round) { order.emplace_back(part, round); });
  const std::vector<std::pair<int, std::size_t>> expected = {{0, 0}, {1, 0}, {2, 0}, {0, 1}};
  EXPECT_EQ(expected, order);
}
