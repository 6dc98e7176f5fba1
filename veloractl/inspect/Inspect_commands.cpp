#include "veloractl/inspect/Inspect_commands.h"

namespace veloractl {

void AddInspectCommands(const CommandSet& commands) {
  AddFileCommands(commands);
  AddLutCommands(commands);
  AddPanelCommand(commands);
  AddProfilesCommand(commands);
}

}  // namespace veloractl
