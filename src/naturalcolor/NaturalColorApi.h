#pragma once

#include "naturalcolor/NaturalColorAdjustAlgorithm.h"
#include "naturalcolor/NaturalColorMsg.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// The door of natural colour: starts from the inside out and stops from the outside in, so that a
// reading always finds a curve and a thread. A process that runs it is the only one to do so;
// others change settings and ring.
//
// Threads: start and stop from one, once each, in this order.
class NaturalColorApi {
 public:
  // Destroyed with the library: by then natural colour must be stopped.
  static NaturalColorApi& GetInstance();

  NaturalColorApi(const NaturalColorApi&) = delete;
  NaturalColorApi& operator=(const NaturalColorApi&) = delete;

  void InitNatureColor(const NatureColorDataIn* dataIn);
  void FiniNatureColor();

  NaturalColorMsg& GetNaturalColorMsg() { return naturalColorMsg_; }

 private:
  NaturalColorApi() = default;

  NaturalColorAdjustAlgorithm adjustAlgorithm_;
  NaturalColorMsg naturalColorMsg_{&adjustAlgorithm_};
};

}  // namespace velora
