// tour: every family of exports at work on a virtual notebook, and a report of it.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "pictures/ChromaticityDiagram.h"
#include "veloractl/Application.h"
#include "veloractl/Commands.h"
#include "veloractl/DescribedJson.h"
#include "veloractl/TourReport.h"
#include "veloractl/VirtualMachine.h"
#include "virtualnotebook/TestChart.h"
#include "virtualnotebook/tour/Acts.h"

namespace veloractl {
namespace {

using namespace virtualnotebook;

struct TourArguments {
  std::string report;
  std::string pictures;
  std::string edid;
};

constexpr const char* kLevelNames[] = {"debug", "info", "warn", "error"};

// Wider than P3, so that the modes can be told apart by eye.
PanelDescription WideGamutPanel() {
  PanelDescription panel;
  panel.red = {0.690, 0.309};
  panel.green = {0.215, 0.735};
  panel.blue = {0.140, 0.045};
  return panel;
}

std::vector<uint8_t> EdidOf(const TourArguments& arguments) {
  if (arguments.edid.empty()) {
    return MakeEdid(WideGamutPanel());
  }
  try {
    std::vector<uint8_t> edid = virtualnotebook::ReadEdidFile(ToCodePage(arguments.edid));
    DescribePanel(edid);
    return edid;
  } catch (const std::exception& error) {
    throw Failure(kBadFile, arguments.edid + " is no EDID file: " + error.what());
  }
}

// Plays all acts and takes their pictures into a folder.
class Show {
 public:
  Show(tour::Stage& stage, std::string folder)
      : stage_(stage), folder_(std::move(folder)), chart_(DrawTestChart()) {}

  ShownTour Play() {
    ShownTour shown;
    const PanelDescription& panel = stage_.Machine().panel;
    shown.panel = panel;
    shown.pictures = {DrawGamuts(), TakeChart("chart-0-before.png")};
    const std::vector<tour::Act> acts = tour::AllActs();
    for (const tour::Act& act : acts) {
      shown.acts.push_back(Play(act));
      const ShownAct& played = shown.acts.back();
      PrintProgress(std::to_string(shown.acts.size()) + " of " + std::to_string(acts.size()) +
                    (played.IsGood() ? "  " : "  NOT AS ANNOUNCED: ") + played.title);
      for (const ShownCheck& check : played.checks) {
        if (!check.held) {
          PrintProgress("         not so: " + check.announced);
        }
      }
    }
    return shown;
  }

 private:
  ShownAct Play(const tour::Act& act) {
    const tour::Report report = act.play(stage_);
    ShownAct shown{.title = act.title,
                   .story = act.story,
                   .result = report.outcome.result,
                   .milliseconds = report.outcome.milliseconds,
                   .linesLeftOut = report.outcome.linesLeftOut};
    std::ranges::replace(shown.story, '\n', ' ');
    for (const tour::Check& check : report.checks) {
      shown.checks.push_back({check.announced, check.held});
    }
    for (const LogLine& line : report.outcome.log) {
      shown.log.push_back(std::string(kLevelNames[line.level & 3]) + "  " + ToUtf8(line.text));
    }
    if (act.picture != nullptr) {
      shown.pictures.push_back(TakeChart(act.picture));
    }
    if (act.draw != nullptr) {
      shown.pictures.push_back(folder_ + "\\" + act.draw(stage_, folder_));
    }
    return shown;
  }

  std::string TakeChart(const char* name) {
    std::string path = folder_ + "\\" + name;
    WritePng(path, stage_.ShowOnPanel(chart_), stage_.Machine().panel);
    return path;
  }

  // The panel, and what it is calibrated for.
  std::string DrawGamuts() {
    constexpr Xy kD65 = {0.3127, 0.3290};
    const PanelDescription& panel = stage_.Machine().panel;
    std::string path = folder_ + "\\gamuts-cie-xy.svg";
    pictures::WriteFile(
        path, pictures::ChromaticityDiagram(
                  {{"this panel", "#202020", panel.red, panel.green, panel.blue, panel.white},
                   {"sRGB", "#2060c0", {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, kD65},
                   {"P3", "#c04020", {0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, kD65}})
                  .Svg());
    return path;
  }

  tour::Stage& stage_;
  std::string folder_;
  Image chart_;
};

Json ActsAsJson(const ShownTour& shown) {
  Json acts = Json::array();
  for (const ShownAct& act : shown.acts) {
    Json checks = Json::array();
    for (const ShownCheck& check : act.checks) {
      checks.push_back({{"announced", check.announced}, {"held", check.held}});
    }
    acts.push_back({{"act", act.title},
                    {"asAnnounced", act.IsGood()},
                    {"result", act.result},
                    {"milliseconds", act.milliseconds},
                    {"checks", checks}});
  }
  return acts;
}

Report Tour(const TourArguments& arguments, Session& session) {
  if (session.Virtual() != nullptr) {
    throw Failure(kBadArguments,
                  "the tour makes a virtual notebook of its own: leave out --virtual");
  }
  const ScratchFolder folder;
  const MovedRegistry registry;
  std::string pictures = folder.Path() + "\\pictures";
  if (!arguments.pictures.empty()) {
    pictures = ToCodePage(arguments.pictures);
  }
  std::error_code error;
  std::filesystem::create_directories(pictures, error);
  MakeProfileFolder(folder.Path());
  ShownTour shown;
  try {
    tour::Stage stage(EdidOf(arguments), {.dirs = DirsBelow(folder.Path()),
                                          .movedFolders = FoldersBelow(folder.Path()),
                                          .eventPrefix = OwnEventPrefix()});
    shown = Show(stage, pictures).Play();
  } catch (const Failure&) {
    throw;
  } catch (const std::exception& exception) {
    throw Failure(kUnavailable, std::string("the tour could not go on: ") + exception.what());
  }
  if (!arguments.report.empty()) {
    WriteFile(arguments.report, HtmlOf(shown));
  }
  const auto good = static_cast<size_t>(
      std::ranges::count_if(shown.acts, [](const ShownAct& act) { return act.IsGood(); }));
  Json report = {{"panel", shown.panel.vendor},
                 {"acts", ActsAsJson(shown)},
                 {"asAnnounced", good},
                 {"of", shown.acts.size()}};
  if (!arguments.report.empty()) {
    report["report"] = arguments.report;
  }
  const bool all = good == shown.acts.size();
  return {report, all ? kDone : kRefused,
          all ? "" : std::to_string(shown.acts.size() - good) + " acts ended otherwise"};
}

}  // namespace

void AddTourCommand(const CommandSet& commands) {
  commands.Add("tour", "Everything at work on a virtual notebook, with a report",
               [](CLI::App& app) -> Action {
                 const auto arguments = std::make_shared<TourArguments>();
                 app.add_option("--report", arguments->report,
                                "One HTML file with pictures, results and log")
                     ->type_name("FILE");
                 app.add_option("--pictures", arguments->pictures, "A folder for the pictures")
                     ->type_name("FOLDER");
                 app.add_option("--edid", arguments->edid,
                                "The notebook's panel: hexadecimal text or binary")
                     ->type_name("FILE");
                 app.footer("  veloractl tour --report tour.html");
                 return [arguments](Session& session) { return Tour(*arguments, session); };
               });
}

}  // namespace veloractl
