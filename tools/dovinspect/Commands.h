#ifndef DOVINSPECT_COMMANDS_H
#define DOVINSPECT_COMMANDS_H

// The subcommands of dovinspect and the dispatcher that runs them.

#include <iostream>
#include <string>
#include <vector>

#include "Cli.h"

namespace DovInspect {

// Exit statuses.
const int kExitOk = 0;
const int kExitFailure = 1;  // the work failed, or verify found violations
const int kExitUsage = 2;    // the command line was wrong
const int kExitWarnings = 3; // check found warnings and no errors

// The --json option and its line in the help of the commands that have it.
#define DOVINSPECT_JSON_HELP \
  "  --json   one JSON document on standard output (docs/dovinspect-json.md)\n"
const OptionSpec kJsonOption{"--json", false};

struct Command {
  const char* name;
  const char* summary;  // one line for the overview
  const char* usage;    // arguments behind the name
  const char* details;  // what --help adds below the usage
  std::vector<OptionSpec> options;
  std::size_t minPositional;
  std::size_t maxPositional;
  int (*run)(const CommandLine& line, std::ostream& out, std::ostream& err);
};

const Command& InfoCommand();
const Command& TreeCommand();
const Command& VarsCommand();
const Command& DumpCommand();
const Command& VerifyCommand();
const Command& ExportCommand();
const Command& CheckCommand();
const Command& DiffCommand();

// "1 error", "2 errors": a count and its noun.
inline std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// Runs one command line (without the program name) and returns the exit
// status. Every failure is reported on `err` as one readable message.
int RunTool(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace DovInspect

#endif
