#include "scenarios/machinehost/Rounds.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>
#include <system_error>
#include <vector>

namespace machinehost {
namespace {

constexpr uint32_t kPatience = 60000;  // milliseconds for the other side's ring
constexpr int kTries = 100;            // of a switch while the other side writes the same files
constexpr int kApplicationsBell = FEATURE_TYPE_WHITEPOINT;
constexpr int kServicesBell = FEATURE_TYPE_COLOR_FIELD;
constexpr ColorFieldMode kModes[] = {SrgbMode, P3Mode, 7};
constexpr const char* kDataFiles[] = {"sRGB.bin", "P3.bin", "EBOOK.bin", "Gamma.bin"};

class Side {
 public:
  Side(Role role, const std::set<std::string>& shown)
      : isService_(role == Role::Service),
        role_(role),
        shown_(shown),
        random_(isService_ ? 1 : 2) {}

  void Round(int n) {
    host_.emplace(role_);
    Expect(host_->library.InitConfigSyncObject(kApplicationsBell) == ResultOk, "bell");
    Expect(host_->library.InitConfigSyncObject(kServicesBell) == ResultOk, "bell");
    if (isService_) {
      Expect(host_->library.WaitConfigChangeSync(kApplicationsBell, kPatience) == ResultOk, "ring");
      ExpectApplicationsSettings(n);
      WriteServicesSettings(n);
      Expect(host_->library.NotifyConfigChange(kServicesBell) == ResultOk, "ringing");
      Work(n);
    } else {
      WriteApplicationsSettings(n);
      Expect(host_->library.NotifyConfigChange(kApplicationsBell) == ResultOk, "ringing");
      Work(n);
      Expect(host_->library.WaitConfigChangeSync(kServicesBell, kPatience) == ResultOk, "ring");
      ExpectServicesSettings(n);
    }
    ++rounds_;
  }

  std::string Counts() const {
    std::ostringstream text;
    text << rounds_ << ' ' << switches_ << ' ' << refused_ << ' ' << saved_ << ' ' << zeros_ << ' '
         << wrong_;
    return text.str();
  }

 private:
  // --- Settings: one side writes, the other one reads ---

  void WriteApplicationsSettings(int n) {
    virtualnotebook::HostedLibrary& library = host_->library;
    const ColorTemperatureConfig point{n % 160 + 0.25, n % 80 + 0.5};
    Expect(library.SetWhitePointStatus(n) == ResultOk, "SetWhitePointStatus");
    Expect(library.SetEyeProtectValue(n % 100) == ResultOk, "SetEyeProtectValue");
    Expect(library.SetColorTemperatureConfig(&point) == ResultOk, "SetColorTemperatureConfig");
  }

  void ExpectApplicationsSettings(int n) {
    virtualnotebook::HostedLibrary& library = host_->library;
    ColorTemperatureConfig point{};
    Expect(library.GetWhitePointStatus(-1) == n, "GetWhitePointStatus");
    Expect(library.GetEyeProtectValue(-1) == n % 100, "GetEyeProtectValue");
    Expect(library.GetColorTemperatureConfig(&point) == ResultOk, "GetColorTemperatureConfig");
    Expect(point.x == n % 160 + 0.25 && point.y == n % 80 + 0.5, "the point");
  }

  void WriteServicesSettings(int n) {
    virtualnotebook::HostedLibrary& library = host_->library;
    WhitePointFineTueInfo tuning = Tuning(n);
    Expect(library.SetColorFieldCurrentMode(n) == ResultOk, "SetColorFieldCurrentMode");
    Expect(library.SetNatureColorStatus(n) == ResultOk, "SetNatureColorStatus");
    Expect(library.SetWhitePointTueValue(&tuning) == ResultOk, "SetWhitePointTueValue");
  }

  void ExpectServicesSettings(int n) {
    virtualnotebook::HostedLibrary& library = host_->library;
    WhitePointFineTueInfo tuning = Tuning(-1);
    Expect(library.GetColorFieldCurrentMode(-1) == n, "GetColorFieldCurrentMode");
    Expect(library.GetNatureColorStatus(-1) == n, "GetNatureColorStatus");
    Expect(library.GetWhitePointTueValue(&tuning) == ResultOk, "GetWhitePointTueValue");
    Expect(tuning.r == n + 0.25 && tuning.g == n + 0.25 && tuning.b == n + 0.25, "the gains");
  }

  // Of a mode that is not switched to.
  static WhitePointFineTueInfo Tuning(int n) {
    return {.id = {}, .mode = AdobeMode, .r = n + 0.25, .g = n + 0.25, .b = n + 0.25};
  }

  // --- Modes ---

  void Work(int n) {
    const std::string own = isService_ ? kServicesMode : kApplicationsMode;
    const std::string others = isService_ ? kApplicationsMode : kServicesMode;
    if (n % 4 == (isService_ ? 0 : 2)) {
      BreakAFile();
    }
    Switch(kModes[random_() % 3]);
    if (n % 2 == 0) {
      const UserDesignInfo design = Design(own, 1 + n / 2 % 2);
      Expect(host_->library.SaveUserSelfColor(&design) == ResultOk, "SaveUserSelfColor");
      ExpectSound();
      ++saved_;
    }
    EnableOthers(others);
    Switch(kModes[random_() % 3]);
  }

  // A switch may come upon a file that the other side is writing, and is refused then. It is never
  // refused for long, and never shows half of a LUT.
  void Switch(ColorFieldMode mode) {
    ++switches_;
    for (int i = 0; host_->library.SetColorField(mode) != ResultOk; ++i) {
      ++refused_;
      ExpectSound();
      if (i == kTries) {
        Expect(false, "SetColorField");
        return;
      }
      SleepEx(1, FALSE);
    }
    ExpectSound();
  }

  // The other side may be about to save it, or not have done so yet.
  void EnableOthers(const std::string& id) {
    UserDesignInfo design = Design(id, 1);
    ProfileOf(id).copy(design.iccPath, sizeof design.iccPath - 1);
    Expect(host_->library.AddUsrDesignInfo(&design) == ResultOk, "AddUsrDesignInfo");
    ++switches_;
    refused_ += host_->library.SetUserColorField(id.c_str()) != ResultOk;
    ExpectSound();
  }

  // The panel shows LUTs that somebody made. The e-book mode's file alone is changed in place, and
  // is read without a look at its hash behind that: where the other side has just emptied it, in
  // order to make it anew, it reads as zeros.
  void ExpectSound() {
    std::istringstream pipeline(host_->Pipeline());
    for (std::string lut; pipeline >> lut;) {
      if (lut == kZeros) {
        ++zeros_;
      } else {
        Expect(lut == "-" || shown_.contains(lut), "a LUT that nobody made");
      }
    }
  }

  // Gone or, but for the e-book mode's, cut short.
  void BreakAFile() {
    const std::string name = kDataFiles[random_() % 4];
    const std::string path = "C:\\ProgramData\\Comms\\NxVelora\\" + name;
    std::error_code ignored;
    if (name == "EBOOK.bin" || random_() % 2 == 0) {
      std::filesystem::remove(path, ignored);
    } else {
      std::filesystem::resize_file(path, 1000, ignored);
    }
  }

  void Expect(bool right, const char* what) {
    if (!right) {
      ++wrong_;
      std::cerr << (isService_ ? "service" : "application") << ", round " << rounds_ + 1 << ": "
                << what << std::endl;
    }
  }

  const std::string kZeros = DigestOf(std::vector<double>(4913 * 3));
  const bool isService_;
  const Role role_;
  const std::set<std::string>& shown_;
  std::minstd_rand random_;
  std::optional<Host> host_;
  int rounds_ = 0;
  int switches_ = 0;
  int refused_ = 0;
  int saved_ = 0;
  int zeros_ = 0;
  int wrong_ = 0;
};

}  // namespace

std::string Rounds(Role role, int count, const std::set<std::string>& shown) {
  Side side(role, shown);
  for (int n = 1; n <= count; ++n) {
    side.Round(n);
  }
  return side.Counts();
}

}  // namespace machinehost
