#pragma once

#include "qz/system/util/bitvector.h"

namespace QZSystem {

/// What the operations outside the class see of a vector: its words, and a size without a message.
struct BitVectorStorage {
  static constexpr unsigned long WordBits = 64;

  static std::size_t WordCount(unsigned long size) { return (size + WordBits - 1) / WordBits; }
  static std::size_t WordCount(const QZBitVector& vector) { return WordCount(vector.size); }
  static const std::uint64_t* Words(const QZBitVector& vector) { return vector.Words(); }
  static std::uint64_t* Words(QZBitVector& vector) { return vector.Words(); }
  static void Resize(QZBitVector& vector, unsigned long size) { vector.Resize(size); }
  static void ClearBeyondSize(QZBitVector& vector) { vector.ClearBeyondSize(); }
};

}  // namespace QZSystem
