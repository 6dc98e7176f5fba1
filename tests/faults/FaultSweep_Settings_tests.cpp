// A fault at every call of the settings, flag, user mode store and colour mathematics exports. What
// each run gives, logs, calls and leaves is what the model gives, logs, calls and leaves with the
// same fault; so is the call after it, without a fault.
#include "faults/FaultSweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "faults/SettingsModel.h"
#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace faults {
namespace {

using testsupport::DwordValue;
using testsupport::TextValue;
using virtualnotebook::HostedLibrary;
using virtualnotebook::LogLine;

const std::wstring kSettings = L"SOFTWARE\\Norvex\\Velora";

using Values = std::vector<double>;  // the result and what came back by pointer

// One export with its arguments, of the library and of the model.
struct Row {
  const char* name;
  std::function<Values(HostedLibrary&)> library;
  std::function<Values(SettingsModel&)> model;
};

template <typename Call>
Row MakeRow(const char* name, Call call) {
  return {name, call, call};
}

// An export with one number for an argument.
#define NUMBER_ROW(name, number) \
  MakeRow(#name, [](auto& api) { return Values{static_cast<double>(api.name(number))}; })

UserDesignInfo& Design() {
  static UserDesignInfo design = [] {
    UserDesignInfo info{};
    info.mode = USRDESIGN_MODE;
    info.serialNum = 3.5;
    std::strcpy(info.id, "Mine%1");
    std::strcpy(info.modeName, "Mine");
    return info;
  }();
  return design;
}

WhitePointFineTueInfo FineTuning(int mode) {
  WhitePointFineTueInfo info = {.id = "", .mode = mode, .r = 0.91, .g = 0.92, .b = 0.93};
  std::strcpy(info.id, "Mine%1");
  return info;
}

std::vector<Row> SettingsRows() {
  return {
      NUMBER_ROW(GetWhitePointStatus, 5),
      NUMBER_ROW(SetWhitePointStatus, 1),
      NUMBER_ROW(GetEyeProtectStatus, 5),
      NUMBER_ROW(SetEyeProtectStatus, 1),
      NUMBER_ROW(GetEyeProtectValue, 100),
      NUMBER_ROW(SetEyeProtectValue, 101),
      NUMBER_ROW(GetPSRStatusValue, 5),
      NUMBER_ROW(SetPSRStatusValue, 1),
      NUMBER_ROW(GetRhineValue, 0.7),
      NUMBER_ROW(SetRhineValue, 0.6),
      NUMBER_ROW(GetColorBlueValue, 1),
      NUMBER_ROW(TransEyeProtectSliderValue, 300),
      NUMBER_ROW(SetEyeProtectHandleType, 1),
      MakeRow("SetEyeProtectRGB",
              [](auto& api) { return Values{double(api.SetEyeProtectRGB(0.9, 0.8, 0.7))}; }),
      NUMBER_ROW(GetTemperatureValue, 100),
      NUMBER_ROW(SetTemperatureValue, 101),
      NUMBER_ROW(GetColorTemperatureType, 5),
      NUMBER_ROW(SetColorTemperatureType, 1),
      MakeRow("GetColorTemperatureConfig",
              [](auto& api) {
                ColorTemperatureConfig point = {1, 2};
                const double result = api.GetColorTemperatureConfig(&point);
                return Values{result, point.x, point.y};
              }),
      MakeRow("SetColorTemperatureConfig",
              [](auto& api) {
                const ColorTemperatureConfig point = {3, 4};
                return Values{double(api.SetColorTemperatureConfig(&point))};
              }),
      NUMBER_ROW(GetNatureColorStatus, 5),
      NUMBER_ROW(SetNatureColorStatus, 1),
      NUMBER_ROW(GetColorFieldCurrentMode, 5),
      NUMBER_ROW(SetColorFieldCurrentMode, 1),
      NUMBER_ROW(GetColorFieldResetMode, 5),
      NUMBER_ROW(SetColorFieldResetMode, 1),
      NUMBER_ROW(GetColorFieldSetType, 5),
      NUMBER_ROW(SetColorFieldSetType, 1),
      NUMBER_ROW(IsFeatureSupport, 1),
      NUMBER_ROW(IsMultiUser, 1),
      NUMBER_ROW(IsDisplayerCheck, 1),
      NUMBER_ROW(IsFirstUse, 1),
      MakeRow("SetFeatureSupport",
              [](auto& api) { return Values{double(api.SetFeatureSupport(5, 7))}; }),
      MakeRow("SetMultiUser", [](auto& api) { return Values{double(api.SetMultiUser(5, 7))}; }),
      MakeRow("SetDisplayerCheck",
              [](auto& api) { return Values{double(api.SetDisplayerCheck(5, 7))}; }),
      MakeRow("SetFirstUseState",
              [](auto& api) { return Values{double(api.SetFirstUseState(5, 7))}; }),
      MakeRow("GetFrameWorkType", [](auto& api) { return Values{double(api.GetFrameWorkType())}; }),
      NUMBER_ROW(SetFrameWorkType, 3),
      MakeRow("GetWhitePointTueValue",
              [](auto& api) {
                WhitePointFineTueInfo info = FineTuning(P3Mode);
                const double result = api.GetWhitePointTueValue(&info);
                return Values{result, info.r, info.g, info.b};
              }),
      MakeRow("SetWhitePointTueValue",
              [](auto& api) {
                WhitePointFineTueInfo info = FineTuning(P3Mode);
                return Values{double(api.SetWhitePointTueValue(&info))};
              }),
      MakeRow("GetWhitePointTueValue",
              [](auto& api) {
                WhitePointFineTueInfo info = FineTuning(USRDESIGN_MODE);
                const double result = api.GetWhitePointTueValue(&info);
                return Values{result, info.r, info.g, info.b};
              }),
      MakeRow("SetWhitePointTueValue",
              [](auto& api) {
                WhitePointFineTueInfo info = FineTuning(USRDESIGN_MODE);
                return Values{double(api.SetWhitePointTueValue(&info))};
              }),
      MakeRow("EditUserSerialNumReg",
              [](auto& api) { return Values{double(api.EditUserSerialNumReg(&Design()))}; }),
      MakeRow("DeleteUserDesignReg",
              [](auto& api) { return Values{double(api.DeleteUserDesignReg(&Design()))}; }),
      MakeRow("GetUserRegHkey", [](auto& api) { return Values{double(api.GetUserRegHkey())}; }),
      MakeRow("SwitchUser",
              [](auto& api) {
                api.SwitchUser();
                return Values{};
              }),
  };
}

template <typename Api>
Values Fuse(Api& api, uint32_t feature) {
  const FusionInfo input = {1, {0.75, 0.5, 0.25, 255, 0.5}};
  Color3DInfo output{};
  api.Fusion(feature, &input, &output);
  return {output.r, output.g, output.b, double(output.colorBlue), output.protectValue};
}

std::vector<Row> ColourMathsRows() {
  return {
      MakeRow("Fusion", [](auto& api) { return Fuse(api, 0); }),
      MakeRow("Fusion", [](auto& api) { return Fuse(api, 2); }),
      MakeRow("Fusion", [](auto& api) { return Fuse(api, 4); }),
      MakeRow("TransColorTemperatureConfigToRGB",
              [](auto& api) {
                const ColorTemperatureConfig point = {100, 30};
                ColorTemperatureRgb rgb = {1, 1, 1};
                api.TransColorTemperatureConfigToRGB(&point, 80, &rgb);
                return Values{rgb.r, rgb.g, rgb.b};
              }),
      MakeRow("Set2DColorTemperature",
              [](auto& api) {
                const Color2DInfo info = {200, 255};
                return Values{double(api.Set2DColorTemperature(&info))};
              }),
      MakeRow("Set3DColorTemperature",
              [](auto& api) {
                Color3DInfo info = {0.9, 0.8, 0.7, 255, 0.5};
                return Values{double(api.Set3DColorTemperature(&info))};
              }),
  };
}

class FaultSweep_Settings : public testing::Test {
 protected:
  FaultSweep_Settings() {
    ini_.Write(
        "[EYEPROTECT]\nIsEnableEyeProtect=1\n"
        "[BLUEPROTECT]\nCurrentBlueProtect=1\nCurrentBlueProtectSlider=150\n"
        "[TEMPERATURE]\nCurrentTemperatureSlider=200\n"
        "[CIRCLE]\nIsIntelDefault=0\nIsIntelCold=1\nIsIntelWarm=1\nAngle=0.5\nRadiusScale=0.75\n"
        "[NATURECOLOR]\nIsNatureColor=1\n");
    // The system keeps a key open from the first reading of such a file on.
    wchar_t text[2];
    GetPrivateProfileStringW(L"CIRCLE", L"Angle", L"", text, 2,
                             L"C:\\ProgramData\\Comms\\NxVelora\\SetColor.ini");
  }

  // --- Registries ---

  // The flags alone: nothing was set yet.
  static RegistryTree Flags(bool whitePointOfUser = false) {
    RegistryTree tree;
    tree[kSettings];
    tree[kSettings + L"\\FeatureInfo"];
    for (const wchar_t* name : {L"WhitePoint", L"EyeProtect", L"Temperature", L"NaturalColor"}) {
      tree[kSettings + L"\\FeatureInfo\\Support"][name] = DwordValue(1);
    }
    if (whitePointOfUser) {
      tree[kSettings + L"\\FeatureInfo\\MultiUser"][L"WhitePoint"] = DwordValue(1);
    }
    return tree;
  }

  static RegistryTree Stored() {
    RegistryTree tree = Flags();
    const auto gains = [&](const std::wstring& feature) {
      auto& values = tree[kSettings + L"\\" + feature];
      values[L"r"] = TextValue(L"0.500000");
      values[L"g"] = TextValue(L"0.625000");
      values[L"b"] = TextValue(L"0.750000");
    };
    for (const wchar_t* feature : {L"WhitePoint", L"EyeProtect", L"NaturalColor"}) {
      tree[kSettings + L"\\" + feature][L"IsEnable"] = DwordValue(1);
      gains(feature);
    }
    auto& eye = tree[kSettings + L"\\EyeProtect"];
    eye[L"ProtectValue"] = DwordValue(42);
    eye[L"PSRIsEnable"] = DwordValue(2);
    eye[L"HandleType"] = DwordValue(1);
    eye[L"RhineValue"] = TextValue(L"0.875000");
    auto& temperature = tree[kSettings + L"\\ColorTemperature"];
    temperature[L"TemperatureValue"] = DwordValue(43);
    temperature[L"TemperatureType"] = DwordValue(1);
    temperature[L"X"] = TextValue(L"120.000000");
    temperature[L"Y"] = TextValue(L"40.000000");
    auto& mode = tree[kSettings + L"\\ColorField"];
    mode[L"CurrentMode"] = DwordValue(2);
    mode[L"ResetMode"] = DwordValue(3);
    mode[L"SetType"] = DwordValue(1);
    tree[kSettings + L"\\ColorField\\UserDesign"];
    tree[kSettings + L"\\ColorField\\WhitePointFineTue"];
    tree[kSettings + L"\\ColorField\\WhitePointFineTue\\PresetMode"];
    tree[kSettings + L"\\ColorField\\WhitePointFineTue\\UserDesignMode"];
    for (const wchar_t* id : {L"Mine%1", L"Yours%2"}) {
      tree[kSettings + L"\\ColorField\\UserDesign\\" + id][L"Id"] = TextValue(id);
    }
    for (const wchar_t* key : {L"PresetMode\\P3Mode", L"UserDesignMode\\Mine%1"}) {
      auto& values = tree[kSettings + L"\\ColorField\\WhitePointFineTue\\" + key];
      values[L"R"] = TextValue(L"0.990000");
      values[L"G"] = TextValue(L"0.980000");
      values[L"B"] = TextValue(L"0.970000");
    }
    tree[kSettings + L"\\FeatureInfo"][L"FrameWorkType"] = DwordValue(9);
    return tree;
  }

  // --- One row ---

  static std::map<std::wstring, std::wstring> Ini() {
    return {{L"EYEPROTECT\\IsEnableEyeProtect", L"1"},
            {L"BLUEPROTECT\\CurrentBlueProtect", L"1"},
            {L"BLUEPROTECT\\CurrentBlueProtectSlider", L"150"},
            {L"TEMPERATURE\\CurrentTemperatureSlider", L"200"},
            {L"CIRCLE\\IsIntelDefault", L"0"},
            {L"CIRCLE\\IsIntelCold", L"1"},
            {L"CIRCLE\\IsIntelWarm", L"1"},
            {L"CIRCLE\\Angle", L"0.5"},
            {L"CIRCLE\\RadiusScale", L"0.75"},
            {L"NATURECOLOR\\IsNatureColor", L"1"}};
  }

  void PrepareModel(SettingsModel& model) const {
    model.ini = Ini();
    model.platformType = kPlatformType;
    model.administrator = isService_;
    model.sid = isService_ ? sid_ : L"";
  }
  void PrepareNotebook(virtualnotebook::Notebook& notebook) const {
    notebook.platformType = kPlatformType;
    notebook.administrator = isService_;
    notebook.userSid = sid_;
  }

  void Store(const RegistryTree& tree, SettingsModel& model) {
    if (now_ != tree) {
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, kSettings.c_str());
      WriteTree(HKEY_LOCAL_MACHINE, tree);
      now_ = tree;
    }
    model.machine = tree;
    model.user = userTree_;
  }

  // Both did the same, from the same.
  void Compare(HostedLibrary& library, SettingsModel& model, const Values& ours,
               const Values& expected) {
    EXPECT_EQ(ours, expected);
    EXPECT_TRUE(testsupport::LogIs(library.notebook, model.log));
    std::vector<std::string> calls;
    bool changes = false;
    for (const virtualnotebook::Call& call : library.notebook.calls) {
      if (call.function != "LcdLogMessage") {
        calls.push_back(call.function);
      }
      changes = changes || call.function == "RegCreateKeyExW" || call.function == "RegDeleteKeyW";
    }
    if (changes) {
      now_ = ReadTree(HKEY_LOCAL_MACHINE, kSettings);
    }
    EXPECT_EQ(now_, model.machine);
    // The text conversions of a record's fields have no order.
    for (auto* list : {&calls, &model.calls}) {
      std::erase(*list, "CoreKit::StringToWString");
    }
    EXPECT_EQ(calls, model.calls);
  }

  // Behind the run with the fault comes one without.
  void CompareNext(const Row& row, HostedLibrary& library, SettingsModel& model) {
    SCOPED_TRACE("the next call");
    library.notebook.ForgetRecords();
    model.Begin({});
    const Values ours = row.library(library);
    Compare(library, model, ours, row.model(model));
  }

  // In a process that has used the export before: one library for all runs.
  void SweepWarm(const Row& row, const RegistryTree& tree) {
    FreshLibrary fresh;
    HostedLibrary& library = *fresh.operator->();
    SettingsModel model;
    PrepareNotebook(library.notebook);
    PrepareModel(model);
    Store(tree, model);
    model.Begin({});
    row.model(model);
    row.library(library);
    now_ = ReadTree(HKEY_LOCAL_MACHINE, kSettings);
    const size_t handles = OpenHandles().size();
    size_t notClosed = 0;  // keys that the fault has left open
    Values ours;
    RunSweep({.name = row.name,
              .start = [&]() -> virtualnotebook::Notebook& {
                Store(tree, model);
                return library.notebook;
              },
              .call = [&] { ours = row.library(library); },
              .check =
                  [&](const Fault& fault) {
                    if (fault.IsOf("RegCloseKey")) {
                      notClosed += fault.n != 0 ? 1 : library.notebook.CountCalls("RegCloseKey");
                    }
                    model.Begin(fault);
                    Compare(library, model, ours, row.model(model));
                    CompareNext(row, library, model);
                  },
              .without = {"CoreKit::StringToWString"}});
    EXPECT_EQ(OpenHandles().size(), handles + notClosed);
  }

  // As the first call of a process.
  void SweepCold(const Row& row, const RegistryTree& tree) {
    std::optional<FreshLibrary> fresh;
    SettingsModel model;
    Values ours;
    RunSweep({.name = row.name,
              .start = [&]() -> virtualnotebook::Notebook& {
                fresh.reset();
                fresh.emplace();
                model = SettingsModel();
                PrepareNotebook(fresh->notebook());
                PrepareModel(model);
                Store(tree, model);
                return fresh->notebook();
              },
              .call = [&] { ours = row.library(*fresh->operator->()); },
              .check =
                  [&](const Fault& fault) {
                    model.Begin(fault);
                    Compare(*fresh->operator->(), model, ours, row.model(model));
                    CompareNext(row, *fresh->operator->(), model);
                  },
              .without = {"CoreKit::StringToWString"}});
  }

  static constexpr uint32_t kPlatformType = 2;
  const testsupport::ScopedKey machine_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const testsupport::ScopedKey user_{HKEY_CURRENT_USER, L"SOFTWARE\\Norvex\\Velora"};
  const testsupport::IniFile ini_;
  RegistryTree now_;  // what the machine's settings are
  RegistryTree userTree_;
  bool isService_ = false;
  std::wstring sid_ = testsupport::CurrentUserSid();
};

TEST_F(FaultSweep_Settings, WithValues) {
  for (const Row& row : SettingsRows()) {
    SweepWarm(row, Stored());
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(FaultSweep_Settings, WithoutValues) {
  for (const Row& row : SettingsRows()) {
    SweepWarm(row, Flags());
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(FaultSweep_Settings, ColourMathsWithValues) {
  for (const Row& row : ColourMathsRows()) {
    SweepWarm(row, Stored());
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(FaultSweep_Settings, ColourMathsWithoutValues) {
  for (const Row& row : ColourMathsRows()) {
    SweepWarm(row, Flags());
    ASSERT_FALSE(HasFailure());
  }
}

// The flags of all features are read first.
TEST_F(FaultSweep_Settings, FirstOfAProcess) {
  for (const Row& row : {NUMBER_ROW(IsFeatureSupport, 1), NUMBER_ROW(GetColorTemperatureType, 5),
                         MakeRow("GetUserRegHkey",
                                 [](auto& api) { return Values{double(api.GetUserRegHkey())}; })}) {
    SweepCold(row, Flags());
    ASSERT_FALSE(HasFailure());
  }
  SweepCold(ColourMathsRows()[3], Stored());
}

TEST_F(FaultSweep_Settings, FirstOfAnApplicationOfOneOfSeveralUsers) {
  userTree_[kSettings];
  userTree_[kSettings + L"\\WhitePoint"][L"IsEnable"] = DwordValue(3);
  WriteTree(HKEY_CURRENT_USER, userTree_);
  SweepCold(NUMBER_ROW(GetWhitePointStatus, 5), Flags(true));
}

TEST_F(FaultSweep_Settings, FirstOfAServiceForOneOfSeveralUsers) {
  isService_ = true;
  userTree_[kSettings];
  userTree_[kSettings + L"\\WhitePoint"][L"IsEnable"] = DwordValue(3);
  WriteTree(HKEY_CURRENT_USER, userTree_);
  SweepCold(NUMBER_ROW(GetWhitePointStatus, 5), Flags(true));
}

TEST_F(FaultSweep_Settings, SwitchUserInAService) {
  isService_ = true;
  SweepWarm(MakeRow("SwitchUser",
                    [](auto& api) {
                      api.SwitchUser();
                      return Values{};
                    }),
            Flags(true));
}

// A record whose texts could not be converted touches no other mode's key.
TEST_F(FaultSweep_Settings, TextConversions) {
  FreshLibrary fresh;
  HostedLibrary& library = *fresh.operator->();
  SettingsModel model;
  Store(Stored(), model);
  library.DeleteUserDesignReg(&Design());
  now_.clear();
  const struct {
    const char* name;
    std::function<ResultT()> call;
  } rows[] = {
      {"DeleteUserDesignReg", [&] { return library.DeleteUserDesignReg(&Design()); }},
      {"EditUserSerialNumReg", [&] { return library.EditUserSerialNumReg(&Design()); }},
      {"SetWhitePointTueValue",
       [&] {
         WhitePointFineTueInfo info = FineTuning(USRDESIGN_MODE);
         return library.SetWhitePointTueValue(&info);
       }},
      {"GetWhitePointTueValue",
       [&] {
         WhitePointFineTueInfo info = FineTuning(USRDESIGN_MODE);
         return library.GetWhitePointTueValue(&info);
       }},
  };
  for (const auto& row : rows) {
    ResultT result = ResultOk;
    size_t faults = 0;
    for (unsigned n = 1; n < 50; ++n) {
      SCOPED_TRACE(row.name + std::to_string(n));
      Store(Stored(), model);
      library.notebook.ForgetRecords();
      library.notebook.FailCall("CoreKit::StringToWString", n, 0);
      result = row.call();
      library.notebook.ClearFaults();
      if (library.notebook.CountCalls("CoreKit::StringToWString") < n) {
        EXPECT_EQ(result, ResultOk);
        break;
      }
      ++faults;
      EXPECT_TRUE(result == ResultOk || result == ResultFailed) << result;
      const RegistryTree now = ReadTree(HKEY_LOCAL_MACHINE, kSettings);
      now_ = now;
      RegistryTree others = Stored();
      for (const wchar_t* ours : {L"\\ColorField\\UserDesign\\Mine%1",
                                  L"\\ColorField\\WhitePointFineTue\\UserDesignMode\\Mine%1"}) {
        others.erase(kSettings + ours);
      }
      for (const auto& [path, values] : others) {
        EXPECT_TRUE(now.contains(path)) << testsupport::Utf8(path);
        if (!path.ends_with(L"UserDesignMode") && now.contains(path)) {
          EXPECT_EQ(now.at(path), values) << testsupport::Utf8(path);
        }
      }
    }
    CountFaults(row.name, faults);
  }
}

}  // namespace
}  // namespace faults
