// What a tour showed, as one HTML file.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"
#include "virtualnotebook/Factory.h"

namespace veloractl {

struct ShownCheck {
  std::string announced;
  bool held;
};

struct ShownAct {
  std::string title;
  std::string story;
  ResultT result = 0;
  double milliseconds = 0;
  std::vector<ShownCheck> checks = {};
  std::vector<std::string> log = {};  // "info  mode:2(SetColorField)"
  size_t linesLeftOut = 0;
  std::vector<std::string> pictures = {};  // PNG and SVG files

  bool IsGood() const { return std::ranges::all_of(checks, &ShownCheck::held); }
};

struct ShownTour {
  virtualnotebook::PanelDescription panel;
  std::vector<std::string> pictures;
  std::vector<ShownAct> acts;
};

// Self-contained: pictures are in it, and nothing is loaded from elsewhere.
std::string HtmlOf(const ShownTour& shown);

}  // namespace veloractl
