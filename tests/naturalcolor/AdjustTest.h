// What the tests of the adjust part share: natural colour's dimming on the real registry and real
// threads, ahead of the notebook's platform.
#pragma once

#include <cwchar>
#include <string>
#include <vector>

#include "naturalcolor/NaturalColorAdjustAlgorithm.h"
#include "settings/FeatureManager.h"
#include "settings/NaturalColorReg.h"
#include "settings/Singleton.h"
#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {

inline constexpr wchar_t kNaturalColorKey[] = L"SOFTWARE\\Norvex\\Velora\\NaturalColor";
inline constexpr wchar_t kPrinterKey[] = L"SOFTWARE\\Norvex\\Velora\\Printer";

// As the platform got it.
struct Gains {
  double r;
  double g;
  double b;

  friend bool operator==(const Gains&, const Gains&) = default;
};

// A display that shows no other feature's gains, so that those of the curve arrive as they are.
class AdjustTest : public testsupport::NotebookTest {
 protected:
  AdjustTest() {
    for (int type = 0; type < 7; ++type) {
      FeatureManager::GetInstance().IsMultiUser(type);
      FeatureManager::GetInstance().SetMultiUser(type, 0);
      FeatureManager::GetInstance().IsFeatureSupport(type);
      FeatureManager::GetInstance().SetFeatureSupport(type, 0);
    }
    Singleton<NaturalColorReg>::GetInstance();
    notebook.ForgetRecords();
    notebook.platformType = 1;
    Store(kNaturalColorKey, L"IsEnable", testsupport::DwordValue(1));
  }
  ~AdjustTest() override {
    if (isStarted) {
      algorithm.StopNaturalColorAdjustAlgorithm();
    }
  }

  // --- The host ---

  // Its records are emptied behind it.
  void Start() {
    StartAndKeepRecords();
    notebook.ForgetRecords();
    notebook.Locked([&] { notebook.platform.temperatures3D.clear(); });
  }
  void StartAndKeepRecords() {
    dataIn.algoInfo = curve.data();
    dataIn.algoInfoCnt = static_cast<int32_t>(curve.size());
    algorithm.InitNaturalColorAdjustAlgorithm(&dataIn);
    isStarted = true;
  }
  void Stop() {
    algorithm.StopNaturalColorAdjustAlgorithm();
    isStarted = false;
  }
  void SetStatus(uint32_t status) {
    Store(kNaturalColorKey, L"IsEnable", testsupport::DwordValue(status));
  }

  // --- What it sees ---

  // The gains of all frames so far.
  std::vector<Gains> Frames() const {
    std::vector<Gains> frames;
    notebook.Locked([&] {
      for (const Color3DInfo& info : notebook.platform.temperatures3D) {
        frames.push_back({info.r, info.g, info.b});
      }
    });
    return frames;
  }

  // The frames, when there are count of them, or more.
  std::vector<Gains> WaitForFrames(size_t count) const {
    testsupport::WaitUntil([&] { return Frames().size() >= count; });
    return Frames();
  }

  // The curve's gains.
  static Gains At(double cct) {
    if (cct <= 5000) {
      const double part = (cct - 904) / 4096;
      return {0.5 + 0.5 * part, 0.25 + 0.75 * part, 0.75 + 0.25 * part};
    }
    const double part = (cct - 5000) / 4096;
    return {1, 1 - 0.5 * part, 1 - 0.75 * part};
  }
  static std::vector<Gains> At(const std::vector<double>& ccts) {
    std::vector<Gains> gains;
    for (const double cct : ccts) {
      gains.push_back(At(cct));
    }
    return gains;
  }

  // How often a line that begins so has been logged.
  size_t CountLines(const std::wstring& begin) const {
    size_t count = 0;
    for (const auto& line : notebook.LogNow()) {
      count += line.text.starts_with(begin) ? 1u : 0u;
    }
    return count;
  }
  bool WaitForLines(const std::wstring& begin, size_t count) const {
    return testsupport::WaitUntil([&] { return CountLines(begin) >= count; });
  }
  bool WaitForFrameLines(size_t count) const { return WaitForLines(L"frameIndex_ = ", count); }

  // --- The registry ---

  static void Store(const std::wstring& key, const std::wstring& name,
                    const testsupport::RegistryValue& value) {
    testsupport::WriteValue(HKEY_LOCAL_MACHINE, key, name, value);
  }
  static testsupport::RegistryValues Natural() {
    return testsupport::ReadKey(HKEY_LOCAL_MACHINE, kNaturalColorKey);
  }
  static testsupport::RegistryValues Printer() {
    return testsupport::ReadKey(HKEY_LOCAL_MACHINE, kPrinterKey);
  }

  // A number as it is stored.
  static testsupport::RegistryValue Number(double value) {
    wchar_t text[400];
    std::swprintf(text, std::size(text), L"%f", value);
    return testsupport::TextValue(text);
  }

  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const testsupport::IniFile ini;

  // Neutral at 5000; 4096 kelvin to either side, so that every gain at a whole kelvin is exact.
  std::vector<CctAlgoInfo> curve = {
      {904.0F, 0.5, 0.25, 0.75}, {5000.0F, 1, 1, 1}, {9096.0F, 1, 0.5, 0.25}};
  NatureColorDataIn dataIn = {.frameCount = 4,
                              .frameTime = 0,
                              .dimmingThreshold = 100.0F,
                              .methodVersion = 1,
                              .minLuma = 4000.0F,
                              .luminanceThreshold = 50.0F,
                              .monitorType = 0,
                              .executionType = 1,
                              .algoInfo = nullptr,
                              .algoInfoCnt = 0};
  NaturalColorAdjustAlgorithm algorithm;
  bool isStarted = false;
};

}  // namespace velora
