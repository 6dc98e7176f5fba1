// LUTs of a panel by plain colour science.
//
// Letters: x is an encoded value of 0 to 1, c a linear one. M(space) takes linear RGB to CIE XYZ;
// its columns are the primaries, scaled so that R = G = B = 1 gives the white point with Y = 1:
//   M = P diag(P^-1 W),  P the primaries as XYZ, W the white point as XYZ
// A target colour t is shown by the panel's linear RGB  c = s M(panel)^-1 M(target) t,  with s such
// that the target's white just fits. So the panel's white moves to the target's, D65.
#include "virtualnotebook/Factory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace virtualnotebook {
namespace {

using Rgb = std::array<double, 3>;
using Matrix = std::array<Rgb, 3>;  // rows

constexpr int kGrid = 17;
constexpr size_t kGridEntries = size_t{kGrid} * kGrid * kGrid;
constexpr int kStep = 64;
constexpr double k3DTop = 1023;
constexpr int kGammaEntries = 1024;
constexpr double kGammaTop = 4095;

constexpr Xy kD65 = {0.3127, 0.3290};

// --- Matrices ---

Rgb Multiply(const Matrix& m, const Rgb& v) {
  Rgb out;
  for (size_t i = 0; i < 3; ++i) {
    out[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
  }
  return out;
}

Matrix Multiply(const Matrix& a, const Matrix& b) {
  Matrix out;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      out[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    }
  }
  return out;
}

// By cofactors: element (i, j) of the inverse is the cofactor of (j, i) over the determinant.
Matrix Invert(const Matrix& m) {
  const auto cofactor = [&m](size_t i, size_t j) {
    const size_t i1 = (i + 1) % 3;
    const size_t i2 = (i + 2) % 3;
    const size_t j1 = (j + 1) % 3;
    const size_t j2 = (j + 2) % 3;
    return m[i1][j1] * m[i2][j2] - m[i1][j2] * m[i2][j1];
  };
  const double det = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
  if (std::abs(det) < 1e-6) {
    throw std::invalid_argument("the primaries span no colour space");
  }
  Matrix out;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      out[i][j] = cofactor(j, i) / det;
    }
  }
  return out;
}

Rgb ToXyz(Xy p) {
  if (!(p.y > 0)) {
    throw std::invalid_argument("a chromaticity has no luminance");
  }
  return {p.x / p.y, 1, (1 - p.x - p.y) / p.y};
}

Matrix RgbToXyz(Xy red, Xy green, Xy blue, Xy white) {
  const Rgb r = ToXyz(red);
  const Rgb g = ToXyz(green);
  const Rgb b = ToXyz(blue);
  Matrix m = {{{r[0], g[0], b[0]}, {r[1], g[1], b[1]}, {r[2], g[2], b[2]}}};
  const Rgb scale = Multiply(Invert(m), ToXyz(white));
  for (Rgb& row : m) {
    for (size_t j = 0; j < 3; ++j) {
      row[j] *= scale[j];
    }
  }
  return m;
}

// --- Target spaces ---

double DecodeSrgb(double x) {  // IEC 61966-2-1
  return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
}
double DecodeAdobe(double x) { return std::pow(x, 563.0 / 256); }  // Adobe RGB (1998), 4.3.4.2

struct Target {
  uint8_t lutType;
  Xy red, green, blue;  // the white is D65 for all
  double (*decode)(double x);
};
constexpr Target kTargets[] = {
    {kSrgbLut, {0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}, DecodeSrgb},    // IEC 61966-2-1
    {kP3Lut, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, DecodeSrgb},      // SMPTE EG 432-1
    {kAdobeLut, {0.640, 0.330}, {0.210, 0.710}, {0.150, 0.060}, DecodeAdobe},  // Adobe RGB (1998)
};

const Target& TargetOf(uint8_t lutType) {
  for (const Target& target : kTargets) {
    if (target.lutType == lutType) {
      return target;
    }
  }
  throw std::invalid_argument("there is no LUT of type " + std::to_string(lutType));
}

// --- The unit ---

// How far each channel's curve bends from the straight line, x + bend * x * (1 - x): from 0.5 to 2
// per cent, up or down, by the unit's identity. The curve rises throughout, since |bend| < 1.
Rgb Bends(const PanelDescription& panel, uint8_t salt) {
  Bytes identity(panel.vendor.begin(), panel.vendor.end());
  identity.insert(identity.end(), panel.serial.begin(), panel.serial.end());
  for (int value :
       {panel.product >> 8, panel.product & 0xFF, int{panel.week}, panel.year & 0xFF, int{salt}}) {
    identity.push_back(static_cast<uint8_t>(value));
  }
  const Bytes digest = Sha256(identity);
  Rgb bends;
  for (size_t c = 0; c < 3; ++c) {
    const double size = 0.005 + 0.015 * (digest[c] & 0x7F) / 127;
    bends[c] = (digest[c] & 0x80) != 0 ? -size : size;
  }
  return bends;
}

double Bend(double x, double bend) { return x + bend * x * (1 - x); }

double Quantise(double x, double top) { return std::round(std::clamp(x, 0.0, 1.0) * top); }

// A panel unit's own encoding of linear RGB: its gamma, and its grey tracking taken out.
struct Unit {
  double gamma;
  Rgb bends;

  explicit Unit(const PanelDescription& panel) : gamma(panel.gamma), bends(Bends(panel, kBaseLut)) {
    if (!(gamma >= 1)) {
      throw std::invalid_argument("a panel's gamma is at least 1");
    }
  }
  void Store(const Rgb& linear, double* out) const {
    for (size_t c = 0; c < 3; ++c) {
      const double x = std::pow(std::clamp(linear[c], 0.0, 1.0), 1 / gamma);
      out[c] = Quantise(Bend(x, bends[c]), k3DTop);
    }
  }
};

double GridValue(int coordinate) { return std::min<double>(coordinate * kStep, k3DTop) / k3DTop; }

// Calls entry(x, out) for each grid point's encoded value, blue fastest.
template <typename Entry>
std::vector<double> FillGrid(Entry entry) {
  std::vector<double> lut(kGridEntries * 3);
  double* out = lut.data();
  for (int r = 0; r < kGrid; ++r) {
    for (int g = 0; g < kGrid; ++g) {
      for (int b = 0; b < kGrid; ++b, out += 3) {
        entry(Rgb{GridValue(r), GridValue(g), GridValue(b)}, out);
      }
    }
  }
  return lut;
}

// --- The LUTs ---

std::vector<double> MakeBaseLut(const PanelDescription& panel) {
  const Rgb bends = Bends(panel, kBaseLut);
  return FillGrid([&](const Rgb& x, double* out) {
    for (size_t c = 0; c < 3; ++c) {
      out[c] = Quantise(Bend(x[c], bends[c]), k3DTop);
    }
  });
}

std::vector<double> MakeTargetLut(const PanelDescription& panel, const Target& target) {
  const Unit unit(panel);
  Matrix m = Multiply(Invert(RgbToXyz(panel.red, panel.green, panel.blue, panel.white)),
                      RgbToXyz(target.red, target.green, target.blue, kD65));
  const Rgb white = Multiply(m, Rgb{1, 1, 1});
  const double top = *std::max_element(white.begin(), white.end());
  for (Rgb& row : m) {
    for (double& element : row) {
      element /= top;
    }
  }
  return FillGrid([&](const Rgb& x, double* out) {
    unit.Store(Multiply(m, Rgb{target.decode(x[0]), target.decode(x[1]), target.decode(x[2])}),
               out);
  });
}

std::vector<double> MakeEbookLut(const PanelDescription& panel) {
  constexpr double kColour = 0.2;                  // what is left of the saturation
  constexpr Rgb kPaper = {1.0, 0.91, 0.74};        // linear light of the paper's white
  constexpr Rgb kLuma = {0.2126, 0.7152, 0.0722};  // ITU-R BT.709
  const Unit unit(panel);
  return FillGrid([&](const Rgb& x, double* out) {
    Rgb linear;
    for (size_t c = 0; c < 3; ++c) {
      linear[c] = DecodeSrgb(x[c]);
    }
    const double y = kLuma[0] * linear[0] + kLuma[1] * linear[1] + kLuma[2] * linear[2];
    for (size_t c = 0; c < 3; ++c) {
      linear[c] = kPaper[c] * (kColour * linear[c] + (1 - kColour) * y);
    }
    unit.Store(linear, out);
  });
}

std::vector<double> MakeGammaLut(const PanelDescription& panel) {
  const Rgb bends = Bends(panel, kGammaLut);
  std::vector<double> lut;
  lut.reserve(size_t{kGammaEntries} * 3);
  for (int i = 0; i < kGammaEntries; ++i) {
    for (double bend : bends) {
      lut.push_back(Quantise(Bend(i / 1023.0, bend), kGammaTop));
    }
  }
  return lut;
}

}  // namespace

Xy LightOf(const PanelDescription& panel, const Rgb& rgb) {
  const Rgb linear = {std::pow(rgb[0], panel.gamma), std::pow(rgb[1], panel.gamma),
                      std::pow(rgb[2], panel.gamma)};
  const Rgb xyz = Multiply(RgbToXyz(panel.red, panel.green, panel.blue, panel.white), linear);
  const double sum = xyz[0] + xyz[1] + xyz[2];
  return {xyz[0] / sum, xyz[1] / sum};
}

std::vector<double> MakeLut(const PanelDescription& panel, uint8_t lutType) {
  switch (lutType) {
    case kBaseLut:
      return MakeBaseLut(panel);
    case kEbookLut:
      return MakeEbookLut(panel);
    case kGammaLut:
      return MakeGammaLut(panel);
    default:
      return MakeTargetLut(panel, TargetOf(lutType));
  }
}

std::vector<double> MakeIdentityLut() {
  return FillGrid([](const Rgb& x, double* out) {
    for (size_t c = 0; c < 3; ++c) {
      out[c] = std::round(x[c] * k3DTop);
    }
  });
}

}  // namespace virtualnotebook
