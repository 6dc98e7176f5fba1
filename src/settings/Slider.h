#pragma once

namespace velora {

// The sliders of colour temperature and eye protection share one scale.
inline constexpr int kSliderMin = 0;
inline constexpr int kSliderMax = 366;

inline bool IsSliderPosition(int value) { return value >= kSliderMin && value <= kSliderMax; }

}  // namespace velora
