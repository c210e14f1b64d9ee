#include "qz/system/objects/interleave_impl.h"

#include <algorithm>

namespace QZSystem {

namespace {

// Calls `each(array, element, number)` for elements of the interleave that aren't whole rounds.
template <class Each>
void forSingle(const Interleave& shape, std::size_t from, std::size_t count, Each each) {
  std::size_t element = from / shape.arrays;
  std::size_t array = from % shape.arrays;
  for (std::size_t i = 0; i < count; ++i) {
    each(array * shape.length + element, i);
    if (++array == shape.arrays) {
      array = 0;
      ++element;
    }
  }
}

// Splits a stretch of the interleave into a part of a round, whole rounds, and a part of a round.
struct Stretch {
  std::size_t head, rounds, tail;

  Stretch(const Interleave& shape, std::size_t from, std::size_t count) {
    const std::size_t past = from % shape.arrays;
    head = past == 0 ? 0 : std::min(count, shape.arrays - past);
    rounds = (count - head) / shape.arrays;
    tail = (count - head) % shape.arrays;
  }
};

}  // namespace

void Interleave::Gather(const float* block, std::size_t from, std::size_t count, float* out) const {
  const auto single = [&](std::size_t place, std::size_t number) { out[number] = block[place]; };
  const Stretch stretch(*this, from, count);
  forSingle(*this, from, stretch.head, single);
  from += stretch.head;
  out += stretch.head;
  const float* const first = block + from / arrays;
  for (std::size_t array = 0; array < arrays; ++array) {
    const float* const source = first + array * length;
    for (std::size_t i = 0; i < stretch.rounds; ++i) out[i * arrays + array] = source[i];
  }
  from += stretch.rounds * arrays;
  out += stretch.rounds * arrays;
  forSingle(*this, from, stretch.tail, single);
}

void Interleave::Scatter(float* block, std::size_t from, std::size_t count, const float* in) const {
  const auto single = [&](std::size_t place, std::size_t number) { block[place] = in[number]; };
  const Stretch stretch(*this, from, count);
  forSingle(*this, from, stretch.head, single);
  from += stretch.head;
  in += stretch.head;
  float* const first = block + from / arrays;
  for (std::size_t array = 0; array < arrays; ++array) {
    float* const target = first + array * length;
    for (std::size_t i = 0; i < stretch.rounds; ++i) target[i] = in[i * arrays + array];
  }
  from += stretch.rounds * arrays;
  in += stretch.rounds * arrays;
  forSingle(*this, from, stretch.tail, single);
}

}  // namespace QZSystem
