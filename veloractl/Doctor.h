// The walk over everything that the library depends on.
#pragma once

#include "veloractl/Session.h"
#include "veloractl/inspect/Findings.h"

namespace veloractl {

// Changes nothing. facts gets what a bug report holds beside the checks: "modules", "registry",
// "edid", "files", "associations".
Findings Examine(Session& session, Json& facts);

}  // namespace veloractl
