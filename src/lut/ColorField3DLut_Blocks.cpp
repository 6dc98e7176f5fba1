#include "lut/ColorField3DLut.h"

#include <algorithm>
#include <string>

#include "frame/Log.h"
#include "frame/Sha256.h"
#include "lut/LutBlock.h"

// A table is 52 bytes that are not looked at, the control header, and blocks at one stride,
// whatever their kind: what lies behind a gamma block's hash is filling. The golden file is a table
// without its first 52 bytes.
namespace velora {
namespace {

constexpr size_t kPrefixSize = 52;  // ahead of the control header
constexpr char kFiller = '0';       // the character

constexpr uint32_t kGammaLutType = 160;

// Replaces a table by the first of its blocks that is wanted.
template <typename IsWanted>
bool ReduceToBlock(LutBuffer& table, BiosControlHeader& header, const FunctionLog& log,
                   const wchar_t* lengthError, IsWanted isWanted) {
  if (table.size() < kPrefixSize + BiosControlHeader::kSize ||
      !header.Parse(BytesOf(table) + kPrefixSize, BiosControlHeader::kSize)) {
    log.Error(L"biosControlHeader Parse Failed!");
    return false;
  }
  uint64_t position = kPrefixSize + header.GetHeaderLength();
  const uint64_t size = header.GetBlockSize();
  const uint64_t target = position + header.GetBlockCount() * size;  // below 2^49
  if (size == 0 || table.size() < target) {
    log.Error(lengthError, table.size(), L"target len is ", target);
    return false;
  }
  for (; position < target; position += size) {
    if (isWanted(BytesOf(table) + position, size)) {
      table = table.substr(position, size);
      return true;
    }
  }
  return false;
}

struct HeaderErrors {
  const wchar_t* noData;
  const wchar_t* tooShort;
  const wchar_t* unparsed;
};

// Each line is an error's text and the subject.
template <typename... Subject>
bool ParseBlockHeader(BiosHeaderV2& header, const uint8_t* data, size_t length,
                      const FunctionLog& log, const HeaderErrors& errors,
                      const Subject&... subject) {
  if (data == nullptr) {
    log.Error(errors.noData, subject...);
    return false;
  }
  if (length < kBlockHeaderSize) {
    log.Error(errors.tooShort, subject...);
    return false;
  }
  if (!header.Parse(data, length)) {
    log.Error(errors.unparsed, subject...);
    return false;
  }
  return true;
}

}  // namespace

void ColorField3DLut::PadFirmwarePrefix(LutBuffer& buffer) {
  buffer.insert(0, kPrefixSize, kFiller);
}

bool ColorField3DLut::GetOneLutDat3D(ColorFieldMode mode, LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::GetOneLutDat3D");
  if (buffer.size() < BiosControlHeader::kSize) {
    log.Error(L"Data error!mode:", mode);
    return false;
  }
  return ReduceToBlock(
      buffer, biosControlHeader, log, L"3D Lut Table len is error, buffLen is ",
      [&](const uint8_t* block, size_t size) { return OneLutTypeIsValid(mode, block, size); });
}

bool ColorField3DLut::GetOneLutDatGamma(LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::GetOneLutDatGamma");
  if (buffer.size() < BiosControlHeader::kSize) {
    log.Error(L"Gamma Data error!");
    return false;
  }
  return ReduceToBlock(
      buffer, biosControlHeader, log, L"Gamma Lut Table len is error, buffLen is ",
      [&](const uint8_t* block, size_t size) { return OneLutTypeIsValidGamma(block, size); });
}

bool ColorField3DLut::OneLutTypeIsValid(ColorFieldMode mode, const uint8_t* data, size_t length) {
  constexpr FunctionLog log("ColorField3DLut::OneLutTypeIsValid");
  constexpr HeaderErrors errors = {L"3DLut data pLutData3D is nullptr!mode:",
                                   L"3DLut data buffLen error!mode:",
                                   L"biosHeaderV2 Parse Failed!mode:"};
  if (!ParseBlockHeader(biosHeaderV2_, data, length, log, errors, mode, L", buffLen:", length)) {
    return false;
  }
  return static_cast<uint32_t>(gamutLutTypeTable_[modeGamutTable_[mode]]) ==
         biosHeaderV2_.GetLutType();
}

bool ColorField3DLut::OneLutTypeIsValidGamma(const uint8_t* data, size_t length) {
  constexpr FunctionLog log("ColorField3DLut::OneLutTypeIsValidGamma");
  constexpr HeaderErrors errors = {L"GammaLut data pLutDataGamma is nullptr! buffLen:",
                                   L"GammaLut data buffLen error! buffLen:",
                                   L"biosHeaderV2 Parse Failed! buffLen:"};
  return ParseBlockHeader(biosHeaderV2_, data, length, log, errors, length) &&
         biosHeaderV2_.GetLutType() == kGammaLutType;
}

bool ColorField3DLut::IsLutDataValid3D(const LutBuffer& buffer) {
  constexpr FunctionLog log("ColorField3DLut::IsLutDataValid3D");
  if (buffer.size() < kBlockHeaderSize) {
    log.Error(L"3D Lut data error!");
    return false;
  }
  if (!biosHeaderV2_.Parse(buffer)) {
    log.Error(L"biosHeaderV2_ Parse error.");
    return false;
  }
  const uint64_t hashedSize = uint64_t{kBlockHeaderSize} + biosHeaderV2_.GetDataLength();
  if (buffer.size() < hashedSize + kSha256Size) {
    log.Error(L"Lut Data Len error!");
    return false;
  }
  uint8_t hash[kSha256Size];
  if (!Sha256({BytesOf(buffer), hashedSize}, hash) ||
      !std::equal(hash, hash + kSha256Size, BytesOf(buffer) + hashedSize)) {
    log.Error(L"SHA256 Value is not match, shadata len is ", hashedSize);
    return false;
  }
  return true;
}

bool ColorField3DLut::ParseLutData(ColorFieldMode mode, const uint8_t* data, size_t length,
                                   double* out) {
  constexpr FunctionLog log("ColorField3DLut::ParseLutData");
  if (data == nullptr || length < k3DBlockSize) {
    log.Error(L"LutDataFile Error!mode:", mode);
    return false;
  }
  if (out == nullptr) {
    log.Error(L"pLutData3D is nullptr!mode:", mode);
    return false;
  }
  DecodeLut({data, length}, k3DEntries, out);
  return true;
}

}  // namespace velora
