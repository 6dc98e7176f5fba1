#include "naturalcolor/NaturalColorApi.h"

#include "frame/Log.h"

namespace velora {

NaturalColorApi& NaturalColorApi::GetInstance() {
  static NaturalColorApi instance;
  return instance;
}

void NaturalColorApi::InitNatureColor(const NatureColorDataIn* dataIn) {
  constexpr FunctionLog log("NaturalColorApi::InitNatureColor");
  adjustAlgorithm_.InitNaturalColorAdjustAlgorithm(dataIn);
  naturalColorMsg_.InitNaturalColorMsg(static_cast<uint32_t>(dataIn->monitorType));
  log.Info(L"InitNatureColor end");
}

void NaturalColorApi::FiniNatureColor() {
  constexpr FunctionLog log("NaturalColorApi::FiniNatureColor");
  naturalColorMsg_.StopNaturalColorMsg();
  adjustAlgorithm_.StopNaturalColorAdjustAlgorithm();
  log.Info(L"FiniNatureColor Success");
}

}  // namespace velora
