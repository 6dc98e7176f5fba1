#include "settings/Gains.h"

#include <utility>

namespace velora {
namespace {

constexpr wchar_t kRed[] = L"r";
constexpr wchar_t kGreen[] = L"g";
constexpr wchar_t kBlue[] = L"b";

}  // namespace

ResultT ReadGains(const RegisterHelper& registry, HKEY root, const std::wstring& subKey, double* r,
                  double* g, double* b) {
  for (const auto& [name, gain] : {std::pair(kRed, r), std::pair(kGreen, g), std::pair(kBlue, b)}) {
    if (const ResultT result = registry.RegReadValue(root, subKey, name, gain);
        result != ResultOk) {
      return result;
    }
  }
  return ResultOk;
}

ResultT WriteGains(const RegisterHelper& registry, HKEY root, const std::wstring& subKey, double r,
                   double g, double b) {
  for (const auto& [name, gain] : {std::pair(kRed, r), std::pair(kGreen, g), std::pair(kBlue, b)}) {
    if (const ResultT result = registry.RegWriteValue(root, subKey, name, gain);
        result != ResultOk) {
      return result;
    }
  }
  return ResultOk;
}

}  // namespace velora
