#include <array>

#include "lut/LutMachine.h"
#include "support/FailingNew.h"

namespace lutmachine {
namespace {

using Lut = std::vector<double>;

// second at first's value, by the plainest way there is: from the cell's corner 000 to 111 along
// the axes in the falling order of their fractions.
std::array<int, 3> LookUp(const Lut& second, const std::array<int, 3>& rgb) {
  constexpr int kStrides[] = {289, 17, 1};
  std::array<int, 3> axes = {0, 1, 2};
  std::ranges::stable_sort(axes, std::greater(),
                           [&](int axis) { return rgb[static_cast<size_t>(axis)] % 64; });
  int entry = 0;
  for (size_t axis = 0; axis < 3; ++axis) entry += rgb[axis] / 64 * kStrides[axis];
  std::array<int, 3> sum = {32, 32, 32};
  int rest = 64;
  for (size_t step = 0; step <= 3; ++step) {
    const int next = step < 3 ? rgb[static_cast<size_t>(axes[step])] % 64 : 0;
    for (size_t c = 0; c < 3; ++c) {
      sum[c] += (rest - next) * static_cast<int>(second[static_cast<size_t>(entry) * 3 + c]);
    }
    rest = next;
    if (step < 3) entry += kStrides[axes[step]];
    if (next == 0) break;
  }
  return {sum[0] / 64, sum[1] / 64, sum[2] / 64};
}

Lut Compose(const Lut& first, const Lut& second) {
  Lut result;
  for (size_t i = 0; i < first.size(); i += 3) {
    for (const int value :
         LookUp(second, {static_cast<int>(first[i]), static_cast<int>(first[i + 1]),
                         static_cast<int>(first[i + 2])})) {
      result.push_back(value);
    }
  }
  return result;
}

class ColorField3DLutEbook : public LutMachine {
 protected:
  ColorField3DLutEbook() { foreign.serial = {9, 8, 7, 6}; }

  Lut Own(uint8_t lutType) const { return virtualnotebook::MakeLut(machine.panel, lutType); }
  Lut Golden(uint8_t lutType) const { return virtualnotebook::MakeLut(nominal, lutType); }
  Lut Fused() const { return Compose(Golden(7), Own(0)); }

  // "EBOOK.bin" with the firmware block's header, this LUT, its hash and the mark.
  Bytes MarkedFile(const Lut& lut) const {
    Bytes marked = virtualnotebook::MakeLutBlock(virtualnotebook::HeaderOf(machine.panel, 7), lut);
    marked.push_back(0x7F);
    return marked;
  }

  // The same machine after a restart of the host.
  bool ShowInTheNextProcess() {
    notebook.platform.lut3D.clear();
    notebook.ForgetRecords();
    velora::ColorField3DLut next;
    next.InitColorFieldThreeLutBaseInfo(BaseInfo("", kGoldenName));
    notebook.ForgetRecords();
    return next.SetDisplayerBy3DLut(7);
  }

  static std::string Note(const std::string& message) { return Info("FusionEbookProc", message); }

  const std::string file = DataFile("EBOOK.bin");
  const std::string entry = Info("SetDisplayerBy3DLut", "SetDisplayer by 3DLut, mode is 7");
  const std::string supported = Note("Supported EbookFusion.");
  const std::string notSupported = Note("Get BIOS data is error.Not supported EbookFusion.");
  PanelDescription foreign;
};

// --- The roads of the e-book mode ---

TEST_F(ColorField3DLutEbook, Cold) {
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(7));
  EXPECT_EQ(Log(), Lines({entry, GamutLine(machine.panel), supported}));
  EXPECT_EQ(notebook.platform.lut3D, Fused());
  const Bytes written = ReadFileBytes(file);
  EXPECT_EQ(written.size(), 24726u);
  EXPECT_EQ(written, MarkedFile(Fused()));
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(written)));
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(7), 0);
}

TEST_F(ColorField3DLutEbook, MarkedFileOfThisPanelIsLeftAlone) {
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(7));
  const Bytes before = ReadFileBytes(file);
  EXPECT_TRUE(ShowInTheNextProcess());
  EXPECT_EQ(Log(), Lines({entry, GamutLine(machine.panel), supported, Note("Has fused.")}));
  EXPECT_EQ(notebook.platform.lut3D, Fused());
  EXPECT_EQ(ReadFileBytes(file), before);
  EXPECT_EQ(notebook.CountCalls("WriteFile"), 0u);
}

TEST_F(ColorField3DLutEbook, MarkedFileOfAnotherPanelGetsTheGoldenLut) {
  ASSERT_TRUE(engine.SetDisplayerBy3DLut(7));
  PlugIn(virtualnotebook::MakeEdid(foreign));
  EXPECT_TRUE(ShowInTheNextProcess());
  const std::string invalid = InvalidLine(virtualnotebook::HeaderOf(machine.panel, 7), foreign);
  EXPECT_EQ(Log(),
            Lines({entry, GamutLine(foreign), invalid,
                   Error("IsLcdChanged", "LCD data is not match or get data error, ret is 1"),
                   Info("Sync3DLutDataTable", "LCD changed! mode:7"), supported, Note("Has fused."),
                   invalid, Note("Get LCD EDID Data error.")}));
  EXPECT_EQ(notebook.platform.lut3D, Golden(7));
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(Golden(7)));  // the mark stays
}

// The header that the base block left is the one that counts, not the file's.
TEST_F(ColorField3DLutEbook, HasFused_ComparesTheBaseBlock) {
  WriteFileBytes(file, MarkedFile(Golden(7)));
  notebook.firmwareTable =
      virtualnotebook::MakeFirmwareTable({Block(1), MakeBlock(foreign, 0), Block(7)});
  const Bytes own = Block(7);
  ASSERT_TRUE(engine.OneLutTypeIsValid(7, own.data(), own.size()));
  EXPECT_FALSE(engine.FusionEbookProc(7));
  EXPECT_EQ(Log(), Lines({supported, Note("Has fused."), GamutLine(machine.panel),
                          InvalidLine(virtualnotebook::HeaderOf(foreign, 0), machine.panel),
                          Note("Get LCD EDID Data error.")}));
}

TEST_F(ColorField3DLutEbook, MarkedFileAndNoEdid) {
  WriteFileBytes(file, MarkedFile(Fused()));
  Unplug();
  EXPECT_FALSE(engine.FusionEbookProc(7));
  EXPECT_EQ(Log(),
            Lines({supported, Note("Has fused."),
                   Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath),
                   Note("Get LCD EDID Data error.")}));
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(Golden(7)));
}

// A panel that was replaced before the first use: the file comes from the firmware all the same.
TEST_F(ColorField3DLutEbook, ForeignPanelFromTheStart) {
  PlugIn(virtualnotebook::MakeEdid(foreign));
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(7));
  EXPECT_EQ(notebook.platform.lut3D, Fused());
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(Fused()));
  EXPECT_TRUE(ShowInTheNextProcess());
  EXPECT_EQ(notebook.platform.lut3D, Golden(7));
}

TEST_F(ColorField3DLutEbook, RebuiltFileLosesItsMark) {
  Bytes damaged = MarkedFile(Fused());
  damaged[5000] ^= 1;
  WriteFileBytes(file, damaged);
  EXPECT_EQ(engine.IsLcdChanged(7), 0);
  EXPECT_EQ(ReadFileBytes(file), Block(7));
}

TEST_F(ColorField3DLutEbook, AnotherMarkIsNoMark) {
  Bytes other = MarkedFile(Golden(7));
  other.back() = 0x7E;
  WriteFileBytes(file, other);
  EXPECT_TRUE(engine.FusionEbookProc(7));
  EXPECT_EQ(Log(), Lines({supported}));
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(Fused()));
}

// --- FusionEbookProc ---

TEST_F(ColorField3DLutEbook, OtherModesAreTurnedAway) {
  for (const int mode : {0, 1, 2, 6, 8, 10, 11, -1}) {
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.FusionEbookProc(mode));
    EXPECT_EQ(Log(), Lines({Note("Not e-book mode.")}));
    EXPECT_EQ(notebook.calls.size(), 1u);  // the line
  }
}

TEST_F(ColorField3DLutEbook, WithoutABaseBlockTheFileStays) {
  notebook.firmwareTable = virtualnotebook::MakeFirmwareTable({Block(1), Block(7)});
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(7));
  EXPECT_EQ(Log(), Lines({entry, GamutLine(machine.panel), notSupported}));
  EXPECT_EQ(notebook.platform.lut3D, Own(7));
  EXPECT_EQ(ReadFileBytes(file), Block(7));
}

TEST_F(ColorField3DLutEbook, WithoutAFirmwareTable) {
  WriteFileBytes(file, Block(7));
  notebook.firmwareTable.clear();
  EXPECT_FALSE(engine.FusionEbookProc(7));
  const Lines once = {
      Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:1168"),
      Info("GetBiosLutData3D", "ReadBiosLutDataBlock Failed!")};
  EXPECT_EQ(Log(), once + once + Lines({notSupported}));
}

TEST_F(ColorField3DLutEbook, SrgbBlockDoesNotMatter) {
  WriteFileBytes(file, Block(7));
  Bytes damaged = Block(1);
  damaged[300] ^= 1;
  notebook.firmwareTable = virtualnotebook::MakeFirmwareTable({damaged, Block(0)});
  EXPECT_TRUE(engine.FusionEbookProc(7));
  EXPECT_EQ(Log(),
            Lines({Error("IsLutDataValid3D", "SHA256 Value is not match, shadata len is 24693"),
                   Info("GetBiosLutData3D", "Bios 3D Lut Data invalid! mode:1"), supported}));
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(Fused()));
}

// A known weakness: without the golden LUT the base LUT's first entry goes everywhere.
TEST_F(ColorField3DLutEbook, WithoutAGoldenFileZeroIsFused) {
  WriteFileBytes(file, Block(7));
  std::filesystem::remove(kGoldenFile);
  EXPECT_TRUE(engine.FusionEbookProc(7));
  const Lut base = Own(0);
  Lut flat;
  for (size_t i = 0; i < base.size(); ++i) flat.push_back(base[i % 3]);
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(flat));
  const Lines log = Log();
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(log[0], supported);
  EXPECT_TRUE(log[1].starts_with("0 Read Golden File:")) << log[1];
  EXPECT_TRUE(log[2].starts_with("3 Open 3D LUT Data File Failed! fileName:")) << log[2];
}

TEST_F(ColorField3DLutEbook, RefusedPath) {
  notebook.FailCall("CoreKit::GetCanonicalizedFilePath", 1, 0);
  EXPECT_FALSE(engine.FusionEbookProc(7));
  EXPECT_EQ(Log(), Lines({supported, Note("lutFileTable error")}));
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), 0u);
}

TEST_F(ColorField3DLutEbook, NoMemory) {
  WriteFileBytes(file, Block(7));
  for (const unsigned n : {1u, 2u}) {
    notebook.ForgetRecords();
    const testsupport::FailingNew failure(n);
    EXPECT_FALSE(engine.FusionEbookProc(7));
    EXPECT_TRUE(failure.HasFailed());
    EXPECT_EQ(Log(), Lines({notSupported}));
  }
  notebook.ForgetRecords();
  const testsupport::FailingNew failure(3);
  EXPECT_FALSE(engine.FusionEbookProc(7));
  EXPECT_TRUE(failure.HasFailed());
  EXPECT_EQ(Log(), Lines({supported, Error("FusionLutData3D", "outLut is null"),
                          Error("FusionEbookProc", "res is null.")}));
  EXPECT_EQ(ReadFileBytes(file), Block(7));
}

// The mode goes on with the file as it stands.
TEST_F(ColorField3DLutEbook, FailedFusionDoesNotStopTheMode) {
  WriteFileBytes(file, Block(7));
  ASSERT_TRUE(engine.GetLcdEdidData());
  const testsupport::FailingNew failure(3);
  EXPECT_TRUE(engine.SetDisplayerBy3DLut(7));
  EXPECT_TRUE(failure.HasFailed());
  EXPECT_EQ(notebook.platform.lut3D, Own(7));
}

TEST_F(ColorField3DLutEbook, FileIsMissing) {
  EXPECT_TRUE(engine.FusionEbookProc(7));  // counts as not fused, and what follows does not count
  EXPECT_EQ(Log(),
            Lines({supported, Info("CreateThreeLutBinFile3D", "Open binfile error" + file)}));
  EXPECT_FALSE(std::filesystem::exists(file));
}

// One opening each for the mark, the payload, the bytes to hash and the hash.
TEST_F(ColorField3DLutEbook, FourOpenings) {
  WriteFileBytes(file, Block(7));
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.FusionEbookProc(7));
  Lines opened;
  for (const auto& call : notebook.calls) {
    if (call.function == "CreateFileA") {
      opened.push_back(Utf8(call.arguments.at(0)));
    }
  }
  EXPECT_EQ(opened, Lines({file, kGoldenFile, file, file, file}));
  EXPECT_EQ(notebook.CountCalls("CloseHandle"), 5u);
}

// --- CreateThreeLutBinFile3D, RehashEbookBin ---

TEST_F(ColorField3DLutEbook, CreateThreeLutBinFile3D_KeepsTheHeader) {
  WriteFileBytes(file, GoldenBlock(2));
  EXPECT_TRUE(engine.CreateThreeLutBinFile3D(Own(1).data()));
  const Bytes written = ReadFileBytes(file);
  EXPECT_EQ(written.size(), 24726u);
  EXPECT_EQ(Part(written, 0, 128), Part(GoldenBlock(2), 0, 128));
  EXPECT_EQ(Part(written, 128, 24693), Part(Block(1), 128, 24693));
  EXPECT_EQ(Part(written, 24693, 24725), virtualnotebook::Sha256({written.data(), 24693}));
  EXPECT_EQ(written.back(), 0x7F);
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutEbook, CreateThreeLutBinFile3D_ValuesAreTruncated) {
  WriteFileBytes(file, Block(7));
  Lut lut(14739, 1022.9);
  lut[0] = 1023;
  EXPECT_TRUE(engine.CreateThreeLutBinFile3D(lut.data()));
  const Bytes written = ReadFileBytes(file);
  EXPECT_EQ(Part(written, 128, 132), Bytes({0xFF, 0x3F, 0xE3, 0xFE}));
  EXPECT_EQ(Part(written, 132, 136), Bytes({0xFE, 0x3F, 0xE3, 0xFE}));
  EXPECT_EQ(written[19780], 3);
}

TEST_F(ColorField3DLutEbook, CreateThreeLutBinFile3D_Refuses) {
  const Lut lut = Own(1);
  EXPECT_FALSE(engine.CreateThreeLutBinFile3D(lut.data()));  // no file
  notebook.FailCall("CoreKit::GetCanonicalizedFilePath", 1, 0);
  EXPECT_FALSE(engine.CreateThreeLutBinFile3D(lut.data()));
  EXPECT_EQ(Log(), Lines({Info("CreateThreeLutBinFile3D", "Open binfile error" + file),
                          Info("CreateThreeLutBinFile3D", "lutFileTable error")}));
  EXPECT_FALSE(std::filesystem::exists(file));
}

// A wider stride stays: the hash and the mark stand where they stand in every file.
TEST_F(ColorField3DLutEbook, CreateThreeLutBinFile3D_WiderStride) {
  Bytes stride = Block(7);
  stride.resize(30000, 0xFF);
  WriteFileBytes(file, stride);
  EXPECT_TRUE(engine.CreateThreeLutBinFile3D(Own(1).data()));
  const Bytes written = ReadFileBytes(file);
  EXPECT_EQ(written.size(), 30000u);
  EXPECT_EQ(written[24725], 0x7F);
  EXPECT_EQ(written[24726], 0xFF);
  EXPECT_TRUE(engine.IsLutDataValid3D(ToBuffer(written)));
}

// Neither hash nor mark are renewed: a file that is torn is found out, one that is whole fused
// later.
TEST_F(ColorField3DLutEbook, CreateThreeLutBinFile3D_AWriteFails) {
  for (const uint64_t result : {uint64_t{FALSE}, uint64_t{TRUE}}) {
    WriteFileBytes(file, Block(7));
    notebook.FailCall("WriteFile", 1, result, ERROR_DISK_FULL);
    EXPECT_FALSE(engine.CreateThreeLutBinFile3D(Own(1).data()));
    notebook.ClearFaults();
    EXPECT_EQ(ReadFileBytes(file), Block(7));
  }
}

// The old hash keeps a half-written file from being used.
TEST_F(ColorField3DLutEbook, RehashFails) {
  for (const unsigned opening : {2u, 3u}) {
    WriteFileBytes(file, Block(7));
    notebook.FailCall("CreateFileA", opening, static_cast<uint64_t>(-1), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(engine.CreateThreeLutBinFile3D(Own(1).data()));
    notebook.ClearFaults();
    EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(7), 1);
  }
  WriteFileBytes(file, Block(7));
  notebook.FailCall("ReadFile", 1, 0, ERROR_READ_FAULT);
  EXPECT_TRUE(engine.CreateThreeLutBinFile3D(Own(1).data()));
  EXPECT_EQ(engine.IsThreeLutBinFileNeedUpdate(7), 1);
}

TEST_F(ColorField3DLutEbook, RehashEbookBin_OfAFile) {
  Bytes spoilt = Block(7);
  spoilt[24693] ^= 0xFF;
  WriteFileBytes(file, spoilt);
  engine.RehashEbookBin(file);
  EXPECT_EQ(ReadFileBytes(file), MarkedFile(Own(7)));
}

// --- FusionLutData3D ---

TEST_F(ColorField3DLutEbook, FusionLutData3D_ToTheLastInteger) {
  const std::pair<Lut, Lut> pairs[] = {
      {Golden(7), Own(0)}, {Own(0), Golden(7)}, {Own(2), Own(1)}, {Own(1), Own(2)}};
  for (const auto& [first, second] : pairs) {
    const velora::DecodedLut result = engine.FusionLutData3D(first.data(), second.data());
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(Lut(result.get(), result.get() + 14739), Compose(first, second));
  }
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutEbook, FusionLutData3D_IdentityGivesTheFirstBack) {
  const Lut ebook = Golden(7);
  const velora::DecodedLut result =
      engine.FusionLutData3D(ebook.data(), virtualnotebook::MakeIdentityLut().data());
  for (size_t i = 0; i < ebook.size(); ++i) {
    ASSERT_NEAR(result[i], ebook[i], 1) << i;
  }
}

}  // namespace
}  // namespace lutmachine
