// What inspections take from this machine, or from the virtual notebook.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "veloractl/Session.h"
#include "veloractl/inspect/Listening.h"

namespace veloractl {

// Failure with kBadFile for a file that can't be read. path: UTF-8.
std::vector<uint8_t> ReadFileBytes(const std::string& path);
// The same where the file may be one of the virtual notebook's.
std::vector<uint8_t> ReadFileBytes(Session& session, const std::string& path);
// Failure with kUnavailable for a file that can't be written.
void WriteFileBytes(const std::string& path, const std::string& content);

// An EDID file: its bytes, or hexadecimal text. Failure for bytes that the library refuses.
std::vector<uint8_t> ReadEdidFile(Session& session, const std::string& path);

// The firmware's LUT table; empty where the machine has none.
std::vector<uint8_t> ReadFirmwareTable(Session& session);

// What the library heard when it looked for its panel: it looks once in its life, and this is the
// one time. Failure where the library can't be loaded.
const Heard& HearPanel(Session& session);

}  // namespace veloractl
