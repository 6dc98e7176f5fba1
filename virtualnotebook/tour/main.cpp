// The tour: what happens when a host switches a colour mode, and when something is wrong.
//
//   tour [--edid FILE] [--pictures DIRECTORY]
//
// Gives 0 when every act ended as announced, 1 when one did not, 2 when the tour could not go on.
#include <windows.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

#include "virtualnotebook/ChromaticityDiagram.h"
#include "virtualnotebook/tour/Acts.h"

namespace tour {
namespace {

using namespace virtualnotebook;

struct Options {
  std::string edidFile;
  std::string pictures;  // a directory; empty: no pictures
};

Options ParseArguments(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    std::string* value = name == "--edid"       ? &options.edidFile
                         : name == "--pictures" ? &options.pictures
                                                : nullptr;
    if (value == nullptr || i + 1 == argc) {
      throw std::invalid_argument("usage: tour [--edid FILE] [--pictures DIRECTORY]");
    }
    *value = argv[i + 1];
  }
  return options;
}

// Wider than P3, so that the modes can be told apart by eye.
PanelDescription WideGamutPanel() {
  PanelDescription panel;
  panel.red = {0.690, 0.309};
  panel.green = {0.215, 0.735};
  panel.blue = {0.140, 0.045};
  return panel;
}

std::string Utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  std::string out(text.size() * 3, '\0');
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, out.data(),
                                       static_cast<int>(out.size()), nullptr, nullptr);
  out.resize(static_cast<size_t>(size));
  return out;
}

const char* LevelName(int level) {
  constexpr const char* kNames[] = {"debug", "info", "warn", "error"};
  return level >= 0 && level < 4 ? kNames[level] : "?";
}

void PrintIndented(std::string_view text) {
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    std::printf("   %.*s\n", static_cast<int>(end - start), text.data() + start);
    start = end + 1;
  }
}

void PrintPanel(const PanelDescription& panel) {
  std::printf("The virtual notebook's panel: %s %04X, week %d of %d, gamma %.2f\n",
              panel.vendor.c_str(), panel.product, int{panel.week}, panel.year, panel.gamma);
  std::printf("   red %.3f %.3f   green %.3f %.3f   blue %.3f %.3f   white %.3f %.3f\n",
              panel.red.x, panel.red.y, panel.green.x, panel.green.y, panel.blue.x, panel.blue.y,
              panel.white.x, panel.white.y);
}

// Whether all that was announced came so.
bool Play(size_t number, const Act& act, Stage& stage) {
  std::printf("\n%zu  %s\n", number, act.title);
  PrintIndented(act.story);
  const Report report = act.play(stage);
  std::printf("\n");
  for (const LogLine& line : report.outcome.log) {
    std::printf("   %-5s  %s\n", LevelName(line.level), Utf8(line.text).c_str());
  }
  if (report.outcome.linesLeftOut > 0) {
    std::printf("   and %zu more lines of the log\n", report.outcome.linesLeftOut);
  }
  std::printf("\n   result %d in %.2f ms\n", static_cast<int>(report.outcome.result),
              report.outcome.milliseconds);
  bool all = true;
  for (const Check& check : report.checks) {
    std::printf("   %-5s  %s\n", check.held ? "yes" : "NO", check.announced.c_str());
    all = all && check.held;
  }
  return all;
}

class Pictures {
 public:
  Pictures(const std::string& directory, const PanelDescription& panel)
      : directory_(directory), panel_(panel), chart_(DrawTestChart()) {}

  void Take(const char* name, const Stage& stage) const {
    if (directory_.empty() || name == nullptr) {
      return;
    }
    WritePng(directory_ + "/" + name, stage.ShowOnPanel(chart_), panel_);
    std::printf("   picture  %s\n", name);
  }

  // The panel, and a target that it is calibrated for.
  void DrawGamuts(const char* name) const {
    if (directory_.empty()) {
      return;
    }
    constexpr Xy kD65 = {0.3127, 0.3290};
    WriteChromaticityDiagram(
        directory_ + "/" + name,
        {{"this panel", "#202020", panel_.red, panel_.green, panel_.blue, panel_.white},
         {"sRGB", "#2060c0", {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, kD65},
         {"P3", "#c04020", {0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, kD65}});
    std::printf("   picture  %s\n", name);
  }

  void Take(const Act& act, Stage& stage) const {
    Take(act.picture, stage);
    if (!directory_.empty() && act.draw != nullptr) {
      act.draw(stage, directory_);
    }
  }

 private:
  std::string directory_;
  PanelDescription panel_;
  Image chart_;
};

int PlayAll(const Options& options) {
  Stage stage(options.edidFile.empty() ? MakeEdid(WideGamutPanel())
                                       : ReadEdidFile(options.edidFile));
  const Pictures pictures(options.pictures, stage.Machine().panel);
  PrintPanel(stage.Machine().panel);
  pictures.DrawGamuts("gamuts-cie-xy.svg");
  pictures.Take("chart-0-before.png", stage);

  const std::vector<Act> acts = AllActs();
  size_t good = 0;
  for (size_t i = 0; i < acts.size(); ++i) {
    if (Play(i + 1, acts[i], stage)) {
      ++good;
    }
    pictures.Take(acts[i], stage);
    std::fflush(stdout);
  }
  std::printf("\n%zu of %zu acts ended as announced.\n", good, acts.size());
  return good == acts.size() ? 0 : 1;
}

}  // namespace
}  // namespace tour

int main(int argc, char** argv) {
  try {
    return tour::PlayAll(tour::ParseArguments(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tour: %s\n", error.what());
    return 2;
  }
}
