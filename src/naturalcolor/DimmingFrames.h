#pragma once

#include <atomic>
#include <cstdint>

namespace velora {

// The colour temperature of a display that nothing has changed, in kelvin.
inline constexpr float kDefaultCct = 5000.0F;

// The arithmetic of dimming, the walk of the display's colour temperature to a target in frames:
// when a reading starts one, and where each frame stands. Colour temperatures are in kelvin, all in
// single precision. Knows neither threads nor the display; who shares it guards it.
//
// A dimming has frameCount_ frames of one step, and a last one that lands on the target whatever
// the steps' fractions left over. The short one, for switching on and off, skips the first
// kSwitchFrames frames and takes steps made for that many.
class DimmingFrames {
 protected:
  // --- Readings ---

  // What the display is to be like in a room with this light: ctLowLuma_ in the dark.
  float TargetOf(float ambientCct, float lux) const;

  // Whether the target is far enough from the reading that was followed last.
  bool IsEnableCctDimming(float targetCct) const;

  // From the colour temperature on the display, also in the middle of a dimming.
  void StartDimming(float targetCct);
  void StopDimming();

  // --- Frames ---

  // Makes cctVal_ the colour temperature of the frame that is due, between the one on the display
  // and the target.
  void NextFrame(float targetCct, float previousCct);

  // Ends the dimming behind its last frame.
  void CheckLastFrame();

  // The change of each frame. Takes isSwitchDimming_ back.
  int32_t GetStepValue(float targetCct, float previousCct);

  // --- Settings ---

  int32_t frameCount_ = 50;
  float ctLowLuma_ = 4000.0F;
  float luminanceThresh_ = 50.0F;  // in lux
  float dimmingThresh_ = 100.0F;

  // --- State ---

  float targetCct_ = kDefaultCct;
  std::atomic<bool> isDimming_ = false;  // also set by a thread that holds no lock
  bool isSwitchDimming_ = false;         // the next dimming is the short one
  float previousAmbientCct_ = kDefaultCct;
  int32_t step_ = 0;
  float cctVal_ = kDefaultCct;
  int32_t frameIndex_ = 0;  // frames done, plus the skipped ones
};

}  // namespace velora
