#include <DovWriter/Version.h>

#include <exception>
#include <new>

#include "Commands.h"
#include "Failure.h"
#include "FileHead.h"

namespace DovInspect {

namespace {

const char kProgram[] = "dovinspect";

std::vector<const Command*> AllCommands() {
  return {&InfoCommand(),   &TreeCommand(),  &VarsCommand(), &DumpCommand(),
          &VerifyCommand(), &CheckCommand(), &DiffCommand(), &ExportCommand()};
}

const Command* FindCommand(const std::string& name) {
  for (const Command* command : AllCommands()) {
    if (name == command->name) return command;
  }
  return nullptr;
}

void PrintOverview(std::ostream& out) {
  out << "Usage: " << kProgram << " COMMAND [ARGS...]\n\n"
      << "Inspect, check and convert model files.\n\nCommands:\n";
  for (const Command* command : AllCommands()) {
    out << "  " << command->name << std::string(8 - std::string(command->name).size(), ' ')
        << command->summary << "\n";
  }
  out << "\nRun '" << kProgram << " COMMAND --help' for the arguments of a command,\n"
      << "'" << kProgram << " --version' for the versions of the tool, the library and the\n"
      << "model file format.\n";
}

// The tool's version is the one it was built as; the library's is that of
// the library it runs with.
void PrintVersions(std::ostream& out) {
  out << kProgram << " " << DOVWRITER_VERSION_STRING << "\n"
      << "library " << Kel::Dov::libraryVersion() << "\n"
      << "format " << kFormatVersion << "\n";
}

void PrintCommandHelp(const Command& command, std::ostream& out) {
  out << "Usage: " << kProgram << " " << command.name << " " << command.usage << "\n\n"
      << command.summary << "\n";
  if (command.details && *command.details) out << "\n" << command.details;
}

int RunCommand(const Command& command, const std::vector<std::string>& args, std::ostream& out,
               std::ostream& err) {
  const std::string prefix = std::string(kProgram) + " " + command.name + ": ";
  try {
    CommandLine line =
        ParseCommandLine(args, command.options, command.minPositional, command.maxPositional);
    if (line.help) {
      PrintCommandHelp(command, out);
      return kExitOk;
    }
    return command.run(line, out, err);
  } catch (const UsageError& e) {
    err << prefix << e.what() << "\nTry '" << kProgram << " " << command.name << " --help'.\n";
    return kExitUsage;
  } catch (const std::bad_alloc&) {
    err << prefix << "out of memory\n";
  } catch (const std::exception& e) {
    err << prefix << DescribeFailure(e) << "\n";
  }
  return kExitFailure;
}

}  // namespace

int RunTool(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.empty()) {
    PrintOverview(err);
    return kExitUsage;
  }
  const std::string& name = args.front();
  if (name == "-h" || name == "--help" || name == "help") {
    PrintOverview(out);
    return kExitOk;
  }
  if (name == "--version") {
    PrintVersions(out);
    return kExitOk;
  }
  const Command* command = FindCommand(name);
  if (!command) {
    err << kProgram << ": unknown command '" << name << "'\nTry '" << kProgram << " --help'.\n";
    return kExitUsage;
  }
  return RunCommand(*command, std::vector<std::string>(args.begin() + 1, args.end()), out, err);
}

}  // namespace DovInspect
