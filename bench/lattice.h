// The input of W19 and W20: a lattice of 128 points a side, and places within it.
#pragma once
#include <numeric>
#include <thread>
#include <vector>

#include "inputs.h"

namespace lattice {

constexpr unsigned kSide = 128;
constexpr unsigned long kPoints = 1ul * kSide * kSide * kSide;
constexpr unsigned long kPlaces = 1000000;
constexpr unsigned kGrids = 4;
constexpr float kMid = 3.0f, kSpacing = 0.25f;

struct Place {
  float x, y, z;
};

inline std::vector<float> values(unsigned long count) {
  std::vector<float> v(count);
  inputs::Rng rng(19);
  for (auto& x : v) x = float(rng.range(-1.0, 1.0));
  return v;
}

inline const std::vector<Place>& places() {
  static const std::vector<Place> all = [] {
    std::vector<Place> v(kPlaces);
    inputs::Rng rng(20);
    const double half = 0.5 * (kSide - 1) * kSpacing * 0.999;
    const auto draw = [&] { return float(rng.range(kMid - half, kMid + half)); };
    for (auto& p : v) p = {draw(), draw(), draw()};
    return v;
  }();
  return all;
}

// The sum of `value(place)` over all places, each thread with a part of them.
template <class Value>
double sum(int threads, Value value) {
  std::vector<double> sums(threads);
  const auto work = [&](int n) {
    double s = 0.0;
    for (unsigned long i = kPlaces * n / threads; i < kPlaces * (n + 1) / threads; ++i) s += value(places()[i]);
    sums[n] = s;
  };
  std::vector<std::thread> others;
  for (int n = 1; n < threads; ++n) others.emplace_back(work, n);
  work(0);
  for (auto& t : others) t.join();
  return std::accumulate(sums.begin(), sums.end(), 0.0);
}

}  // namespace lattice
