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

// Runs one command line (without the program name) and returns the exit
// status. Every failure is reported on `err` as one readable message.
int RunTool(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace DovInspect

#endif
