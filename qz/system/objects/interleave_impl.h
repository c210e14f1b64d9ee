#pragma once

#include <cstddef>

namespace QZSystem {

/// Arrays of one length that lie one behind the other, and their interleave: the first elements of all arrays, then the
/// second ones, and so on.
struct Interleave {
  std::size_t length;  ///< elements of each array
  std::size_t arrays;

  [[nodiscard]] std::size_t Count() const { return length * arrays; }

  /// Copies `count` elements of the interleave, from the one with the number `from`. REQUIRES: they are all there.
  void Gather(const float* block, std::size_t from, std::size_t count, float* out) const;

  /// Copies to the places of `count` elements of the interleave, from the one with the number `from`.
  void Scatter(float* block, std::size_t from, std::size_t count, const float* in) const;
};

}  // namespace QZSystem
