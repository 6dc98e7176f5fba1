// The software panel behind the reference build of VeloraPlatform.dll, and what a viewer of it
// needs.
//
// The panel is the state of one display pipeline in shared memory. It is on while a process holds a
// SoftwarePanel (VeloraPlatform.dll takes one at its first call), shows defaults when it comes on,
// and forgets everything when the last holder goes. A viewer takes one as well, and so keeps the
// panel on between the programs that it watches. It links the CMake target softwarepanel; it does
// not need VeloraPlatform.dll.
//
// The pipeline, on display code values and for each pixel:
//
//   8 bits a channel
//   -> 3D LUT:     17 x 17 x 17 triples, 0 to 1023; full scale meets the last grid point; between
//                  the points tetrahedral interpolation; without one nothing happens
//   -> gamma LUT:  1024 triples by input level, 0 to 4095, the nearest level's; without one nothing
//                  happens. It is behind the 3D LUT, so that its slopes set the panel's white
//   -> matrix:     (R', G', B') = matrix (R, G, B), full scale being 1, cut off at 0 and 1
//   -> gains:      one factor a channel from the colour temperature
//   -> rounded to 8 bits
//
// The gains of a 3D colour temperature are r, g and b, blue times the eye protection. A 2D
// temperature is neutral in the middle of the slider, 183; towards 0 it grows warm (blue falls to
// 0.7, green to 0.85), towards 366 cool (red falls to 0.7, green to 0.85), in straight lines. Eye
// protection is 1 with colorBlue 0 and falls in a straight line to its strength with 255:
// protectValue, or 0.82 for a 2D temperature, which brings none.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "velora/VeloraCtlApi.h"

namespace softwarepanel {

inline constexpr size_t kGridPoints = 17;  // on each axis
inline constexpr size_t kLut3DEntries = kGridPoints * kGridPoints * kGridPoints;
inline constexpr size_t kGammaEntries = 1024;
inline constexpr double kLut3DMaximum = 1023;
inline constexpr double kGammaMaximum = 4095;

// Values of State::temperatureKind.
enum : uint32_t { kNoTemperature = 0, kTemperature2D = 2, kTemperature3D = 3 };

// One state of the pipeline: its layout in the shared memory too. Parts whose flag is 0, or that
// temperatureKind does not name, are without effect and hold what was set last.
struct State {
  uint32_t platformType = 2;    // offset 0; of the types known to the library, one that fuses
  uint32_t platformSecond = 2;  // 4
  uint32_t initCount = 0;       // 8; PlatformInit calls without their PlatformFini
  uint32_t hasGammaLut = 0;     // 12
  uint32_t has3DLut = 0;        // 16
  uint32_t hasMatrix = 0;       // 20
  uint32_t temperatureKind = kNoTemperature;  // 24
  uint32_t reserved = 0;                      // 28
  Color2DInfo temperature2D = {};             // 32
  Color3DInfo temperature3D = {};             // 40
  double matrix[9] = {};                      // 80; by rows
  double gammaLut[kGammaEntries * 3] = {};    // 152; R, G, B per level
  double lut3D[kLut3DEntries * 3] = {};       // 24728; R, G, B per point, blue fastest
};
static_assert(sizeof(State) == 142640 && offsetof(State, lut3D) == 24728);
static_assert(std::is_trivially_copyable_v<State>);

// Shows pixels (three bytes each: R, G, B) as the panel in this state shows them. shown may be
// pixels itself; of two lengths the shorter counts, in whole pixels.
void Render(const State& state, std::span<const uint8_t> pixels, std::span<uint8_t> shown);

// The panel, held on. The shared memory "NxVelora.SoftwarePanel.1" (in the global name space, or in
// the session's where the user may not make global ones and nobody else did) has this layout, and
// zeros at the beginning:
//
//   0       uint64    sequence: how often the state has changed
//   64      State     the state of an even sequence
//   142704  State     the state of an odd sequence
//
// A writer holds the mutex "NxVelora.SoftwarePanel.1.Writer", fills the slot that is not in use and
// then counts the sequence up. So a reader never sees half a state, even of a writer that died. At
// sequence 0 the state is State{}.
class SoftwarePanel {
 public:
  SoftwarePanel();
  ~SoftwarePanel();
  SoftwarePanel(const SoftwarePanel&) = delete;
  SoftwarePanel& operator=(const SoftwarePanel&) = delete;

  // Whether the system gave the shared memory; without it the rest does nothing.
  bool IsOn() const { return memory_ != nullptr; }

  // Grows with each change: a cheap way to see whether there is something new. 0 while not on.
  uint64_t Sequence() const;

  // Copies one whole state and gives its sequence. Never waits for a writer.
  uint64_t Read(State& state) const;

  // Changes the state. change(State&) -> bool may refuse; then, and when the panel is not on, the
  // state stays and the result is false. Any thread, any process: one at a time.
  template <typename Change>
  bool Update(Change change) {
    const Writer writer(*this);
    return writer.Next() && change(*writer.Next()) && writer.Publish();
  }

 private:
  struct Memory;

  // The one writer: prepares the next state and publishes it.
  class Writer {
   public:
    explicit Writer(SoftwarePanel& panel);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    State* Next() const { return next_; }  // a copy of the present state; null without a panel
    bool Publish() const;

   private:
    SoftwarePanel& panel_;
    State* next_ = nullptr;
  };

  void* mapping_ = nullptr;
  void* writerMutex_ = nullptr;
  Memory* memory_ = nullptr;
};

}  // namespace softwarepanel
