// The commands: each family registers its own.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>

#include "veloractl/Report.h"
#include "veloractl/Session.h"

namespace veloractl {

// What a command does once its arguments are read. Throws Failure.
using Action = std::function<Report(Session&)>;

// Where commands are added:
//
//   commands.Add("get", "One setting, or all", [](CLI::App& app) -> Action {
//     const auto name = std::make_shared<std::string>();
//     app.add_option("NAME", *name, "A setting's name")->required();
//     return [name](Session& session) -> Report { return ...; };
//   });
class CommandSet {
 public:
  explicit CommandSet(CLI::App& app) : app_(&app), chosen_(std::make_shared<Action>()) {}

  // describe gives the command its arguments and returns what it does.
  CLI::App* Add(const std::string& name, const std::string& summary,
                const std::function<Action(CLI::App&)>& describe) const;

  // Commands below a name of their own: "user save", "user edit".
  CommandSet Group(const std::string& name, const std::string& summary) const;

  // Of the command line that the application has parsed; empty: none.
  const Action& Chosen() const { return *chosen_; }

 private:
  CommandSet(CLI::App& app, std::shared_ptr<Action> chosen)
      : app_(&app), chosen_(std::move(chosen)) {}

  CLI::App* app_;
  std::shared_ptr<Action> chosen_;
};

void AddInspectCommands(const CommandSet& commands);    // veloractl/inspect
void AddSettingsCommands(const CommandSet& commands);   // get, set, flags, watch, settings
void AddColorModeCommands(const CommandSet& commands);  // modes, set-mode, sync, reset, user, tune
void AddColorCommands(const CommandSet& commands);      // fuse, temperature, eye-strength
void AddDisplayCommands(const CommandSet& commands);    // monitors, extend, vendor, shown
void AddEventCommands(const CommandSet& commands);      // watch, ring
void AddSystemCommands(const CommandSet& commands);     // version, log, telemetry, switch-user
void AddNaturalColorCommands(const CommandSet& commands);  // natural, sensor
void AddDoctorCommand(const CommandSet& commands);         // doctor
void AddTourCommand(const CommandSet& commands);           // tour
void AddRunCommand(const CommandSet& commands);            // run

// One command line, without the program's name. Prints the report, or one sentence on standard
// error; the exit status.
int RunCommandLine(const std::vector<std::string>& arguments);

}  // namespace veloractl
