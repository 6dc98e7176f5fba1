// Natural colour: its start and its stop.
#include "frame/Log.h"
#include "naturalcolor/NaturalColorApi.h"
#include "velora/VeloraCtlApi.h"

using velora::FunctionLog;
using velora::NaturalColorApi;

void InitNatureColor(const NatureColorDataIn* dataIn) {
  FunctionLog(__func__).Info(L"dataIn:frameCount:", dataIn->frameCount, L", frameTime:",
                             dataIn->frameTime, L", dimmingThreshold:", dataIn->dimmingThreshold,
                             L", methodVersion:", dataIn->methodVersion, L", minLuma:",
                             dataIn->minLuma, L", luminanceThreshold:", dataIn->luminanceThreshold,
                             L", monitorType:", dataIn->monitorType, L", executionType:",
                             dataIn->executionType, L", algoInfoCnt:", dataIn->algoInfoCnt);
  NaturalColorApi::GetInstance().InitNatureColor(dataIn);
}

void FiniNatureColor() {
  FunctionLog(__func__).Info();
  NaturalColorApi::GetInstance().FiniNatureColor();
}
