#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "Platform/Platform.h"

TEST(RandomGenerator, ClassicFifteenBitSequence) {
  // The widely published sequence of the classic generator seeded with 1.
  Platform::SeedRandom(1);
  const int seededWithOne[] = {41, 18467, 6334, 26500, 19169};
  for (int expected : seededWithOne) EXPECT_EQ(expected, Platform::Random());

  Platform::SeedRandom(0);  // reseeding restarts the sequence
  EXPECT_EQ(38, Platform::Random());
}

TEST(TimeText, CTimeAndStrftimeInUniversalTime) {
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_EQ("Thu Jan  1 00:00:00 1970\n", Platform::CTimeText(0));
  EXPECT_EQ("Sun Sep  9 01:46:40 2001\n", Platform::CTimeText(1000000000));
  EXPECT_EQ("2001-09-09 01:46:40", Platform::LocalTimeText("%Y-%m-%d %H:%M:%S", 1000000000));
}

TEST(FormatText, CutsAndTerminates) {
  char buffer[8];
  EXPECT_EQ(7, Platform::FormatText(buffer, sizeof buffer, "%s-%d", "abcdef", 42));
  EXPECT_STREQ("abcdef-", buffer);
  EXPECT_EQ(4, Platform::FormatText(buffer, sizeof buffer, "%lu", 1234ul));
  EXPECT_STREQ("1234", buffer);
}
