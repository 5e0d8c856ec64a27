// Value names, time steps and command-line parsing.

#include <gtest/gtest.h>

#include "Cli.h"
#include "ValueNames.h"

namespace DovInspect {
namespace {

TEST(ValueNames, SplitsNameGroupAndValue) {
  ValueName stress = SplitValueName(std::string("Stress\x1ETime = 0.5"));
  EXPECT_TRUE(stress.perValue);
  EXPECT_EQ(stress.base, "Stress");
  EXPECT_EQ(stress.group, "Time");
  EXPECT_EQ(stress.value, "0.5");

  ValueName unnamedGroup = SplitValueName(std::string("S\x1E = a = b"));
  EXPECT_TRUE(unnamedGroup.perValue);
  EXPECT_EQ(unnamedGroup.group, "");
  EXPECT_EQ(unnamedGroup.value, "a = b");

  for (const char* staticName : {"Coordinates", "Node Ids\x1E", "odd\x1Eno-equals"}) {
    ValueName name = SplitValueName(staticName);
    EXPECT_FALSE(name.perValue) << staticName;
  }
  EXPECT_EQ(SplitValueName(std::string("Node Ids\x1E")).base, "Node Ids");
}

TEST(ValueNames, ReadableFormRoundTrips) {
  std::string name = std::string("Stress\x1ETime = 1 \\ \x1D", 19);
  EXPECT_EQ(Readable(name), "Stress\\x1ETime = 1 \\\\ \\x1D");
  EXPECT_EQ(Unescape(Readable(name)), name);
  EXPECT_EQ(Unescape("no \\escape \\x4"), "no \\escape \\x4");
}

TEST(ValueNames, NumericValuesBecomeTimesOtherwiseOrder) {
  TimeAxis numeric = TimeAxis::FromValues({"0.5", "1e1", "-2"});
  EXPECT_TRUE(numeric.numeric);
  EXPECT_EQ(numeric.times, (std::vector<double>{0.5, 10, -2}));
  EXPECT_EQ(numeric.IndexOf("1e1"), 1);
  EXPECT_EQ(numeric.IndexOf("10"), -1);

  for (auto values : {std::vector<std::string>{"load", "2"},
                      std::vector<std::string>{"1", "1.0"},  // the same time twice
                      std::vector<std::string>{"inf", "1"}}) {
    TimeAxis axis = TimeAxis::FromValues(values);
    EXPECT_FALSE(axis.numeric);
    EXPECT_EQ(axis.times, (std::vector<double>{0, 1}));
  }
}

TEST(ValueNames, NumbersPrintShortestExactly) {
  EXPECT_EQ(FormatNumber(0.1), "0.1");
  EXPECT_EQ(FormatNumber(3), "3");
  EXPECT_EQ(std::stod(FormatNumber(1.0 / 3)), 1.0 / 3);
}

TEST(Cli, ParsesOptionsInBothFormsAndPositionals) {
  std::vector<OptionSpec> options = {{"--limit", true}, {"--raw", false}};
  CommandLine line =
      ParseCommandLine({"f.dov", "--limit", "5", "g", "--raw", "--", "--x"}, options, 1, 3);
  EXPECT_EQ(line.positional, (std::vector<std::string>{"f.dov", "g", "--x"}));
  EXPECT_EQ(line.Number("--limit", 0), 5u);
  EXPECT_TRUE(line.Has("--raw"));
  EXPECT_EQ(ParseCommandLine({"--limit=7", "a"}, options, 1, 1).Number("--limit", 0), 7u);
  EXPECT_EQ(ParseCommandLine({"a"}, options, 1, 1).Number("--limit", 42), 42u);
}

TEST(Cli, RejectsMistakesButAlwaysAllowsHelp) {
  std::vector<OptionSpec> options = {{"--limit", true}, {"--raw", false}};
  EXPECT_THROW(ParseCommandLine({"a", "--bogus"}, options, 1, 1), UsageError);
  EXPECT_THROW(ParseCommandLine({"a", "--limit"}, options, 1, 1), UsageError);
  EXPECT_THROW(ParseCommandLine({"a", "--raw=1"}, options, 1, 1), UsageError);
  EXPECT_THROW(ParseCommandLine({}, options, 1, 1), UsageError);
  EXPECT_THROW(ParseCommandLine({"a", "b"}, options, 1, 1), UsageError);
  EXPECT_THROW(ParseCommandLine({"a", "--limit=-1"}, options, 1, 1).Number("--limit", 0),
               UsageError);
  EXPECT_TRUE(ParseCommandLine({"--help"}, options, 1, 1).help);
}

}  // namespace
}  // namespace DovInspect
