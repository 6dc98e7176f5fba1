#include "veloractl/inspect/Edid.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "colormath/Matrix3x3.h"
#include "colormath/UserDesignMath.h"
#include "lut/LutBlock.h"
#include "veloractl/inspect/Inspect.h"

namespace veloractl {
namespace {

using velora::ChromaticityGamut;
using velora::LcdEdidParse;

// Offsets in the base block (VESA E-EDID 1.4, section 3).
constexpr size_t kProduct = 10;
constexpr size_t kSerial = 12;
constexpr size_t kWeek = 16;
constexpr size_t kYear = 17;
constexpr size_t kVersion = 18;
constexpr size_t kGamma = 23;
constexpr size_t kExtensionCount = 126;

constexpr uint8_t kNoGamma = 255;
constexpr uint8_t kModelYear = 255;  // as week: the year is the model's
constexpr uint8_t kLastWeek = 53;

// The library reads no EDID of this size or more.
constexpr size_t kEdidSizeLimit = 2560;

constexpr double kSmallestGamut = 0.03;  // of xy: less than a third of sRGB's triangle
constexpr double kTypicalGamma[] = {1.8, 2.6};

constexpr const char* kGamutNames[] = {"sRGB", "P3", "Adobe RGB", "BT.2020", "EBU", "SMPTE-C"};

struct Xy {
  double x;
  double y;
};

std::string TextOf(Xy xy) {
  return NumberText(Rounded(xy.x, 4)) + ", " + NumberText(Rounded(xy.y, 4));
}

// Twice the area of a triangle; positive when it goes round against the clock.
double Turn(Xy a, Xy b, Xy c) { return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x); }

bool Encloses(Xy red, Xy green, Xy blue, Xy point) {
  return Turn(red, green, point) > 0 && Turn(green, blue, point) > 0 && Turn(blue, red, point) > 0;
}

void CheckPrimaries(const LcdEdidParse& panel, Findings& findings) {
  constexpr char kNoDesign[] =
      "User modes cannot be calculated for this panel; presets are not affected. Report the "
      "panel's "
      "EDID.";
  constexpr char kWrongColours[] =
      "The library takes them as they are: user modes come out wrong, presets are not affected. "
      "Report the panel's EDID.";
  const Xy red = {panel.GetRedX(), panel.GetRedY()};
  const Xy green = {panel.GetGreenX(), panel.GetGreenY()};
  const Xy blue = {panel.GetBlueX(), panel.GetBlueY()};
  const Xy white = {panel.GetWhiteX(), panel.GetWhiteY()};
  const std::string found = "red " + TextOf(red) + "; green " + TextOf(green) + "; blue " +
                            TextOf(blue) + "; white " + TextOf(white);
  for (const Xy& xy : {red, green, blue, white}) {
    if (xy.x <= 0 || xy.y <= 0) {
      findings.Warn("primaries", "a coordinate is zero: " + found, kNoDesign);
      return;
    }
    if (xy.x + xy.y > 1) {
      findings.Warn("primaries", "x and y add up to more than 1: " + found, kWrongColours);
      return;
    }
  }
  const double area = Turn(red, green, blue) / 2;
  if (!(red.x > green.x && red.x > blue.x && green.y > red.y && green.y > blue.y)) {
    findings.Warn("primaries", "red, green and blue look swapped: " + found, kWrongColours);
  } else if (area < kSmallestGamut) {
    findings.Warn("primaries", "the gamut is implausibly small: " + found, kWrongColours);
  } else if (!Encloses(red, green, blue, white)) {
    findings.Warn("white point", "it lies outside the primaries: " + found, kWrongColours);
  } else {
    findings.Holds("primaries", found);
  }
}

void CheckDates(ByteSpan edid, Findings& findings) {
  const ByteSpan serial = edid.subspan(kSerial, 4);
  if (std::ranges::all_of(serial, [](uint8_t byte) { return byte == 0; })) {
    findings.Warn("serial number", "00000000",
                  "All units of this model look alike: a replaced panel is not noticed when week "
                  "and year agree.");
  } else {
    findings.Holds("serial number", HexOf(serial));
  }
  const uint8_t week = edid[kWeek];
  const std::string asWeek =
      "the library takes it for week 0, so that only a block of week 00 "
      "is of this panel";
  if (week == kModelYear) {
    findings.Warn("week", "255: the year is the model's", "As it stands, " + asWeek + ".");
  } else if (week > kLastWeek) {
    findings.Warn("week", std::to_string(week) + " is no week", "As it stands, " + asWeek + ".");
  } else {
    findings.Holds("week", std::to_string(week));
  }
}

void CheckGamma(uint8_t byte, Findings& findings) {
  const double gamma = (byte + 100) / 100.0;
  if (byte == kNoGamma) {
    findings.Warn("gamma", "byte 255: an extension block tells it",
                  "The library takes it for 3.55, and user modes come out much too dark or light. "
                  "Report the panel's EDID.");
  } else if (gamma < kTypicalGamma[0] || gamma > kTypicalGamma[1]) {
    findings.Warn("gamma", NumberText(gamma),
                  "Unusual for a panel; user modes are calculated with it as it is.");
  } else {
    findings.Holds("gamma", NumberText(gamma));
  }
}

void CheckChecksums(ByteSpan edid, Findings& findings) {
  if (edid.size() < kEdidBlockSize) {
    findings.Warn("length", OutOf(edid.size(), kEdidBlockSize),
                  "The library needs 35 bytes; other programs refuse such an EDID. Read it again.");
    return;
  }
  const size_t announced = kEdidBlockSize * (size_t{edid[kExtensionCount]} + 1);
  if (edid.size() != announced) {
    findings.Warn("length",
                  ByteCount(edid.size()) + ", the base block announces " + ByteCount(announced),
                  "The library reads the base block only: nothing to do.");
  } else {
    findings.Holds("length", ByteCount(edid.size()));
  }
  for (size_t at = 0; at + kEdidBlockSize <= edid.size(); at += kEdidBlockSize) {
    const ByteSpan block = edid.subspan(at, kEdidBlockSize);
    const std::string name =
        at == 0 ? "checksum" : "checksum of extension " + std::to_string(at / kEdidBlockSize);
    if ((std::accumulate(block.begin(), block.end(), 0U) & 0xFF) == 0) {
      findings.Holds(name, "the bytes add up to 0");
    } else {
      findings.Warn(name, "the bytes do not add up to 0",
                    "The library does not test it, so that a damaged EDID gives wrong colours. "
                    "Compare the fields with the panel's data sheet; a loose cable does this.");
    }
  }
}

}  // namespace

std::optional<std::vector<uint8_t>> BytesOfHexText(ByteSpan text) {
  std::vector<uint8_t> bytes;
  int high = -1;
  for (const uint8_t c : text) {
    int digit = -1;
    if (c >= '0' && c <= '9') {
      digit = c - '0';
    } else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') {
      digit = (c | 0x20) - 'a' + 10;
    } else if (c != ' ' && c != '\t' && c != '\r' && c != '\n') {
      return std::nullopt;
    }
    if (digit < 0) {
      if (high >= 0) return std::nullopt;  // a byte is not torn apart
    } else if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<uint8_t>(high << 4 | digit));
      high = -1;
    }
  }
  if (high >= 0 || bytes.empty()) {
    return std::nullopt;
  }
  return bytes;
}

std::optional<LcdEdidParse> ParseEdid(ByteSpan edid) {
  LcdEdidParse panel;
  if (edid.size() >= kEdidSizeLimit ||
      !panel.ParseEdidData(edid.data(), static_cast<uint32_t>(edid.size()))) {
    return std::nullopt;
  }
  return panel;
}

ChromaticityGamut GamutOf(const LcdEdidParse& panel) {
  return {panel.GetWhiteX(), panel.GetWhiteY(), panel.GetRedX(),  panel.GetRedY(),
          panel.GetGreenX(), panel.GetGreenY(), panel.GetBlueX(), panel.GetBlueY()};
}

void CheckEdid(ByteSpan edid, Findings& findings) {
  const bool hasHead = edid.size() >= kEdidHead.size() &&
                       std::ranges::equal(edid.first(kEdidHead.size()), kEdidHead);
  if (hasHead) {
    findings.Holds("head", "00 FF FF FF FF FF FF 00");
  } else {
    findings.Warn("head", HexOf(edid.first(std::min(edid.size(), kEdidHead.size()))),
                  "This is hardly an EDID, but the library would not notice.");
  }
  CheckChecksums(edid, findings);
  const auto panel = ParseEdid(edid);
  findings.Expect(panel.has_value(), "vendor",
                  panel ? AsciiOf(panel->GetVendor())
                  : edid.size() < LcdEdidParse::kMinLength
                      ? OutOf(edid.size(), LcdEdidParse::kMinLength)
                  : edid.size() >= kEdidSizeLimit
                      ? ByteCount(edid.size()) + ", the library reads fewer than 2560"
                      : "bytes 8 and 9 are no three letters",
                  "The library cannot tell the panel: it takes the golden file's data for every "
                  "mode. Read the EDID again; if it stays so, the panel is to be replaced.");
  if (panel) {
    CheckDates(edid, findings);
    CheckGamma(edid[kGamma], findings);
    CheckPrimaries(*panel, findings);
  }
}

Json EdidFields(ByteSpan edid) {
  const auto panel = ParseEdid(edid);
  if (!panel) {
    return Json::array();
  }
  const auto pair = [](double x, double y) {
    return NumberText(Rounded(x, 4)) + ", " + NumberText(Rounded(y, 4));
  };
  Json fields = {Field("vendor", 8, 2, AsciiOf(panel->GetVendor())),
                 Field("product", kProduct, 2,
                       HexOf(std::array<uint8_t, 2>{edid[kProduct + 1], edid[kProduct]})),
                 Field("serial number", kSerial, 4, AsciiOf(panel->GetSerialNumber())),
                 Field("week", kWeek, 1, panel->GetWeek()),
                 Field("year", kYear, 1, panel->GetYear()),
                 Field("version", kVersion, 2,
                       std::to_string(edid[kVersion]) + "." + std::to_string(edid[kVersion + 1])),
                 Field("gamma", kGamma, 1, panel->GetGamma()),
                 Field("red", 27, 2, pair(panel->GetRedX(), panel->GetRedY())),
                 Field("green", 29, 2, pair(panel->GetGreenX(), panel->GetGreenY())),
                 Field("blue", 31, 2, pair(panel->GetBlueX(), panel->GetBlueY())),
                 Field("white", 33, 2, pair(panel->GetWhiteX(), panel->GetWhiteY()))};
  if (edid.size() >= kEdidBlockSize) {
    fields.push_back(Field("extensions", kExtensionCount, 1, edid[kExtensionCount]));
  }
  return fields;
}

std::optional<std::array<double, 9>> MatrixOf(const ChromaticityGamut& gamut) {
  std::array<double, 9> matrix{};
  velora::CalcColorSpaceConversionRgbToXyz(gamut, matrix.data());
  const bool isUsable = std::fabs(velora::Determinant(matrix.data())) >= velora::kDesignZero &&
                        std::ranges::all_of(matrix, [](double x) { return std::isfinite(x); });
  return isUsable ? std::optional(matrix) : std::nullopt;
}

std::optional<Clipping> ClippingOf(const ChromaticityGamut& target,
                                   const ChromaticityGamut& panel) {
  ChromaticityGamut onPanel = target;
  onPanel.whiteX = panel.whiteX;
  onPanel.whiteY = panel.whiteY;
  const auto targetToXyz = MatrixOf(onPanel);
  const auto panelToXyz = MatrixOf(panel);
  if (!targetToXyz || !panelToXyz) {
    return std::nullopt;
  }
  double xyzToPanel[9] = {};
  velora::InvertDesignMatrix(panelToXyz->data(), xyzToPanel);
  double targetToPanel[9];
  velora::MatMultiply(xyzToPanel, targetToXyz->data(), targetToPanel);

  constexpr double kTolerance = 1e-6;  // of rounding: white comes out as 1 within it
  constexpr double kUsualGamma = 2.2;
  std::array<double, velora::kGridSize> linear;
  for (size_t point = 0; point < linear.size(); ++point) {
    linear[point] = std::pow(static_cast<double>(point) / (velora::kGridSize - 1), kUsualGamma);
  }
  Clipping clipping{};
  for (size_t entry = 0; entry < velora::k3DEntries; ++entry) {
    const double rgb[3] = {linear[entry / 289], linear[entry / 17 % 17], linear[entry % 17]};
    double shown[3];
    velora::MatVecMultiply(targetToPanel, rgb, shown);
    const auto [low, high] = std::ranges::minmax(shown);
    clipping.entries += low < -kTolerance || high > 1 + kTolerance;
    clipping.mostAbove = std::max(clipping.mostAbove, high > 1 + kTolerance ? high - 1 : 0);
    clipping.mostBelow = std::max(clipping.mostBelow, low < -kTolerance ? -low : 0);
  }
  return clipping;
}

Json PanelColours(const LcdEdidParse& panel) {
  const ChromaticityGamut gamut = GamutOf(panel);
  Json out;
  const auto matrix = MatrixOf(gamut);
  Json rows = Json::array();
  for (size_t row = 0; matrix && row < 3; ++row) {
    rows.push_back({{"of", std::string(1, "XYZ"[row])},
                    {"red", Rounded((*matrix)[3 * row], 6)},
                    {"green", Rounded((*matrix)[3 * row + 1], 6)},
                    {"blue", Rounded((*matrix)[3 * row + 2], 6)}});
  }
  out["matrix"] = matrix ? rows : Json("the primaries give none");
  Json clipped = Json::array();
  for (int number = 1; number <= velora::kTargetGamutCount; ++number) {
    const auto clipping = ClippingOf(*velora::FindTargetGamut(number), gamut);
    Json row = {{"gamut", number}, {"name", kGamutNames[number - 1]}};
    if (clipping) {
      const double part = static_cast<double>(clipping->entries) / velora::k3DEntries;
      row["clipped entries"] = clipping->entries;
      row["per cent"] = Rounded(100 * part, 1);
      row["most above"] = Rounded(clipping->mostAbove, 4);
      row["most below"] = Rounded(clipping->mostBelow, 4);
    } else {
      row["clipped entries"] = nullptr;
    }
    clipped.push_back(row);
  }
  out["user LUT clipping"] = clipped;
  return out;
}

void InspectEdid(ByteSpan file, Inspection& out) {
  out.report["what"] = "What a panel says about itself.";
  const auto text = BytesOfHexText(file);
  const ByteSpan edid = text ? ByteSpan(*text) : file;
  out.report["fields"] = EdidFields(edid);
  CheckEdid(edid, out.findings);
  if (const auto panel = ParseEdid(edid)) {
    out.report["colours"] = PanelColours(*panel);
  }
}

}  // namespace veloractl
