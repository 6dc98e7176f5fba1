// Files of any content: truncations and many changed bytes of each kind, at the end of the
// readable memory, with every inspector.
#include <gtest/gtest.h>

#include <random>

#include "lut/ColorField3DLut.h"
#include "support/GuardedBuffer.h"
#include "veloractl/inspect/Diagrams.h"
#include "veloractl/inspect/InspectTest.h"

namespace veloractl {
namespace {

using namespace inspecttest;
using namespace virtualnotebook;
using testsupport::GuardedBuffer;

struct Sample {
  const char* name;
  FileKind kind;
  Bytes bytes;
};

void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }

class Damaged : public ::testing::TestWithParam<Sample> {
 protected:
  Damaged() : surroundings_(WithPanel({})) {
    surroundings_.fileName = "P3.bin";
    surroundings_.digest = MakeDigestRecord("P3.bin", {1});
  }

  // Clear whatever comes: a kind, a verdict and, unless all is good, what to do; and JSON.
  std::string InspectAll(ByteSpan file, FileKind kind) {
    const Inspection found = Inspect(file, surroundings_, kind);
    EXPECT_TRUE(found.report.at("kind").is_string());
    const std::string verdict = found.report.at("verdict");
    EXPECT_EQ(verdict == "good", found.report.at("advice").is_null());
    EXPECT_NO_THROW((void)found.report.dump());  // all texts are UTF-8
    return verdict;
  }

  Surroundings surroundings_;
};

TEST_P(Damaged, Truncations) {
  const Sample& sample = GetParam();
  ASSERT_EQ(InspectAll(sample.bytes, FileKind::Unknown), "good");
  ASSERT_EQ(RecogniseKind(sample.bytes), sample.kind);
  for (size_t size = 0, whole = sample.bytes.size(); size < whole; size = NextLength(size, whole)) {
    const GuardedBuffer file(sample.bytes, size);
    // A digest file of whole records is as good as the longer one.
    if (sample.kind == FileKind::DigestFile && size > 0 && size % 102 == 0) {
      continue;
    }
    const bool isRest = sample.kind == FileKind::Edid && size >= 35;
    const std::string verdict = InspectAll(file.Bytes(), sample.kind);
    if (isRest) {
      ASSERT_NE(verdict, "good") << size;
    } else {
      ASSERT_EQ(verdict, "damaged") << size;
    }
    RecogniseKind(file.Bytes());
  }
}

// --- The same verdict as the library's ---

bool Holds(const Inspection& found, std::initializer_list<const char*> checks) {
  return std::ranges::all_of(checks,
                             [&](const char* check) { return ResultOf(found, check) == "holds"; });
}

// IsLutDataValid3D proves a block whatever its type and kind.
void CompareBlock(const Bytes& bytes) {
  velora::ColorField3DLut library;
  const bool valid = library.IsLutDataValid3D({bytes.begin(), bytes.end()});
  const Inspection found = Inspect(bytes, {}, FileKind::LutBinFile);
  ASSERT_EQ(Holds(found, {"header", "length", "hash"}), valid) << bytes.size();
}

// GetOneLutDat3D finds a block when the control header and the length hold and a block has the
// type.
void CompareTable(const Bytes& bytes) {
  velora::ColorField3DLut library;
  velora::LutBuffer table(bytes.begin(), bytes.end());
  const bool finds = library.GetOneLutDat3D(P3Mode, table);
  const Inspection found = Inspect(bytes, {}, FileKind::FirmwareTable);
  bool hasType = false;
  if (found.report.contains("blocks")) {
    for (const Json& block : found.report.at("blocks")) {
      hasType = hasType || block.at("type") == 2;
    }
  }
  ASSERT_EQ(Holds(found, {"control header", "control checksum", "length"}) && hasType, finds)
      << bytes.size();
}

TEST(SameVerdict, Blocks) {
  const Bytes block = BlockOf({}, kGammaLut);
  std::mt19937 random(3);
  for (size_t size = 0; size <= block.size(); size += size < 200 ? 1 : 97) {
    CompareBlock({block.begin(), block.begin() + static_cast<ptrdiff_t>(size)});
  }
  CompareBlock(block);
  for (int i = 0; i < 300; ++i) {
    Bytes changed = block;
    changed[i < 200 ? static_cast<size_t>(i) : random() % block.size()] ^=
        static_cast<uint8_t>(1 + random() % 255);
    CompareBlock(changed);
  }
}

TEST(SameVerdict, Tables) {
  const Bytes table = MakeFirmwareTable({BlockOf({}, kGammaLut), BlockOf({}, kP3Lut)});
  for (size_t size = 0; size <= table.size(); size += size < 200 ? 1 : 997) {
    CompareTable({table.begin(), table.begin() + static_cast<ptrdiff_t>(size)});
  }
  CompareTable(table);
  std::mt19937 random(4);
  for (size_t i = 0; i < 300; ++i) {
    Bytes changed = table;
    // The ACPI header, the control header and the second block's header, all of them.
    const size_t at = i < 200 ? i : 68 + 24725 + i - 200;
    changed[at] ^= static_cast<uint8_t>(1 + random() % 255);
    CompareTable(changed);
  }
}

TEST_P(Damaged, ChangedBytes) {
  const Sample& sample = GetParam();
  std::mt19937 random(20261121);
  for (int i = 0; i < 400; ++i) {
    Bytes bytes = sample.bytes;
    // Mostly in the heads, where the numbers are.
    const size_t range = i % 4 == 0 ? bytes.size() : std::min<size_t>(bytes.size(), 300);
    for (int k = 0; k <= i % 3; ++k) {
      bytes[random() % range] = static_cast<uint8_t>(random());
    }
    const GuardedBuffer file(bytes);
    InspectAll(file.Bytes(), FileKind::Unknown);
    InspectAll(file.Bytes(), sample.kind);
  }
}

TEST_P(Damaged, AsEveryOtherKind) {
  const Sample& sample = GetParam();
  for (const KindName& kind : KindNames()) {
    for (const size_t size : {sample.bytes.size(), sample.bytes.size() / 2, size_t{200}}) {
      const GuardedBuffer file(sample.bytes, std::min(size, sample.bytes.size()));
      InspectAll(file.Bytes(), kind.kind);
      try {
        DrawFile(file.Bytes(), kind.kind, surroundings_);
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.Status(), kBadFile);
      }
    }
  }
}

std::vector<Sample> Samples() {
  const PanelDescription panel;
  Bytes digest = MakeDigestRecord("P3.icc", {1});
  const Bytes second = MakeDigestRecord("sRGB.icc", {2});
  digest.insert(digest.end(), second.begin(), second.end());
  return {{"FirmwareTable", FileKind::FirmwareTable,
           MakeFirmwareTable({BlockOf(panel, kGammaLut), BlockOf(panel, kGammaLut)})},
          {"GoldenFile", FileKind::GoldenFile, MakeGoldenFile({BlockOf(panel, kP3Lut)})},
          {"LutBinFile", FileKind::LutBinFile, BlockOf(panel, kP3Lut)},
          {"UserLutFile", FileKind::UserLutFile, MakeUserLutFile(panel, kGammaLut)},
          {"Edid", FileKind::Edid, MakeEdid(panel)},
          {"DigestFile", FileKind::DigestFile, digest},
          {"UserProfile", FileKind::UserProfile, MakeUserProfile("Reading")}};
}

INSTANTIATE_TEST_SUITE_P(EachKind, Damaged, ::testing::ValuesIn(Samples()),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST(Damaged, AnyBytes) {
  std::mt19937 random(7);
  for (int i = 0; i < 500; ++i) {
    Bytes bytes(random() % 3000);
    for (uint8_t& byte : bytes) {
      byte = static_cast<uint8_t>(random());
    }
    const GuardedBuffer file(bytes);
    for (const KindName& kind : KindNames()) {
      const Inspection found = Inspect(file.Bytes(), {}, kind.kind);
      EXPECT_NO_THROW((void)found.report.dump());
    }
  }
}

}  // namespace
}  // namespace veloractl
