#include "qz/system/objects/interleave_impl.h"

#include <xmmintrin.h>

#include <algorithm>
#include <cstring>

namespace QZSystem {

namespace {

// A stretch of the interleave: a part of a round, whole rounds, and a part of a round.
struct Stretch {
  std::size_t head, rounds, tail;

  Stretch(const Interleave& shape, std::size_t from, std::size_t count) {
    const std::size_t past = from % shape.arrays;
    head = past == 0 ? 0 : std::min(count, shape.arrays - past);
    rounds = (count - head) / shape.arrays;
    tail = (count - head) % shape.arrays;
  }
};

// Calls `each(place, number)` for elements of the interleave within a round: where each lies in the block, and its
// number in the stretch.
template <class Each>
void forPartOfRound(const Interleave& shape, std::size_t from, std::size_t count, Each each) {
  for (std::size_t i = 0; i < count; ++i) {
    each((from + i) % shape.arrays * shape.length + (from + i) / shape.arrays, i);
  }
}

constexpr std::size_t Side = 4;

// Copies four rows of four numbers to four columns. The rows are `inStride` numbers apart, the columns, as rows of what
// comes out, `outStride`.
void transposeSquare(const float* in, std::size_t inStride, float* out, std::size_t outStride) {
  __m128 a = _mm_loadu_ps(in), b = _mm_loadu_ps(in + inStride);
  __m128 c = _mm_loadu_ps(in + 2 * inStride), d = _mm_loadu_ps(in + 3 * inStride);
  _MM_TRANSPOSE4_PS(a, b, c, d);
  _mm_storeu_ps(out, a);
  _mm_storeu_ps(out + outStride, b);
  _mm_storeu_ps(out + 2 * outStride, c);
  _mm_storeu_ps(out + 3 * outStride, d);
}

// Copies `rows` rows of `columns` numbers to as many columns, in squares that fit the registers as far as there are
// whole ones.
void transpose(const float* in, std::size_t inStride, std::size_t rows, std::size_t columns, float* out,
               std::size_t outStride) {
  const std::size_t squareRows = rows / Side * Side, squareColumns = columns / Side * Side;
  for (std::size_t row = 0; row < squareRows; row += Side) {
    for (std::size_t column = 0; column < squareColumns; column += Side) {
      transposeSquare(in + row * inStride + column, inStride, out + column * outStride + row, outStride);
    }
  }
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t column = row < squareRows ? squareColumns : 0; column < columns; ++column) {
      out[column * outStride + row] = in[row * inStride + column];
    }
  }
}

}  // namespace

void Interleave::Gather(const float* block, std::size_t from, std::size_t count, float* out) const {
  const Stretch stretch(*this, from, count);
  const auto single = [&](std::size_t place, std::size_t number) { out[number] = block[place]; };
  forPartOfRound(*this, from, stretch.head, single);
  from += stretch.head;
  out += stretch.head;
  if (arrays == 1) {
    std::memcpy(out, block + from, stretch.rounds * sizeof(float));
  } else {
    transpose(block + from / arrays, length, arrays, stretch.rounds, out, arrays);
  }
  from += stretch.rounds * arrays;
  out += stretch.rounds * arrays;
  forPartOfRound(*this, from, stretch.tail, single);
}

void Interleave::Scatter(float* block, std::size_t from, std::size_t count, const float* in) const {
  const Stretch stretch(*this, from, count);
  const auto single = [&](std::size_t place, std::size_t number) { block[place] = in[number]; };
  forPartOfRound(*this, from, stretch.head, single);
  from += stretch.head;
  in += stretch.head;
  if (arrays == 1) {
    std::memcpy(block + from, in, stretch.rounds * sizeof(float));
  } else {
    transpose(in, arrays, stretch.rounds, arrays, block + from / arrays, length);
  }
  from += stretch.rounds * arrays;
  in += stretch.rounds * arrays;
  forPartOfRound(*this, from, stretch.tail, single);
}

}  // namespace QZSystem
