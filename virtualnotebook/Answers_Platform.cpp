// The display pipeline: what the platform library accepted is kept.
#include "virtualnotebook/Answers.h"

#include <algorithm>
#include <utility>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

constexpr int k3DEntries = 17 * 17 * 17;
constexpr int kGammaEntries = 1024;
constexpr int kRefused = 1;

// Hands the call on where that is wanted; where it succeeded, keep() notes what it did.
template <typename Keep, typename... Parameters>
int Accept(Notebook& notebook, Keep keep, int (*original)(Parameters...), Parameters... arguments) {
  const int result = notebook.forwardPlatform ? original(arguments...) : 0;
  if (result == 0) {
    const NotebookGuard guard(TheLock());
    keep(notebook.platform);
  }
  return result;
}

}  // namespace

int PlatformInit(Notebook& notebook, decltype(::PlatformInit)* original) {
  return Accept(
      notebook, [](PlatformState& platform) { platform.initialised = true; }, original);
}

int PlatformFini(Notebook& notebook, decltype(::PlatformFini)* original) {
  return Accept(
      notebook, [](PlatformState& platform) { platform.initialised = false; }, original);
}

int GetPlatform(Notebook& notebook, decltype(::GetPlatform)*, PlatformInfo* info) {
  if (info == nullptr) {
    return kRefused;
  }
  const NotebookGuard guard(TheLock());
  *info = {notebook.platformType, 0};
  return 0;
}

int PlatformSet3DLut(Notebook& notebook, decltype(::PlatformSet3DLut)* original, const double* lut,
                     int count) {
  if (lut == nullptr || count != k3DEntries) {
    return kRefused;
  }
  const auto keep = [=](PlatformState& platform) {
    platform.lut3D.assign(lut, lut + ptrdiff_t{3} * count);
  };
  return Accept(notebook, keep, original, lut, count);
}

int PlatformReset3DLut(Notebook& notebook, decltype(::PlatformReset3DLut)* original) {
  return Accept(
      notebook, [](PlatformState& platform) { platform.lut3D.clear(); }, original);
}

int PlatformSetGammaLut(Notebook& notebook, decltype(::PlatformSetGammaLut)* original,
                        const double* lut, int count) {
  if (lut == nullptr || count != kGammaEntries) {
    return kRefused;
  }
  const auto keep = [=](PlatformState& platform) {
    platform.gammaLut.assign(lut, lut + ptrdiff_t{3} * count);
  };
  return Accept(notebook, keep, original, lut, count);
}

int PlatformSetPccMatrixInfo(Notebook& notebook, decltype(::PlatformSetPccMatrixInfo)* original,
                             const PlatformPccMatrix* matrix) {
  if (matrix == nullptr) {
    return kRefused;
  }
  const auto keep = [=](PlatformState& platform) {
    std::copy_n(matrix->values, 9, platform.pccMatrix.emplace().data());
  };
  return Accept(notebook, keep, original, matrix);
}

int PlatformResetPccMatrixInfo(Notebook& notebook,
                               decltype(::PlatformResetPccMatrixInfo)* original) {
  return Accept(
      notebook, [](PlatformState& platform) { platform.pccMatrix.reset(); }, original);
}

int PlatformSet2DColorTemperature(Notebook& notebook,
                                  decltype(::PlatformSet2DColorTemperature)* original,
                                  const Color2DInfo* info) {
  return Accept(
      notebook, [](PlatformState&) {}, original, info);
}

int PlatformSet3DColorTemperature(Notebook& notebook,
                                  decltype(::PlatformSet3DColorTemperature)* original,
                                  const Color3DInfo* info) {
  if (info == nullptr) {
    return kRefused;
  }
  const auto keep = [=](PlatformState& platform) { platform.temperatures3D.push_back(*info); };
  return Accept(notebook, keep, original, info);
}

}  // namespace virtualnotebook::answers
