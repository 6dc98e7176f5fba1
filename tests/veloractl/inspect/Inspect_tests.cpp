#include "veloractl/inspect/Inspect.h"

#include <gtest/gtest.h>

#include "veloractl/inspect/InspectTest.h"
#include "veloractl/inspect/LutBlocks.h"

namespace veloractl {
namespace {

using namespace inspecttest;
using namespace virtualnotebook;

const PanelDescription kPanel;
constexpr size_t k3DHashed = 24693;

Inspection InspectAs(const Bytes& file, const std::string& name = "") {
  Surroundings surroundings = WithPanel(kPanel);
  surroundings.fileName = name;
  return Inspect(file, surroundings);
}

// --- Recognition ---

TEST(RecogniseKind, EachKindByItsContent) {
  EXPECT_EQ(RecogniseKind(MakeFirmwareTable(FiveBlocks(kPanel))), FileKind::FirmwareTable);
  EXPECT_EQ(RecogniseKind(MakeGoldenFile(FiveBlocks(kPanel))), FileKind::GoldenFile);
  EXPECT_EQ(RecogniseKind(BlockOf(kPanel, kP3Lut)), FileKind::LutBinFile);
  EXPECT_EQ(RecogniseKind(BlockOf(kPanel, kGammaLut)), FileKind::LutBinFile);
  EXPECT_EQ(RecogniseKind(MakeUserLutFile(kPanel, kSrgbLut)), FileKind::UserLutFile);
  EXPECT_EQ(RecogniseKind(MakeEdid(kPanel)), FileKind::Edid);
  EXPECT_EQ(RecogniseKind(MakeDigestRecord("P3.icc", {1})), FileKind::DigestFile);
  EXPECT_EQ(RecogniseKind(MakeUserProfile("Reading")), FileKind::UserProfile);
}

TEST(RecogniseKind, APresetsProfileHasNoHash) {
  Bytes profile = MakeUserProfile("Preset");
  profile.resize(profile.size() - 32);
  std::fill_n(profile.begin() + 4, 4, uint8_t{0});
  EXPECT_EQ(RecogniseKind(profile), FileKind::PlainProfile);
}

TEST(RecogniseKind, AnEdidAsHexadecimalText) {
  std::string text;
  for (uint8_t byte : MakeEdid(kPanel)) {
    text += HexOf({&byte, 1}) + " ";
  }
  EXPECT_EQ(RecogniseKind(ByteSpan(reinterpret_cast<const uint8_t*>(text.data()), text.size())),
            FileKind::Edid);
}

TEST(RecogniseKind, DamagedFilesByWhatIsLeft) {
  Bytes table = MakeFirmwareTable(FiveBlocks(kPanel));
  table[60] ^= 1;  // the control header
  EXPECT_EQ(RecogniseKind(table), FileKind::FirmwareTable) << "by the table's id";
  Bytes block = BlockOf(kPanel, kP3Lut);
  block[67] ^= 0xFF;  // the data length
  EXPECT_EQ(RecogniseKind(block), FileKind::LutBinFile) << "by the vendor";
  EXPECT_EQ(RecogniseKind(Bytes(24725, 0xEE)), FileKind::LutBinFile) << "by the size";
}

TEST(RecogniseKind, OtherFiles) {
  EXPECT_EQ(RecogniseKind(Bytes()), FileKind::Unknown);
  EXPECT_EQ(RecogniseKind(Bytes(4096, 0)), FileKind::Unknown);
  const std::string text = "[section]\nvalue=1\n";
  EXPECT_EQ(RecogniseKind(ByteSpan(reinterpret_cast<const uint8_t*>(text.data()), text.size())),
            FileKind::Unknown);
}

// --- LUT files ---

TEST(InspectLutFile, AGoodBinFile) {
  const Inspection good = InspectAs(BlockOf(kPanel, kP3Lut), "P3.bin");
  EXPECT_EQ(good.report.at("kind"), "LUT bin file");
  EXPECT_EQ(good.report.at("verdict"), "good");
  EXPECT_TRUE(good.report.at("advice").is_null());
  for (const char* check : {"size", "header", "data length", "type", "length", "hash", "values",
                            "white", "grey axis", "type for the name", "panel"}) {
    EXPECT_EQ(ResultOf(good, check), "holds") << check;
  }
  const Json& fields = good.report.at("fields");
  EXPECT_EQ(ValueOf(fields, "serial number"), "01020304");
  EXPECT_EQ(ValueOf(fields, "year"), "2024");
  EXPECT_EQ(ValueOf(fields, "week"), "08");
  EXPECT_EQ(ValueOf(fields, "vendor"), "NVX#");
  EXPECT_EQ(ValueOf(fields, "type byte"), 2);
  EXPECT_EQ(ValueOf(fields, "precision"), 12);
  EXPECT_EQ(ValueOf(fields, "data length"), 24565);
}

TEST(InspectLutFile, AGammaFile) {
  const Inspection good = InspectAs(BlockOf(kPanel, kGammaLut), "Gamma.bin");
  EXPECT_EQ(good.report.at("verdict"), "good");
  EXPECT_EQ(FoundBy(good, "type"), "type 160, gamma");
  EXPECT_EQ(good.report.at("channels").at(0).at("white"), 4095);
}

TEST(InspectLutFile, AChangedByteFailsTheHash) {
  Bytes block = BlockOf(kPanel, kP3Lut);
  block[5000] ^= 1;
  const Inspection bad = InspectAs(block, "P3.bin");
  EXPECT_EQ(bad.report.at("verdict"), "damaged");
  EXPECT_EQ(ResultOf(bad, "hash"), "fails");
  EXPECT_EQ(ResultOf(bad, "length"), "holds");
  EXPECT_NE(bad.report.at("advice").get<std::string>().find("Delete the file"), std::string::npos);
}

TEST(InspectLutFile, OneByteShort) {
  Bytes block = BlockOf(kPanel, kP3Lut);
  block.pop_back();
  const Inspection bad = InspectAs(block, "P3.bin");
  EXPECT_EQ(ResultOf(bad, "length"), "fails");
  EXPECT_EQ(FoundBy(bad, "length"), "24724 of 24725 bytes");
  EXPECT_EQ(ResultOf(bad, "hash"), "") << "there is nothing to compare";
}

TEST(InspectLutFile, ATypeThatNoModeUses) {
  const Bytes block = Resealed(BlockOf(kPanel, kP3Lut), 64, 5, k3DHashed);
  const Inspection bad = InspectAs(block, "P3.bin");
  EXPECT_EQ(ResultOf(bad, "type"), "fails");
  EXPECT_EQ(FoundBy(bad, "type"), "type byte 5, which no mode uses");
  EXPECT_EQ(ResultOf(bad, "hash"), "holds");
}

TEST(InspectLutFile, ATypeOfTheOtherKind) {
  const Bytes block = Resealed(BlockOf(kPanel, kP3Lut), 64, 160, k3DHashed);
  EXPECT_EQ(ResultOf(InspectAs(block), "type and length"), "fails");
}

TEST(InspectLutFile, AFileUnderAnotherName) {
  const Inspection bad = InspectAs(BlockOf(kPanel, kSrgbLut), "P3.bin");
  EXPECT_EQ(ResultOf(bad, "type for the name"), "fails");
  EXPECT_EQ(ResultOf(InspectAs(BlockOf(kPanel, kSrgbLut), "goldensrgb.BIN"), "type for the name"),
            "holds");
  EXPECT_EQ(ResultOf(InspectAs(BlockOf(kPanel, kSrgbLut), "copy.bin"), "type for the name"),
            "not tested");
}

TEST(InspectLutFile, AnotherPanelsFieldByField) {
  const auto firstDifference = [](PanelDescription other) {
    Surroundings surroundings = WithPanel(other);
    const Inspection found = Inspect(BlockOf(kPanel, kP3Lut), surroundings);
    EXPECT_EQ(found.report.at("verdict"),
              ResultOf(found, "panel") == "differs" ? "of another panel" : "good");
    return FoundBy(found, "panel");
  };
  PanelDescription other = kPanel;
  EXPECT_EQ(firstDifference(other), "serial number, vendor, week and year are this panel's");
  other.year = 2023;
  EXPECT_EQ(firstDifference(other), "the year differs first");
  other.week = 9;
  EXPECT_EQ(firstDifference(other), "the week differs first");
  other.vendor = "ABC";
  EXPECT_EQ(firstDifference(other), "the vendor differs first");
  other.serial[3] = 5;
  EXPECT_EQ(firstDifference(other), "the serial number differs first");
}

TEST(InspectLutFile, WithoutAPanel) {
  EXPECT_EQ(ResultOf(Inspect(BlockOf(kPanel, kP3Lut), {}), "panel"), "not tested");
}

TEST(InspectLutFile, AGoldenFilesLutBelongsToTheModel) {
  Surroundings surroundings = WithPanel(kPanel);
  surroundings.fileName = "GoldenP3.bin";
  const Inspection found = Inspect(BlockOf(NominalPanel(kPanel), kP3Lut), surroundings);
  EXPECT_EQ(ResultOf(found, "panel"), "not tested");
  EXPECT_EQ(found.report.at("verdict"), "good");
}

TEST(InspectLutFile, TheEbookFilesMark) {
  Bytes block = BlockOf(kPanel, kEbookLut);
  EXPECT_FALSE(InspectAs(block, "EBOOK.bin").report.contains("e-book mark"));
  block.push_back(127);
  const Inspection marked = InspectAs(block, "EBOOK.bin");
  EXPECT_EQ(marked.report.at("e-book mark"), true);
  EXPECT_EQ(marked.report.at("verdict"), "good");
  block.back() = 126;
  EXPECT_EQ(InspectAs(block, "EBOOK.bin").report.at("e-book mark"), false);
}

TEST(InspectLutFile, ValuesBeyondTheScale) {
  // Entry 0, G: word bits 12 to 23.
  const Bytes block = Resealed(BlockOf(kPanel, kP3Lut), 128 + 1, 0xFF, k3DHashed);
  EXPECT_EQ(ResultOf(InspectAs(block), "values"), "fails");
}

TEST(InspectLutFile, ADarkWhite) {
  std::vector<double> lut = MakeIdentityLut();
  lut.back() = 0;
  const Bytes block = MakeLutBlock(HeaderOf(kPanel, kP3Lut), lut);
  EXPECT_EQ(ResultOf(InspectAs(block), "white"), "fails");
}

TEST(InspectLutFile, AGreyAxisThatFalls) {
  std::vector<double> lut = MakeIdentityLut();
  lut[3 * (289 * 5 + 17 * 5 + 5)] = 10;  // grey 5, red: below grey 4
  const Bytes block = MakeLutBlock(HeaderOf(kPanel, kP3Lut), lut);
  const Inspection found = InspectAs(block);
  EXPECT_EQ(ResultOf(found, "grey axis"), "warning");
  EXPECT_EQ(FoundBy(found, "grey axis"), "falls at 1 steps");
  EXPECT_EQ(found.report.at("verdict"), "good, with warnings");
}

TEST(InspectLutFile, TooLargeAFile) {
  Bytes block = BlockOf(kPanel, kP3Lut);
  block.resize(131072);
  EXPECT_EQ(ResultOf(InspectAs(block), "size"), "holds");
  block.resize(131073);
  EXPECT_EQ(ResultOf(InspectAs(block), "size"), "fails");
}

TEST(InspectLutFile, AUsersLut) {
  const Inspection good = InspectAs(MakeUserLutFile(kPanel, kSrgbLut));
  EXPECT_EQ(good.report.at("kind"), "user LUT file");
  EXPECT_EQ(good.report.at("verdict"), "good");
  EXPECT_EQ(FoundBy(good, "type"), "type byte 11, a user's LUT");
  EXPECT_EQ(ResultOf(good, "panel"), "not tested");
  EXPECT_EQ(InspectAs(MakeUserLutFile(kPanel, kGammaLut)).report.at("verdict"), "good");
  Bytes bad = MakeUserLutFile(kPanel, kSrgbLut);
  bad.back() ^= 1;
  EXPECT_EQ(ResultOf(InspectAs(bad), "hash"), "fails");
}

TEST(InspectLutFile, ForcedUponOtherBytes) {
  for (const KindName& kind : KindNames()) {
    for (const size_t size :
         std::initializer_list<size_t>{0, 1, 16, 64, 127, 128, 131, 264, 5280}) {
      const Inspection found = Inspect(Bytes(size, 0), WithPanel(kPanel), kind.kind);
      EXPECT_EQ(found.report.at("kind"), kind.name);
      EXPECT_EQ(found.report.at("verdict"), "damaged") << kind.name << ", " << size << " bytes";
      EXPECT_FALSE(found.report.at("advice").is_null());
    }
  }
}

// --- Containers ---

TEST(InspectContainer, AGoodFirmwareTable) {
  const Inspection good = InspectAs(MakeFirmwareTable(FiveBlocks(kPanel)));
  EXPECT_EQ(good.report.at("verdict"), "good");
  const Json& fields = good.report.at("fields");
  EXPECT_EQ(ValueOf(fields, "table id"), "DLUT");
  EXPECT_EQ(ValueOf(fields, "table length"), 123693);
  EXPECT_EQ(ValueOf(fields, "header length"), 16);
  EXPECT_EQ(ValueOf(fields, "block count"), 5);
  EXPECT_EQ(ValueOf(fields, "block size"), 24725);
  const Json& blocks = good.report.at("blocks");
  ASSERT_EQ(blocks.size(), 5u);
  EXPECT_EQ(blocks[1].at("LUT"), "P3");
  EXPECT_EQ(blocks[1].at("modes"), "2, 4, 5, 6, 9");
  EXPECT_EQ(blocks[1].at("offset"), 68 + 24725);
  EXPECT_EQ(blocks[1].at("panel"), "this one");
  EXPECT_EQ(ResultOf(good, "LUT Adobe"), "note");
}

TEST(InspectContainer, AGoodGoldenFile) {
  const Inspection good = InspectAs(MakeGoldenFile(FiveBlocks(NominalPanel(kPanel))));
  EXPECT_EQ(good.report.at("kind"), "golden file");
  EXPECT_EQ(good.report.at("verdict"), "good");
  EXPECT_EQ(ResultOf(good, "panel"), "holds") << "the vendor alone counts";
}

TEST(InspectContainer, AGoldenFileOfAnotherVendor) {
  PanelDescription other = kPanel;
  other.vendor = "ABC";
  EXPECT_EQ(InspectAs(MakeGoldenFile(FiveBlocks(NominalPanel(other)))).report.at("verdict"),
            "of another panel");
}

TEST(InspectContainer, AByteOfTheControlHeader) {
  Bytes table = MakeFirmwareTable(FiveBlocks(kPanel));
  table[52 + 12] ^= 1;  // controlExtra, which counts too
  const Inspection bad = InspectAs(table);
  EXPECT_EQ(ResultOf(bad, "control checksum"), "fails");
  EXPECT_EQ(bad.report.at("verdict"), "damaged");
}

TEST(InspectContainer, AShortTable) {
  Bytes table = MakeFirmwareTable(FiveBlocks(kPanel));
  table.pop_back();
  const Inspection bad = InspectAs(table);
  EXPECT_EQ(FoundBy(bad, "length"), "123692 of 123693 bytes");
  EXPECT_EQ(ResultOf(bad, "block 5: length"), "holds") << "a gamma block does not fill its stride";
}

TEST(InspectContainer, ADamagedBlockAmongGoodOnes) {
  Bytes table = MakeFirmwareTable(FiveBlocks(kPanel));
  table[68 + 24725 + 3000] ^= 1;
  const Inspection bad = InspectAs(table);
  EXPECT_EQ(ResultOf(bad, "block 1: hash"), "holds");
  EXPECT_EQ(ResultOf(bad, "block 2: hash"), "fails");
  EXPECT_EQ(bad.report.at("blocks")[0].at("verdict"), "good");
  EXPECT_EQ(bad.report.at("blocks")[1].at("verdict"), "damaged");
  EXPECT_TRUE(bad.report.at("advice").get<std::string>().starts_with("block 2: "));
  EXPECT_NE(bad.report.at("advice").get<std::string>().find("Read the table again"),
            std::string::npos);
}

TEST(InspectContainer, ADamagedBlockOfAGoldenFile) {
  Bytes file = MakeGoldenFile(FiveBlocks(NominalPanel(kPanel)));
  file[16 + 3000] ^= 1;
  const Inspection bad = InspectAs(file);
  EXPECT_EQ(ResultOf(bad, "block 1: hash"), "fails");
  EXPECT_NE(bad.report.at("advice").get<std::string>().find("Reinstall the product"),
            std::string::npos);
}

TEST(InspectContainer, TheFirstBlockOfATypeServes) {
  const Inspection found =
      InspectAs(MakeFirmwareTable({BlockOf(kPanel, kP3Lut), BlockOf(kPanel, kP3Lut)}));
  EXPECT_EQ(found.report.at("blocks")[0].at("modes"), "2, 4, 5, 6, 9");
  EXPECT_EQ(found.report.at("blocks")[1].at("modes"), "none: an earlier block serves");
}

TEST(InspectContainer, BytesBehindTheLastBlock) {
  Bytes file = MakeGoldenFile({BlockOf(kPanel, kP3Lut)});
  file.push_back(0);
  EXPECT_EQ(ResultOf(InspectAs(file), "rest"), "warning");
}

TEST(InspectContainer, SizesAtTheLimits) {
  const auto result = [](FileKind kind, size_t size) {
    return ResultOf(Inspect(Bytes(size, 0), {}, kind), "size");
  };
  EXPECT_EQ(result(FileKind::FirmwareTable, 131124), "holds");
  EXPECT_EQ(result(FileKind::FirmwareTable, 131125), "fails");
  EXPECT_EQ(result(FileKind::GoldenFile, 24740), "fails");
  EXPECT_EQ(result(FileKind::GoldenFile, 24741), "holds");
  EXPECT_EQ(result(FileKind::GoldenFile, 131072), "holds");
  EXPECT_EQ(result(FileKind::GoldenFile, 131073), "fails");
}

TEST(InspectContainer, BlocksOfNoBytes) {
  // All zero: the checksum holds, and the block size is 0.
  const Inspection bad = Inspect(Bytes(30000, 0), {}, FileKind::GoldenFile);
  EXPECT_EQ(ResultOf(bad, "control checksum"), "holds");
  EXPECT_EQ(ResultOf(bad, "length"), "fails");
  EXPECT_TRUE(bad.report.at("blocks").empty());
}

// --- Digest files ---

TEST(InspectDigest, RecordsAndTheirProfiles) {
  Bytes file = MakeDigestRecord("sRGB.icc", {1, 2, 3});
  const Bytes second = MakeDigestRecord("P3.icc", {4, 5});
  file.insert(file.end(), second.begin(), second.end());
  Surroundings surroundings;
  surroundings.profile = [](const std::string& name) -> std::optional<Bytes> {
    if (name == "sRGB.icc") return Bytes{1, 2, 3};
    if (name == "P3.icc") return Bytes{4, 6};
    return std::nullopt;
  };
  const Inspection found = Inspect(file, surroundings);
  EXPECT_EQ(found.report.at("kind"), "digest file");
  EXPECT_EQ(ResultOf(found, "record 1: profile"), "holds");
  EXPECT_EQ(ResultOf(found, "record 2: profile"), "fails");
  EXPECT_EQ(found.report.at("records")[1].at("profile"), "changed");
  EXPECT_EQ(Inspect(file, {}).report.at("verdict"), "good");
}

TEST(InspectDigest, AMissingProfile) {
  Surroundings surroundings;
  surroundings.profile = [](const std::string&) { return std::nullopt; };
  EXPECT_EQ(ResultOf(Inspect(MakeDigestRecord("P3.icc", {1}), surroundings), "record 1: profile"),
            "warning");
}

TEST(InspectDigest, ANameWithinAnEarlierOne) {
  Bytes file = MakeDigestRecord("NVX-P3.icc", {1});
  const Bytes second = MakeDigestRecord("P3.icc", {2});
  file.insert(file.end(), second.begin(), second.end());
  const Inspection found = Inspect(file, {});
  EXPECT_EQ(ResultOf(found, "record 2: name"), "warning");
  EXPECT_EQ(FoundBy(found, "record 2: name"), "P3.icc is part of record 1");
}

TEST(InspectDigest, ACutOffRecord) {
  Bytes file = MakeDigestRecord("P3.icc", {1});
  file.insert(file.end(), 101, 0);
  EXPECT_EQ(ResultOf(Inspect(file, {}), "length"), "fails");
  EXPECT_EQ(FoundBy(Inspect(file, {}), "length"), "101 bytes behind the last record");
}

// --- Profiles ---

TEST(InspectProfile, AGoodUserProfile) {
  const Inspection good = InspectAs(MakeUserProfile("Reading"));
  EXPECT_EQ(good.report.at("verdict"), "good");
  EXPECT_EQ(good.report.at("description"), "Reading");
  EXPECT_EQ(good.report.at("tags").size(), 11u);
  EXPECT_EQ(ResultOf(good, "the library's check"), "holds");
  // sRGB's primaries and white, IEC 61966-2-1.
  const Json& colours = good.report.at("colours");
  EXPECT_EQ(colours.at("red"), "0.64, 0.33");
  EXPECT_EQ(colours.at("green"), "0.3, 0.6");
  EXPECT_EQ(colours.at("blue"), "0.15, 0.06");
  EXPECT_EQ(colours.at("gamma"), 2.1992);  // 563 / 256
}

TEST(InspectProfile, AChangedByte) {
  Bytes profile = MakeUserProfile("Reading");
  profile[400] ^= 1;
  const Inspection bad = InspectAs(profile);
  EXPECT_EQ(ResultOf(bad, "hash"), "fails");
  EXPECT_EQ(ResultOf(bad, "the library's check"), "fails");
  EXPECT_NE(bad.report.at("advice").get<std::string>().find("result 16"), std::string::npos);
}

TEST(InspectProfile, AnotherModesName) {
  Surroundings surroundings;
  surroundings.modeName = "Writing";
  const Inspection bad = Inspect(MakeUserProfile("Reading"), surroundings);
  EXPECT_EQ(ResultOf(bad, "mode name"), "fails");
  EXPECT_EQ(FoundBy(bad, "mode name"), "Reading, asked for Writing");
  surroundings.modeName = "Reading on";  // a name that goes on passes
  EXPECT_EQ(ResultOf(Inspect(MakeUserProfile("Reading"), surroundings), "mode name"), "holds");
}

TEST(InspectProfile, ANameTooLongToPass) {
  const Inspection bad = InspectAs(MakeUserProfile(std::string(50, 'n')));
  EXPECT_EQ(ResultOf(bad, "hash"), "holds");
  EXPECT_EQ(ResultOf(bad, "mode name"), "fails");
  EXPECT_EQ(ResultOf(InspectAs(MakeUserProfile(std::string(49, 'n'))), "mode name"), "holds");
}

TEST(InspectProfile, ASizeThatTheLibraryRefuses) {
  Bytes profile = MakeUserProfile("Reading");
  profile[3] |= 0x80;
  const Inspection bad = InspectAs(profile);
  EXPECT_EQ(ResultOf(bad, "size"), "fails");
}

TEST(InspectProfile, CutOffAndGrown) {
  Bytes profile = MakeUserProfile("Reading");
  profile.push_back(0);
  EXPECT_EQ(ResultOf(InspectAs(profile), "rest"), "warning");
  EXPECT_EQ(ResultOf(InspectAs(profile), "the library's check"), "holds");
  profile.resize(profile.size() - 2);
  EXPECT_EQ(ResultOf(InspectAs(profile), "length"), "fails");
  EXPECT_EQ(ResultOf(InspectAs(profile), "the library's check"), "fails");
}

TEST(InspectProfile, APresetAgainstItsDigest) {
  Bytes preset = MakeUserProfile("NVX P3");
  preset.resize(preset.size() - 32);
  std::fill_n(preset.begin() + 80, 4, uint8_t{0});
  Surroundings surroundings;
  surroundings.fileName = "P3.icc";
  EXPECT_EQ(ResultOf(Inspect(preset, surroundings), "digest"), "not tested");
  surroundings.digest = MakeDigestRecord("P3.icc", preset);
  EXPECT_EQ(ResultOf(Inspect(preset, surroundings), "digest"), "holds");
  surroundings.digest[70] ^= 1;
  EXPECT_EQ(ResultOf(Inspect(preset, surroundings), "digest"), "fails");
  surroundings.fileName = "Other.icc";
  EXPECT_EQ(ResultOf(Inspect(preset, surroundings), "digest record"), "fails");
}

// --- Unknown ---

TEST(Inspect, NoneOfTheLibrarysFiles) {
  const Inspection found = Inspect(Bytes(300, 7), {});
  EXPECT_EQ(found.kind, FileKind::Unknown);
  EXPECT_EQ(found.report.at("verdict"), "damaged");
  EXPECT_NE(found.report.at("advice").get<std::string>().find("--as"), std::string::npos);
}

}  // namespace
}  // namespace veloractl
