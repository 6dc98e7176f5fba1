// What the virtual notebook's panel shows.
#pragma once

#include "veloractl/Report.h"
#include "veloractl/Session.h"

namespace veloractl {

// The report with a member "panel" behind it where the machine is virtual: which LUTs it has, its
// gains, its profile.
Json WithShown(Session& session, Json report);

}  // namespace veloractl
