#include "virtualnotebook/Factory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace virtualnotebook {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr size_t kBlock = 24725;

// Type byte and serial number of each block of a table from its control header on.
std::vector<uint8_t> TypesOf(const Bytes& container, size_t start) {
  std::vector<uint8_t> types;
  for (size_t at = start + 16; at < container.size(); at += kBlock) {
    types.push_back(container[at + 64]);
  }
  return types;
}

std::string SerialOfFirst(const Bytes& container, size_t start) {
  const auto at = container.begin() + static_cast<ptrdiff_t>(start + 16 + 46);
  return std::string(at, at + 8);
}

Bytes Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

TEST(Factory, MakeMachine_FitsTheLibrarysLimits) {
  const MachineData machine = MakeMachine(PanelDescription{});
  EXPECT_EQ(123693u, machine.firmwareTable.size());
  EXPECT_LT(machine.firmwareTable.size(), 131125u);
  EXPECT_EQ(123641u, machine.goldenFile.size());
  EXPECT_LE(machine.goldenFile.size(), 131072u);
}

TEST(Factory, MakeMachine_HoldsTheTypesAskedFor) {
  const MachineData machine = MakeMachine(PanelDescription{});
  EXPECT_THAT(TypesOf(machine.firmwareTable, 52), ElementsAre(0, 2, 1, 7, 160));
  EXPECT_THAT(TypesOf(machine.goldenFile, 0), ElementsAre(0, 2, 1, 7, 160));
  MachineOptions options;
  options.firmwareTypes = {kAdobeLut, kBaseLut};
  options.goldenTypes = {kGammaLut, kAdobeLut};
  const MachineData other = MakeMachine(PanelDescription{}, options);
  EXPECT_THAT(TypesOf(other.firmwareTable, 52), ElementsAre(4, 0));
  EXPECT_THAT(TypesOf(other.goldenFile, 0), ElementsAre(160, 4));
}

TEST(Factory, MakeMachine_FirmwareNamesThePanelAndGoldenTheModel) {
  const MachineData machine = MakeMachine(PanelDescription{});
  EXPECT_EQ("01020304", SerialOfFirst(machine.firmwareTable, 52));
  EXPECT_EQ("00000000", SerialOfFirst(machine.goldenFile, 0));
}

TEST(Factory, MakeMachine_GoldenLutsDifferFromTheCalibratedOnes) {
  const PanelDescription panel;
  for (uint8_t type : {kBaseLut, kSrgbLut, kP3Lut, kAdobeLut, kEbookLut, kGammaLut}) {
    EXPECT_NE(MakeLut(panel, type), MakeLut(NominalPanel(panel), type)) << int{type};
  }
}

TEST(Factory, MakeMachine_IsTheSameEachTime) {
  const MachineData one = MakeMachine(PanelDescription{}), two = MakeMachine(PanelDescription{});
  EXPECT_EQ(one.edid, two.edid);
  EXPECT_EQ(one.firmwareTable, two.firmwareTable);
  EXPECT_EQ(one.goldenFile, two.goldenFile);
  EXPECT_EQ(one.profiles, two.profiles);
  EXPECT_EQ(one.digestFile, two.digestFile);
}

TEST(Factory, MakeMachine_DescribesThePanelAsItsEdidDoes) {
  const MachineData machine = MakeMachine(PanelDescription{});
  EXPECT_EQ(DescribePanel(machine.edid), machine.panel);
}

TEST(Factory, InstallMachine_WritesItsFilesAndRemoveMachineTakesThem) {
  const fs::path top = fs::path(testing::TempDir()) / "factory_machine";
  fs::remove_all(top);
  const MachineDirs dirs = {(top / "program").string(), (top / "data").string()};
  const MachineData machine = MakeMachine(PanelDescription{});

  const InstalledFiles files = InstallMachine(machine, dirs);
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(top)) {
    if (entry.is_regular_file()) names.insert(entry.path().filename().string());
  }
  EXPECT_THAT(names, UnorderedElementsAre("Golden.bin", "IccDigest.bin", "NVX-sRGB.icc",
                                          "NVX-P3.icc", "NVX-Adobe.icc"));
  EXPECT_EQ(machine.goldenFile, Read(dirs.program + files.goldenName));
  EXPECT_EQ(machine.digestFile, Read(files.digestFile));
  EXPECT_EQ(machine.profiles.at("NVX-P3.icc"), Read(files.Profile(kP3Lut)));
  EXPECT_TRUE(fs::is_directory(dirs.data));

  std::ofstream(dirs.data + "\\GoldenP3.bin") << "a cache of the library";
  std::ofstream(dirs.data + "\\SetColor.ini") << "not the factory's";
  RemoveMachine(dirs);
  names.clear();
  for (const auto& entry : fs::recursive_directory_iterator(top)) {
    if (entry.is_regular_file()) names.insert(entry.path().filename().string());
  }
  EXPECT_THAT(names, UnorderedElementsAre("SetColor.ini"));
  fs::remove_all(top);
}

TEST(Factory, FilesOf_PathsAHostCanName) {
  const InstalledFiles files = FilesOf();
  EXPECT_EQ("C:\\Program Files\\Norvex\\NxVelora\\Golden.bin", files.goldenFile);
  EXPECT_EQ("C:\\Program Files\\Norvex\\NxVelora\\IccDigest.bin", files.digestFile);
  EXPECT_EQ("C:\\Program Files\\Norvex\\NxVelora\\Icc\\NVX-P3.icc", files.Profile(kP3Lut));
}

}  // namespace
}  // namespace virtualnotebook
