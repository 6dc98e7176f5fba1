#include "virtualnotebook/tour/Pipeline.h"

#include <algorithm>

namespace tour {

void TakePipeline(const virtualnotebook::Notebook& notebook, softwarepanel::State& state) {
  notebook.Locked([&] {
    const virtualnotebook::PlatformState& platform = notebook.platform;
    state.platformType = notebook.platformType;
    state.has3DLut = platform.lut3D.empty() ? 0 : 1;
    std::ranges::copy(platform.lut3D, state.lut3D);
    state.hasGammaLut = platform.gammaLut.empty() ? 0 : 1;
    std::ranges::copy(platform.gammaLut, state.gammaLut);
    state.hasMatrix = platform.pccMatrix ? 1 : 0;
    if (platform.pccMatrix) {
      std::ranges::copy(*platform.pccMatrix, state.matrix);
    }
    if (!platform.temperatures3D.empty()) {
      state.temperatureKind = softwarepanel::kTemperature3D;
      state.temperature3D = platform.temperatures3D.back();
    }
  });
}

}  // namespace tour
