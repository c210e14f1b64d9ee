#include "qz/math/ran_num_generators.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <typeinfo>
#include <utility>

#include "qz/math/elementary_impl.h"

namespace QZMath {

using Elementary::Exp;
using Elementary::Log;

namespace {

// Draws from the engine as what it is: the one of the house is put in line, any other is called.
template <class Draw>
auto drawFrom(QZRanNumEngine& engine, Draw draw) {
  if (&typeid(engine) == &typeid(MtRng<Mt64Traits>)) return draw(static_cast<MtRng<Mt64Traits>&>(engine));
  return draw(engine);
}

// Two numbers at once, until both are good. The pair is one try: a bad one costs both.
template <class IsGood>
std::pair<double, double> drawTwo(QZRanNumEngine& engine, IsGood isGood) {
  return drawFrom(engine, [isGood](auto& source) {
    for (;;) {
      const double first = source.getUnitDouble();
      const double second = source.getUnitDouble();
      if (isGood(first, second)) return std::make_pair(first, second);
    }
  });
}

// -ln(-ln u): the standard Gumbel distribution.
double drawGumbel(QZRanNumEngine& engine) {
  double u = engine.getUnitDouble();
  while (u == 0 || u == 1) u = engine.getUnitDouble();
  return -Log(-Log(u));
}

}  // namespace

void QZUniformIntRNG::SetParams(int lowest, int highest) { *this = QZUniformIntRNG(lowest, highest); }

int QZUniformIntRNG::operator()(QZRanNumEngine& engine) {
  const std::uint32_t word = engine.getUnsigned();
  if (low > high) return low;
  // The count of all ints wraps to 0. A word of 31 bits is its own remainder there, as it is for every count above.
  const std::uint32_t count = static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low) + 1;
  const std::uint32_t step = count > 0x7FFFFFFFU || count == 0 ? word : word % count;
  return static_cast<int>(static_cast<std::uint32_t>(low) + step);
}

void QZUniformDoubleRNG::SetParams(double lowest, double highest) { *this = QZUniformDoubleRNG(lowest, highest); }

double QZUniformDoubleRNG::operator()(QZRanNumEngine& engine) { return engine.getUnitDouble() * (high - low) + low; }

void QZGaussianRNG::SetParams(double center, double deviation) {
  mean = center;
  sigma = deviation;
}

double QZGaussianRNG::operator()(QZRanNumEngine& engine) {
  if (hasCached) {
    hasCached = false;
    return cached * sigma + mean;
  }
  const double drawn = drawPair(engine);
  hasCached = true;
  return drawn * sigma + mean;
}

// The second of the pair stays in `cached`.
double QZGaussianRNG::drawPair(QZRanNumEngine& engine) {
  double u;
  double v;
  double s;
  drawFrom(engine, [&](auto& source) {
    do {
      u = 2 * source.getUnitDouble() - 1;
      v = 2 * source.getUnitDouble() - 1;
      s = u * u + v * v;
    } while (s > 1 || s == 0);
  });
  // -2 ln s / s, but with the halving, which is exact too, off the way from the logarithm to the result.
  const double factor = std::sqrt(Elementary::LogOfNormal(s) / (-0.5 * s));
  cached = u * factor;
  return v * factor;
}

void QZGammaRNG::SetParams(double shapeParameter, double scaleFactor) {
  *this = QZGammaRNG(shapeParameter, scaleFactor);
}

void QZGammaRNG::Setup() {
  large = shape >= 1;
  root = large ? std::sqrt(2 * shape - 1) : 0;
  a = large ? 1 / root : 0;
  b = large ? shape - 1.3862943611198906 : 1 / shape;
  c = large ? shape + root : (1 - shape) * Elementary::Power(shape, shape / (1 - shape));
  d = large ? 2.504077396776274 : 0;
}

double QZGammaRNG::operator()(QZRanNumEngine& engine) {
  return (large ? drawLarge(engine) : drawSmall(engine)) * scale;
}

// A try is accepted if r >= 4.5 z - d, which spares a logarithm, or else if r >= ln z. The first implies the second but
// for rounding, and falls out one way or the other like a coin, which no processor can foresee. So r is compared with a
// rough ln z instead, and where they are close, in some millionths of all tries, the two tests decide as they stand.
// Written so that a NaN is accepted.
double QZGammaRNG::drawLarge(QZRanNumEngine& engine) const {
  constexpr double close = 1e-6;
  constexpr double least = 1e-300;
  for (;;) {
    const auto [p, q] = drawTwo(engine, [](double, double second) { return second != 0 && second != 1; });
    // q is a multiple of 2^-53 and `a` at most 1, so that both functions stay in their middle range.
    const double w = a * Elementary::LogOfNormal(q / (1 - q));
    const double x = shape * Elementary::ExpOfModerate(w);
    const double z = q * p * q;
    const double r = w * c + b - x;
    const double above = r - Elementary::RoughLog(z);
    if (__builtin_expect(std::abs(above) > close && z > least, true)) {
      if (above > 0) return x;
    } else if (r >= 4.5 * z - d || !(r < Log(z))) {
      return x;
    }
  }
}

double QZGammaRNG::drawSmall(QZRanNumEngine& engine) const {
  for (;;) {
    const auto [p, q] = drawTwo(engine, [](double first, double second) { return first != 0 && second != 0; });
    const double e = -Log(p);
    const double f = Log(q);
    const double x = Elementary::Power(e, b);
    if (!(e - f < c + x)) return x;
  }
}

void QZStudentsTRNG::SetParams(double center, double width, double degrees) {
  location = center;
  scale = width;
  dof = degrees;
  gamma.SetParams(degrees / 2, 1);
}

double QZStudentsTRNG::operator()(QZRanNumEngine& engine) {
  const double z = gaussian(engine);
  const double g = gamma(engine);
  return scale * (z / std::sqrt(2 * g / dof)) + location;
}

void QZChiSquaredRNG::SetParams(double degrees) { *this = QZChiSquaredRNG(degrees); }

double QZChiSquaredRNG::operator()(QZRanNumEngine& engine) { return 2 * gamma(engine); }

void QZSnedecorsFRNG::SetParams(double degrees1, double degrees2) { *this = QZSnedecorsFRNG(degrees1, degrees2); }

double QZSnedecorsFRNG::operator()(QZRanNumEngine& engine) {
  const double first = gamma1(engine);
  const double second = gamma2(engine);
  return (2 * first / dof1) / (2 * second / dof2);
}

void QZBetaRNG::SetParams(double alphaParameter, double betaParameter) {
  *this = QZBetaRNG(alphaParameter, betaParameter);
}

double QZBetaRNG::operator()(QZRanNumEngine& engine) {
  const double first = gamma1(engine);
  const double second = gamma2(engine);
  return first / (second + first);
}

void QZGumbelRNG::SetParams(double center, double width) { *this = QZGumbelRNG(center, width); }

double QZGumbelRNG::operator()(QZRanNumEngine& engine) { return drawGumbel(engine) * scale + location; }

void QZGenExtremeValRNG::SetParams(double center, double width, double shapeParameter) {
  *this = QZGenExtremeValRNG(center, width, shapeParameter);
}

double QZGenExtremeValRNG::operator()(QZRanNumEngine& engine) {
  double e = drawGumbel(engine);
  if (shape != 0) e = (Exp(e * shape) - 1) / shape;
  return e * scale + location;
}

void QZUniformOnUnitSphereRNG::SetParams(unsigned int sphereDimension) { dimension = sphereDimension; }

// Normal coordinates have no preferred direction (Muller 1959, A note on a method for generating points uniformly on
// n-dimensional spheres).
void QZUniformOnUnitSphereRNG::GetRandomPoint(std::vector<double>& point, QZRanNumEngine& engine) const {
  QZGaussianRNG gaussian(0, 1);
  point.resize(std::size_t{dimension} + 1);
  double sum = 0;
  for (double& coordinate : point) {
    coordinate = gaussian(engine);
    sum += coordinate * coordinate;
  }
  const double factor = 1 / std::sqrt(sum);
  for (double& coordinate : point) coordinate *= factor;
}

// A turn about the z axis, then the shortest way of that axis to a point on the sphere (Arvo 1992, Fast random rotation
// matrices).
void QZ3DRotationMatrixRNG::GetRotationMatrix(std::vector<double>& matrix, QZRanNumEngine& engine) const {
  const auto [sine, cosine] = Elementary::SineAndCosine(QZUniformDoubleRNG(0, 6.283185307179586)(engine));
  QZUniformOnUnitSphereRNG(2).GetRandomPoint(matrix, engine);
  const double px = matrix[0];
  const double py = matrix[1];
  const double pz = matrix[2];
  const double n = std::sqrt(px * px + py * py);
  if (n < 2.220446049250313e-14) {
    matrix = {cosine, -sine, 0, sine, cosine, 0, 0, 0, 1};
    return;
  }
  const double ux = -py / n;
  const double uy = px / n;
  const double wx = uy;
  const double wy = -ux;
  const double s = std::sqrt(std::max(0.0, 1 - pz * pz));
  const double b1 = ux * cosine + uy * sine;
  const double a1 = wx * cosine + wy * sine;
  const double b2 = ux * -sine + uy * cosine;
  const double a2 = wx * -sine + wy * cosine;
  matrix = {wx * pz * a1 + ux * b1,
            wx * pz * a2 + ux * b2,
            px,  //
            wy * pz * a1 + uy * b1,
            wy * pz * a2 + uy * b2,
            py,  //
            -a1 * s,
            -a2 * s,
            pz};
}

std::vector<unsigned long> QZRandomShuffleOfIndices(unsigned long count, QZRanNumEngine& engine) {
  std::vector<unsigned long> indices(count);
  for (unsigned long i = 0; i < count; ++i) indices[i] = i;
  for (unsigned long i = count; i-- > 1;) std::swap(indices[engine.getUnsigned() % (i + 1)], indices[i]);
  return indices;
}

}  // namespace QZMath
