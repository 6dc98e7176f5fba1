#include "veloractl/inspect/CubeText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "frame/Sha256.h"
#include "panel/ByteOrder.h"
#include "veloractl/inspect/FileLayout.h"

namespace veloractl {
namespace {

using velora::kBlockHeaderSize;
using velora::kGammaEntries;
using velora::kGridSize;

constexpr int kDecimals = 7;

// Of a file's value and an integer, in integer steps: the text's own rounding is no deviation.
constexpr double kSame = 0.001;

// Of a user's LUT, whose header is zeros but for type, precision and length.
constexpr uint8_t kPrecision = 12;  // bits

[[noreturn]] void Refuse(size_t line, const std::string& why) {
  throw Failure(kBadFile, "line " + std::to_string(line) + ": " + why);
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::vector<std::string_view> WordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  while (!line.empty()) {
    const auto start = std::ranges::find_if_not(line, IsBlank);
    line.remove_prefix(static_cast<size_t>(start - line.begin()));
    const auto length = static_cast<size_t>(std::ranges::find_if(line, IsBlank) - line.begin());
    if (length > 0) {
      words.push_back(line.substr(0, length));
    }
    line.remove_prefix(length);
  }
  return words;
}

std::optional<double> NumberOf(std::string_view word) {
  double value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  const bool isWhole = error == std::errc() && end == word.data() + word.size();
  return isWhole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

class Reader {
 public:
  CubeLut Read(std::string_view text) {
    while (!text.empty()) {
      const size_t end = std::min(text.find('\n'), text.size());
      ++line_;
      ReadLine(text.substr(0, end));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (size_ == 0) {
      throw Failure(kBadFile, "the text has neither LUT_3D_SIZE nor LUT_1D_SIZE: it is no .cube");
    }
    if (entries_ != Entries()) {
      throw Failure(kBadFile, "the text has " + std::to_string(entries_) + " entries of " +
                                  std::to_string(Entries()));
    }
    return std::move(cube_);
  }

 private:
  size_t Entries() const { return static_cast<size_t>(cube_.lut.Entries()); }

  void ReadLine(std::string_view line) {
    const std::vector<std::string_view> words = WordsOf(line);
    if (words.empty() || words.front().front() == '#') {
      return;
    }
    const std::string_view first = words.front();
    if (first == "TITLE") {
      const size_t open = line.find('"');
      const size_t close = line.rfind('"');
      cube_.title = open < close ? std::string(line.substr(open + 1, close - open - 1)) : "";
    } else if (first == "LUT_3D_SIZE" || first == "LUT_1D_SIZE") {
      ReadSize(words, first == "LUT_1D_SIZE");
    } else if (first == "DOMAIN_MIN" || first == "DOMAIN_MAX") {
      RequireAll(words, first == "DOMAIN_MIN" ? 0 : 1);
    } else if (first == "LUT_3D_INPUT_RANGE" || first == "LUT_1D_INPUT_RANGE") {
      if (words.size() != 3 || NumberOf(words[1]) != 0.0 || NumberOf(words[2]) != 1.0) {
        Refuse(line_, "only a LUT from 0 to 1 can be converted");
      }
    } else {
      ReadEntry(words);
    }
  }

  void RequireAll(const std::vector<std::string_view>& words, double wanted) const {
    const bool isWanted =
        words.size() == 4 && std::all_of(words.begin() + 1, words.end(),
                                         [&](auto word) { return NumberOf(word) == wanted; });
    if (!isWanted) {
      Refuse(line_, "only a LUT from 0 to 1 can be converted");
    }
  }

  void ReadSize(const std::vector<std::string_view>& words, bool isGamma) {
    const auto size = words.size() == 2 ? NumberOf(words[1]) : std::nullopt;
    if (size_ != 0) {
      Refuse(line_, "a second size: only one LUT in a file can be converted");
    }
    const int wanted = isGamma ? kGammaEntries : kGridSize;
    if (size != wanted) {
      Refuse(line_, "the size is " + (words.size() == 2 ? std::string(words[1]) : "missing") +
                        ", and the panel takes " +
                        (isGamma ? "1024 (LUT_1D_SIZE)" : "17 (LUT_3D_SIZE)") +
                        " only: let the program that made the LUT export that size");
    }
    size_ = static_cast<size_t>(wanted);
    cube_.lut.isGamma = isGamma;
    cube_.lut.values.resize(3 * Entries());
  }

  void ReadEntry(const std::vector<std::string_view>& words) {
    if (size_ == 0) {
      Refuse(line_, "\"" + AsciiOf(std::string(words.front())) + "\" ahead of the size");
    }
    if (words.size() != 3) {
      Refuse(line_, "an entry is three numbers");
    }
    if (entries_ == Entries()) {
      Refuse(line_, "more entries than " + std::to_string(Entries()));
    }
    for (size_t channel = 0; channel < 3; ++channel) {
      const auto value = NumberOf(words[channel]);
      if (!value) {
        Refuse(line_, "\"" + AsciiOf(std::string(words[channel])) + "\" is no number");
      }
      if (*value < 0 || *value > 1) {
        Refuse(line_, NumberText(*value) + " is not within 0 to 1");
      }
      Store(channel, *value * cube_.lut.Maximum());
    }
    ++entries_;
  }

  void Store(size_t channel, double value) {
    const double rounded = std::round(value);
    const double off = std::fabs(value - rounded);
    if (off > kSame) {
      ++cube_.rounded;
      cube_.mostRounded = std::max(cube_.mostRounded, off);
    }
    cube_.lut.values[3 * OwnEntry() + channel] = rounded;
  }

  // Red is fastest here, blue in the library's grid.
  size_t OwnEntry() const {
    if (cube_.lut.isGamma) {
      return entries_;
    }
    const size_t red = entries_ % size_;
    const size_t green = entries_ / size_ % size_;
    const size_t blue = entries_ / (size_ * size_);
    return (red * size_ + green) * size_ + blue;
  }

  CubeLut cube_;
  size_t size_ = 0;
  size_t entries_ = 0;
  size_t line_ = 0;
};

void AppendEntry(std::string& text, const double* entry, double maximum) {
  for (size_t channel = 0; channel < 3; ++channel) {
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                   entry[channel] / maximum, std::chars_format::fixed, kDecimals);
    text.append(digits.data(), end.ptr);
    text += channel < 2 ? ' ' : '\n';
  }
}

}  // namespace

std::string CubeOf(const DecodedBlock& lut, const std::string& title) {
  std::string clean = title;
  std::ranges::replace_if(
      clean, [](char c) { return c < ' ' || c > '~' || c == '"'; }, '_');
  std::string text = "TITLE \"" + clean + "\"\n";
  text += lut.isGamma ? "LUT_1D_SIZE 1024\n" : "LUT_3D_SIZE 17\n";
  text += "DOMAIN_MIN 0 0 0\nDOMAIN_MAX 1 1 1\n";
  if (lut.isGamma) {
    for (size_t entry = 0; entry < kGammaEntries; ++entry) {
      AppendEntry(text, &lut.values[3 * entry], lut.Maximum());
    }
    return text;
  }
  constexpr size_t kSize = kGridSize;
  for (size_t blue = 0; blue < kSize; ++blue) {
    for (size_t green = 0; green < kSize; ++green) {
      for (size_t red = 0; red < kSize; ++red) {
        AppendEntry(text, &lut.values[3 * ((red * kSize + green) * kSize + blue)], lut.Maximum());
      }
    }
  }
  return text;
}

CubeLut ParseCube(std::string_view text) { return Reader().Read(text); }

std::vector<uint8_t> MakeLutFile(const DecodedBlock& lut, ByteSpan header) {
  std::vector<uint8_t> file(velora::LutBlockSize(lut.Entries()));
  const size_t length = velora::LutDataLength(lut.Entries());
  if (header.empty()) {
    file[kTypeOffset] = kUserLutTypeByte;
    file[kPrecisionOffset] = kPrecision;
    velora::WriteBe32(static_cast<uint32_t>(length), &file[kLengthOffset]);
  } else {
    std::ranges::copy(header.first(kBlockHeaderSize), file.begin());
  }
  velora::EncodeLut(lut.values.data(), lut.Entries(), &file[kBlockHeaderSize]);
  const size_t hashed = kBlockHeaderSize + length;
  if (!velora::Sha256(ByteSpan(file).first(hashed), &file[hashed])) {
    throw Failure(kRefused, "no memory for the hash");
  }
  return file;
}

}  // namespace veloractl
