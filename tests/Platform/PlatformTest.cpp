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

  Platform::SeedRandom(0);
  const int first = Platform::Random();
  EXPECT_EQ(38, first);
  Platform::SeedRandom(0);
  EXPECT_EQ(first, Platform::Random()) << "reseeding restarts the sequence";

  for (int i = 0; i < 1000; ++i) {
    const int value = Platform::Random();
    ASSERT_GE(value, 0);
    ASSERT_LE(value, Platform::RandomMax);
  }
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

TEST(LargeBufferAdvice, KeepsContentsAndLetsTheBufferGrow) {
  // Small, unaligned, empty and null buffers are left alone; a large one is
  // advised as a whole and still grows and moves with realloc.
  Platform::AdviseLargeBuffer(nullptr, 1 << 30);
  char small[100] = {1};
  Platform::AdviseLargeBuffer(small + 3, sizeof small - 3);
  EXPECT_EQ(small[0], 1);

  const std::size_t large = (std::size_t(40) << 20) + 123;
  unsigned char* buffer = static_cast<unsigned char*>(std::malloc(large));
  ASSERT_NE(buffer, nullptr);
  for (std::size_t i = 0; i < large; ++i) buffer[i] = static_cast<unsigned char>(i * 31);
  Platform::AdviseLargeBuffer(buffer + 1, large - 1);
  for (std::size_t step = 1; step <= 3; ++step) {
    unsigned char* grown = static_cast<unsigned char*>(std::realloc(buffer, large + step * (10 << 20)));
    ASSERT_NE(grown, nullptr);
    buffer = grown;
    Platform::AdviseLargeBuffer(buffer, large + step * (10 << 20));
  }
  std::size_t mismatches = 0;
  for (std::size_t i = 0; i < large; ++i) mismatches += buffer[i] != static_cast<unsigned char>(i * 31);
  EXPECT_EQ(mismatches, 0u);
  std::free(buffer);
}
