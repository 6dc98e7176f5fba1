#include "veloractl/Session.h"

#include "veloractl/Features.h"
#include "veloractl/Modes.h"
#include "veloractl/VirtualMachine.h"

namespace veloractl {

using virtualnotebook::LoadedLibrary;

Session::Session(Options options) : options_(std::move(options)) {}

Session::~Session() {
  if (isStarted_) {
    Library().Fini();
  }
}

VirtualMachine* Session::Virtual() {
  if (options_.isVirtual && !virtual_) {
    virtual_ = std::make_unique<VirtualMachine>(options_.description);
  }
  return virtual_.get();
}

const LoadedLibrary& Session::Library() {
  if (VirtualMachine* const machine = Virtual()) {
    return machine->Library();
  }
  if (!library_) {
    try {
      library_ = std::make_unique<LoadedLibrary>();
    } catch (const std::exception& error) {
      throw Failure(kUnavailable, std::string("VeloraCtlApi.dll: ") + error.what());
    }
  }
  return *library_;
}

const LoadedLibrary& Session::StartedLibrary() {
  if (!isStarted_) {
    const int result = Library().Init();
    if (result != 0) {
      throw Failure(kRefused, "Init: the platform library gave " + std::to_string(result));
    }
    isStarted_ = true;
  }
  return Library();
}

const LoadedLibrary& Session::LibraryWithModes() {
  if (!hasModes_) {
    const MachineModes modes = LoadModes(*this);
    const LoadedLibrary& library = StartedLibrary();
    Expect(library.InitColorFieldInfo(&modes.init), "InitColorFieldInfo");
    for (const ColorFieldModeInfo& preset : modes.presets) {
      Expect(library.AddColorFieldModeInfo(&preset), "AddColorFieldModeInfo");
    }
    for (const UserDesignInfo& mode : StoredUserModes(*this)) {
      Expect(library.AddUsrDesignInfo(&mode), "AddUsrDesignInfo");
    }
    hasModes_ = true;
  }
  return Library();
}

std::string Session::Path(const std::string& machinePath) {
  VirtualMachine* const machine = Virtual();
  return machine == nullptr ? machinePath : machine->Notebook().Moved(machinePath);
}

}  // namespace veloractl
