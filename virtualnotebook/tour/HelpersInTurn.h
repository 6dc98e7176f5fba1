// Natural colour's helpers, run for real.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "VeloraPlatform/SoftwarePanel.h"
#include "virtualnotebook/Notebook.h"

namespace tour {

// For as long as the object lives, the library on this notebook starts VeloraAssistant.exe as if
// its host were installed beside it. A helper starts when the one ahead of it has ended, which on a
// machine the pause between two frames gives time for; what the panel showed after each is kept.
class HelpersInTurn {
 public:
  using Gains = std::array<double, 3>;  // of R, G and B

  // isPlayed: no helper is started; the tour takes the part of each, by its command line.
  HelpersInTurn(virtualnotebook::Notebook& notebook, bool isPlayed);
  ~HelpersInTurn();
  HelpersInTurn(const HelpersInTurn&) = delete;
  HelpersInTurn& operator=(const HelpersInTurn&) = delete;

  // One for each helper, once the last has ended too. While none is being started.
  const std::vector<Gains>& Shown();

 private:
  void AwaitTheLast();
  Gains ShownNow() const;

  virtualnotebook::Notebook& notebook_;
  bool isPlayed_;
  softwarepanel::SoftwarePanel panel_;
  std::vector<Gains> shown_;
  bool inTime_ = true;  // no helper failed to end: no need to wait for more
};

}  // namespace tour
