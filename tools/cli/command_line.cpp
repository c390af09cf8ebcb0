#include "cli/command_line.h"

#include <cstdio>

#include "cli/commands.h"
#include "cli/page_files.h"

namespace telvanix::tool {

bool CommandLine::Parse(const std::vector<std::string>& args, const std::vector<OptionRule>& rules) {
  bool onlyOperands = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (onlyOperands || arg.size() < 2 || arg[0] != '-' || arg == "-") {
      m_operands.push_back(arg);
      continue;
    }
    if (arg == "--") {
      onlyOperands = true;
      continue;
    }
    std::string name = arg.substr(arg[1] == '-' ? 2 : 1);
    std::string inlineValue;
    bool hasInline = false;
    if (size_t eq = name.find('='); eq != std::string::npos) {
      inlineValue = name.substr(eq + 1);
      name.resize(eq);
      hasInline = true;
    }
    if (name == "h") name = "help";
    const OptionRule* rule = nullptr;
    for (const OptionRule& s : rules)
      if (s.name == name) rule = &s;
    if (!rule) {
      m_error = "unknown option '" + arg + "'";
      return false;
    }
    std::vector<std::string>& values = m_options[name];
    int wanted = rule->values;
    if (hasInline) {
      if (wanted == 0) {
        m_error = "option '--" + name + "' takes no value";
        return false;
      }
      values.push_back(inlineValue);
      --wanted;
    }
    for (; wanted > 0; --wanted) {
      if (i + 1 >= args.size()) {
        m_error = "option '--" + name + "' needs " + std::to_string(rule->values) + " value(s)";
        return false;
      }
      values.push_back(args[++i]);
    }
  }
  return true;
}

const std::vector<std::string>& CommandLine::Values(const std::string& name) const {
  static const std::vector<std::string> none;
  auto it = m_options.find(name);
  return it == m_options.end() ? none : it->second;
}

int StartCommand(const std::vector<std::string>& args, std::vector<OptionRule> rules, const char* help,
                 CommandLine& cl, size_t minOperands, size_t maxOperands) {
  rules.push_back({"help", 0});
  if (!cl.Parse(args, rules)) {
    PrintError(cl.error());
    return kExitError;
  }
  if (cl.Has("help")) {
    std::fputs(help, stdout);
    return kExitClean;
  }
  if (cl.operands().size() < minOperands || cl.operands().size() > maxOperands) {
    std::fputs(help, stderr);
    return kExitError;
  }
  return -1;
}

}  // namespace telvanix::tool
