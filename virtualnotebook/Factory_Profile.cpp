// Preset ICC profiles.
#include "virtualnotebook/Factory.h"

#include <lcms2.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace virtualnotebook {
namespace {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
using ToneCurve = std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)>;

struct ProfileSource {
  int gamut;
  const char* name;
  const wchar_t* description;
  cmsCIExyYTRIPLE primaries;
  bool srgbCurve;        // otherwise the gamma of Adobe RGB, 563 / 256
  const char* realPath;  // of Debian's package icc-profiles-free; Wine's Z: is the root
};
constexpr ProfileSource kSources[] = {
    {kSrgbLut,
     "NVX-sRGB.icc",
     L"NVX sRGB",
     {{0.640, 0.330, 1}, {0.300, 0.600, 1}, {0.150, 0.060, 1}},
     true,
     "Z:\\usr\\share\\color\\icc\\sRGB.icc"},
    {kP3Lut,
     "NVX-P3.icc",
     L"NVX P3",
     {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}},
     true,
     ""},
    {kAdobeLut,
     "NVX-Adobe.icc",
     L"NVX Adobe",
     {{0.640, 0.330, 1}, {0.210, 0.710, 1}, {0.150, 0.060, 1}},
     false,
     "Z:\\usr\\share\\color\\icc\\compatibleWithAdobeRGB1998.icc"},
};

const ProfileSource& SourceOf(int gamut) {
  for (const ProfileSource& source : kSources) {
    if (source.gamut == gamut) {
      return source;
    }
  }
  throw std::invalid_argument("there is no preset profile for gamut " + std::to_string(gamut));
}

// IEC 61966-2-1 as lcms2's parametric type 4: (a x + b)^g for x >= d, else c x.
ToneCurve CurveOf(const ProfileSource& source) {
  constexpr cmsFloat64Number kSrgb[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  return {source.srgbCurve ? cmsBuildParametricToneCurve(nullptr, 4, kSrgb)
                           : cmsBuildGamma(nullptr, 563.0 / 256),
          cmsFreeToneCurve};
}

void WriteText(cmsHPROFILE profile, cmsTagSignature tag, const wchar_t* text) {
  cmsMLU* mlu = cmsMLUalloc(nullptr, 1);
  const bool written =
      cmsMLUsetWide(mlu, "en", "US", text) != 0 && cmsWriteTag(profile, tag, mlu) != 0;
  cmsMLUfree(mlu);
  if (!written) {
    throw std::runtime_error("lcms2 refused a profile's text");
  }
}

// Bytes 24 to 35 of the header are the time of making, 84 to 99 the profile's id, an MD5 (zero: not
// calculated). A fixed time and no id: the same bytes on every run.
void FixTime(Bytes& profile) {
  constexpr uint8_t kTime[12] = {0x07, 0xE8, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};  // 2024-01-01
  std::copy(std::begin(kTime), std::end(kTime), profile.begin() + 24);
  std::fill_n(profile.begin() + 84, 16, uint8_t{0});
}

}  // namespace

std::string PresetProfileName(int gamut) { return SourceOf(gamut).name; }

Bytes MakePresetProfile(int gamut) {
  const ProfileSource& source = SourceOf(gamut);
  constexpr cmsCIExyY kWhite = {0.3127, 0.3290, 1};
  const ToneCurve curve = CurveOf(source);
  cmsToneCurve* const curves[3] = {curve.get(), curve.get(), curve.get()};
  const Profile profile{cmsCreateRGBProfile(&kWhite, &source.primaries, curves), cmsCloseProfile};
  if (!profile) {
    throw std::runtime_error("lcms2 made no profile");
  }
  WriteText(profile.get(), cmsSigProfileDescriptionTag, source.description);
  WriteText(profile.get(), cmsSigCopyrightTag, L"No copyright, use freely");

  cmsUInt32Number size = 0;
  if (cmsSaveProfileToMem(profile.get(), nullptr, &size) == 0) {
    throw std::runtime_error("lcms2 cannot size a profile");
  }
  Bytes bytes(size);
  if (cmsSaveProfileToMem(profile.get(), bytes.data(), &size) == 0) {
    throw std::runtime_error("lcms2 cannot save a profile");
  }
  FixTime(bytes);
  return bytes;
}

Bytes RealPresetProfile(int gamut) {
  std::ifstream file(SourceOf(gamut).realPath, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace virtualnotebook
