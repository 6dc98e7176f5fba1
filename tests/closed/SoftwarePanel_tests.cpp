#include "VeloraPlatform/SoftwarePanel.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <memory>
#include <vector>

#include "Child.h"
#include "virtualnotebook/ImportRedirection.h"

using softwarepanel::SoftwarePanel;
using softwarepanel::State;

namespace {

bool SetType(SoftwarePanel& panel, uint32_t type) {
  return panel.Update([type](State& state) {
    state.platformType = type;
    return true;
  });
}

uint32_t TypeOf(const SoftwarePanel& panel) {
  const auto state = std::make_unique<State>();
  panel.Read(*state);
  return state->platformType;
}

}  // namespace

TEST(SoftwarePanel, State_BeginsNeutral) {
  const auto state = std::make_unique<State>();
  EXPECT_EQ(state->platformType, 2u);
  EXPECT_EQ(state->initCount + state->hasGammaLut + state->has3DLut + state->hasMatrix, 0u);
  EXPECT_EQ(state->temperatureKind, softwarepanel::kNoTemperature);
}

TEST(SoftwarePanel, Update_IsSeenByEveryHolder) {
  SoftwarePanel one;
  SoftwarePanel two;
  ASSERT_TRUE(one.IsOn());
  ASSERT_TRUE(two.IsOn());
  const uint64_t before = two.Sequence();
  EXPECT_TRUE(SetType(one, 5));
  EXPECT_EQ(two.Sequence(), before + 1);
  EXPECT_EQ(TypeOf(two), 5u);
  EXPECT_TRUE(SetType(two, 3));
  EXPECT_EQ(two.Sequence(), before + 2);
  EXPECT_EQ(TypeOf(one), 3u);
}

TEST(SoftwarePanel, Update_ARefusedChangeIsNotSeen) {
  SoftwarePanel panel;
  ASSERT_TRUE(SetType(panel, 1));
  const uint64_t before = panel.Sequence();
  EXPECT_FALSE(panel.Update([](State& state) {
    state.platformType = 99;
    return false;
  }));
  EXPECT_EQ(panel.Sequence(), before);
  EXPECT_EQ(TypeOf(panel), 1u);
  EXPECT_TRUE(panel.Update([](State& state) {
    EXPECT_EQ(state.platformType, 1u) << "the next change starts from the state that holds";
    return true;
  }));
}

TEST(SoftwarePanel, Layout_IsWhatAForeignViewerReads) {
  SoftwarePanel panel;
  ASSERT_TRUE(SetType(panel, 6));
  const closed::OwnedHandle mapping(
      OpenFileMappingW(FILE_MAP_READ, FALSE, L"Global\\NxVelora.SoftwarePanel.1"));
  ASSERT_TRUE(mapping);
  const auto* memory =
      static_cast<const uint8_t*>(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 285344));
  ASSERT_NE(memory, nullptr);
  for (int i = 0; i < 2; ++i) {  // once from each slot
    uint64_t sequence = 0;
    std::memcpy(&sequence, memory, sizeof sequence);
    EXPECT_EQ(sequence, panel.Sequence());
    uint32_t type = 0;
    std::memcpy(&type, memory + (sequence % 2 == 0 ? 64 : 142704), sizeof type);
    EXPECT_EQ(type, TypeOf(panel));
    ASSERT_TRUE(SetType(panel, 5));
  }
  UnmapViewOfFile(memory);
}

// A writer that dies between taking the mutex and publishing leaves the panel usable and as it was.
TEST(SoftwarePanel, Update_SurvivesAWriterThatDied) {
  SoftwarePanel panel;
  ASSERT_TRUE(SetType(panel, 1));
  const uint64_t before = panel.Sequence();
  const closed::OwnedHandle ready(CreateEventW(nullptr, TRUE, FALSE, L"closed_tests.holding"));
  const closedtests::Child child(L"hold");
  ASSERT_EQ(WaitForSingleObject(ready.get(), closedtests::kPatience), WAIT_OBJECT_0);
  EXPECT_EQ(TypeOf(panel), 1u) << "a reader does not wait for the writer";
  child.Kill();
  EXPECT_EQ(panel.Sequence(), before);
  EXPECT_EQ(TypeOf(panel), 1u);
  EXPECT_TRUE(SetType(panel, 4));
  EXPECT_EQ(panel.Sequence(), before + 1);
  EXPECT_EQ(TypeOf(panel), 4u);
}

// --- What the system refuses --------------------------------------------------------------------

namespace {

bool sessionToo = false;

bool IsRefused(const wchar_t* name) { return sessionToo || std::wcsstr(name, L"Global\\") == name; }

// Refuses shared memory that is visible beyond the session, as users without a right meet it, and
// with sessionToo any.
class RefusingSystem {
 public:
  RefusingSystem() : redirection_(GetModuleHandleW(nullptr), kFunctions) {}

 private:
  static void* open_;
  static void* create_;
  static const std::vector<virtualnotebook::ImportedFunction> kFunctions;

  static HANDLE WINAPI Open(DWORD access, BOOL inherit, LPCWSTR name) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return IsRefused(name)
               ? nullptr
               : reinterpret_cast<decltype(&OpenFileMappingW)>(open_)(access, inherit, name);
  }

  static HANDLE WINAPI Create(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protection,
                              DWORD high, DWORD low, LPCWSTR name) {
    SetLastError(ERROR_ACCESS_DENIED);
    return IsRefused(name) ? nullptr
                           : reinterpret_cast<decltype(&CreateFileMappingW)>(create_)(
                                 file, security, protection, high, low, name);
  }

  virtualnotebook::ImportRedirection redirection_;
};
void* RefusingSystem::open_ = nullptr;
void* RefusingSystem::create_ = nullptr;
const std::vector<virtualnotebook::ImportedFunction> RefusingSystem::kFunctions = {
    {"kernel32.dll", "OpenFileMappingW", "OpenFileMappingW", reinterpret_cast<void*>(&Open),
     &open_},
    {"kernel32.dll", "CreateFileMappingW", "CreateFileMappingW", reinterpret_cast<void*>(&Create),
     &create_}};

}  // namespace

TEST(SoftwarePanel, WithoutTheGlobalNameSpaceThePanelIsTheSessions) {
  SoftwarePanel global;
  ASSERT_TRUE(SetType(global, 5));
  sessionToo = false;
  const RefusingSystem system;
  SoftwarePanel one;
  EXPECT_TRUE(one.IsOn());
  EXPECT_EQ(one.Sequence(), 0u) << "it has just come on";
  EXPECT_EQ(TypeOf(one), 2u);
  SoftwarePanel two;
  EXPECT_TRUE(SetType(one, 3));
  EXPECT_EQ(two.Sequence(), 1u);
  EXPECT_EQ(TypeOf(two), 3u);
  EXPECT_EQ(TypeOf(global), 5u);
}

TEST(SoftwarePanel, WithoutSharedMemoryItDoesNothing) {
  sessionToo = true;
  const RefusingSystem system;
  SoftwarePanel panel;
  EXPECT_FALSE(panel.IsOn());
  EXPECT_FALSE(SetType(panel, 3));
  EXPECT_EQ(panel.Sequence(), 0u);
  EXPECT_EQ(TypeOf(panel), 2u);
}
