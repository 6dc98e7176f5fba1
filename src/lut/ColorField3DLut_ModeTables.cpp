#include "lut/ColorField3DLut.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <string_view>
#include <utility>

#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/ModeNames.h"
#include "frame/TextField.h"

namespace velora {
namespace {

// The bin files of a mode, by their source. Modes of one gamut share theirs. Mode 0 stands for no
// 3D LUT, and user modes go by their id: neither has a row.
struct ModeFiles {
  ColorFieldMode mode;
  const char* firmware;
  const char* golden;
};

constexpr char kSrgbFile[] = "sRGB.bin";
constexpr char kP3File[] = "P3.bin";
constexpr char kGoldenSrgbFile[] = "GoldensRGB.bin";
constexpr char kGoldenP3File[] = "GoldenP3.bin";

constexpr ModeFiles kModeFiles[] = {
    {SrgbMode, kSrgbFile, kGoldenSrgbFile},      {P3Mode, kP3File, kGoldenP3File},
    {WebMode, kSrgbFile, kGoldenSrgbFile},       {DigitalMode, kP3File, kGoldenP3File},
    {PhotoMode, kP3File, kGoldenP3File},         {DesignMode, kP3File, kGoldenP3File},
    {kEbookMode, "EBOOK.bin", "EBOOK.bin"},  // no golden name of its own
    {HdtvMode, kSrgbFile, kGoldenSrgbFile},      {DigitalD65Mode, kP3File, kGoldenP3File},
    {AdobeMode, "Adobe.bin", "GoldenAdobe.bin"},
};

constexpr char kGammaFile[] = "Gamma.bin";
constexpr char kGoldenGammaFile[] = "GoldensGamma.bin";

using IntPair = std::pair<const int, int>;

// Gamut to firmware LUT type.
constexpr IntPair kGamutLutTypes[] = {
    {0, 0}, {1, 1}, {2, 2}, {3, 1}, {4, 2},  {5, 2},
    {6, 2}, {7, 7}, {8, 1}, {9, 2}, {10, 4}, {-1, int{kNoLutType}},
};

// The gamuts that no registration can alter.
constexpr IntPair kFixedModeGamuts[] = {{0, 0}, {1, 1}, {2, 2}, {7, 7}, {10, 10}};

std::string DirectoryOr(const std::string& directory) {
  return directory.empty() ? kDataDir : directory;
}

}  // namespace

ColorField3DLut::ColorField3DLut()
    : gammaLutFile_(std::string(kDataDir) + kGammaFile),
      modeGamutTable_(std::begin(kFixedModeGamuts), std::end(kFixedModeGamuts)),
      gamutLutTypeTable_(std::begin(kGamutLutTypes), std::end(kGamutLutTypes)) {
  for (const ModeFiles& files : kModeFiles) {
    lutFileTable[files.mode] = std::string(kDataDir) + files.firmware;
  }
}

int ColorField3DLut::InitColorFieldThreeLutBaseInfo(const ColorFieldInitInfo& info) {
  constexpr FunctionLog log("ColorField3DLut::InitColorFieldThreeLutBaseInfo");
  try {
    const std::string_view directory = FieldText(info.threeLutBinFilePath);
    const std::string_view goldenFile = FieldText(info.goldenFilePath);
    log.Debug(L"threeLutBinFilePath:", directory);
    log.Debug(L"goldenFilePath:", goldenFile);
    threeLutBinFilePath = directory;
    goldenFilePath = goldenFile;
    return ResultOk;
  } catch (const std::exception& exception) {
    log.Error(L"SetColorFieldTempLutFilePath exception:", exception.what());
    return ResultFailed;
  }
}

int ColorField3DLut::InitColorFieldGammaInfo(const ColorFieldModeInfo& info) {
  constexpr FunctionLog log("ColorField3DLut::InitColorFieldGammaInfo");
  try {
    // Insertions on purpose: what a mode was registered with first stays.
    modeGammaTable_.insert({info.mode, info.gamma});
    modeTemperTable_.insert({info.mode, {info.temperR, info.temperG, info.temperB}});
    modeGamutTable_.insert({info.mode, info.gamut});
    modeFromGolden_.insert({info.mode, false});
    log.Debug(L"Init colorFiledMode info, mode: ", info.mode, L" gamma: ", info.gamma,
              L" Temper r g b: ", info.temperR, L", ", info.temperG, L", ", info.temperB,
              L" gamut: ", info.gamut);
    return ResultOk;
  } catch (const std::exception& exception) {
    log.Error(L"SetColorFieldGamma Info exception:", exception.what());
    return ResultFailed;
  }
}

// The only reader of threeLutBinFilePath: the directory given counts from a panel change on, and
// until then the bin files are those of the constructor.
void ColorField3DLut::SwitchLutFileTable(ColorFieldMode mode) {
  const bool fromGolden = modeFromGolden_[mode];
  const auto* files = std::ranges::find(kModeFiles, mode, &ModeFiles::mode);
  if (files == std::end(kModeFiles)) {
    return;
  }
  lutFileTable[mode] =
      DirectoryOr(threeLutBinFilePath) + (fromGolden ? files->golden : files->firmware);
}

void ColorField3DLut::SwitchGammaLutFile(bool golden) {
  gammaLutFile_ = DirectoryOr(gammaBinFilePath_) + (golden ? kGoldenGammaFile : kGammaFile);
}

}  // namespace velora
