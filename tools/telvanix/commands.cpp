#include "telvanix/commands.h"

namespace telvanix::tool {

extern const Command kCheckCommand;
extern const Command kFormatCommand;
extern const Command kRoundtripCommand;
extern const Command kTocCommand;

const std::vector<Command>& AllCommands() {
  static const std::vector<Command> commands = {kCheckCommand, kFormatCommand, kTocCommand, kRoundtripCommand};
  return commands;
}

}  // namespace telvanix::tool
