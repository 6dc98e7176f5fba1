// The acts of the tour, in their order.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "virtualnotebook/tour/Stage.h"

namespace tour {

// What an act announced, and whether it came so.
struct Check {
  std::string announced;
  bool held;
};

struct Report {
  Outcome outcome;
  std::vector<Check> checks;
};

struct Act {
  const char* title;
  const char* story;  // one sentence
  Report (*play)(Stage& stage);
  const char* picture;  // file name of what the panel shows afterwards; null: none
  // A further picture into a directory, and its name; null: none.
  std::string (*draw)(Stage& stage, const std::string& directory) = nullptr;
};

// Each group starts a host of its own.
std::span<const Act> PresetActs();         // one mode and damaged data
std::span<const Act> WayActs();            // the same mode by each way to the panel
std::span<const Act> ColourMathsActs();    // the colour circle and fusion
std::span<const Act> UserModeActs();       // a mode of the user's own, from design to deletion
std::span<const Act> NaturalColourActs();  // the panel follows the light in the room
std::span<const Act> SettingsActs();       // settings, flags, events, displays, telemetry
std::vector<Act> AllActs();

}  // namespace tour
