#include "veloractl/Features.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "veloractl/Report.h"

namespace veloractl {
namespace {

constexpr Feature kFeatures[] = {
    {FEATURE_TYPE_WHITEPOINT, "white-point", L"WhitePoint", L"WhitePoint"},
    {FEATURE_TYPE_EYE_PROTECT, "eye-protection", L"EyeProtect", L"EyeProtect"},
    {FEATURE_TYPE_TEMPERATURE, "temperature", L"ColorTemperature", L"Temperature"},
    {FEATURE_TYPE_COLOR_FIELD, "color-mode", L"ColorField", L"ColorField"},
    {FEATURE_TYPE_NATURAL_COLOR, "natural-color", L"NaturalColor", L"NaturalColor"},
    {FEATURE_TYPE_DP_IN_OUT, "dp-in-out", L"DpInOut", L"DpInOut"},
    {FEATURE_TYPE_ESD, "esd", L"Esd", L"Esd"},
};

struct Named {
  int number;
  const char* name;
};

constexpr Named kModes[] = {
    {0, "none"},
    {SrgbMode, "srgb"},
    {P3Mode, "p3"},
    {WebMode, "web"},
    {DigitalMode, "digital"},
    {PhotoMode, "photo"},
    {DesignMode, "design"},
    {7, "ebook"},
    {HdtvMode, "hdtv"},
    {DigitalD65Mode, "digital-d65"},
    {AdobeMode, "adobe"},
    {USRDESIGN_MODE, "user"},
};

constexpr Named kGamuts[] = {{1, "srgb"},   {2, "p3"},  {3, "adobe"},
                             {4, "bt2020"}, {5, "ebu"}, {6, "smpte"}};

struct ResultText {
  ResultT result;
  const char* name;
  const char* meaning;
};
constexpr ResultText kResults[] = {
    {ResultOk, "ResultOk", "done"},
    {ResultFailed, "ResultFailed", "the system or the registry refused, or something is missing"},
    {ResultNotSet, "ResultNotSet", "no usable reset mode is stored"},
    {ResultOutOfRange, "ResultOutOfRange", "the value is out of range, nothing was stored"},
    {ResultKeyNotFound, "ResultKeyNotFound", "a registry key could not be opened"},
    {ResultCreateFailed, "ResultCreateFailed", "the event could not be made"},
    {ResultAlreadyInit, "ResultAlreadyInit", "the event is open already"},
    {ResultNotCreated, "ResultNotCreated", "the event is not open"},
    {ResultTimeout, "ResultTimeout", "nobody rang"},
    {ResultFileNotFound, "ResultFileNotFound", "the ICC profile does not exist"},
    {ResultIccError, "ResultIccError", "the ICC profile was changed or could not be installed"},
    {ResultColorFieldError, "ResultColorFieldError", "the mode could not be applied or stored"},
};

template <size_t size>
std::string ListOf(const Named (&rows)[size]) {
  std::string list;
  for (const Named& row : rows) {
    list += (list.empty() ? "" : ", ") + std::string(row.name);
  }
  return list;
}

}  // namespace

std::span<const Feature> Features() { return kFeatures; }

const Feature& FeatureOf(const std::string& name) {
  const auto* const found = std::ranges::find(kFeatures, std::string_view(name), &Feature::name);
  if (found == std::end(kFeatures)) {
    throw Failure(kBadArguments,
                  "there is no feature \"" + name + "\"; there are " + FeatureNames());
  }
  return *found;
}

std::string FeatureNames() {
  std::string list;
  for (const Feature& feature : kFeatures) {
    list += (list.empty() ? "" : ", ") + std::string(feature.name);
  }
  return list;
}

ColorFieldMode ModeOf(const std::string& name) {
  const auto* const found = std::ranges::find(kModes, std::string_view(name), &Named::name);
  if (found != std::end(kModes)) {
    return found->number;
  }
  int number = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, number);
  if (error != std::errc() || stop != end || number < 0 || number > USRDESIGN_MODE) {
    throw Failure(kBadArguments, "there is no mode \"" + name + "\"; there are " + ModeNames() +
                                     ", and their numbers 0 to 11");
  }
  return number;
}

std::string NameOfMode(ColorFieldMode mode) {
  const auto* const found = std::ranges::find(kModes, mode, &Named::number);
  return found == std::end(kModes) ? std::to_string(mode) : found->name;
}

std::string ModeNames() { return ListOf(kModes); }

int GamutOf(const std::string& name) {
  const auto* const found = std::ranges::find(kGamuts, std::string_view(name), &Named::name);
  if (found == std::end(kGamuts)) {
    throw Failure(kBadArguments,
                  "there is no gamut \"" + name + "\"; there are " + ListOf(kGamuts));
  }
  return found->number;
}

std::string NameOfGamut(int gamut) {
  const auto* const found = std::ranges::find(kGamuts, gamut, &Named::number);
  return found == std::end(kGamuts) ? std::to_string(gamut) : found->name;
}

std::string NameOfResult(ResultT result) {
  const auto* const found = std::ranges::find(kResults, result, &ResultText::result);
  return found == std::end(kResults) ? std::to_string(result) : found->name;
}

void Expect(ResultT result, const std::string& call) {
  if (result == ResultOk) {
    return;
  }
  const auto* const found = std::ranges::find(kResults, result, &ResultText::result);
  throw Failure(kRefused, call + " gave " + std::to_string(result) +
                              (found == std::end(kResults)
                                   ? ""
                                   : " (" + std::string(found->name) + "): " + found->meaning));
}

}  // namespace veloractl
