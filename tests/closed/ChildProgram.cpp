// The other process of the tests. A client of the kits in its own right: it knows only their
// headers and import libraries.
//
//   log PATH TAG COUNT        appends COUNT lines "TAG number ..." to a LogFile
//   lcd TAG COUNT             the same through LcdLogMessage
//   panel VALUE COUNT         sets COUNT 3D LUTs whose values all equal VALUE
//   hold                      waits, with the panel's writer mutex in hand, to be killed
#include <windows.h>

#include <string>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "VeloraPlatform/SoftwarePanel.h"
#include "VeloraPlatform/VeloraPlatform.h"
#include "common/LogFile.h"

namespace {

int AppendToFile(const wchar_t* path, const std::string& tag, int count) {
  const closed::LogFile file(path);
  for (int i = 0; i < count; ++i) {
    file.Append(tag + " " + std::to_string(i) + " " + std::string(80, 'x'));
  }
  return 0;
}

int AppendToLcdLog(const std::wstring& tag, int count) {
  for (int i = 0; i < count; ++i) {
    LcdLogMessage(1, (tag + L" " + std::to_wstring(i)).c_str());
  }
  return 0;
}

int SetLuts(double value, int count) {
  const std::vector<double> lut(softwarepanel::kLut3DEntries * 3, value);
  for (int i = 0; i < count; ++i) {
    if (PlatformSet3DLut(lut.data(), softwarepanel::kLut3DEntries) != 0) {
      return 1;
    }
  }
  return 0;
}

int HoldPanel() {
  softwarepanel::SoftwarePanel panel;
  panel.Update([](softwarepanel::State& state) {
    state.platformType = 99;  // half done: never published
    HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, L"closed_tests.holding");
    SetEvent(ready);
    Sleep(INFINITE);
    return true;
  });
  return 1;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  const std::wstring role = argc > 1 ? argv[1] : L"";
  if (role == L"log" && argc == 5) {
    return AppendToFile(argv[2], CoreKit::WStringToString(argv[3]), std::stoi(argv[4]));
  }
  if (role == L"lcd" && argc == 4) {
    return AppendToLcdLog(argv[2], std::stoi(argv[3]));
  }
  if (role == L"panel" && argc == 4) {
    return SetLuts(std::stod(argv[2]), std::stoi(argv[3]));
  }
  if (role == L"hold") {
    return HoldPanel();
  }
  return 2;
}
