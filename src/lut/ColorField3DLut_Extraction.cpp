#include "lut/ColorField3DLut.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <string>

#include "CoreKit/CoreKit.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/Sha256.h"
#include "frame/SharedFile.h"
#include "lut/LutBlock.h"
#include "settings/RegisterHelper.h"

// A table is 52 bytes that are not looked at, the control header, and blocks at one stride,
// whatever their kind: what lies behind a gamma block's hash is filling. The golden file is a table
// without its first 52 bytes.
namespace velora {
namespace {

constexpr DWORD kAcpiProvider = 0x41435049;  // "ACPI"
constexpr DWORD kLutTableId = 0x54554C44;    // in memory "DLUT"

constexpr size_t kPrefixSize = 52;          // ahead of the control header
constexpr unsigned kMaxTableSize = 131124;  // the largest data file and the prefix
constexpr char kFiller = '0';               // the character

constexpr size_t kMinGoldenFileSize = BiosControlHeader::kSize + k3DBlockSize;
static_assert(kMinGoldenFileSize == 24741);

constexpr uint32_t kGammaLutType = 160;

// The directory of the running program, without a backslash at its end.
std::string GetExecutableDir() {
  wchar_t path[MAX_PATH + 1] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH + 1);
  const std::wstring_view program(path);
  return CoreKit::WStringToString(std::wstring(program.substr(0, program.rfind(L'\\'))));
}

// Replaces a table by the first of its blocks that is wanted.
template <typename IsWanted>
bool ReduceToBlock(LutBuffer& table, BiosControlHeader& header, const FunctionLog& log,
                   const wchar_t* lengthError, IsWanted isWanted) {
  if (table.size() < kPrefixSize + BiosControlHeader::kSize ||
      !header.Parse(BytesOf(table) + kPrefixSize, BiosControlHeader::kSize)) {
    log.Error(L"biosControlHeader Parse Failed!");
    return false;
  }
  uint64_t position = kPrefixSize + header.GetHeaderLength();
  const uint64_t size = header.GetBlockSize();
  const uint64_t target = position + header.GetBlockCount() * size;  // below 2^49
  if (size == 0 || table.size() < target) {
    log.Error(lengthError, table.size(), L"target len is ", target);
    return false;
  }
  for (; position < target; position += size) {
    if (isWanted(BytesOf(table) + position, size)) {
      table = table.substr(position, size);
      return true;
    }
  }
  return false;
}

struct HeaderErrors {
  const wchar_t* noData;
  const wchar_t* tooShort;
  const wchar_t* unparsed;
};

// Each line is an error's text and the subject.
template <typename... Subject>
bool ParseBlockHeader(BiosHeaderV2& header, const uint8_t* data, size_t length,
                      const FunctionLog& log, const HeaderErrors& errors,
                      const Subject&... subject) {
  if (data == nullptr) {
    log.Error(errors.noData, subject...);
    return false;
  }
  if (length < kBlockHeaderSize) {
    log.Error(errors.tooShort, subject...);
    return false;
  }
  if (!header.Parse(data, length)) {
    log.Error(errors.unparsed, subject...);
    return false;
  }
  return true;
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

void ColorField3DLut::PadFirmwarePrefix(LutBuffer& buffer) {
  buffer.insert(0, kPrefixSize, kFiller);
}

// --- From a table to a proved block ---

bool ColorField3DLut::GetOneLutDat3D(ColorFieldMode mode, LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::GetOneLutDat3D");
  if (buffer.size() < BiosControlHeader::kSize) {
    log.Error(L"Data error!mode:", mode);
    return false;
  }
  return ReduceToBlock(
      buffer, biosControlHeader, log, L"3D Lut Table len is error, buffLen is ",
      [&](const uint8_t* block, size_t size) { return OneLutTypeIsValid(mode, block, size); });
}

bool ColorField3DLut::GetOneLutDatGamma(LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::GetOneLutDatGamma");
  if (buffer.size() < BiosControlHeader::kSize) {
    log.Error(L"Gamma Data error!");
    return false;
  }
  return ReduceToBlock(
      buffer, biosControlHeader, log, L"Gamma Lut Table len is error, buffLen is ",
      [&](const uint8_t* block, size_t size) { return OneLutTypeIsValidGamma(block, size); });
}

bool ColorField3DLut::OneLutTypeIsValid(ColorFieldMode mode, const uint8_t* data, size_t length) {
  constexpr FunctionLog log("ColorField3DLut::OneLutTypeIsValid");
  constexpr HeaderErrors errors = {L"3DLut data pLutData3D is nullptr!mode:",
                                   L"3DLut data buffLen error!mode:",
                                   L"biosHeaderV2 Parse Failed!mode:"};
  if (!ParseBlockHeader(biosHeaderV2_, data, length, log, errors, mode, L", buffLen:", length)) {
    return false;
  }
  return static_cast<uint32_t>(gamutLutTypeTable_[modeGamutTable_[mode]]) ==
         biosHeaderV2_.GetLutType();
}

bool ColorField3DLut::OneLutTypeIsValidGamma(const uint8_t* data, size_t length) {
  constexpr FunctionLog log("ColorField3DLut::OneLutTypeIsValidGamma");
  constexpr HeaderErrors errors = {L"GammaLut data pLutDataGamma is nullptr! buffLen:",
                                   L"GammaLut data buffLen error! buffLen:",
                                   L"biosHeaderV2 Parse Failed! buffLen:"};
  return ParseBlockHeader(biosHeaderV2_, data, length, log, errors, length) &&
         biosHeaderV2_.GetLutType() == kGammaLutType;
}

bool ColorField3DLut::IsLutDataValid3D(const LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::IsLutDataValid3D");
  if (buffer.size() < kBlockHeaderSize) {
    log.Error(L"3D Lut data error!");
    return false;
  }
  if (!biosHeaderV2_.Parse(buffer)) {
    log.Error(L"biosHeaderV2_ Parse error.");
    return false;
  }
  const uint64_t hashedSize = uint64_t{kBlockHeaderSize} + biosHeaderV2_.GetDataLength();
  if (buffer.size() < hashedSize + kSha256Size) {
    log.Error(L"Lut Data Len error!");
    return false;
  }
  uint8_t hash[kSha256Size];
  if (!Sha256({BytesOf(buffer), hashedSize}, hash) ||
      !std::equal(hash, hash + kSha256Size, BytesOf(buffer) + hashedSize)) {
    log.Error(L"SHA256 Value is not match, shadata len is ", hashedSize);
    return false;
  }
  return true;
}

// --- From a table into a caller's array ---

bool ColorField3DLut::ParseLutData(ColorFieldMode mode, const uint8_t* data, size_t length,
                                   double* out) {
  constexpr FunctionLog log("ColorField3DLut::ParseLutData");
  if (data == nullptr || length < k3DBlockSize) {
    log.Error(L"LutDataFile Error!mode:", mode);
    return false;
  }
  if (out == nullptr) {
    log.Error(L"pLutData3D is nullptr!mode:", mode);
    return false;
  }
  DecodeLut({data, length}, k3DEntries, out);
  return true;
}

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
