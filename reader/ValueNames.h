#ifndef DOVREADER_VALUENAMES_H
#define DOVREADER_VALUENAMES_H

// Variable names of per-instance-value data: the data's own name, the byte
// 0x1E, then "<instance group> = <value>". This file splits them, shows
// them readably, and turns the instance values of a model into time steps.
// Shared by the tools, the ParaView reader and the Python module.

#include <string>
#include <vector>

namespace DovReader {

const char kValueSeparator = '\x1E';

struct ValueName {
  std::string base;  // the data's own name, e.g. "Stress"
  bool perValue = false;
  std::string group;  // the instance group's name
  std::string value;  // the instance value as text
};

// A name without 0x1E, or with nothing behind it ("Node Ids" 0x1E), or
// without " = " behind it is not per value; `base` is then the part before
// the separator. The first " = " divides group and value.
ValueName SplitValueName(const std::string& name);

// Control bytes and the backslash escaped as \xHH and \\, so that 0x1E shows
// as \x1E and the text can be typed back on a command line.
std::string Readable(const std::string& name);
// The reverse of Readable; other backslash sequences stay as they are.
std::string Unescape(const std::string& text);

// The instance values of a model as time steps. If every value reads as a
// finite number, and no two give the same number, the numbers are the
// times and the steps ascend by them; otherwise the values keep their
// order of first use and count 0, 1, 2 ...
struct TimeAxis {
  std::vector<std::string> values;  // one per step, in step order
  std::vector<double> times;        // same length
  bool numeric = false;

  static TimeAxis FromValues(const std::vector<std::string>& valuesInOrder);
  // Position of a value in `values`, or -1.
  int IndexOf(const std::string& value) const;
};

// Shortest text that reads back as the same double.
std::string FormatNumber(double value);

}  // namespace DovReader

#endif
