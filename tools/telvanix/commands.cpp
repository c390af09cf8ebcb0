#include "telvanix/commands.h"

namespace telvanix::tool {

extern const Command kFormatCommand;
extern const Command kRoundtripCommand;
extern const Command kTocCommand;

const std::vector<Command>& AllCommands() {
  static const std::vector<Command> commands = {kFormatCommand, kTocCommand, kRoundtripCommand};
  return commands;
}

}  // namespace telvanix::tool
