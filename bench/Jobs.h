// The jobs of core_bench and who does them.
#pragma once

namespace bench {

inline constexpr char kCompose[] = "compose two 17^3 LUTs";
inline constexpr char kGenerate[] = "generate a 17^3 LUT";
inline constexpr char kVerifyAndDecode[] = "verify and decode a 3D block";
inline constexpr char kDecode[] = "decode a 3D block";
inline constexpr char kBend[] = "derive a gamma curve, 1024 entries";
inline constexpr char kEdid[] = "EDID base block";
inline constexpr char kProfile[] = "build and save a profile";
inline constexpr char kGains[] = "gains of 1000 points of the circle";
inline constexpr char kCurve[] = "gains of 1000 colour temperatures";
inline constexpr char kNumberLine[] = "log line of a text and a number";
inline constexpr char kDoublesLine[] = "log line of the EDID, eight doubles";

// The library and the plain forms.
void AddLutRows();
void AddPanelRows();
void AddMathsRows();
void AddLogRows();
void AddProfileRows();  // under Wine alone: what saves a profile is Windows code

// The peers, where they are there.
void AddLcms2Rows();
void AddOpenColorIORows();
void AddDisplayInfoRows();

}  // namespace bench
