#include "cli/commands.h"

namespace telvanix::tool {

extern const Command kCheckCommand;
extern const Command kFormatCommand;
extern const Command kPopupsCommand;
extern const Command kPropsCommand;
extern const Command kRoundtripCommand;
extern const Command kStyleCommand;
extern const Command kTagsCommand;
extern const Command kTextCommand;
extern const Command kTocCommand;

const std::vector<Command>& AllCommands() {
  static const std::vector<Command> commands = {kCheckCommand, kTextCommand,  kPropsCommand,    kTagsCommand,
                                                kFormatCommand, kTocCommand, kRoundtripCommand,
                                                kPopupsCommand, kStyleCommand};
  return commands;
}

}  // namespace telvanix::tool
