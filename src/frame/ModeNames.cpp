#include "frame/ModeNames.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace velora {
namespace {

struct Row {
  ColorFieldMode mode;
  const wchar_t* name;
};

constexpr Row kModeNames[] = {
    {SrgbMode, L"SrgbMode"},   {P3Mode, L"P3Mode"},
    {WebMode, L"WebMode"},     {DigitalMode, L"DigitalMode"},
    {PhotoMode, L"PhotoMode"}, {DesignMode, L"DesignMode"},
    {HdtvMode, L"HdtvMode"},   {DigitalD65Mode, L"DigitalD65Mode"},
    {AdobeMode, L"AdobeMode"},
};

}  // namespace

const wchar_t* ModeName(ColorFieldMode mode) {
  const auto row = std::ranges::find(kModeNames, mode, &Row::mode);
  if (row == std::end(kModeNames)) {
    // Hosts know the text of a map's look-up; std::map words it otherwise in each C++ library.
    throw std::out_of_range("invalid map<K, T> key");
  }
  return row->name;
}

}  // namespace velora
