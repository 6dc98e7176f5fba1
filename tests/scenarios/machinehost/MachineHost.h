// The shipped library on a virtual notebook, in a process that takes commands. Registry and files
// are those that all processes share; profile associations and the display pipeline are its own.
#pragma once

#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"

namespace machinehost {

// An application runs as the user. A service runs as administrator, for the same user.
enum class Role { Application, Service };

// What a host registers at its start: the factory's machine, P3 and sRGB by gamma LUT and 3D LUT,
// the e-book mode likewise.
class Host {
 public:
  explicit Host(Role role);

  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;

  // The display pipeline: digests of its 3D LUT and its gamma LUT, "-" for none.
  std::string Pipeline() const;
};

// As a pipeline shows a LUT; "-" for none.
std::string DigestOf(const std::vector<double>& lut);

// The digest of the factory's 3D LUT of a type (Factory.h).
std::string DigestOfMade(int lutType);

// Where the system keeps the profile of a user's mode.
std::string ProfileOf(const std::string& id);

// A user's design in one of two colours, 1 or 2.
UserDesignInfo Design(const std::string& id, int colour);

// The exports that WriteSettings and ReadSettings call, together.
constexpr int kSettingsCalls = 39 + 36;

// Each setting of the library gets its first or second value, in a fixed order; how many failed.
int WriteSettings(virtualnotebook::HostedLibrary& library, int which);

// What the getters give, parted by blanks. A setting that is not there reads as its default.
std::string ReadSettings(virtualnotebook::HostedLibrary& library);

}  // namespace machinehost
