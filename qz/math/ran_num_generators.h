#pragma once

#include <vector>

#include "qz/math/rand.h"

/// Draws from named distributions.
///
///     MtRng<Mt64Traits> engine(7);
///     QZGammaRNG waiting(2.5, 10.0);
///     double total = 0;
///     for (int i = 0; i < 100; ++i) total += waiting(engine);
///
/// A distribution holds its parameters only and is handed the engine at each draw, so that one engine can feed many and
/// a seed fixes the whole stream: which words a draw consumes, and every bit of its result, are the same on every
/// machine. All are plain values; a copy goes on as its source would. One thread at a time.
namespace QZMath {

/// Whole numbers from `low` to `high`, both included. One word a draw, also where there is one number only; a range of
/// more than 2^31 numbers is met in its lowest 2^31 alone, and where `low` is above `high` the result is `low`.
class QZUniformIntRNG {
 public:
  QZUniformIntRNG(int lowest, int highest) : low(lowest), high(highest) {}
  void SetParams(int lowest, int highest);
  int operator()(QZRanNumEngine& engine);

 private:
  int low;
  int high;
};

/// Numbers from `low`, included, to `high`, excluded but for rounding. One word a draw.
class QZUniformDoubleRNG {
 public:
  QZUniformDoubleRNG(double lowest, double highest) : low(lowest), high(highest) {}
  void SetParams(double lowest, double highest);
  double operator()(QZRanNumEngine& engine);

 private:
  double low;
  double high;
};

/// The normal distribution, by the polar method (Marsaglia and Bray 1964, A convenient method for generating normal
/// variables). It makes two standard normal numbers at a time and keeps one, so that every second draw consumes
/// nothing; SetParams holds for a kept one too.
class QZGaussianRNG {
 public:
  QZGaussianRNG(double center, double deviation) : mean(center), sigma(deviation), cached(0), hasCached(false) {}
  void SetParams(double center, double deviation);
  double operator()(QZRanNumEngine& engine);

 private:
  double drawPair(QZRanNumEngine& engine);

  double mean;
  double sigma;
  double cached;
  bool hasCached;
};

/// The gamma distribution, two words a try. For a shape of 1 and more by rejection from a log-logistic curve (Cheng
/// 1977, The generation of gamma variables with non-integral shape parameter), below 1 by rejection from a Weibull
/// curve (Vaduva 1977, On computer generation of gamma random variables by rejection and composition procedures). Where
/// the parameters aren't finite and above 0, a draw still ends, with a number without meaning or a NaN.
class QZGammaRNG {
 public:
  QZGammaRNG(double shapeParameter, double scaleFactor) : shape(shapeParameter), scale(scaleFactor) { Setup(); }
  void SetParams(double shapeParameter, double scaleFactor);
  double operator()(QZRanNumEngine& engine);

 private:
  void Setup();
  double drawLarge(QZRanNumEngine& engine) const;
  double drawSmall(QZRanNumEngine& engine) const;

  double shape;
  double scale;
  double root;
  double a;
  double b;
  double c;
  double d;
  bool large;
};

/// Student's t with `dof` degrees of freedom, moved and stretched. SetParams keeps what its Gaussian has kept.
class QZStudentsTRNG {
 public:
  QZStudentsTRNG(double center, double width, double degrees)
      : location(center), scale(width), dof(degrees), gaussian(0, 1), gamma(degrees / 2, 1) {}
  void SetParams(double center, double width, double degrees);
  double operator()(QZRanNumEngine& engine);

 private:
  double location;
  double scale;
  double dof;
  QZGaussianRNG gaussian;
  QZGammaRNG gamma;
};

/// Chi-square with `dof` degrees of freedom.
class QZChiSquaredRNG {
 public:
  explicit QZChiSquaredRNG(double degrees) : dof(degrees), gamma(degrees / 2, 1) {}
  void SetParams(double degrees);
  double operator()(QZRanNumEngine& engine);

 private:
  [[maybe_unused]] double dof;
  QZGammaRNG gamma;
};

/// Snedecor's F with `dof1` degrees of freedom over `dof2`.
class QZSnedecorsFRNG {
 public:
  QZSnedecorsFRNG(double degrees1, double degrees2)
      : dof1(degrees1), dof2(degrees2), gamma1(degrees1 / 2, 1), gamma2(degrees2 / 2, 1) {}
  void SetParams(double degrees1, double degrees2);
  double operator()(QZRanNumEngine& engine);

 private:
  double dof1;
  double dof2;
  QZGammaRNG gamma1;
  QZGammaRNG gamma2;
};

/// The beta distribution.
class QZBetaRNG {
 public:
  QZBetaRNG(double alphaParameter, double betaParameter)
      : alpha(alphaParameter), beta(betaParameter), gamma1(alphaParameter, 1), gamma2(betaParameter, 1) {}
  void SetParams(double alphaParameter, double betaParameter);
  double operator()(QZRanNumEngine& engine);

 private:
  [[maybe_unused]] double alpha;
  [[maybe_unused]] double beta;
  QZGammaRNG gamma1;
  QZGammaRNG gamma2;
};

/// The Gumbel distribution of greatest values. One word a draw.
class QZGumbelRNG {
 public:
  QZGumbelRNG(double center, double width) : location(center), scale(width) {}
  void SetParams(double center, double width);
  double operator()(QZRanNumEngine& engine);

 private:
  double location;
  double scale;
};

/// The generalized extreme value distribution; with a shape of 0 it is Gumbel's, draw for draw. A shape above 0 bounds
/// it from below, one below 0 from above. One word a draw.
class QZGenExtremeValRNG {
 public:
  QZGenExtremeValRNG(double center, double width, double shapeParameter)
      : location(center), scale(width), shape(shapeParameter) {}
  void SetParams(double center, double width, double shapeParameter);
  double operator()(QZRanNumEngine& engine);

 private:
  double location;
  double scale;
  double shape;
};

/// Points spread evenly over the unit sphere of `dimension` dimensions, which lies in a space of one more: 1 is a
/// circle, 2 the surface of a ball.
class QZUniformOnUnitSphereRNG {
 public:
  explicit QZUniformOnUnitSphereRNG(unsigned int sphereDimension) : dimension(sphereDimension) {}
  void SetParams(unsigned int sphereDimension);

  /// Replaces `point` by `dimension` + 1 coordinates. Nothing is kept from one call to the next.
  void GetRandomPoint(std::vector<double>& point, QZRanNumEngine& engine) const;

 private:
  unsigned int dimension;
};

/// Proper rotations of space, spread evenly.
class QZ3DRotationMatrixRNG {
 public:
  /// Replaces `matrix` by the nine values of a rotation, row by row.
  void GetRotationMatrix(std::vector<double>& matrix, QZRanNumEngine& engine) const;
};

/// The numbers from 0 to `count` - 1 in random order. Consumes `count` - 1 words, none for a `count` of 0 or 1.
/// Fisher and Yates; `count` above 2^31 isn't shuffled evenly, since a draw has 31 bits.
[[nodiscard]] std::vector<unsigned long> QZRandomShuffleOfIndices(unsigned long count, QZRanNumEngine& engine);

}  // namespace QZMath
