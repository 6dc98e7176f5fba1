// Names and numbers that several commands share.
#pragma once

#include <span>
#include <string>

#include "velora/VeloraCtlApi.h"

namespace veloractl {

struct Feature {
  FeatureType type;
  const char* name;     // as the commands have it
  const wchar_t* key;   // of its settings, below SOFTWARE\Norvex\Velora
  const wchar_t* flag;  // its value's name in the keys of the flags
};

// Those with flags and events, in the order of FeatureType.
std::span<const Feature> Features();
// Failure with kBadArguments for an unknown name.
const Feature& FeatureOf(const std::string& name);
std::string FeatureNames();  // "white-point, eye-protection, ..."

// "srgb", "p3", ..., or a number; Failure for any other.
ColorFieldMode ModeOf(const std::string& name);
std::string NameOfMode(ColorFieldMode mode);  // the number itself where there is no name
std::string ModeNames();

// Of UserDesignInfo::gamut: "srgb", "p3", "adobe", "bt2020", "ebu", "smpte".
int GamutOf(const std::string& name);
std::string NameOfGamut(int gamut);

std::string NameOfResult(ResultT result);  // "ResultFailed"
// Failure with kRefused unless the result is ResultOk: "SetColorField gave 16 (ResultIccError): a
// profile was changed".
void Expect(ResultT result, const std::string& call);

}  // namespace veloractl
