#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>
#include <utility>
#include <vector>

#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {

// Natural colour in the shipped library, on a notebook with one light sensor, a running service and
// an active session. The platform takes the frames, four and the last one a dimming, without a
// pause.
class NaturalColourTest : public testing::Test {
 protected:
  // Ahead of the destructors: the threads may still reach what a test has of its own.
  void TearDown() override {
    notebook.ClearFaults();
    Stop();
  }

  void Start() {
    dataIn.algoInfo = curve.data();
    dataIn.algoInfoCnt = static_cast<int32_t>(curve.size());
    library.InitNatureColor(&dataIn);
    isStarted_ = true;
  }

  // Nothing without a start.
  void Stop() {
    if (isStarted_) {
      library.FiniNatureColor();
      isStarted_ = false;
      TakeRing();
    }
  }

  // The setting alone; nobody is told.
  void SwitchOn() { EXPECT_EQ(library.SetNatureColorStatus(1), ResultOk); }
  void SwitchOff() { EXPECT_EQ(library.SetNatureColorStatus(0), ResultOk); }

  // Tells of a change, and waits until all has been done that follows from it but the dimming.
  void Ring() {
    const auto count = [this] { return CountLogged(L"GetNcConfig:"); };
    const size_t before = count();
    EXPECT_EQ(library.NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR), ResultOk);
    EXPECT_TRUE(testsupport::WaitUntil([&] { return count() > before; }));
  }

  // What a sensor with both fields reports.
  static virtualnotebook::LightReading Reading(float kelvin, float lux) {
    return {.lux = virtualnotebook::SensorFloat(lux),
            .kelvin = virtualnotebook::SensorFloat(kelvin)};
  }

  // All that the platform took.
  std::vector<Color3DInfo> Frames() const {
    std::vector<Color3DInfo> frames;
    notebook.Locked([&] { frames = notebook.platform.temperatures3D; });
    return frames;
  }

  // The lines that contain the text.
  size_t CountLogged(const std::wstring& part) const {
    size_t count = 0;
    for (const virtualnotebook::LogLine& line : notebook.LogNow()) {
      count += line.text.find(part) != std::wstring::npos ? 1U : 0U;
    }
    return count;
  }

  // The lines of the functions whose names begin so.
  std::vector<virtualnotebook::LogLine> LogOf(const std::wstring& function) const {
    std::vector<virtualnotebook::LogLine> lines = notebook.LogNow();
    std::erase_if(lines, [&](const virtualnotebook::LogLine& line) {
      return line.text.find(L"(" + function) == std::wstring::npos;
    });
    return lines;
  }

  // All readings that were weighed, as {kelvin, lux}; in the dark the kelvin are dataIn.minLuma.
  std::vector<std::pair<float, float>> Readings() const {
    std::vector<std::pair<float, float>> readings;
    for (const virtualnotebook::LogLine& line : LogOf(L"NaturalColorAdjustAlgorithm::StartCct")) {
      readings.emplace_back(NumberBehind(line.text, L",targetCct = "),
                            NumberBehind(line.text, L",sensorLight = "));
    }
    return readings;
  }

  // --- What is stored; NaN or 0 for a value that is not there ---

  static double SensorColor() { return StoredDouble(L"SensorColor"); }
  static double Gain(const std::wstring& channel) {
    return StoredDouble(channel);
  }  // "r", "g", "b"

  static uint32_t SensorCct() {
    uint32_t kelvin = 0;
    const auto bytes = Stored(L"Printer", L"SensorCCT");
    std::memcpy(&kelvin, bytes.data(), std::min(bytes.size(), sizeof kelvin));
    return kelvin;
  }

 private:
  static constexpr wchar_t kSettings[] = L"SOFTWARE\\Norvex\\Velora";

  // A stop that finds the config thread ahead of its wait leaves its ring to the next start.
  static void TakeRing() {
    const HANDLE bell =
        OpenEventW(SYNCHRONIZE, FALSE, L"Global\\FEATURE_TYPE_NATURAL_COLOR_EVENT_OBJECT");
    if (bell != nullptr) {
      WaitForSingleObject(bell, 0);
      CloseHandle(bell);
    }
  }

  static float NumberBehind(const std::wstring& text, const std::wstring& label) {
    const size_t at = text.find(label);
    EXPECT_NE(at, std::wstring::npos) << testsupport::Utf8(text);
    return at == std::wstring::npos ? 0 : std::wcstof(text.c_str() + at + label.size(), nullptr);
  }

  static std::vector<uint8_t> Stored(const std::wstring& feature, const std::wstring& name) {
    const auto values =
        testsupport::ReadKey(HKEY_LOCAL_MACHINE, std::wstring(kSettings) + L"\\" + feature);
    const auto found = values.find(name);
    return found == values.end() ? std::vector<uint8_t>() : found->second.bytes;
  }

  static double StoredDouble(const std::wstring& name) {
    const auto bytes = Stored(L"NaturalColor", name);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text.empty() ? std::nan("") : std::wcstod(text.c_str(), nullptr);
  }

  const testsupport::ScopedKey machineSettings_{HKEY_LOCAL_MACHINE, kSettings};
  const testsupport::IniFile noDefaults_;
  bool isStarted_ = false;

 protected:
  // Neutral at 6500 K.
  std::vector<CctAlgoInfo> curve = {{.cct = 3000, .r = 1, .g = 0.75, .b = 0.5},
                                    {.cct = 5000, .r = 1, .g = 0.875, .b = 0.75},
                                    {.cct = 6500, .r = 1, .g = 1, .b = 1},
                                    {.cct = 8000, .r = 0.75, .g = 0.875, .b = 1}};
  NatureColorDataIn dataIn = {.frameCount = 4,
                              .frameTime = 0,
                              .dimmingThreshold = 100,
                              .methodVersion = 0,
                              .minLuma = 4000,
                              .luminanceThreshold = 50,
                              .monitorType = 0,
                              .executionType = 1,
                              .algoInfo = nullptr,
                              .algoInfoCnt = 0};
  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
};

}  // namespace scenarios
