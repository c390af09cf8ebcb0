// Parsing of one command's arguments: positional operands plus "--name" and
// "--name=value" / "--name value" options from a declared set.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace telvanix::tool {

struct OptionRule {
  std::string name;       // without the leading "--"
  int values = 0;         // how many values follow the option (0, 1 or 2)
};

class CommandLine {
 public:
  // Returns false and sets error() for an unknown option or a missing value.
  bool Parse(const std::vector<std::string>& args, const std::vector<OptionRule>& rules);

  const std::vector<std::string>& operands() const { return m_operands; }
  bool Has(const std::string& name) const { return m_options.count(name) != 0; }
  // Values given to a repeatable option, in order (each use appends its values).
  const std::vector<std::string>& Values(const std::string& name) const;
  const std::string& error() const { return m_error; }

 private:
  std::vector<std::string> m_operands;
  std::map<std::string, std::vector<std::string>> m_options;
  std::string m_error;
};

// The common start of every command: parses `args` against `rules` (plus
// --help), prints the help text for --help and the help or an error for bad
// use. Returns -1 when the command should go on, else the exit status to
// return at once. The operand count must lie in [minOperands, maxOperands].
int StartCommand(const std::vector<std::string>& args, std::vector<OptionRule> rules, const char* help,
                 CommandLine& cl, size_t minOperands = 1, size_t maxOperands = static_cast<size_t>(-1));

}  // namespace telvanix::tool
