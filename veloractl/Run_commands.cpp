// Several command lines in one process: what one has set, the next one gets.
#include <algorithm>
#include <fstream>
#include <iostream>

#include "veloractl/Application.h"
#include "veloractl/Commands.h"

namespace veloractl {
namespace {

struct RunArguments {
  std::string file;
  bool keepGoing = false;
};

Json Describe(const std::string& line, const Outcome& outcome) {
  Json described = {{"command", line}, {"status", outcome.status}};
  if (outcome.report) {
    described["report"] = *outcome.report;
  }
  if (!outcome.text.empty()) {
    described["text"] = outcome.text;
  }
  if (!outcome.error.empty()) {
    described["error"] = outcome.error;
  }
  return described;
}

// UTF-8 without control characters.
bool IsText(const std::string& line) {
  return ToUtf8(FromUtf8(line)) == line &&
         std::ranges::none_of(line, [](char c) { return c >= 0 && c < ' ' && c != '\t'; });
}

// As each ends: a long list shows how far it is.
void Show(const std::string& line, const Outcome& outcome, bool json) {
  if (json) {
    Print(Describe(line, outcome).dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    return;
  }
  Print("> " + line + "\n" + outcome.text + (outcome.report ? AsTable(*outcome.report) : "") +
        "\n");
}

Report RunLines(std::istream& lines, const RunArguments& arguments, Session& session) {
  size_t number = 0;
  size_t failed = 0;
  size_t done = 0;
  int status = kDone;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    line = CLI::detail::trim_copy(line);
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (!IsText(line)) {
      throw Failure(kBadFile, arguments.file + ", line " + std::to_string(number) + " is no text");
    }
    const Outcome outcome = Execute(CLI::detail::split_up(line), &session);
    Show(line, outcome, session.Chosen().json);
    if (!outcome.error.empty()) {
      PrintError("line " + std::to_string(number) + ": " + outcome.error);
    }
    ++done;
    if (outcome.status != kDone) {
      ++failed;
      status = outcome.status;
      if (!arguments.keepGoing) {
        break;
      }
    }
  }
  const std::string sentence = failed == 0
                                   ? ""
                                   : std::to_string(failed) + " of " + std::to_string(done) +
                                         (done == 1 ? " command failed" : " commands failed");
  return {Json{{"commands", done}, {"failed", failed}}, status, sentence};
}

Report RunFile(const RunArguments& arguments, Session& session) {
  if (arguments.file == "-") {
    return RunLines(std::cin, arguments, session);
  }
  std::ifstream file(ToCodePage(arguments.file));
  if (!file) {
    throw Failure(kBadFile, "can't read " + arguments.file);
  }
  return RunLines(file, arguments, session);
}

}  // namespace

void AddRunCommand(const CommandSet& commands) {
  commands.Add("run", "Run command lines, one a line, in one process", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<RunArguments>();
    app.add_option("FILE", arguments->file, "Command lines without \"veloractl\"; -: as typed")
        ->required();
    app.add_flag("--keep-going", arguments->keepGoing, "Go on behind a command that failed");
    app.footer(
        "A virtual notebook lives as long as the process: this is how to set and then get.\n"
        "  veloractl --virtual run -\n"
        "Blank lines and lines that begin with # are skipped; with --json each command prints one\n"
        "line. The exit status is that of the last command that failed.");
    return [arguments](Session& session) { return RunFile(*arguments, session); };
  });
}

}  // namespace veloractl
