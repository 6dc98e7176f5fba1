// Commands about the product as it is installed.
#include "veloractl/System.h"

#include <windows.h>

#include <fstream>

#include "frame/Constants.h"
#include "veloractl/Commands.h"
#include "veloractl/VirtualMachine.h"

namespace veloractl {
namespace {

// "1.2.3.0" of the version resource; null where the file has none.
Json VersionOf(const std::wstring& path) {
  DWORD unused = 0;
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &unused);
  std::vector<uint8_t> block(size);
  VS_FIXEDFILEINFO* info = nullptr;
  UINT length = 0;
  if (size == 0 || !GetFileVersionInfoW(path.c_str(), 0, size, block.data()) ||
      !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &length)) {
    return nullptr;
  }
  const auto part = [](DWORD word, int shift) { return std::to_string(word >> shift & 0xFFFF); };
  return part(info->dwFileVersionMS, 16) + "." + part(info->dwFileVersionMS, 0) + "." +
         part(info->dwFileVersionLS, 16) + "." + part(info->dwFileVersionLS, 0);
}

std::wstring PathOf(HMODULE module) {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(module, path, MAX_PATH);
  return path;
}

constexpr const wchar_t* kModules[] = {L"VeloraCtlApi.dll",   L"CoreKit.dll", L"LogKit.dll",
                                       L"VeloraPlatform.dll", L"WmiKit.dll",  L"orbevent.dll"};

}  // namespace

Json ModuleVersions() {
  Json modules = Json::array();
  for (const wchar_t* name : kModules) {
    const HMODULE module = GetModuleHandleW(name);
    modules.push_back({{"module", ToUtf8(std::wstring(name))},
                       {"version", module == nullptr ? Json() : VersionOf(PathOf(module))},
                       {"path", module == nullptr ? Json() : Json(ToUtf8(PathOf(module)))}});
  }
  return modules;
}

namespace {

Report Version(Session& session) {
  session.Library();
  return Json{{"veloractl", VELORA_VERSION}, {"modules", ModuleVersions()}};
}

// --- telemetry, switch-user, log ---

struct EventArguments {
  int event = 0;
  std::string key;
  std::string value;
  bool async = false;
};

Report SendEvent(const EventArguments& arguments, Session& session) {
  const auto& library = session.Library();
  const std::string key = ToCodePage(arguments.key);
  const std::string value = ToCodePage(arguments.value);
  if (arguments.async) {
    constexpr DWORD kTimeToEnd = 500;  // milliseconds: nothing waits for the event's thread
    library.OrbviewReportDataAsync(arguments.event, key.c_str(), value.c_str());
    Sleep(kTimeToEnd);
  } else {
    library.OrbviewReportDataSync(arguments.event, key.c_str(), value.c_str());
  }
  return Json{{"event", arguments.event}, {"key", arguments.key}, {"sent", true}};
}

Report SwitchUser(Session& session) {
  session.Library().SwitchUser();
  return Json{{"switched", true}};
}

struct LogArguments {
  size_t last = 40;
  int level = 0;
};

constexpr const char* kLogLevels[] = {"DEBUG", "INFO", "WARN", "ERROR"};

}  // namespace

Json LastLogLines(Session& session, size_t last, int level) {
  Json lines = Json::array();
  if (VirtualMachine* const machine = session.Virtual()) {
    for (const auto& line : machine->Notebook().LogNow()) {
      if (line.level >= level) {
        lines.push_back(std::string(kLogLevels[line.level & 3]) + " " + ToUtf8(line.text));
      }
    }
  } else {
    std::ifstream file(std::string(velora::kDataDir) + "Log\\velora.log");
    for (std::string line; std::getline(file, line);) {
      for (int known = level; known < 4; ++known) {
        if (line.find(std::string(" ") + kLogLevels[known] + " ") != std::string::npos) {
          lines.push_back(line);
          break;
        }
      }
    }
  }
  if (lines.size() > last) {
    lines.erase(lines.begin(), lines.end() - static_cast<ptrdiff_t>(last));
  }
  return lines;
}

void AddSystemCommands(const CommandSet& commands) {
  commands.Add("version", "The versions of the tool, the library and what it stands on",
               [](CLI::App&) -> Action { return Version; });
  commands.Add("log", "The library's last log lines", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<LogArguments>();
    app.add_option("--last", arguments->last, "So many lines at most");
    app.add_option("--level", arguments->level, "Those of this level or above: 0 debug to 3 error")
        ->check(CLI::Range(0, 3));
    app.footer("docs/log-lines.md has each line, with its cause and what to do about it.");
    return [arguments](Session& session) {
      return Json{{"log", LastLogLines(session, arguments->last, arguments->level)}};
    };
  });
  commands.Add("telemetry", "Reports one event", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<EventArguments>();
    app.add_option("EVENT", arguments->event, "Its number")->required();
    app.add_option("KEY", arguments->key, "At most 32 bytes")->required();
    app.add_option("VALUE", arguments->value, "At most 1024 bytes")->required();
    app.add_flag("--async", arguments->async, "On a thread of its own");
    return [arguments](Session& session) { return SendEvent(*arguments, session); };
  });
  commands.Add("switch-user", "As a service does when another user logged on",
               [](CLI::App&) -> Action { return SwitchUser; });
}

}  // namespace veloractl
