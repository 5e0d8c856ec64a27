// Value names and time steps, for the forms that the whole-tool tests do
// not reach.

#include <gtest/gtest.h>

#include "Json.h"
#include "ValueNames.h"
#include "VtkXml.h"

namespace DovInspect {
namespace {

TEST(ValueNames, SplitsNameGroupAndValue) {
  ValueName unnamedGroup = SplitValueName(std::string("S\x1E = a = b"));
  EXPECT_TRUE(unnamedGroup.perValue);
  EXPECT_EQ(unnamedGroup.base, "S");
  EXPECT_EQ(unnamedGroup.group, "");
  EXPECT_EQ(unnamedGroup.value, "a = b");
  for (const char* staticName : {"Coordinates", "Node Ids\x1E", "odd\x1Eno-equals"}) {
    EXPECT_FALSE(SplitValueName(staticName).perValue) << staticName;
  }
  EXPECT_EQ(SplitValueName(std::string("Node Ids\x1E")).base, "Node Ids");

  std::string name = std::string("Stress\x1ETime = 1 \\ \x1D", 19);
  EXPECT_EQ(Readable(name), "Stress\\x1ETime = 1 \\\\ \\x1D");
  EXPECT_EQ(Unescape(Readable(name)), name);
  EXPECT_EQ(Unescape("no \\escape \\x4"), "no \\escape \\x4");
  // In XML attributes, as VTK shows them.
  EXPECT_EQ(XmlAttribute("a<b>&\"c\""), "a&lt;b&gt;&amp;&quot;c&quot;");
  EXPECT_EQ(XmlAttribute(name), "Stress?Time = 1 \\ ?");
  // In JSON: valid UTF-8 stays, control bytes and stray bytes (here a
  // surrogate's three) become \u00XX.
  EXPECT_EQ(JsonString(std::string("q\"\\\x1E\xC3\xA9\xED\xA0\x80\xFF", 10)),
            "\"q\\\"\\\\\\u001e\xC3\xA9\\u00ed\\u00a0\\u0080\\u00ff\"");
}

TEST(ValueNames, NumericValuesBecomeTimesOtherwiseOrder) {
  TimeAxis numeric = TimeAxis::FromValues({"0.5", "1e1", "-2"});
  EXPECT_TRUE(numeric.numeric);
  EXPECT_EQ(numeric.times, (std::vector<double>{-2, 0.5, 10}));  // ascending
  EXPECT_EQ(numeric.IndexOf("1e1"), 2);
  EXPECT_EQ(numeric.IndexOf("10"), -1);
  for (auto values : {std::vector<std::string>{"load", "2"},
                      std::vector<std::string>{"1", "1.0"},  // the same time twice
                      std::vector<std::string>{"inf", "1"}}) {
    TimeAxis axis = TimeAxis::FromValues(values);
    EXPECT_FALSE(axis.numeric);
    EXPECT_EQ(axis.times, (std::vector<double>{0, 1}));
  }
  EXPECT_EQ(std::stod(FormatNumber(1.0 / 3)), 1.0 / 3);
}

}  // namespace
}  // namespace DovInspect
