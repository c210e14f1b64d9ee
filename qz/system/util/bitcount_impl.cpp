#include "qz/system/util/bitcount_impl.h"

#include <immintrin.h>

namespace QZSystem {

namespace {

constexpr std::array<std::uint8_t, 256> MakeBitCount() {
  std::array<std::uint8_t, 256> counts{};
  for (std::size_t value = 1; value < counts.size(); ++value)
    counts[value] = static_cast<std::uint8_t>(counts[value / 2] + value % 2);
  return counts;
}

// Any processor: byte by byte through the table.

std::uint64_t CountBytes(std::uint64_t word) {
  const auto count = [word](unsigned int byte) -> unsigned int { return BitCount[word >> (8 * byte) & 0xFF]; };
  return count(0) + count(1) + count(2) + count(3) + count(4) + count(5) + count(6) + count(7);
}

std::uint64_t PlainCount(const std::uint64_t* words, std::size_t size) {
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < size; ++i) count += CountBytes(words[i]);
  return count;
}

PairCounts PlainCountPair(const std::uint64_t* a, const std::uint64_t* b, std::size_t size) {
  PairCounts counts;
  for (std::size_t i = 0; i < size; ++i) {
    counts.both += CountBytes(a[i] & b[i]);
    counts.either += CountBytes(a[i] | b[i]);
  }
  return counts;
}

// Processors with an instruction that counts the bits of a word.

[[gnu::target("popcnt")]] std::uint64_t CountWord(std::uint64_t word) {
  return static_cast<std::uint64_t>(_mm_popcnt_u64(word));
}

[[gnu::target("popcnt")]] std::uint64_t PopcntCount(const std::uint64_t* words, std::size_t size) {
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < size; ++i) count += CountWord(words[i]);
  return count;
}

[[gnu::target("popcnt")]] PairCounts PopcntCountPair(const std::uint64_t* a, const std::uint64_t* b, std::size_t size) {
  PairCounts counts;
  for (std::size_t i = 0; i < size; ++i) {
    counts.both += CountWord(a[i] & b[i]);
    counts.either += CountWord(a[i] | b[i]);
  }
  return counts;
}

// Processors with AVX2. A shuffle looks up the counts of 32 half bytes at once (Mula, Kurz and Lemire 2018, "Faster
// population counts using AVX2 instructions"). Eight vectors at a time, seven of them are first added bit by bit with
// four full adders, which leaves three vectors for the sums' bits of weight 1, 2 and 4, so that four look-ups, each in
// a table that has its weight multiplied in, do the work of eight. No byte of the sum exceeds 64.

constexpr std::size_t VectorWords = 4;
constexpr std::size_t BlockWords = 8 * VectorWords;

[[gnu::target("avx2,popcnt")]] inline __m256i Load(const std::uint64_t* words) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words));
}

// What is counted, as vectors that are numbered from 0.

struct OneBlock {
  const std::uint64_t* words;
  [[gnu::target("avx2,popcnt")]] __m256i operator()(std::size_t i) const { return Load(words + i * VectorWords); }
};

struct BothBlocks {
  const std::uint64_t* a;
  const std::uint64_t* b;
  [[gnu::target("avx2,popcnt")]] __m256i operator()(std::size_t i) const {
    return _mm256_and_si256(Load(a + i * VectorWords), Load(b + i * VectorWords));
  }
};

struct EitherBlock {
  const std::uint64_t* a;
  const std::uint64_t* b;
  [[gnu::target("avx2,popcnt")]] __m256i operator()(std::size_t i) const {
    return _mm256_or_si256(Load(a + i * VectorWords), Load(b + i * VectorWords));
  }
};

// The number of set bits of each byte of `vector`, times the weight.
template <char weight>
[[gnu::target("avx2,popcnt")]] inline __m256i ByteCounts(__m256i vector) {
  constexpr char one = weight, two = 2 * weight, three = 3 * weight, four = 4 * weight;
  const __m256i counts =
      _mm256_setr_epi8(0, one, one, two, one, two, two, three, one, two, two, three, two, three, three, four,  //
                       0, one, one, two, one, two, two, three, one, two, two, three, two, three, three, four);
  const __m256i halves = _mm256_set1_epi8(15);
  return _mm256_add_epi8(_mm256_shuffle_epi8(counts, _mm256_and_si256(vector, halves)),
                         _mm256_shuffle_epi8(counts, _mm256_and_si256(_mm256_srli_epi16(vector, 4), halves)));
}

// Adds three bits at each place.
[[gnu::target("avx2,popcnt")]] inline void FullAdd(__m256i& sum, __m256i& carry, __m256i a, __m256i b, __m256i c) {
  const __m256i differ = _mm256_xor_si256(a, b);
  sum = _mm256_xor_si256(differ, c);
  carry = _mm256_or_si256(_mm256_and_si256(a, b), _mm256_and_si256(differ, c));
}

// The counts of the bytes of one vector or of eight, added in four parts.

[[gnu::target("avx2,popcnt")]] inline __m256i SumBytes(__m256i counts) {
  return _mm256_sad_epu8(counts, _mm256_setzero_si256());
}

template <class Vectors>
[[gnu::target("avx2,popcnt")]] inline __m256i CountVector(const Vectors& vectors) {
  return SumBytes(ByteCounts<1>(vectors(0)));
}

template <class Vectors>
[[gnu::target("avx2,popcnt")]] inline __m256i CountBlock(const Vectors& vectors) {
  __m256i ones, twos, fours, first, second, third;
  FullAdd(ones, first, vectors(0), vectors(1), vectors(2));
  FullAdd(ones, second, ones, vectors(3), vectors(4));
  FullAdd(ones, third, ones, vectors(5), vectors(6));
  FullAdd(twos, fours, first, second, third);
  return SumBytes(_mm256_add_epi8(_mm256_add_epi8(ByteCounts<1>(ones), ByteCounts<1>(vectors(7))),
                                  _mm256_add_epi8(ByteCounts<2>(twos), ByteCounts<4>(fours))));
}

[[gnu::target("avx2,popcnt")]] inline std::uint64_t SumParts(__m256i parts) {
  const __m128i half = _mm_add_epi64(_mm256_castsi256_si128(parts), _mm256_extracti128_si256(parts, 1));
  return static_cast<std::uint64_t>(_mm_cvtsi128_si64(half)) + static_cast<std::uint64_t>(_mm_extract_epi64(half, 1));
}

[[gnu::target("avx2,popcnt")]] std::uint64_t Avx2Count(const std::uint64_t* words, std::size_t size) {
  __m256i parts = _mm256_setzero_si256();
  std::size_t i = 0;
  for (; size - i >= BlockWords; i += BlockWords) parts = _mm256_add_epi64(parts, CountBlock(OneBlock{words + i}));
  for (; size - i >= VectorWords; i += VectorWords) parts = _mm256_add_epi64(parts, CountVector(OneBlock{words + i}));
  std::uint64_t count = SumParts(parts);
  for (; i < size; ++i) count += CountWord(words[i]);
  return count;
}

[[gnu::target("avx2,popcnt")]] PairCounts Avx2CountPair(const std::uint64_t* a, const std::uint64_t* b,
                                                        std::size_t size) {
  __m256i both = _mm256_setzero_si256(), either = both;
  std::size_t i = 0;
  for (; size - i >= BlockWords; i += BlockWords) {
    both = _mm256_add_epi64(both, CountBlock(BothBlocks{a + i, b + i}));
    either = _mm256_add_epi64(either, CountBlock(EitherBlock{a + i, b + i}));
  }
  for (; size - i >= VectorWords; i += VectorWords) {
    both = _mm256_add_epi64(both, CountVector(BothBlocks{a + i, b + i}));
    either = _mm256_add_epi64(either, CountVector(EitherBlock{a + i, b + i}));
  }
  // Both sums fit 32 bits, as a vector has no more than INT_MAX bits: they are made as one.
  const std::uint64_t sums = SumParts(_mm256_add_epi64(both, _mm256_slli_epi64(either, 32)));
  PairCounts counts{sums & 0xFFFFFFFF, sums >> 32};
  for (; i < size; ++i) {
    counts.both += CountWord(a[i] & b[i]);
    counts.either += CountWord(a[i] | b[i]);
  }
  return counts;
}

bool HasAvx2() { return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("popcnt") != 0; }
bool HasPopcnt() { return __builtin_cpu_supports("popcnt") != 0; }
bool Always() { return true; }

}  // namespace

const std::array<std::uint8_t, 256> BitCount = MakeBitCount();

const std::array<BitCounter, 3> BitCounters = {{{"avx2", &HasAvx2, &Avx2Count, &Avx2CountPair},
                                                {"popcnt", &HasPopcnt, &PopcntCount, &PopcntCountPair},
                                                {"plain", &Always, &PlainCount, &PlainCountPair}}};

std::atomic<const BitCounter*> chosenBitCounter{nullptr};

const BitCounter& ChooseBitCounter() {
  __builtin_cpu_init();  // static initialisers may come before the one that does it
  const BitCounter* counter = BitCounters.data();
  while (!counter->isSupported()) ++counter;
  chosenBitCounter.store(counter, std::memory_order_relaxed);
  return *counter;
}

}  // namespace QZSystem
