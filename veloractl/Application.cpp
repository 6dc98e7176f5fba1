#include "veloractl/Application.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "veloractl/Commands.h"

namespace veloractl {
namespace {

constexpr char kSummary[] =
    "Drives VeloraCtlApi from the command line, looks into its files, and shows what it knows.";

constexpr char kFooter[] =
    "Exit status:\n"
    "  0  done\n"
    "  1  the library or the machine refused, or a check failed\n"
    "  2  bad arguments: an unknown name, a value out of range\n"
    "  3  a file that can't be read, or isn't what it should be\n"
    "  4  the library can't be loaded, or a file can't be written\n"
    "\n"
    "Try it without the hardware:\n"
    "  veloractl --virtual version\n"
    "  veloractl --virtual run -        then: set eye-protection.value 120\n"
    "                                         get eye-protection.value\n"
    "\n"
    "\"veloractl COMMAND --help\" tells more.";

// The parser's message as one sentence.
std::string Sentence(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  while (!text.empty() && (text.back() == ' ' || text.back() == '.')) {
    text.pop_back();
  }
  return text;
}

void AddOptions(CLI::App& app, Options& options, bool& version) {
  app.add_flag("--json", options.json, "Print JSON instead of a table");
  app.add_flag("--version", version, "The tool's version");
  app.add_option_function<std::string>(
         "--virtual",
         [&options](const std::string& file) {
           options.isVirtual = true;
           options.description = file;
         },
         "On a notebook in software, made for this command: no key or file of this machine is "
         "touched. DESCRIPTION.json: another notebook, see docs/veloractl.md")
      ->expected(0, 1)
      ->default_str("")
      ->type_name("[DESCRIPTION.json]");
  app.add_option("--modes", options.modes,
                 "This machine's colour modes; else modes.json beside veloractl.exe")
      ->type_name("FILE");
}

void AddCommands(const CommandSet& commands) {
  AddSystemCommands(commands);
  AddSettingsCommands(commands);
  AddColorModeCommands(commands);
  AddColorCommands(commands);
  AddNaturalColorCommands(commands);
  AddEventCommands(commands);
  AddDisplayCommands(commands);
  AddInspectCommands(commands);
  AddDoctorCommand(commands);
  AddTourCommand(commands);
  AddRunCommand(commands);
}

Outcome RunAction(const Action& action, Session& session) {
  try {
    const Report report = action(session);
    return {.status = report.status, .report = report.value, .error = report.sentence};
  } catch (const Failure& failure) {
    return {.status = failure.Status(), .error = Sentence(failure.what())};
  } catch (const std::exception& error) {
    return {.status = kRefused, .error = "this failed: " + Sentence(error.what())};
  }
}

}  // namespace

CLI::App* CommandSet::Add(const std::string& name, const std::string& summary,
                          const std::function<Action(CLI::App&)>& describe) const {
  CLI::App* const command = app_->add_subcommand(name, summary);
  command->fallthrough();
  command->callback([chosen = chosen_, action = describe(*command)] { *chosen = action; });
  return command;
}

CommandSet CommandSet::Group(const std::string& name, const std::string& summary) const {
  CLI::App* const group = app_->add_subcommand(name, summary);
  group->fallthrough();
  group->require_subcommand(1);
  return {*group, chosen_};
}

Outcome Execute(const std::vector<std::string>& arguments, Session* session, Options* used) {
  CLI::App app(kSummary, "veloractl");
  app.footer(kFooter);
  app.require_subcommand(0, 1);
  Options options;
  bool version = false;
  if (session == nullptr) {
    AddOptions(app, options, version);
  }
  const CommandSet commands(app);
  AddCommands(commands);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp& help) {
    const auto chosen = app.get_subcommands();
    const CLI::App* shown = &app;
    while (!shown->get_subcommands().empty()) {
      shown = shown->get_subcommands().front();
    }
    return {.text = shown->help()};
  } catch (const CLI::ParseError& error) {
    return {.status = kBadArguments, .error = Sentence(error.what())};
  }
  if (used != nullptr) {
    *used = options;
  }
  if (version) {
    return {.text = "veloractl " VELORA_VERSION "\n"};
  }
  if (!commands.Chosen()) {
    return {.status = kBadArguments, .error = "which command? \"veloractl --help\" names them"};
  }
  if (session != nullptr) {
    return RunAction(commands.Chosen(), *session);
  }
  Session own(options);
  return RunAction(commands.Chosen(), own);
}

void Print(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

void PrintError(const std::string& sentence) {
  std::fprintf(stderr, "veloractl: %s\n", sentence.c_str());
}

void PrintProgress(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  std::fflush(stderr);
}

}  // namespace veloractl
