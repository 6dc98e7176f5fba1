// A service and an application at once, in two processes, on one registry and one set of files.
//
// In each round both start the library anew, so that it looks at the files. The application writes
// its settings and rings; the service, which waits for that, reads them, writes its own and rings
// back. Meanwhile both switch modes, save user modes, enable each other's, and break data files.
#pragma once

#include <set>
#include <string>

#include "scenarios/machinehost/MachineHost.h"

namespace machinehost {

constexpr char kServicesMode[] = "Service%1";
constexpr char kApplicationsMode[] = "Application%1";

// One side. shown: every LUT that a panel may show, as in Host::Pipeline. Gives the numbers of
// rounds, switches, refused switches, saved user modes and wrong results, with a blank between;
// what was wrong goes to the error output.
std::string Rounds(Role role, int count, const std::set<std::string>& shown);

}  // namespace machinehost
