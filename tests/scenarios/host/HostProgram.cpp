// A host of its own: a process that calls the shipped library by its import library, as a service
// or a settings application would. It takes a command a line and answers each with a line:
//
//   NAME ARGUMENT...             calls the export; its result
//   stress PROCESS THREADS COUNT COUNT operations in each thread (Stress.h); what they counted
//
// It ends with its input.
#include <iostream>
#include <sstream>
#include <string>

#include "scenarios/host/Stress.h"
#include "velora/VeloraCtlApi.h"

namespace {

struct Export {
  const char* name;
  ResultT (*call)(int);
};

constexpr Export kExports[] = {
    {"InitConfigSyncObject", InitConfigSyncObject}, {"FiniConfigSyncObject", FiniConfigSyncObject},
    {"NotifyConfigChange", NotifyConfigChange},     {"SetWhitePointStatus", SetWhitePointStatus},
    {"GetWhitePointStatus", GetWhitePointStatus},
};

std::string Answer(std::istringstream& command) {
  std::string name;
  command >> name;
  if (name == "WaitConfigChangeSync") {
    int type = 0;
    uint32_t timeout = 0;
    command >> type >> timeout;
    return std::to_string(WaitConfigChangeSync(type, timeout));
  }
  if (name == "stress") {
    int process = 0;
    int threads = 0;
    int operations = 0;
    command >> process >> threads >> operations;
    return stress::Run(process, threads, operations);
  }
  for (const Export& entry : kExports) {
    if (name == entry.name) {
      int argument = 0;
      command >> argument;
      return std::to_string(entry.call(argument));
    }
  }
  return "unknown command " + name;
}

}  // namespace

int main() {
  std::string line;
  while (std::getline(std::cin, line)) {
    std::istringstream command(line);
    std::cout << Answer(command) << std::endl;
  }
  return 0;
}
