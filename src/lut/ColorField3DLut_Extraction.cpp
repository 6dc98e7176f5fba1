#include "lut/ColorField3DLut.h"

#include <windows.h>

#include <exception>
#include <string>

#include "CoreKit/CoreKit.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/SharedFile.h"
#include "lut/LutBlock.h"
#include "settings/RegisterHelper.h"

namespace velora {
namespace {

constexpr DWORD kAcpiProvider = 0x41435049;  // "ACPI"
constexpr DWORD kLutTableId = 0x54554C44;    // in memory "DLUT"

constexpr unsigned kMaxTableSize = 131124;  // the largest data file and the prefix
constexpr char kFiller = '0';               // the character

constexpr size_t kMinGoldenFileSize = BiosControlHeader::kSize + k3DBlockSize;
static_assert(kMinGoldenFileSize == 24741);

// The directory of the running program, without a backslash at its end.
std::string GetExecutableDir() {
  wchar_t path[MAX_PATH + 1] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH + 1);
  const std::wstring_view program(path);
  return CoreKit::WStringToString(std::wstring(program.substr(0, program.rfind(L'\\'))));
}

// A file that stays closed to other users is of use to this one: no failure.
void OpenToAllUsers(const std::string& path, const FunctionLog& log) {
  if (CoreKit::EnableFileUsersPriviledge(path) == 1) {
    log.Warn(L"EnableFileUsersPriviledge Failed! fileName:", path);
  }
}

}  // namespace

// --- Sources ---

bool ColorField3DLut::GetBiosLutDataBlockSize(unsigned& size) {
  constexpr FunctionLog log("ColorField3DLut::GetBiosLutDataBlockSize");
  size = GetSystemFirmwareTable(kAcpiProvider, kLutTableId, nullptr, 0);
  if (size > kMaxTableSize) {
    log.Error(L"Firmware Table bufferSize over max size!bufferSize:", size);
    return false;
  }
  return true;  // 0 too: the read finds out that there is no table
}

bool ColorField3DLut::ReadBiosLutDataBlock(LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::ReadBiosLutDataBlock");
  const UINT size = GetSystemFirmwareTable(kAcpiProvider, kLutTableId, buffer.data(),
                                           static_cast<DWORD>(buffer.size()));
  if (size == 0 || size > buffer.size()) {
    log.Error(L"GetSystemFirmwareTable Failed! Error Code:", GetLastError());
    return false;
  }
  return true;
}

bool ColorField3DLut::ReadFirmwareTable(LutBuffer& buffer, const FunctionLog& log, LogLevel level) {
  unsigned size = 0;
  if (!GetBiosLutDataBlockSize(size)) {
    log.Write(level, L"GetBiosLutDataBlockSize Failed!");
    return false;
  }
  buffer.assign(size, kFiller);
  if (!ReadBiosLutDataBlock(buffer)) {
    log.Write(level, L"ReadBiosLutDataBlock Failed!");
    return false;
  }
  return true;
}

bool ColorField3DLut::ReadGoldenTable(LutBuffer& buffer) {
  if (!Read3DLutDataFormFile(GetFullGoldenFilePath(), kMinGoldenFileSize, buffer)) {
    return false;
  }
  PadFirmwarePrefix(buffer);
  return true;
}

bool ColorField3DLut::GetSourceDataBlock(ColorFieldMode mode, LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::GetSourceDataBlock");
  return modeFromGolden_[mode] ? ReadGoldenTable(buffer) : ReadFirmwareTable(buffer, log, LogError);
}

bool ColorField3DLut::GetSourceDataBlockGamma(LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::GetSourceDataBlockGamma");
  return gammaFromGolden_ ? ReadGoldenTable(buffer) : ReadFirmwareTable(buffer, log, LogError);
}

// goldenFilePath begins with a backslash. The last place is given without a test.
std::string ColorField3DLut::GetFullGoldenFilePath() {
  constexpr FunctionLog log("ColorField3DLut::GetFullGoldenFilePath");
  std::string path = kInstallDir + goldenFilePath;
  if (FileExists(path)) {
    return path;
  }
  const std::string parentDir = "\\..";
  std::wstring program;
  if (RegisterHelper().RegReadValue(HKEY_CLASSES_ROOT, kShellCommandKey, L"", program, false) ==
      ResultOk) {
    path = CoreKit::WStringToString(program) + parentDir + goldenFilePath;
    if (FileExists(path)) {
      return path;
    }
  }
  const std::string executableDir = GetExecutableDir();
  path = executableDir + goldenFilePath;
  if (FileExists(path)) {
    return path;
  }
  path = executableDir + parentDir + goldenFilePath;
  log.Debug(L"Read Golden File:", path);
  return path;
}

// --- From a table into a caller's array ---

bool ColorField3DLut::DecodeBlockOfTable(ColorFieldMode mode, LutBuffer& buffer, double* out,
                                         const FunctionLog& log) {
  if (!GetOneLutDat3D(mode, buffer)) {
    return false;
  }
  if (!IsLutDataValid3D(buffer)) {
    log.Info(L"Bios 3D Lut Data invalid! mode:", mode);
    return false;
  }
  if (!OneLutTypeIsValid(mode, BytesOf(buffer), buffer.size())) {
    log.Info(L"Bios 3D Lut Type invalid! mode:", mode);
    return false;
  }
  if (!ParseLutData(mode, BytesOf(buffer), buffer.size(), out)) {
    log.Info(L"Parse 3D Lut Data failed! mode:", mode);
    return false;
  }
  return true;
}

bool ColorField3DLut::GetBiosLutData3D(ColorFieldMode mode, double* out) {
  constexpr FunctionLog log("ColorField3DLut::GetBiosLutData3D");
  try {
    LutBuffer buffer;
    return ReadFirmwareTable(buffer, log, LogInfo) && DecodeBlockOfTable(mode, buffer, out, log);
  } catch (const std::exception& exception) {
    log.Error(L"GetPanelThreeLutBinFile3D exception:", exception.what(), L" ,mode:", mode);
    return false;
  }
}

bool ColorField3DLut::GetGoldenFileLutData3D(ColorFieldMode mode, double* out) {
  constexpr FunctionLog log("ColorField3DLut::GetGoldenFileLutData3D");
  try {
    LutBuffer buffer;
    return ReadGoldenTable(buffer) && DecodeBlockOfTable(mode, buffer, out, log);
  } catch (const std::exception& exception) {
    log.Error(L"GetEbookThreeLutBinFile3D exception:", exception.what(), L" ,mode:", mode);
    return false;
  }
}

// --- From a source to a bin file ---

// The file is written last, after the block was proved: a bad source leaves the old one.
bool ColorField3DLut::UpdateThreeLutBinFile3D(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::UpdateThreeLutBinFile3D");
  try {
    LutBuffer buffer;
    if (!GetSourceDataBlock(mode, buffer) || !GetOneLutDat3D(mode, buffer)) {
      return false;
    }
    if (!IsLutDataValid3D(buffer)) {
      log.Error(L"Bios 3D Lut Data invalid! mode:", mode);
      return false;
    }
    if (!OneLutTypeIsValid(mode, BytesOf(buffer), buffer.size())) {
      log.Error(L"Bios 3D Lut Type invalid! mode:", mode);
      return false;
    }
    if (!CreateLutDataFile3D(mode, buffer)) {
      log.Error(L"CreateLutDataFile3D Failed! mode:", mode);
      return false;
    }
    OpenToAllUsers(lutFileTable[mode], log);
    return true;
  } catch (const std::exception& exception) {
    log.Error(L"UpdateThreeLutBinFile3D exception:", exception.what(), L" ,mode:", mode);
    return false;
  }
}

bool ColorField3DLut::UpdateGammaLutBinFile() {
  constexpr FunctionLog log("ColorField3DLut::UpdateGammaLutBinFile");
  try {
    LutBuffer buffer;
    if (!GetSourceDataBlockGamma(buffer) || !GetOneLutDatGamma(buffer)) {
      return false;
    }
    if (!IsLutDataValid3D(buffer)) {
      log.Error(L"Bios Gamma Lut Data invalid!");
      return false;
    }
    if (!OneLutTypeIsValidGamma(BytesOf(buffer), buffer.size())) {
      log.Error(L"Bios Gamma Lut Type invalid!");
      return false;
    }
    if (!CreateLutDataFileGamma(buffer)) {
      log.Error(L"CreateLutDataFileGamma Failed!");
      return false;
    }
    OpenToAllUsers(gammaLutFile_, log);
    return true;
  } catch (const std::exception& exception) {
    log.Error(L"UpdateGammaLutBinFile exception:", exception.what());
    return false;
  }
}

// A shorter way from the firmware to the file; nothing calls it.
bool ColorField3DLut::ReadBios3DLutData(ColorFieldMode mode) {
  constexpr FunctionLog log("ColorField3DLut::ReadBios3DLutData");
  unsigned size = 0;
  if (!GetBiosLutDataBlockSize(size)) {
    log.Error(L"GetBiosLutDataBlockSize Failed!");
    return false;
  }
  LutBuffer buffer(size, kFiller);
  if (!ReadBiosLutDataBlock(buffer)) {
    log.Error(L"ReadBiosLutDataBlock Failed, biosTableSize is ", size);
    return false;
  }
  if (!GetOneLutDat3D(mode, buffer)) {
    log.Info(L"GetOneLutDat3D failed, mode is ", mode);
    return false;
  }
  if (!IsLutDataValid3D(buffer)) {
    log.Error(L"Bios 3D Lut Data invalid! mode:", mode);
    return false;
  }
  return CreateLutDataFile3D(mode, buffer);
}

}  // namespace velora
