#include "telvanix/commands.h"

namespace telvanix::tool {

const std::vector<Command>& AllCommands() {
  static const std::vector<Command> commands = {};
  return commands;
}

}  // namespace telvanix::tool
