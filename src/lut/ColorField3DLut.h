#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "frame/Log.h"
#include "panel/BiosControlHeader.h"
#include "panel/BiosHeaderV2.h"
#include "panel/LcdEdidParse.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Bytes of a table, a file or a block; operations replace the contents in place.
using LutBuffer = std::string;

inline const uint8_t* BytesOf(const LutBuffer& buffer) {
  return reinterpret_cast<const uint8_t*>(buffer.data());
}

// A decoded LUT as LutBlock.h describes it.
using DecodedLut = std::unique_ptr<double[]>;

// The LUT engine: it turns factory data into what the display pipeline takes. Each instance has
// tables of its own; an instance must be used from one thread at a time.
//
// Operations give true for success unless they say otherwise. Sources by topic:
//   ColorField3DLut_ModeTables.cpp     the fixed tables, registration, which file a mode reads
//   ColorField3DLut_PanelIdentity.cpp  the panel's EDID, compared with a block's header
//   ColorField3DLut_Extraction.cpp     firmware table or golden file to bin file
//   ColorField3DLut_Blocks.cpp         the bytes on that way: a table's block, its proof and values
//   ColorField3DLut_DataFiles.cpp      reading and writing of data files
//   ColorField3DLut_3DApply.cpp        3D LUTs: bin file, or a user's file, to panel
//   ColorField3DLut_GammaApply.cpp     the same for gamma LUTs
//   ColorField3DLut_WhitePoint.cpp     a fine-tuned white point on the way to the panel
//   ColorField3DLut_UserFiles.cpp      writing the files of user modes
//   ColorField3DLut_Ebook.cpp          the e-book mode's LUT, composed with the panel's own
class ColorField3DLut {
 public:
  ColorField3DLut();
  ColorField3DLut(const ColorField3DLut&) = delete;
  ColorField3DLut& operator=(const ColorField3DLut&) = delete;

  // --- Mode tables ---

  // Takes threeLutBinFilePath and goldenFilePath of the record. 0, or 1 after an exception.
  int InitColorFieldThreeLutBaseInfo(const ColorFieldInitInfo& info);

  // Takes mode, gamma, gamut and the gains; a mode that is known keeps its values.
  // 0, or 1 after an exception.
  int InitColorFieldGammaInfo(const ColorFieldModeInfo& info);

  // Points a mode, or the gamma LUT, at the file of its present source (firmware or golden file).
  void SwitchLutFileTable(ColorFieldMode mode);
  void SwitchGammaLutFile(bool golden);

  // --- Panel identity ---

  // Reads the panel's EDID, once; true when it is available.
  bool GetLcdEdidData();
  std::string GetEdidDataPath();
  std::string GetPnpDeviceID();
  std::wstring GetLCDNameByWMI();
  bool HasMultipleMonitors();

  // The opposite of what the names say: 0 when the panel is the one of biosHeaderV2_, 1 when it is
  // another or that can't be told.
  uint8_t IsLcdDataValid();
  uint8_t IsLcdChanged(ColorFieldMode mode);
  uint8_t IsLcdChangedGamma();

  void GetVendor(char* buffer, int length);
  LcdEdidParse GetEdidCopy();

  // --- Extraction ---

  bool GetBiosLutDataBlockSize(unsigned& size);
  bool ReadBiosLutDataBlock(LutBuffer& buffer);
  bool GetSourceDataBlock(ColorFieldMode mode, LutBuffer& buffer);
  bool GetSourceDataBlockGamma(LutBuffer& buffer);
  std::string GetFullGoldenFilePath();
  void PadFirmwarePrefix(LutBuffer& buffer);
  bool GetOneLutDat3D(ColorFieldMode mode, LutBuffer& buffer);
  bool GetOneLutDatGamma(LutBuffer& buffer);
  bool OneLutTypeIsValid(ColorFieldMode mode, const uint8_t* data, size_t length);
  bool OneLutTypeIsValidGamma(const uint8_t* data, size_t length);
  bool IsLutDataValid3D(const LutBuffer& buffer);
  bool ParseLutData(ColorFieldMode mode, const uint8_t* data, size_t length, double* out);
  bool GetBiosLutData3D(ColorFieldMode mode, double* out);
  bool GetGoldenFileLutData3D(ColorFieldMode mode, double* out);
  bool UpdateThreeLutBinFile3D(ColorFieldMode mode);
  bool UpdateGammaLutBinFile();
  bool ReadBios3DLutData(ColorFieldMode mode);

  // --- Data files ---

  bool Read3DLutDataFormFile(const std::string& path, size_t minimum, LutBuffer& buffer);
  bool Get3DLutDataFormFileByFieldMode(ColorFieldMode mode, LutBuffer& buffer);
  bool ReadGammaLutDataFile(LutBuffer& buffer);
  bool CreateLutDataFile3D(ColorFieldMode mode, const LutBuffer& buffer);
  bool CreateLutDataFileGamma(const LutBuffer& buffer);
  bool IsThreeLutBinFileExist(ColorFieldMode mode);
  bool IsGammaLutBinFileExist();

  // 1 when the bin file must be rebuilt.
  uint8_t IsThreeLutBinFileNeedUpdate(ColorFieldMode mode);
  uint8_t IsGammaLutBinFileNeedUpdate();

  // --- 3D apply ---

  // Hands the mode's 3D LUT to the platform; mode 0 takes the LUT out of the pipeline.
  bool SetDisplayerBy3DLut(ColorFieldMode mode);
  bool Sync3DLutDataTable(ColorFieldMode mode);
  bool ParseOneLutDataFile3D(ColorFieldMode mode, const uint8_t* data, size_t length);

  // A user mode's LUT, composed with the firmware's base LUT while the panel is the factory's, else
  // as it is. reload drops what is cached of the id first.
  bool SetDisplayerByUser3DLut(const std::string& id, bool reload);
  bool Get3DLutDataFromBin(const std::string& id);
  bool ParseUserLut3D(const std::string& id, const uint8_t* data, size_t length);

  // False for null, and for a LUT whose white corner has a component below 1e-16.
  bool IsThreeDLutDataValid(const double* lut);

  // --- Gamma apply ---

  // Hands the mode's gamma LUT, with its fine-tuned white point, to the platform.
  bool SetDisplayerByGammaLut(ColorFieldMode mode);
  bool SyncGammaLutDataTable(ColorFieldMode mode);
  bool ParseOneLutDataFileGamma(ColorFieldMode mode, const uint8_t* data, size_t length);

  // The same for a user mode; reload drops what is cached of the id first.
  bool SetDisplayerByUserGammaLut(const std::string& id, bool reload);
  bool GetGammaLutDataFromBin(const std::string& id);
  bool ParseUserLutGamma(const std::string& id, const uint8_t* data, size_t length);

  // False for null, and for a LUT whose last entry has a component below 1e-16.
  bool IsGammaLutDataValid(const double* lut);

  // The decoded LUT of the record's mode, or of its id for USRDESIGN_MODE; null without one. Only a
  // preset mode's is loaded for it.
  double* FindGammalutByMode(const WhitePointFineTueInfo& record);

  // --- White point ---

  // What is stored; gains of 0 where nothing is, or can't be read.
  WhitePointFineTueInfo GetPresetModeWhitePoint(ColorFieldMode mode);
  WhitePointFineTueInfo GetUsrModeWhitePoint(const std::string& id);

  bool IsWhitePointValueValid(const WhitePointFineTueInfo& record);

  // out = in with the record's gains. Gains out of range become 1, in the record and in the store.
  bool FusionGammaLut(const double* in, double* out, WhitePointFineTueInfo& record);

  // Hands the mode's gamma LUT with the record's gains to the platform. 0, 1, or the platform's
  // result.
  int EditGammaLutByWhitePoint(WhitePointFineTueInfo& record);

  // --- User files ---

  // Write a LUT into the user's temporary directory, which must exist; the path, empty on failure.
  std::string SaveUser3DLutBin(const double* lut, const std::string& id);
  std::string SaveUserGammaLutBin(const double* lut, const std::string& id);

  // count: k3DEntries; with any other the header is a gamma LUT's.
  bool CreateUserBinFile(const std::string& path, const double* lut, int count);

  // Kinds of user files.
  enum : int { UserLut3D = 1, UserLutGamma = 3 };
  // head: length zeroed bytes, at least kBlockHeaderSize.
  bool CreateUserLutHead(char* head, int type, int length);
  bool WriteLutDataToBin(const std::string& path, const double* lut, int count);
  bool Sha256UserLut(const std::string& path, int count);

  // --- E-book ---

  // True when a fused LUT was written.
  bool FusionEbookProc(ColorFieldMode mode);

  // second applied to first, or null without memory.
  DecodedLut FusionLutData3D(const double* first, const double* second);

  // Overwrites the payload of "EBOOK.bin", its hash and its fused mark.
  bool CreateThreeLutBinFile3D(const double* lut);
  void RehashEbookBin(const std::string& path);

 private:
  // IsLcdDataValid for IsLcdChanged and IsLcdChangedGamma, with a line of the caller's.
  uint8_t ComparePanel(const FunctionLog& log);

  // The two sources of blocks, each as a whole firmware table. Failures of the firmware are logged
  // for the caller, at its level.
  bool ReadFirmwareTable(LutBuffer& buffer, const FunctionLog& log, LogLevel level);
  bool ReadGoldenTable(LutBuffer& buffer);

  // A whole table's block of the mode, proved and decoded.
  bool DecodeBlockOfTable(ColorFieldMode mode, LutBuffer& buffer, double* out,
                          const FunctionLog& log);

  static void DropCachedLut(std::map<std::string, DecodedLut>& table, const std::string& id);

  LcdEdidParse lcdEdidParse_;
  BiosHeaderV2 biosHeaderV2_;  // the block header parsed last, whichever operation did that
  BiosControlHeader biosControlHeader;  // the control header parsed last
  bool edidLoaded_ = false;
  bool gammaFromGolden_ = false;
  std::map<int, DecodedLut> lutData3DTable_;
  std::map<int, DecodedLut> lutDataGammaTable_;
  std::map<std::string, DecodedLut> userLutData3DTable_;
  std::map<std::string, DecodedLut> userLutDataGammaTable_;
  std::map<int, std::string> lutFileTable;
  std::string gammaLutFile_;
  std::map<int, double> modeGammaTable_;
  std::map<int, std::array<double, 3>> modeTemperTable_;
  std::map<int, int> modeGamutTable_;
  std::map<int, bool> modeFromGolden_;
  std::string threeLutBinFilePath;  // directory of bin files; used only after a panel change
  std::string goldenFilePath;       // begins with a backslash
  std::string gammaBinFilePath_;    // nothing sets it
  std::map<int, int> gamutLutTypeTable_;
};

}  // namespace velora
