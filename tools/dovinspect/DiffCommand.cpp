// diff: what differs between two model files.

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "Commands.h"
#include "Diff.h"

namespace DovInspect {

namespace {

double Tolerated(const CommandLine& line, const std::string& option) {
  const std::string text = line.Value(option, "0");
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || errno == ERANGE || !std::isfinite(value) || value < 0) {
    throw UsageError(option + " expects a non-negative number, not '" + text + "'");
  }
  return value;
}

int RunDiff(const CommandLine& line, std::ostream& out, std::ostream&) {
  Tolerance tolerance;
  tolerance.relative = Tolerated(line, "--rtol");
  tolerance.absolute = Tolerated(line, "--atol");
  ModelFile a(line.positional[0]);
  ModelFile b(line.positional[1]);
  const std::vector<std::string> differences = DiffModels(a, b, tolerance);
  for (const std::string& difference : differences) out << difference << "\n";
  if (differences.empty()) {
    out << "no differences\n";
    return kExitOk;
  }
  out << Counted(differences.size(), "difference") << "\n";
  return kExitFailure;
}

}  // namespace

const Command& DiffCommand() {
  static const Command command{
      "diff",
      "Compare two model files: trees, variables and values.",
      "A B [--rtol R] [--atol A]",
      "Compares the global information (not the creation date), the tree entries\n"
      "by id (parent, name, type, a group's transformation and attributes, a\n"
      "shape's colours and visibility), each geometry's variables by name (type,\n"
      "element type, width, count) and their values. Prints one line per\n"
      "difference, 'WHERE: what', then the number of differences, and exits with\n"
      "1; or prints 'no differences' and exits with 0. Differing values of a\n"
      "variable make one line: how many differ, and where they differ most.\n"
      "Whether a file stores shared data as a link or a copy is no difference;\n"
      "data that several variables share is compared, and reported, once.\n\n"
      "Two numbers a and b are the same if |a - b| <= A + R * max(|a|, |b|).\n\n"
      "Options:\n"
      "  --rtol R   relative tolerance (default 0)\n"
      "  --atol A   absolute tolerance (default 0)\n",
      {{"--rtol", true}, {"--atol", true}},
      2,
      2,
      RunDiff};
  return command;
}

}  // namespace DovInspect
