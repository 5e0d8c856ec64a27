#ifndef DOVINSPECT_CLI_H
#define DOVINSPECT_CLI_H

// Command-line parsing shared by all subcommands: positional arguments,
// options with or without a value, and the errors a user can make.

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace DovInspect {

// A mistake on the command line. main() prints it with a hint to --help and
// exits with status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A failure while doing the work (unreadable file, bad data, write error).
// main() prints it and exits with status 1.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct OptionSpec {
  std::string name;  // with the leading dashes, e.g. "--limit"
  bool takesValue;
};

struct CommandLine {
  std::vector<std::string> positional;
  std::map<std::string, std::string> options;  // flags map to ""
  bool help = false;

  bool Has(const std::string& option) const { return options.count(option) != 0; }
  std::string Value(const std::string& option, const std::string& fallback) const;
  // The option's value as an unsigned number; UsageError if it is not one.
  std::uint64_t Number(const std::string& option, std::uint64_t fallback) const;
};

// Parses the arguments behind the subcommand's name. "--opt=value" and
// "--opt value" are both accepted; "--" ends the options. `-h` and `--help`
// set `help` and suppress the count check, so that help always works.
CommandLine ParseCommandLine(const std::vector<std::string>& args,
                             const std::vector<OptionSpec>& options, std::size_t minPositional,
                             std::size_t maxPositional);

}  // namespace DovInspect

#endif
