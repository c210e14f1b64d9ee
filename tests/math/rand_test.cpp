#include "qz/math/rand.h"

#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <random>

#include "qz/math/random.h"

using namespace QZMath;
using QZSystem::QZRandom;

namespace {

using Engine = MtRng<Mt64Traits>;

// The published generator takes one more step at the end than the raw word has.
std::uint64_t finished(std::uint64_t word) { return word ^ (word >> 43); }

TEST(Rand, GivesThePublishedSequence) {
  Engine engine;
  const std::uint64_t first[] = {14514284786278117030U, 4620546740167642908U, 13109570281517897720U};
  for (std::uint64_t expected : first) EXPECT_EQ(finished(engine.getWord()), expected);
  std::uint64_t last = 0;
  for (int i = 3; i < 10000; ++i) last = finished(engine.getWord());
  EXPECT_EQ(last, 9981545732273789042U);
}

TEST(Rand, AgreesWithTheStandardLibraryForEverySeed) {
  for (unsigned long seed : {0UL, 1UL, 42UL, 5489UL, 0x8000000000000000UL, ~0UL}) {
    Engine engine(seed);
    std::mt19937_64 reference(seed);
    for (int i = 0; i < 2000; ++i) {
      const std::uint64_t expected = reference();
      // What each operation makes of a word.
      if (i % 3 == 0) {
        ASSERT_EQ(engine.getUnitDouble(), static_cast<double>(expected >> 11) * 0x1p-53) << seed << ' ' << i;
      } else if (i % 3 == 1) {
        ASSERT_EQ(engine.getUnsigned(), (expected ^ (expected >> 43)) >> 33) << seed << ' ' << i;
      } else {
        ASSERT_EQ(finished(engine.getWord()), expected) << seed << ' ' << i;
      }
    }
  }
}

TEST(Rand, ACopyGoesOnFromWhereItsSourceStands) {
  for (int drawn : {0, 1, 311, 312, 313, 700}) {
    auto source = std::make_unique<Engine>(7);
    for (int i = 0; i < drawn; ++i) source->getUnsigned();
    Engine copy(*source);
    Engine assigned(99);
    assigned.getUnsigned();
    assigned = *source;
    Engine witness = copy;
    source.reset();
    for (int i = 0; i < 400; ++i) {
      const std::uint64_t expected = witness.getWord();
      ASSERT_EQ(copy.getWord(), expected) << drawn << ' ' << i;
      ASSERT_EQ(assigned.getWord(), expected) << drawn << ' ' << i;
    }
  }
}

TEST(Rand, SeedBeginsAnew) {
  Engine engine(3);
  const std::uint64_t first = engine.getWord();
  for (int i = 0; i < 500; ++i) engine.getWord();
  engine.Seed(3);
  EXPECT_EQ(engine.getWord(), first);
}

TEST(Random, GivesTheSameStreamForASeed) {
  QZRandom random(false);
  for (int expected : {1012484, 1716955679, 1792309082, 229610924}) EXPECT_EQ(random.NextInt(), expected);
  EXPECT_EQ(random.GetSeed(), 1772930244U);
  random.Seed(4294967295U);
  EXPECT_EQ(random.NextFloat(), static_cast<float>(1670702726 * 0x1p-31));
  EXPECT_EQ(random.NextInt(), 99100226);
}

TEST(Random, SeedsFromTheClockWhenAsked) {
  const auto before = static_cast<unsigned int>(std::time(nullptr));
  const QZRandom random(true);
  EXPECT_GE(random.GetSeed(), before);
  EXPECT_LE(random.GetSeed(), static_cast<unsigned int>(std::time(nullptr)));
}

}  // namespace
