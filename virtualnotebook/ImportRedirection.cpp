#include "virtualnotebook/ImportRedirection.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace virtualnotebook {
namespace {

// A loaded module's bytes, by their relative addresses.
class LoadedImage {
 public:
  explicit LoadedImage(HMODULE module) : base_(reinterpret_cast<uint8_t*>(module)) {}

  template <typename T>
  T* At(uint64_t address) const {
    return reinterpret_cast<T*>(base_ + address);
  }

  // The first import descriptor, or null: the table ends with an entry without a name.
  const IMAGE_IMPORT_DESCRIPTOR* Imports() const {
    const auto* dos = At<IMAGE_DOS_HEADER>(0);
    const auto* headers = At<IMAGE_NT_HEADERS64>(static_cast<uint64_t>(dos->e_lfanew));
    const DWORD address =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    return address == 0 ? nullptr : At<IMAGE_IMPORT_DESCRIPTOR>(address);
  }

 private:
  uint8_t* base_;
};

const ImportedFunction* Find(std::span<const ImportedFunction> functions, const char* library,
                             const char* symbol) {
  for (const ImportedFunction& function : functions) {
    if (_stricmp(function.library, library) == 0 && std::strcmp(function.symbol, symbol) == 0) {
      return &function;
    }
  }
  return nullptr;
}

// The table may lie in read-only memory.
void Write(void** slot, void* function) {
  DWORD protection = 0;
  if (!VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection)) {
    throw std::runtime_error("import table: can't be made writable");
  }
  *slot = function;
  VirtualProtect(slot, sizeof *slot, protection, &protection);
}

}  // namespace

ImportRedirection::ImportRedirection(HMODULE module, std::span<const ImportedFunction> functions) {
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                          reinterpret_cast<const wchar_t*>(module), &module_)) {
    throw std::invalid_argument("import table: no such module");
  }
  const LoadedImage image(module_);
  // A library may have several descriptors: one for each import library that names it.
  const IMAGE_IMPORT_DESCRIPTOR* library = image.Imports();
  for (; library != nullptr && library->Name != 0; ++library) {
    const auto* names = image.At<IMAGE_THUNK_DATA64>(library->OriginalFirstThunk);
    auto* addresses = image.At<void*>(library->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
      if (IMAGE_SNAP_BY_ORDINAL64(names->u1.Ordinal)) {
        continue;
      }
      const ImportedFunction* function =
          Find(functions, image.At<char>(library->Name),
               image.At<IMAGE_IMPORT_BY_NAME>(names->u1.AddressOfData)->Name);
      if (function != nullptr) {
        slots_.push_back({addresses, *addresses});
        *function->original = *addresses;
        Write(addresses, function->standIn);
      }
    }
  }
}

// NOLINTNEXTLINE(bugprone-exception-escape): a module half restored ends the program
ImportRedirection::~ImportRedirection() {
  for (const Slot& slot : slots_) {
    Write(slot.address, slot.original);
  }
  FreeLibrary(module_);
}

}  // namespace virtualnotebook
