// An allocation that fails, one after the other. Where the library checks, the failure is a result
// and a line like every other; elsewhere std::bad_alloc reaches the host. Either way nothing
// damaged is shown, and the next call is a good one.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "faults/ColorModeSweep.h"
#include "virtualnotebook/ImportRedirection.h"

namespace faults {
namespace {

// The library's allocations, of the C++ runtime that is linked into it and of Little CMS.
struct Allocations {
  size_t minimum = 0;  // smaller ones are not counted
  unsigned n = 0;      // the one that fails; 0: none
  unsigned count = 0;

  size_t previous = 0;

  // Little CMS makes a profile, and its lock without a look at what malloc gave.
  bool IsLock(size_t size) const {
    constexpr size_t kProfile = 1000;  // and more
    return size == sizeof(CRITICAL_SECTION) && previous > kProfile;
  }

  bool Fails(size_t size) {
    const bool counts = n != 0 && size >= minimum && !IsLock(size);
    previous = size;
    return counts && ++count == n;
  }
} allocations;

void* originalMalloc = nullptr;

void* FailingMalloc(size_t size) {
  return allocations.Fails(size) ? nullptr
                                 : reinterpret_cast<decltype(&malloc)>(originalMalloc)(size);
}

const virtualnotebook::ImportedFunction kMalloc[] = {
    {"msvcrt.dll", "malloc", "malloc", reinterpret_cast<void*>(&FailingMalloc), &originalMalloc}};

UserDesignInfo Design(unsigned n) {
  UserDesignInfo info{};
  const std::string name = "M" + std::to_string(n);
  info.mode = USRDESIGN_MODE;
  (name + "%1").copy(info.id, sizeof info.id);
  name.copy(info.modeName, sizeof info.modeName);
  info.gamut = 1;
  info.gamma = 2.2;
  info.whitePointX = 0.3457;
  info.whitePointY = 0.3585;
  return info;
}

class FaultSweep_Memory : public ColorModeSweep {
 protected:
  ~FaultSweep_Memory() override { allocations = {}; }

  // To be called behind each start of a process. Two things can't be done without, and are there
  // beforehand: what the runtime keeps for exceptions, and what libcrypto makes at its first hash.
  void Arm() {
    SetProfile(L"");
    library().SetColorFieldCurrentMode(SrgbMode);
    EXPECT_TRUE(library().SyncCurrentModeIccFile());
    redirection_.emplace(GetModuleHandleW(L"VeloraCtlApi.dll"), kMalloc);
    WhitePointFineTueInfo info{};
    info.mode = 12;
    EXPECT_ANY_THROW(library().GetWhitePointTueValue(&info));
  }
  void Disarm() { redirection_.reset(); }

  // One call with a failing allocation. False when there was none to fail.
  template <typename Call>
  bool RunWith(unsigned n, size_t minimum, const Call& call) {
    notebook().ForgetRecords();
    hasThrown_ = false;
    allocations = {.minimum = minimum, .n = n};
    try {
      result_ = call();
    } catch (const std::bad_alloc&) {
      hasThrown_ = true;
    }
    const bool failed = allocations.count >= n;
    allocations = {};
    for (const virtualnotebook::LogLine& line : notebook().log) {
      if (line.level == 3) {
        errors_.insert(line.text.substr(0, line.text.find('(')));
      }
    }
    return failed;
  }

  // Profiles that were open when an exception came stay open.
  static void CloseOthersThan(const std::set<HANDLE>& before) {
    std::set<HANDLE> left;
    std::ranges::set_difference(OpenHandles(), before, std::inserter(left, left.end()));
    CloseHandles(left);
  }

  void ExpectErrors(const std::vector<std::wstring>& errors) const {
    for (const std::wstring& error : errors) {
      EXPECT_TRUE(errors_.contains(error)) << testsupport::Utf8(error);
    }
  }

  bool hasThrown_ = false;
  int result_ = 0;
  std::set<std::wstring> errors_;  // that came up in any run

 private:
  std::optional<virtualnotebook::ImportRedirection> redirection_;
};

// Those of the files, LUTs and the EDID, and longer texts.
TEST_F(FaultSweep_Memory, SetColorField) {
  constexpr size_t kMinimum = 120;
  size_t faults = 0;
  for (unsigned n = 1; n < 1000; ++n) {
    SCOPED_TRACE(n);
    Disarm();
    RemoveTraces();
    StartProcess(3);
    Arm();
    SetProfile(L"srgb color space profile.icm");
    const std::set<HANDLE> before = OpenHandles();
    const auto call = [this] { return library().SetColorField(P3Mode); };
    if (!RunWith(n, kMinimum, call)) {
      EXPECT_EQ(result_, ResultOk);
      break;
    }
    CloseOthersThan(before);
    ++faults;
    EXPECT_NE(GammaLut(), Shown::Other);
    EXPECT_NE(LutOf(virtualnotebook::kP3Lut), Shown::Other);
    if (!hasThrown_) {
      EXPECT_TRUE(result_ == ResultOk || result_ == ResultIccError ||
                  result_ == ResultColorFieldError)
          << result_;
    }
    ASSERT_EQ(call(), ResultOk) << "the next call";
    EXPECT_NE(GammaLut(), Shown::Other);
    EXPECT_NE(LutOf(virtualnotebook::kP3Lut), Shown::Other);
    EXPECT_EQ(Profile(), L"NVX-P3.icc");
  }
  Disarm();
  ExpectErrors({L"outValue is nullptr!", L"pData is nullptr!", L"pLutDataGamma is nullptr!mode:2",
                L"pLutData3D is nullptr!mode:2"});
  CountFaults("SetColorField, memory", faults);
}

// All of them: the texts and tags of the profile are small.
TEST_F(FaultSweep_Memory, SaveUserSelfColor) {
  StartProcess(1);
  // The panel is read by a process's first save.
  const UserDesignInfo first = Design(0);
  ASSERT_EQ(library().SaveUserSelfColor(&first), ResultOk);
  Arm();
  SetProfile(L"srgb color space profile.icm");
  size_t faults = 0;
  bool isDone = false;
  for (unsigned n = 1; n < 4000 && !isDone; ++n) {
    SCOPED_TRACE(n);
    // A mode of its own each time: what was loaded is kept.
    const UserDesignInfo info = Design(n);
    const std::set<HANDLE> before = OpenHandles();
    const auto call = [&, this] { return library().SaveUserSelfColor(&info); };
    isDone = !RunWith(n, 0, call);
    CloseOthersThan(before);
    if (isDone) {
      EXPECT_EQ(result_, ResultOk);
    } else {
      ++faults;
      if (!hasThrown_) {
        EXPECT_TRUE(result_ == ResultOk || result_ == ResultIccError ||
                    result_ == ResultFileNotFound || result_ == ResultColorFieldError)
            << result_;
      }
    }
    if (n % 16 == 0) {
      EXPECT_EQ(call(), ResultOk) << "the next call";
      EXPECT_EQ(notebook().platform.lut3D.size(), 14739u);
      std::filesystem::remove_all(DataFile("User"));
    }
    std::filesystem::remove("C:\\Windows\\System32\\spool\\drivers\\color\\" +
                            std::string(info.id) + "_usr.icc");
    ASSERT_FALSE(HasFailure());
  }
  Disarm();
  EXPECT_TRUE(isDone);
  ExpectErrors({L"3DLut is null", L"GammaLut is null", L"Sha256Data failed to apply for space",
                L"Build gamma failed", L"Create rgbprofile failed", L"Assign memery failed",
                L"Allocate memory failed for descriptionMLU",
                L"Allocate memory failed for copyrightMLU", L"Save icc profile failed",
                L"Memery allocation failed", L"biosThreeDLut is null", L"outLut is null"});
  CountFaults("SaveUserSelfColor, memory", faults);
}

}  // namespace
}  // namespace faults
