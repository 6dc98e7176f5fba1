// From a command line to what it prints.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "veloractl/Report.h"
#include "veloractl/Session.h"

namespace veloractl {

struct Outcome {
  int status = kDone;
  std::optional<Json> report = {};  // what the command found
  std::string text = {};            // help and version, for standard output
  std::string error = {};           // one sentence; empty: none
};

// Arguments without the program's name, in UTF-8. session: that of the commands around this one,
// whose options then hold; null: the command line begins one with options of its own, which go to
// used.
Outcome Execute(const std::vector<std::string>& arguments, Session* session,
                Options* used = nullptr);

// Standard output, in UTF-8.
void Print(const std::string& text);
// A line of standard error: "veloractl: ...".
void PrintError(const std::string& sentence);
// A line of standard error that shows how far a long work is.
void PrintProgress(const std::string& line);

}  // namespace veloractl
