#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

std::vector<DWORD>* notedSlots = nullptr;
void* originalTlsAlloc = nullptr;

}  // namespace

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

ThreadLocalSlots::ThreadLocalSlots() { notedSlots = &slots_; }

ThreadLocalSlots::~ThreadLocalSlots() {
  notedSlots = nullptr;
  for (const DWORD slot : slots_) {
    TlsFree(slot);
  }
}

ImportRedirection ThreadLocalSlots::NoteThoseOf(HMODULE module) {
  static const ImportedFunction tlsAlloc[] = {{"kernel32.dll", "TlsAlloc", "TlsAlloc",
                                               reinterpret_cast<void*>(&NotingTlsAlloc),
                                               &originalTlsAlloc}};
  return {module, tlsAlloc};
}

DWORD WINAPI ThreadLocalSlots::NotingTlsAlloc() {
  const DWORD slot = reinterpret_cast<decltype(&TlsAlloc)>(originalTlsAlloc)();
  if (notedSlots != nullptr && slot != TLS_OUT_OF_INDEXES) {
    notedSlots->push_back(slot);
  }
  return slot;
}

HostedLibrary::HostedLibrary() : notebook(Handle()), notedSlots_(NoteThoseOf(Handle())) {}

}  // namespace virtualnotebook
