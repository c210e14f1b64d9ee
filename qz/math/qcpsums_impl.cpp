#include "qz/math/qcpsums_impl.h"

#include <cstring>

// Four points at a time, three vectors of each set, which are shuffled into a vector of each coordinate. The same
// source makes code for every x86-64 processor and for those with AVX2; no operation is fused in either, so that both
// round alike.
namespace QZMath {

namespace {

constexpr std::size_t lanes = 4;

template <class T>
struct Vector {
  using Type [[gnu::vector_size(lanes * sizeof(T))]] = T;
};
template <class T>
using Whole = typename Vector<T>::Type;

// Functions on vectors take and fill references: by value their calls would depend on the processor. Each vector has a
// name of its own, since compilers keep those in registers, and arrays seldom.
template <class T>
struct Stored {
  Whole<T> first;   // x0 y0 z0 x1
  Whole<T> second;  // y1 z1 x2 y2
  Whole<T> third;   // z2 x3 y3 z3

  [[gnu::always_inline]] explicit Stored(const T* from) {
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&second, from + lanes, sizeof second);
    std::memcpy(&third, from + 2 * lanes, sizeof third);
  }
};

template <class T>
struct Points {
  Whole<T> x;
  Whole<T> y;
  Whole<T> z;

  Points() = default;
  [[gnu::always_inline]] Points(const Stored<T>& from, const T* center) {
    const Whole<T> xy = __builtin_shufflevector(from.first, from.second, 0, 1, 6, 7);  // x0 y0 x2 y2
    const Whole<T> zx = __builtin_shufflevector(from.first, from.third, 2, 3, 4, 5);   // z0 x1 z2 x3
    const Whole<T> yz = __builtin_shufflevector(from.second, from.third, 0, 1, 6, 7);  // y1 z1 y3 z3
    x = __builtin_shufflevector(xy, zx, 0, 5, 2, 7) - center[0];
    y = __builtin_shufflevector(xy, yz, 1, 4, 3, 6) - center[1];
    z = __builtin_shufflevector(zx, yz, 0, 5, 2, 7) - center[2];
  }
};

template <class T>
[[gnu::always_inline]] inline T joined(const Whole<T>& sum) {
  return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

// Sums of weighted coordinates as they stand, and of the weights.
template <class T, bool weighted>
struct CenterSums {
  Whole<T> firstOfA = {}, secondOfA = {}, thirdOfA = {};
  Whole<T> firstOfB = {}, secondOfB = {}, thirdOfB = {};
  Whole<T> weight = {};

  [[gnu::always_inline]] void Add(const Stored<T>& p, const Stored<T>& q, const Whole<T>& w) {
    if constexpr (weighted) {
      const Whole<T> first = __builtin_shufflevector(w, w, 0, 0, 0, 1);
      const Whole<T> second = __builtin_shufflevector(w, w, 1, 1, 2, 2);
      const Whole<T> third = __builtin_shufflevector(w, w, 2, 3, 3, 3);
      firstOfA += first * p.first, secondOfA += second * p.second, thirdOfA += third * p.third;
      firstOfB += first * q.first, secondOfB += second * q.second, thirdOfB += third * q.third;
      weight += w;
    } else {
      firstOfA += p.first, secondOfA += p.second, thirdOfA += p.third;
      firstOfB += q.first, secondOfB += q.second, thirdOfB += q.third;
    }
  }

  // The centers of a and then of b.
  void Join(T factor, T (&centers)[6]) const {
    joinOne(firstOfA, secondOfA, thirdOfA, factor, centers);
    joinOne(firstOfB, secondOfB, thirdOfB, factor, centers + 3);
  }

 private:
  static void joinOne(const Whole<T>& first, const Whole<T>& second, const Whole<T>& third, T factor, T* center) {
    center[0] = ((first[0] + first[3]) + (second[2] + third[1])) * factor;
    center[1] = ((first[1] + second[0]) + (second[3] + third[2])) * factor;
    center[2] = ((first[2] + second[1]) + (third[0] + third[3])) * factor;
  }
};

[[gnu::always_inline]] inline void widen(Whole<double>& wide, const Whole<double>& narrow) { wide = narrow; }
[[gnu::always_inline]] inline void widen(Whole<double>& wide, const Whole<float>& narrow) {
  wide = __builtin_convertvector(narrow, Whole<double>);
}
template <class T>
[[gnu::always_inline]] inline void widen(Points<double>& wide, const Points<T>& narrow) {
  widen(wide.x, narrow.x);
  widen(wide.y, narrow.y);
  widen(wide.z, narrow.z);
}

// Sums of products of centred coordinates.
template <class T, bool weighted>
struct CrossSums {
  Whole<double> xx = {}, xy = {}, xz = {};
  Whole<double> yx = {}, yy = {}, yz = {};
  Whole<double> zx = {}, zy = {}, zz = {};
  Whole<double> squares = {};
  const T* centers;

  [[gnu::always_inline]] void Add(const Stored<T>& storedOfA, const Stored<T>& storedOfB, const Whole<T>& w) {
    const Points<T> p(storedOfA, centers);
    const Points<T> q(storedOfB, centers + 3);
    Points<double> left;
    Points<double> right;
    widen(left, p);
    widen(right, q);
    Whole<double> lengths = right.x * right.x + right.y * right.y + right.z * right.z;
    if constexpr (weighted) {
      Points<T> product = p;
      product.x *= w;
      product.y *= w;
      product.z *= w;
      const Points<double> plain = left;
      widen(left, product);
      Whole<double> wide;
      widen(wide, w);
      lengths = lengths * wide + (left.x * plain.x + left.y * plain.y + left.z * plain.z);
    } else {
      lengths += left.x * left.x + left.y * left.y + left.z * left.z;
    }
    squares += lengths;
    xx += left.x * right.x, xy += left.x * right.y, xz += left.x * right.z;
    yx += left.y * right.x, yy += left.y * right.y, yz += left.y * right.z;
    zx += left.z * right.x, zy += left.z * right.y, zz += left.z * right.z;
  }
};

// Adds four points at a time. In the last four those that aren't there have the coordinates in `filler`, those of a and
// then those of b, and no weight.
template <bool weighted, class T, class Sums>
[[gnu::always_inline]] inline void addAll(Sums& sums, const T* a, const T* b, const T* weights, std::size_t n,
                                          const T* filler) {
  Whole<T> w = {};
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    if constexpr (weighted) std::memcpy(&w, weights + i, sizeof w);
    sums.Add(Stored<T>(a + 3 * i), Stored<T>(b + 3 * i), w);
  }
  if (i == n) return;
  T lastOfA[3 * lanes];
  T lastOfB[3 * lanes];
  for (std::size_t k = 0; k < 3 * lanes; ++k) {
    lastOfA[k] = filler[k % 3];
    lastOfB[k] = filler[3 + k % 3];
  }
  std::memcpy(lastOfA, a + 3 * i, 3 * (n - i) * sizeof(T));
  std::memcpy(lastOfB, b + 3 * i, 3 * (n - i) * sizeof(T));
  if constexpr (weighted) {
    w = Whole<T>{};
    std::memcpy(&w, weights + i, (n - i) * sizeof(T));
  }
  sums.Add(Stored<T>(lastOfA), Stored<T>(lastOfB), w);
}

template <class T, bool weighted>
[[gnu::always_inline]] inline void sumBy(const T* a, const T* b, const T* weights, std::size_t n, PointSums& result) {
  constexpr T nothing[6] = {};
  CenterSums<T, weighted> centerSums;
  addAll<weighted>(centerSums, a, b, weights, n, nothing);
  result.weight = weighted ? static_cast<double>(joined<T>(centerSums.weight)) : static_cast<double>(n);
  T centers[6];
  centerSums.Join(static_cast<T>(1 / result.weight), centers);
  for (std::size_t k = 0; k < 3; ++k) {
    result.centerOfA[k] = static_cast<double>(centers[k]);
    result.centerOfB[k] = static_cast<double>(centers[3 + k]);
  }

  CrossSums<T, weighted> sums;
  sums.centers = centers;
  addAll<weighted>(sums, a, b, weights, n, centers);
  result.cross[0][0] = joined<double>(sums.xx);
  result.cross[0][1] = joined<double>(sums.xy);
  result.cross[0][2] = joined<double>(sums.xz);
  result.cross[1][0] = joined<double>(sums.yx);
  result.cross[1][1] = joined<double>(sums.yy);
  result.cross[1][2] = joined<double>(sums.yz);
  result.cross[2][0] = joined<double>(sums.zx);
  result.cross[2][1] = joined<double>(sums.zy);
  result.cross[2][2] = joined<double>(sums.zz);
  result.squares = joined<double>(sums.squares);
}

template <class T, bool weighted>
void sumPlain(const T* a, const T* b, const T* weights, std::size_t n, PointSums& result) {
  sumBy<T, weighted>(a, b, weights, n, result);
}

template <class T, bool weighted>
[[gnu::target("avx2")]] void sumWide(const T* a, const T* b, const T* weights, std::size_t n, PointSums& result) {
  sumBy<T, weighted>(a, b, weights, n, result);
}

template <class T, bool weighted>
PointSums sum(const T* a, const T* b, const T* weights, std::size_t n) {
  PointSums result;
  if (__builtin_cpu_supports("avx2")) {
    sumWide<T, weighted>(a, b, weights, n, result);
  } else {
    sumPlain<T, weighted>(a, b, weights, n, result);
  }
  return result;
}

}  // namespace

PointSums SumPoints(const double* a, const double* b, const double* weights, std::size_t n) {
  return weights ? sum<double, true>(a, b, weights, n) : sum<double, false>(a, b, weights, n);
}

PointSums SumPoints(const float* a, const float* b, const float* weights, std::size_t n) {
  return weights ? sum<float, true>(a, b, weights, n) : sum<float, false>(a, b, weights, n);
}

}  // namespace QZMath
