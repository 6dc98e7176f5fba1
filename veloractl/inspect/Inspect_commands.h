#pragma once

#include "veloractl/Commands.h"

namespace veloractl {

void AddFileCommands(const CommandSet& commands);     // inspect, dump-firmware
void AddLutCommands(const CommandSet& commands);      // lut convert
void AddPanelCommand(const CommandSet& commands);     // panel
void AddProfilesCommand(const CommandSet& commands);  // profiles

}  // namespace veloractl
