// Writes what the fuzzers start from into a folder, one below it for each: data of the factory's
// machines, whole and spoilt in the places that count.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "support/UserProfile.h"
#include "virtualnotebook/Factory.h"

namespace {

using virtualnotebook::Bytes;
using virtualnotebook::MakeLutBlock;

constexpr uint8_t kLutTypes[] = {virtualnotebook::kBaseLut, virtualnotebook::kP3Lut,
                                 virtualnotebook::kSrgbLut, virtualnotebook::kEbookLut,
                                 virtualnotebook::kGammaLut};

class Folder {
 public:
  Folder(const std::filesystem::path& top, const char* fuzzer) : path_(top / fuzzer) {
    std::filesystem::create_directories(path_);
  }
  void Add(const std::string& name, const Bytes& content) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()),
               static_cast<std::streamsize>(content.size()));
    if (!file.flush()) {
      std::fprintf(stderr, "cannot write %s\n", (path_ / name).string().c_str());
      std::exit(1);
    }
  }
  // With itself cut at some places.
  void AddWithCuts(const std::string& name, const Bytes& content,
                   std::initializer_list<size_t> sizes) const {
    Add(name, content);
    for (const size_t size : sizes) {
      Add(name + "-cut-" + std::to_string(size),
          Bytes(content.begin(),
                content.begin() + static_cast<ptrdiff_t>(std::min(size, content.size()))));
    }
  }

 private:
  std::filesystem::path path_;
};

class Record {
 public:
  template <typename Value>
  Record& Put(Value value) {
    uint8_t bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    bytes_.insert(bytes_.end(), bytes, bytes + sizeof value);
    return *this;
  }
  Record& Put(const Bytes& bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
  }
  // Its length ahead of it.
  Record& PutName(const std::string& name) {
    return Put(static_cast<uint8_t>(name.size())).Put(Bytes(name.begin(), name.end()));
  }
  const Bytes& Made() const { return bytes_; }

 private:
  Bytes bytes_;
};

const virtualnotebook::PanelDescription kPanel{};

// Of the size that it has, or of a few entries: all ways to a decoder are in a small table, too,
// and thousands of times as fast.
Bytes Block(uint8_t lutType, bool isSmall) {
  std::vector<double> lut = virtualnotebook::MakeLut(kPanel, lutType);
  if (isSmall) {
    lut.resize(12);
  }
  return MakeLutBlock(virtualnotebook::HeaderOf(kPanel, lutType), lut);
}

std::vector<Bytes> Blocks(bool isSmall) {
  std::vector<Bytes> blocks;
  for (const uint8_t lutType : kLutTypes) {
    blocks.push_back(Block(lutType, isSmall));
  }
  return blocks;
}

void WriteTables(const std::filesystem::path& top) {
  const Folder tables(top, "FirmwareTable");
  const Folder golden(top, "GoldenFile");
  const auto add = [&](const std::string& name, const std::vector<Bytes>& blocks, uint32_t stride) {
    tables.Add(name, virtualnotebook::MakeFirmwareTable(blocks, stride));
    golden.Add(name, virtualnotebook::MakeGoldenFile(blocks, stride));
  };
  add("whole", Blocks(false), 0);
  add("small", Blocks(true), 0);
  add("wide-stride", Blocks(true), 300);
  add("no-blocks", {}, 200);
  std::vector<Bytes> damaged = Blocks(true);
  for (Bytes& block : damaged) {
    block[130] ^= 1;
  }
  add("damaged", damaged, 0);
  std::vector<Bytes> unknown = Blocks(true);
  for (Bytes& block : unknown) {
    block[64] = 5;
  }
  add("unknown-types", unknown, 0);
  const Bytes small = virtualnotebook::MakeFirmwareTable(Blocks(true));
  tables.AddWithCuts("small", small, {0, 15, 16, 51, 67, 68, 200, small.size() - 1});
}

void WriteLutFiles(const std::filesystem::path& top) {
  const Folder files(top, "LutFile");
  files.AddWithCuts("p3", Block(virtualnotebook::kP3Lut, false), {0, 127, 128, 24724});
  Bytes gamma = Block(virtualnotebook::kGammaLut, false);
  files.Add("gamma", gamma);
  gamma.resize(24725, 0xFF);
  files.Add("gamma-stride", gamma);
  files.Add("small", Block(virtualnotebook::kSrgbLut, true));

  const Folder users(top, "UserLutFile");
  const virtualnotebook::BlockHeader header = {std::string(8, '\0'), std::string(4, '\0'),
                                               std::string(2, '\0'), std::string(4, '\0'), 0x0B};
  users.Add("3d",
            MakeLutBlock(header, virtualnotebook::MakeLut(kPanel, virtualnotebook::kSrgbLut)));
  users.Add("gamma", MakeLutBlock(header, virtualnotebook::MakeLut(kPanel, 160)));
  users.Add("values", Record()
                          .Put(0.0)
                          .Put(1023.0)
                          .Put(4095.5)
                          .Put(-1.0)
                          .Put(65536.0)
                          .Put(1e300)
                          .Put(std::numeric_limits<double>::quiet_NaN())
                          .Put(-std::numeric_limits<double>::infinity())
                          .Made());
}

void WriteEdids(const std::filesystem::path& top) {
  const Folder folder(top, "Edid");
  folder.AddWithCuts("panel", virtualnotebook::MakeEdid(kPanel), {0, 34, 35, 127});
  virtualnotebook::PanelDescription other = kPanel;
  other.vendor = "AZM";
  other.week = 255;
  other.year = 1990;
  other.gamma = 1.0;
  other.red = {0, 0};
  folder.Add("other", virtualnotebook::MakeEdid(other));
}

void WriteProfiles(const std::filesystem::path& top) {
  const Folder digests(top, "DigestFile");
  const Bytes digest = virtualnotebook::MakeDigestFile(
      {{"NVX-sRGB.icc", {1}}, {"NVX-P3.icc", {2}}, {std::string(62, 'n'), {3}}});
  for (const std::string& name : {std::string("NVX-P3.icc"), std::string("P3.icc"), std::string(),
                                  std::string(62, 'n'), std::string("none.icc")}) {
    digests.Add("name-" + std::to_string(name.size()), Record().PutName(name).Put(digest).Made());
  }

  const Folder profiles(top, "UserProfile");
  for (const std::string& name : {std::string("Mine"), std::string("m"), std::string(46, 'n')}) {
    const Bytes profile = testsupport::MakeUserProfile(name);
    profiles.AddWithCuts("name-" + std::to_string(name.size()),
                         Record().PutName(name).Put(profile).Made(), {0, 100, profile.size() - 1});
  }
  Bytes odd = testsupport::MakeUserProfile("Mine");
  odd[143] = 28 + 7;
  profiles.Add("odd-length", Record().PutName(std::string("Min\0", 4)).Put(odd).Made());
}

void WriteValues(const std::filesystem::path& top) {
  const Folder ini(top, "IniValues");
  int number = 0;
  for (const std::string text :
       {"0",          "1",           "80",    "-1", "2.2",    "0.9999", "4294967295", "4294967296",
        "2147483648", "-2147483649", "12abc", " 7", "0x1p-3", "1e308",  "1e309",      "4.9e-324",
        "inf",        "nan(1)",      "+",     "1e", "",       "  ",     "1,5"}) {
    ini.Add("text-" + std::to_string(number++), Bytes(text.begin(), text.end()));
  }

  const Folder curves(top, "CctCurve");
  for (const int points : {0, 2, 5, 31}) {
    Record record;
    record.Put(static_cast<uint8_t>(points));
    for (int i = 0; i < points; ++i) {
      const double way = i / 30.0;
      record.Put(2700.0F + 200.0F * static_cast<float>(i))
          .Put(1.0)
          .Put(0.8 + 0.2 * way)
          .Put(0.6 + 0.4 * way);
    }
    record.Put(int32_t{50}).Put(4000.0F).Put(50.0F).Put(100.0F);
    for (const float cct : {5000.0F, 6500.0F, 6510.0F, 2000.0F, 9000.0F}) {
      record.Put(cct).Put(cct / 50).Put(static_cast<uint8_t>(cct > 6400));
    }
    curves.Add("points-" + std::to_string(points), record.Made());
  }

  const Folder circle(top, "CirclePoints");
  Record points;
  for (const double x : {0.0, 40.0, 80.0, 120.0, 160.0}) {
    for (const double y : {0.0, 80.0, 81.0, 160.0}) {
      points.Put(uint8_t{0}).Put(x).Put(y).Put(80.0);
    }
  }
  circle.Add("doubles", points.Made());
  Record steps;
  for (int i = 0; i < 30; ++i) {
    steps.Put(uint8_t{3})
        .Put(static_cast<uint16_t>(1365 * i))
        .Put(static_cast<uint16_t>(40960 - 911 * i));
  }
  circle.Add("steps", steps.Made());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
    return 2;
  }
  const std::filesystem::path top = argv[1];
  WriteTables(top);
  WriteLutFiles(top);
  WriteEdids(top);
  WriteProfiles(top);
  WriteValues(top);
  return 0;
}
