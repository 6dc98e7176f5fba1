// This machine's colour modes, as a file tells them, and the user's, as the registry does.
#pragma once

#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"
#include "veloractl/Report.h"
#include "veloractl/Session.h"

namespace veloractl {

struct MachineModes {
  ColorFieldInitInfo init = {};
  std::vector<ColorFieldModeInfo> presets;
  std::string source;  // the file, or what made them
};

// Of the file that was named, of modes.json beside the program, or of the virtual notebook. Failure
// with kBadFile.
MachineModes LoadModes(Session& session);

// The records of the stored user modes, by the names of their keys.
std::vector<UserDesignInfo> StoredUserModes(Session& session);

// "DESIGN FIELD" copies of texts into records; Failure with kBadArguments for too long a one.
void SetField(char* field, size_t size, const std::string& utf8, const std::string& what);
std::string FieldOf(const char* field, size_t size);  // UTF-8

}  // namespace veloractl
