// The product as it is installed.
#pragma once

#include "veloractl/Session.h"

namespace veloractl {

// The library and the closed libraries: name, version, path; null for one that isn't loaded.
Json ModuleVersions();

// The library's last log lines of a level or above; a virtual notebook's own.
Json LastLogLines(Session& session, size_t last, int level);

}  // namespace veloractl
