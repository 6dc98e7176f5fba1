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
};

std::span<const Act> AllActs();

}  // namespace tour
