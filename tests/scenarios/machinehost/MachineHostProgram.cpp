// A host on a machine: a process that calls the shipped library on a virtual notebook and can be
// told to stop for good ahead of any of its calls. It takes a command a line and answers each with
// a line:
//
//   load                 loads the library anew, as an application, and registers the modes; 0
//   unload               frees it; 0
//   stop N               0; then it answers "ahead of FUNCTION" ahead of the N-th call from now,
//   and
//                        does nothing more but wait for whoever kills it
//   trail                the functions of all calls since the library was loaded, or since errors
//   or firmware errors               how many lines of level 3 since the last time firmware how
//   often it read the firmware since the last time pipeline             what the panel shows
//   (Host::Pipeline) switch MODE          SetColorField user ID              SetUserColorField
//   register ID          AddUsrDesignInfo
//   save ID COLOUR       SaveUserSelfColor
//   edit ID COLOUR OLD   EditUserColorField of OLD
//   forget ID            DeleteUserDesignReg
//   write WHICH          WriteSettings
//   read                 ReadSettings
//   rounds ROLE COUNT SHOWN...   Rounds.h; ROLE is application or service
//
// A call is one that the library makes of the system or of a closed library; those that only log or
// convert texts do not count. It ends with its input.
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <iostream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "scenarios/machinehost/MachineHost.h"
#include "scenarios/machinehost/Rounds.h"

namespace {

using machinehost::Design;
using virtualnotebook::Call;

constexpr std::array<std::string_view, 4> kNotCounted = {
    "LcdLogMessage", "CoreKit::StringToWString", "CoreKit::WStringToString",
    "CoreKit::BytesToHexString"};

class Program {
 public:
  std::string Answer(std::istringstream& command) {
    std::string name;
    command >> name;
    if (name == "load") {
      Load();
      return "0";
    }
    if (name == "unload") {
      host_.reset();
      return "0";
    }
    if (name == "rounds") {
      return Rounds(command);
    }
    if (name == "stop") {
      unsigned n = 0;
      command >> n;
      last_ = calls_ + n;
      return "0";
    }
    return host_ ? Do(name, command) : "no library";
  }

 private:
  void Load() {
    host_.reset();
    host_.emplace(machinehost::Role::Application);
    calls_ = 0;
    last_ = 0;
    host_->notebook.onCall = [this](const Call& call) { Count(call); };
    host_->notebook.ForgetRecords();
  }

  std::string Rounds(std::istringstream& command) {
    host_.reset();
    std::string role;
    int count = 0;
    command >> role >> count;
    const std::set<std::string> shown(std::istream_iterator<std::string>(command), {});
    return machinehost::Rounds(
        role == "service" ? machinehost::Role::Service : machinehost::Role::Application, count,
        shown);
  }

  static bool Counts(const Call& call) {
    return std::ranges::find(kNotCounted, call.function) == kNotCounted.end();
  }

  std::string Trail() const {
    std::string trail;
    for (const Call& call : host_->notebook.calls) {
      if (Counts(call)) {
        trail += call.function + ' ';
      }
    }
    return trail;
  }

  void Count(const Call& call) {
    if (Counts(call) && ++calls_ == last_) {
      std::cout << "ahead of " << call.function << std::endl;
      SleepEx(INFINITE, FALSE);
    }
  }

  std::string Do(const std::string& name, std::istringstream& command) {
    virtualnotebook::HostedLibrary& library = host_->library;
    if (name == "trail") {
      return Trail();
    }
    if (name == "errors" || name == "firmware") {
      return Recorded(name);
    }
    if (name == "pipeline") {
      return host_->Pipeline();
    }
    if (name == "read") {
      return machinehost::ReadSettings(library);
    }
    if (name == "made" || name == "switch" || name == "write") {
      int number = 0;
      command >> number;
      if (name == "made") {
        return machinehost::DigestOfMade(number);
      }
      return std::to_string(name == "switch" ? library.SetColorField(number)
                                             : machinehost::WriteSettings(library, number));
    }
    return std::to_string(OfUserMode(name, command));
  }

  std::string Recorded(const std::string& what) const {
    virtualnotebook::Notebook& notebook = host_->notebook;
    const auto count = what == "firmware"
                           ? static_cast<ptrdiff_t>(notebook.CountCalls("GetSystemFirmwareTable"))
                           : std::ranges::count(notebook.log, 3, &virtualnotebook::LogLine::level);
    notebook.ForgetRecords();
    return std::to_string(count);
  }

  ResultT OfUserMode(const std::string& name, std::istringstream& command) {
    std::string id;
    int colour = 1;
    std::string oldId;
    command >> id >> colour >> oldId;
    virtualnotebook::HostedLibrary& library = host_->library;
    UserDesignInfo design = Design(id, colour);
    if (name == "user") {
      return library.SetUserColorField(id.c_str());
    }
    if (name == "register") {
      machinehost::ProfileOf(id).copy(design.iccPath, sizeof design.iccPath - 1);
      return library.AddUsrDesignInfo(&design);
    }
    if (name == "save") {
      return library.SaveUserSelfColor(&design);
    }
    if (name == "edit") {
      return library.EditUserColorField(&design, oldId.c_str());
    }
    return name == "forget" ? library.DeleteUserDesignReg(&design) : -1;
  }

  std::optional<machinehost::Host> host_;
  std::atomic<unsigned> calls_ = 0;
  std::atomic<unsigned> last_ = 0;
};

}  // namespace

int main() {
  Program program;
  std::string line;
  while (std::getline(std::cin, line)) {
    std::istringstream command(line);
    std::cout << program.Answer(command) << std::endl;
  }
  return 0;
}
