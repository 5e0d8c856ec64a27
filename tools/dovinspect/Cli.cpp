#include "Cli.h"

#include <cerrno>
#include <cstdlib>

namespace DovInspect {

namespace {

const OptionSpec* FindOption(const std::vector<OptionSpec>& options, const std::string& name) {
  for (const OptionSpec& spec : options) {
    if (spec.name == name) return &spec;
  }
  return nullptr;
}

bool LooksLikeOption(const std::string& arg) { return arg.size() > 1 && arg[0] == '-'; }

}  // namespace

std::string CommandLine::Value(const std::string& option, const std::string& fallback) const {
  auto it = options.find(option);
  return it == options.end() ? fallback : it->second;
}

std::uint64_t CommandLine::Number(const std::string& option, std::uint64_t fallback) const {
  auto it = options.find(option);
  if (it == options.end()) return fallback;
  const std::string& text = it->second;
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
    throw UsageError(option + " expects a non-negative number, not '" + text + "'");
  }
  errno = 0;
  unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
  if (errno == ERANGE) throw UsageError(option + " value '" + text + "' is too large");
  return value;
}

CommandLine ParseCommandLine(const std::vector<std::string>& args,
                             const std::vector<OptionSpec>& options, std::size_t minPositional,
                             std::size_t maxPositional) {
  CommandLine result;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsEnded || !LooksLikeOption(arg)) {
      result.positional.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnded = true;
      continue;
    }
    if (arg == "-h" || arg == "--help") {
      result.help = true;
      continue;
    }
    std::string name = arg;
    std::string value;
    bool inlineValue = false;
    std::size_t equals = arg.find('=');
    if (equals != std::string::npos) {
      name = arg.substr(0, equals);
      value = arg.substr(equals + 1);
      inlineValue = true;
    }
    const OptionSpec* spec = FindOption(options, name);
    if (!spec) throw UsageError("unknown option '" + name + "'");
    if (spec->takesValue && !inlineValue) {
      if (i + 1 >= args.size()) throw UsageError(name + " needs a value");
      value = args[++i];
    } else if (!spec->takesValue && inlineValue) {
      throw UsageError(name + " takes no value");
    }
    result.options[name] = value;
  }
  if (result.help) return result;
  if (result.positional.size() < minPositional) throw UsageError("missing arguments");
  if (result.positional.size() > maxPositional) {
    throw UsageError("unexpected argument '" + result.positional[maxPositional] + "'");
  }
  return result;
}

}  // namespace DovInspect
