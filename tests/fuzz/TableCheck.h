#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/PlainBlocks.h"
#include "lut/ColorField3DLut.h"
#include "support/LogCapture.h"

namespace fuzz {

// A block that the library took out of a table, or read from a file: proof and values.
inline void CheckBlock(velora::ColorField3DLut& engine, const std::string& block) {
  const std::span<const uint8_t> bytes(velora::BytesOf(block), block.size());
  const testsupport::LogCapture log;
  const bool isGood = engine.IsLutDataValid3D(block);
  Require(isGood == (ProvePlainBlock(bytes) == PlainProof::Good), "the proof is the plain form's");
  Require(log.Lines().size() == (isGood ? 0 : 1), "a refusal has one line");

  constexpr double kUntouched = -1;
  static std::vector<double> lut(4913 * 3);  // once: inputs are many, and small
  lut.front() = lut.back() = kUntouched;
  const bool isDecoded = engine.ParseLutData(1, bytes.data(), bytes.size(), lut.data());
  Require(isDecoded == (bytes.size() >= kPlain3DBlockSize), "a whole 3D LUT is decoded");
  Require(isDecoded ? lut == DecodePlainBlock(bytes, 4913)
                    : lut.front() == kUntouched && lut.back() == kUntouched,
          "the values are the plain form's, or none");
}

// The fields of a block's header, by their offsets.
inline void CheckHeader(std::span<const uint8_t> header) {
  const std::string text = ToBuffer(header);
  velora::BiosHeaderV2 parsed;
  Require(parsed.velora::BiosHeaderBase::Parse(text), "a whole header is parsed");
  Require(parsed.GetTag() == text.substr(0, 4) && parsed.GetVersionText() == text.substr(4, 2) &&
              parsed.GetPanelField(0) == text.substr(6, 4) &&
              parsed.GetPanelField(9) == text.substr(42, 4) &&
              parsed.GetSerialNumber() == text.substr(46, 8) &&
              parsed.GetYear() == text.substr(54, 4) && parsed.GetWeek() == text.substr(58, 2) &&
              parsed.GetVendor() == text.substr(60, 4),
          "each field has its place");
  const std::string version = text.substr(4, 2);
  const testsupport::LogCapture log;
  Require(velora::BiosHeaderBase::GetVersion(text) == (version == "01"   ? 0
                                                       : version == "02" ? 1
                                                                         : 2),
          "versions are 1 and 2");
}

// The search for every LUT type that something asks for, in one table.
inline void CheckTable(const Bytes& table) {
  struct Wanted {
    int mode;  // -1: the gamma LUT
    uint32_t lutType;
  };
  constexpr Wanted kWanted[] = {{0, 0}, {1, 1}, {2, 2}, {7, 7}, {10, 4}, {-1, 160}};
  velora::ColorField3DLut engine;
  for (const auto& [mode, lutType] : kWanted) {
    const PlainTable plain = ReadPlainTable(table, lutType);
    std::string buffer = ToBuffer(table);
    {
      const testsupport::LogCapture log;
      const bool isFound =
          mode < 0 ? engine.GetOneLutDatGamma(buffer) : engine.GetOneLutDat3D(mode, buffer);
      Require(isFound == plain.block.has_value(), "the plain form finds the same");
      Require(log.Lines().size() == plain.logLines, "the plain form logs as often");
    }
    const PlainTable::Block expected = plain.block.value_or(PlainTable::Block{0, table.size()});
    Require(buffer == ToBuffer(std::span(table).subspan(expected.offset, expected.size)),
            "the buffer is the first block of the type, or as it was");
    if (plain.block) {
      const auto* block = velora::BytesOf(buffer);
      Require(mode < 0 ? engine.OneLutTypeIsValidGamma(block, buffer.size())
                       : engine.OneLutTypeIsValid(mode, block, buffer.size()),
              "the block is of its type");
      CheckHeader(std::span(table).subspan(expected.offset, kPlainHeaderSize));
      CheckBlock(engine, buffer);
    }
  }
}

}  // namespace fuzz
