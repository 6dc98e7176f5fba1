#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "lut/LutMachine.h"
#include "support/Registry.h"

namespace lutmachine {

// A machine with an empty store of settings and the user's directories, and user files made by a
// plain encoder of their own.
class UserLutTest : public LutMachine {
 protected:
  static inline const std::string kUserDir = kDataDir + "\\User\\";

  UserLutTest() {
    for (const char* name : {"3dlut", "gammalut", "temp"}) {
      std::filesystem::create_directories(kUserDir + name);
    }
  }

  static std::string UserFile3D(const std::string& id) {
    return kUserDir + "3dlut\\" + id + ".bin";
  }
  static std::string UserFileGamma(const std::string& id) {
    return kUserDir + "gammalut\\" + id + ".bin";
  }

  // The file of a LUT of any number of entries.
  static Bytes UserBlock(const std::vector<double>& lut) {
    const size_t count = lut.size() / 3;
    Bytes file(128, 0);
    file[64] = 0x0B;
    file[65] = 0x0C;
    const size_t length = 5 * count;
    file[68] = static_cast<uint8_t>(length / 256);
    file[69] = static_cast<uint8_t>(length % 256);
    Bytes extensions;
    for (size_t i = 0; i < count; ++i) {
      const auto r = static_cast<unsigned>(lut[3 * i]);
      const auto g = static_cast<unsigned>(lut[3 * i + 1]);
      const auto b = static_cast<unsigned>(lut[3 * i + 2]);
      file.push_back(static_cast<uint8_t>(r % 256));
      file.push_back(static_cast<uint8_t>(g / 16));
      file.push_back(static_cast<uint8_t>(g % 16 * 16 + b / 256));
      file.push_back(static_cast<uint8_t>(b % 256));
      extensions.push_back(static_cast<uint8_t>(r / 256));
    }
    file.insert(file.end(), extensions.begin(), extensions.end());
    const Bytes hash = virtualnotebook::Sha256(file);
    file.insert(file.end(), hash.begin(), hash.end());
    return file;
  }

  // Whole numbers that differ from entry to entry and from channel to channel.
  static std::vector<double> SomeGammaLut() {
    std::vector<double> lut;
    for (int i = 0; i < 1024; ++i) {
      lut.insert(lut.end(), {i * 4.0, 4095.0 - i * 3, i * 2.0 + 100});
    }
    return lut;
  }
  static std::vector<double> Some3DLut() {
    std::vector<double> lut;
    for (int i = 0; i < 4913; ++i) {
      lut.insert(lut.end(), {i % 1024 * 1.0, (i * 7) % 1024 * 1.0, 1023.0 - i % 1000});
    }
    return lut;
  }

  void StoreGains(const WhitePointFineTueInfo& record) {
    WhitePointFineTueInfo copy = record;
    ASSERT_EQ(SetWhitePointTueValue(&copy), ResultOk);
    notebook.ForgetRecords();
  }
  static WhitePointFineTueInfo Gains(int mode, double r, double g, double b,
                                     const std::string& id = "") {
    WhitePointFineTueInfo record{};
    record.mode = mode;
    record.r = r;
    record.g = g;
    record.b = b;
    id.copy(record.id, sizeof record.id);
    return record;
  }
  // What is stored, as text; empty where nothing is.
  static std::vector<std::wstring> StoredGains(const std::wstring& key) {
    std::vector<std::wstring> gains;
    const auto values = testsupport::ReadKey(HKEY_LOCAL_MACHINE, kTunings + key);
    for (const wchar_t* name : {L"R", L"G", L"B"}) {
      const auto value = values.find(name);
      if (value != values.end()) {
        const std::vector<uint8_t>& bytes = value->second.bytes;
        gains.emplace_back(reinterpret_cast<const wchar_t*>(bytes.data()),
                           bytes.size() / sizeof(wchar_t) - 1);
      }
    }
    return gains;
  }

  // The lines of the LUT engine, of operations below the one under test too.
  Lines EngineLog() const {
    Lines lines;
    for (const std::string& line : Log()) {
      if (line.find("(ColorField3DLut::") != std::string::npos) lines.push_back(line);
    }
    return lines;
  }

  static inline const std::wstring kTunings =
      L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue\\";
  const testsupport::ScopedKey settings{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
};

}  // namespace lutmachine
