#include "scenarios/BrokenMachine.h"

#include <algorithm>
#include <filesystem>

#include "support/NotebookTest.h"

namespace scenarios {
namespace {

using virtualnotebook::MachineData;

constexpr uint32_t kWayOf3DLuts = 1;

std::string Narrow(const std::wstring& text) { return testsupport::Utf8(text); }

template <size_t size>
void SetText(char (&field)[size], const std::string& text) {
  text.copy(field, size);
}

ColorFieldInitInfo InitInfo(const virtualnotebook::InstalledFiles& files) {
  ColorFieldInitInfo info{};
  info.setType = kWayOf3DLuts;
  SetText(info.pIccCheckFilePath, files.digestFile);
  SetText(info.goldenFilePath, files.goldenName);
  return info;
}

ColorFieldModeInfo P3Info(const std::string& profile) {
  ColorFieldModeInfo info{};
  info.mode = P3Mode;
  SetText(info.iccPath, profile);
  info.gamma = 2.2;
  info.gamut = 2;
  info.temperR = info.temperG = info.temperB = 1;
  return info;
}

bool IsOfLutEngine(const std::string& line) {
  return std::ranges::any_of(
      std::initializer_list<const char*>{"(ColorField3DLut::", "(LcdEdidParse::", "(Bios"},
      [&](const char* part) { return line.find(part) != line.npos; });
}

bool Exists(const std::string& name) {
  return std::filesystem::exists("C:\\ProgramData\\Comms\\NxVelora\\" + name);
}

}  // namespace

Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::string LutLine(int level, const std::string& text, const std::string& method) {
  return std::to_string(level) + " " + text + "(ColorField3DLut::" + method + ")";
}

void FlipBit(Bytes& bytes, size_t byte, size_t bit) {
  bytes.at(byte) ^= static_cast<uint8_t>(1 << bit);
}

void SealControlHeader(Bytes& bytes, size_t offset) {
  unsigned sum = 0;
  for (size_t i = 0; i < 14; ++i) {
    sum += bytes.at(offset + i);
  }
  bytes.at(offset + 14) = static_cast<uint8_t>(sum / 256);
  bytes.at(offset + 15) = static_cast<uint8_t>(sum % 256);
}

std::vector<size_t> SampledBytesOfBlock() {
  // Type byte, data length, the last of the header, of the words, of the extension bytes and of the
  // hash, and what follows each.
  std::vector<size_t> bytes = {64,  66,    69,    kPayloadAndHeader - 1, kPayloadAndHeader,
                               127, 19779, 19780, kBlockSize - 1};
  for (size_t i = 0; i < kBlockSize; i += i < 128 ? 7 : 811) {
    bytes.push_back(i);
  }
  return bytes;
}

const MachineData& WholeMachine() {
  static const MachineData machine =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription());
  return machine;
}

const Bytes& BrokenMachine::P3Block() {
  static const Bytes block =
      virtualnotebook::MakeLutBlock(HeaderOf(WholeMachine().panel, virtualnotebook::kP3Lut),
                                    MakeLut(WholeMachine().panel, virtualnotebook::kP3Lut));
  return block;
}

const Bytes& BrokenMachine::GoldenP3Block() {
  static const virtualnotebook::PanelDescription nominal = NominalPanel(WholeMachine().panel);
  static const Bytes block = virtualnotebook::MakeLutBlock(
      HeaderOf(nominal, virtualnotebook::kP3Lut), MakeLut(nominal, virtualnotebook::kP3Lut));
  return block;
}

BrokenMachine::BrokenMachine()
    : firmwareTable(WholeMachine().firmwareTable),
      files(virtualnotebook::InstallMachine(WholeMachine())),
      panel(WholeMachine().edid) {
  RemoveBinFiles();
}

BrokenMachine::~BrokenMachine() {
  RemoveBinFiles();
  virtualnotebook::RemoveMachine();
}

std::string BrokenMachine::DataFile(const std::string& name) {
  return "C:\\ProgramData\\Comms\\NxVelora\\" + name;
}

void BrokenMachine::RemoveBinFiles() const {
  for (const char* name : {"P3.bin", "GoldenP3.bin"}) {
    std::filesystem::remove_all(DataFile(name));
  }
}

Outcome BrokenMachine::SetP3Mode(bool withProfile) {
  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
  virtualnotebook::SetUpNotebook(notebook, deviceId);
  notebook.firmwareTable = firmwareTable;
  notebook.reportedFirmwareSize = reportedFirmwareSize;
  const std::wstring monitor = virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId);
  notebook.profiles[monitor] = profilesBefore;

  const ColorFieldInitInfo init = InitInfo(files);
  const ColorFieldModeInfo mode =
      P3Info(withProfile ? files.Profile(virtualnotebook::kP3Lut) : std::string());
  EXPECT_EQ(library.InitColorFieldInfo(&init), ResultOk);
  EXPECT_EQ(library.AddColorFieldModeInfo(&mode), ResultOk);
  notebook.ForgetRecords();

  Outcome outcome;
  outcome.result = library.SetColorField(P3Mode);
  for (const virtualnotebook::LogLine& line : notebook.log) {
    outcome.log.push_back(std::to_string(line.level) + " " + Narrow(line.text));
    if (IsOfLutEngine(outcome.log.back())) {
      outcome.lutLog.push_back(outcome.log.back());
    }
  }
  for (size_t calls = notebook.CountCalls("PlatformSet3DLut"); calls > 0; --calls) {
    outcome.sent.push_back(notebook.platform.lut3D);
  }
  outcome.firmwareReads = notebook.CountCalls("GetSystemFirmwareTable");
  outcome.profiles = notebook.profiles[monitor];
  return outcome;
}

void BrokenMachine::ExpectFirmwareLut(const Outcome& outcome) const {
  EXPECT_EQ(outcome.result, ResultOk);
  ASSERT_EQ(outcome.sent.size(), 1u);
  EXPECT_TRUE(outcome.sent[0] == MakeLut(WholeMachine().panel, virtualnotebook::kP3Lut));
  EXPECT_TRUE(testsupport::ReadFileBytes(DataFile("P3.bin")) == P3Block());
  EXPECT_FALSE(Exists("GoldenP3.bin"));
}

void BrokenMachine::ExpectGoldenLut(const Outcome& outcome) const {
  EXPECT_EQ(outcome.result, ResultOk);
  ASSERT_EQ(outcome.sent.size(), 1u);
  EXPECT_TRUE(outcome.sent[0] ==
              MakeLut(NominalPanel(WholeMachine().panel), virtualnotebook::kP3Lut));
  EXPECT_TRUE(testsupport::ReadFileBytes(DataFile("GoldenP3.bin")) == GoldenP3Block());
}

void BrokenMachine::ExpectRefused(const Outcome& outcome) const {
  EXPECT_EQ(outcome.result, ResultColorFieldError);
  EXPECT_EQ(outcome.sent.size(), 0u);
  EXPECT_FALSE(Exists("P3.bin"));
  EXPECT_FALSE(Exists("GoldenP3.bin"));
}

namespace {

const Lines& Opening() {
  static const Lines lines = {
      LutLine(1, "SetDisplayer by 3DLut, mode is 2", "SetDisplayerBy3DLut"),
      // The default panel's primaries and white, 0.680 and so on, in steps of 1/1024.
      "1 LcdEdidColorGamut:0.679688, 0.320312, 0.264648, 0.69043, 0.150391, 0.0595703, 0.3125, "
      "0.329102(LcdEdidParse::ParseEdidWrgb)"};
  return lines;
}

const Lines& ToGolden() {
  static const Lines lines = {LutLine(3, "UpdateThreeLutBinFile3D Failed! mode:2", "IsLcdChanged"),
                              LutLine(1, "LCD changed! mode:2", "Sync3DLutDataTable")};
  return lines;
}

const Lines& Closing() {
  static const Lines lines = {LutLine(1, "Not e-book mode.", "FusionEbookProc")};
  return lines;
}

const Lines& Refusal() {
  static const Lines lines = {
      LutLine(3, "UpdateThreeLutBinFile3D Failed! mode:2", "Sync3DLutDataTable"),
      LutLine(3, "Sync3DLutDataTable Failed", "SetDisplayerBy3DLut")};
  return lines;
}

}  // namespace

Lines BrokenMachine::FirmwareLog(const Lines& reasons) const {
  return Opening() + reasons + Closing();
}

Lines BrokenMachine::GoldenLog(const Lines& reasons, const Lines& goldenReasons) const {
  return Opening() + reasons + ToGolden() + goldenReasons + Closing();
}

Lines BrokenMachine::RefusedLog(const Lines& reasons, const Lines& goldenReasons) const {
  return Opening() + reasons + ToGolden() + goldenReasons + Refusal();
}

}  // namespace scenarios
