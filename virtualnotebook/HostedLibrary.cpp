#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {

LoadedModule::LoadedModule(const wchar_t* name) : handle_(LoadLibraryW(name)) {
  if (handle_ == nullptr) {
    throw std::runtime_error("the DLL can't be loaded, error " + std::to_string(GetLastError()));
  }
}

LoadedModule::~LoadedModule() { FreeLibrary(handle_); }

void* LoadedModule::FindAddress(const char* name) const {
  const FARPROC address = GetProcAddress(handle_, name);
  if (address == nullptr) {
    throw std::runtime_error(std::string("no export ") + name);
  }
  return reinterpret_cast<void*>(address);
}

HostedLibrary::HostedLibrary() : module_(L"VeloraCtlApi.dll"), notebook(module_.Handle()) {}

}  // namespace virtualnotebook
