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

TEST(Rand, AgreesWithTheStandardLibraryForEverySeed) {
  Engine engine(3);
  for (unsigned long seed : {5489UL, 0UL, 1UL, 42UL, 0x8000000000000000UL, ~0UL}) {
    if (seed == 5489) {
      engine = Engine();
    } else {
      engine.Seed(seed);
    }
    std::mt19937_64 reference(seed);
    for (int i = 0; i < 2000; ++i) {
      const std::uint64_t expected = reference();
      // What each operation makes of a word; the published generator takes one more step at the end than the raw word.
      const std::uint64_t raw = expected ^ (expected >> 43);
      if (i % 3 == 0) {
        ASSERT_EQ(engine.getUnitDouble(), static_cast<double>(expected >> 11) * 0x1p-53) << seed << ' ' << i;
      } else if (i % 3 == 1) {
        ASSERT_EQ(engine.getUnsigned(), raw >> 33) << seed << ' ' << i;
      } else {
        ASSERT_EQ(engine.getWord(), raw) << seed << ' ' << i;
      }
    }
  }
}

TEST(Rand, TheTenThousandthNumberIsTheStandards) {
  constexpr std::uint64_t published = 9981545732273789042U;  // ISO C++ 2017, 29.6.5, for mt19937_64
  Engine engine;
  for (int i = 1; i < 10000; ++i) engine.getWord();
  EXPECT_EQ(engine.getWord(), published ^ (published >> 43));
}

TEST(Rand, ACopyGoesOnFromWhereItsSourceStands) {
  for (int drawn : {0, 1, 311, 312, 313, 700}) {
    auto source = std::make_unique<Engine>(7);
    Engine witness(7), assigned(99);
    for (int i = 0; i < drawn; ++i) EXPECT_EQ(source->getUnsigned(), witness.getUnsigned());
    assigned.getUnsigned();
    assigned = *source;
    Engine copy(*source);
    source.reset();
    for (int i = 0; i < 400; ++i) {
      const std::uint64_t expected = witness.getWord();
      ASSERT_EQ(copy.getWord(), expected) << drawn << ' ' << i;
      ASSERT_EQ(assigned.getWord(), expected) << drawn << ' ' << i;
    }
  }
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
