#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace QZMath {

/// An abstract source of uniform random numbers, which every draw of a distribution is handed.
///
///     MtRng<Mt64Traits> engine(2026);
///     QZGaussianRNG noise(0.0, 0.5);
///     const double reading = value + noise(engine);
///
/// An engine of one's own derives from it. One thread at a time.
class QZRanNumEngine {
 public:
  virtual ~QZRanNumEngine() = default;

  /// The next number from 0 to 2147483647, both included.
  virtual unsigned int getUnsigned() = 0;

  /// The next number from 0, included, to 1, excluded.
  virtual double getUnitDouble() = 0;

 protected:
  QZRanNumEngine() = default;
  QZRanNumEngine(const QZRanNumEngine&) = default;
  QZRanNumEngine& operator=(const QZRanNumEngine&) = default;
};

/// The constants and the steps of MT19937-64 (Nishimura 2000, Tables of 64-bit Mersenne twisters). `Word` is one word
/// or a vector of them. Safe from any thread.
struct Mt64Traits {
  static constexpr std::size_t stateSize = 312;
  static constexpr std::size_t middle = 156;
  static constexpr std::uint64_t matrix = 0xB5026F5AA96619E9U;
  static constexpr std::uint64_t upperMask = 0xFFFFFFFF80000000U;
  static constexpr std::uint64_t lowerMask = 0x7FFFFFFFU;
  static constexpr std::uint64_t seedFactor = 6364136223846793005U;
  static constexpr unsigned int seedShift = 62;
  static constexpr unsigned long defaultSeed = 5489;

  /// Adds to `word`, that `middle` places on, what the present word and its follower give to the recurrence.
  template <class Word>
  [[gnu::always_inline]] static void twist(Word& word, const Word& present, const Word& follower) {
    word ^= ((present & upperMask) | (follower & lowerMask)) >> 1;
    word ^= -(follower & 1U) & matrix;
  }

  /// Makes a word of the state into one of the stream.
  template <class Word>
  [[gnu::always_inline]] static void temper(Word& word) {
    word ^= (word >> 29) & 0x5555555555555555U;
    word ^= (word << 17) & 0x71D67FFFEDA60000U;
    word ^= (word << 37) & 0xFFF7EEE000000000U;
  }
};

/// A Mersenne twister: a seed gives the same stream on every machine.
///
///     MtRng<Mt64Traits> engine;                     // the published sequence
///     engine.Seed(42);
///     const bool head = engine.getUnsigned() < (1U << 30);
///
/// The three ways to draw consume one word each of one stream. A copy goes on from where its source stands. One thread
/// at a time.
template <class Traits>
class MtRng final : public QZRanNumEngine {
 public:
  MtRng() : MtRng(Traits::defaultSeed) {}
  explicit MtRng(unsigned long seed) { Seed(seed); }
  MtRng(const MtRng& other) : QZRanNumEngine(other) { take(other); }
  MtRng& operator=(const MtRng& other) {
    take(other);
    return *this;
  }
  ~MtRng() override = default;

  /// Begins the stream of a seed.
  void Seed(unsigned long seed) {
    state[0] = seed;
    for (std::size_t i = 1; i < size; ++i) {
      state[i] = Traits::seedFactor * (state[i - 1] ^ (state[i - 1] >> Traits::seedShift)) + i;
    }
    next = words.data() + size;
  }

  /// The top 31 bits of the next word.
  unsigned int getUnsigned() override { return static_cast<unsigned int>(getWord() >> 33); }

  /// The top 53 bits of the next word after one more step, times 2^-53.
  double getUnitDouble() override {
    const std::uint64_t word = getWord();
    return static_cast<double>(static_cast<std::int64_t>((word ^ (word >> 43)) >> 11)) * 0x1p-53;
  }

  /// All 64 bits of the next word.
  std::uint64_t getWord() {
    if (__builtin_expect(next == words.data() + size, false)) regenerate();
    return *next++;
  }

 private:
  static constexpr std::size_t size = Traits::stateSize;
  static constexpr std::size_t middle = Traits::middle;
  static_assert(middle % 4 == 0 && size % 4 == 0 && middle <= size - middle, "the steps are taken four at a time");

  template <std::size_t width>
  using Words [[gnu::vector_size(8 * width)]] = std::uint64_t;

  void take(const MtRng& other) {
    state = other.state;
    words = other.words;
    next = words.data() + (other.next - other.words.data());
  }

  // Regeneration in place has no step that waits for one of the `middle` before it, so that several words are made at
  // a time, and tempered while they are at hand. All widths give the same words.
  [[gnu::noinline, gnu::cold]] void regenerate() {
    if (__builtin_cpu_supports("avx2")) {
      regenerateWide(*this);
    } else {
      regenerateBy<2>();
    }
    next = words.data();
  }

  [[gnu::noinline, gnu::target("avx2")]] static void regenerateWide(MtRng& engine) {
    engine.template regenerateBy<4>();
  }

  template <std::size_t width>
  [[gnu::always_inline]] inline void regenerateBy() {
    regenerateRange<width>(0, size - middle, middle);
    regenerateRange<width>(size - middle, size - width, 0);
    for (std::size_t i = size - width; i < size; ++i) {
      std::uint64_t word = state[i + middle - size];
      Traits::twist(word, state[i], state[(i + 1) % size]);
      state[i] = word;
      Traits::temper(word);
      words[i] = word;
    }
  }

  template <std::size_t width>
  [[gnu::always_inline]] inline void regenerateRange(std::size_t from, std::size_t to, std::size_t source) {
    for (std::size_t i = from; i < to; i += width, source += width) {
      Words<width> present;
      Words<width> follower;
      Words<width> made;
      std::memcpy(&present, state.data() + i, sizeof present);
      std::memcpy(&follower, state.data() + i + 1, sizeof follower);
      std::memcpy(&made, state.data() + source, sizeof made);
      Traits::twist(made, present, follower);
      std::memcpy(state.data() + i, &made, sizeof made);
      Traits::temper(made);
      std::memcpy(words.data() + i, &made, sizeof made);
    }
  }

  std::array<std::uint64_t, size> state;
  std::array<std::uint64_t, size> words;  // the state, tempered
  const std::uint64_t* next;              // into `words`; how many are left shows in it
};

}  // namespace QZMath
