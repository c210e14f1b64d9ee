#include "qz/system/util/bitvector.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "qz/system/util/bitcount_impl.h"
#include "tests/system/cli/messages.h"

using namespace QZSystem;

namespace {

using Bits = std::vector<bool>;
constexpr unsigned int none = QZBitVector::NoBit;

// Sizes around each change of storage, up to several blocks of what is counted at once.
const unsigned long sizes[] = {0, 1, 3, 4, 7, 8, 63, 64, 65, 67, 127, 128, 129, 256, 300, 2047, 2048, 2049, 5000};

Bits RandomBits(unsigned long size, std::mt19937& engine, unsigned int oneIn = 3) {
  Bits bits(size);
  for (unsigned long i = 0; i < size; ++i) bits[i] = engine() % oneIn == 0;
  return bits;
}

QZBitVector VectorOf(const Bits& bits) {
  QZBitVector vector(bits.size());
  for (unsigned long i = 0; i < bits.size(); ++i) vector.SetBit(i, bits[i]);
  return vector;
}

QZBitVector VectorOf(const std::string& text) {
  QZBitVector vector;
  EXPECT_TRUE(vector.FromHexString(text));
  return vector;
}

Bits BitsOf(const QZBitVector& vector) {
  Bits bits;
  for (unsigned long i = 0; i < vector.GetSize(); ++i) bits.push_back(vector.IsBitSet(i));
  return bits;
}

std::string HexOf(const QZBitVector& vector) {
  std::string text = "?";
  EXPECT_TRUE(vector.ToHexString(text));
  return text;
}

unsigned int CountOf(const Bits& bits, unsigned long low = 0, unsigned long high = none) {
  unsigned int count = 0;
  for (unsigned long i = low; i <= high && i < bits.size(); ++i) count += bits[i];
  return count;
}

bool At(const Bits& bits, unsigned long i) { return i < bits.size() && bits[i]; }

}  // namespace

TEST(BitVector, WalksAndCountsAsANaiveOne) {
  std::mt19937 engine(1);
  for (const unsigned long size : sizes) {
    const Bits bits = RandomBits(size, engine, size > 1000 ? 50 : 3);
    const QZBitVector vector = VectorOf(bits);
    ASSERT_EQ(vector.CountBits(), CountOf(bits)) << size;
    unsigned int last = none;
    for (unsigned int i = 0; i < size + 2; ++i) {
      ASSERT_EQ(vector.PrevBit(i), i < size ? last : vector.LastBit()) << size << ' ' << i;
      if (At(bits, i)) last = i;
    }
    ASSERT_EQ(vector.LastBit(), last) << size;
    unsigned int next = none;
    for (auto i = static_cast<unsigned int>(size + 2); i-- > 0;) {
      ASSERT_EQ(vector.NextBit(i), i < size ? next : none) << size << ' ' << i;
      if (At(bits, i)) next = i;
    }
    ASSERT_EQ(vector.FirstBit(), next) << size;
    ASSERT_EQ(vector.IsEmpty(), next == none) << size;
    for (int round = 0; round < 200; ++round) {
      const auto low = static_cast<unsigned int>(engine() % (size + 3));
      const unsigned int high = low + static_cast<unsigned int>(engine() % 200);
      ASSERT_EQ(vector.CountRangeBits(low, high), CountOf(bits, low, high)) << size << ' ' << low << ' ' << high;
      ASSERT_EQ(vector.CountRangeBits(low, none), CountOf(bits, low)) << size << ' ' << low;
    }
  }
  EXPECT_EQ(VectorOf("FF").CountRangeBits(5, 4), 0U);
  EXPECT_EQ(VectorOf("FF").NextBit(none), none);
}

TEST(BitVector, KeepsItsBitsThroughChangesOfSize) {
  std::mt19937 engine(2);
  QZBitVector vector(10);
  Bits bits(10);
  for (int round = 0; round < 2000; ++round) {
    const unsigned long size = sizes[engine() % std::size(sizes)] % 400;
    vector.SetSize(size);
    bits.resize(size);
    // What was cut off must not come back, whatever the size in between.
    ASSERT_EQ(BitsOf(vector), bits) << round;
    for (int change = 0; change < 5; ++change) {
      const unsigned long i = engine() % (size + 70);
      const unsigned int what = engine() % 4;
      what == 0 ? vector.SetBit(i) : what == 1 ? vector.ClearBit(i) : vector.ToggleBit(i);
      if (i < size) bits[i] = what == 0 ? true : what == 1 ? false : !bits[i];
    }
    ASSERT_EQ(BitsOf(vector), bits) << round;
    ASSERT_EQ(vector.CountBits(), CountOf(bits)) << round;
  }
  vector.ClearBits();
  EXPECT_EQ(BitsOf(vector), Bits(bits.size()));
}

TEST(BitVector, CopiesAndMovesBetweenBothForms) {
  std::mt19937 engine(3);
  for (const unsigned long from : sizes) {
    for (const unsigned long to : sizes) {
      SCOPED_TRACE(testing::Message() << from << " to " << to);
      const QZBitVector source = VectorOf(RandomBits(from, engine)), before = VectorOf(RandomBits(to, engine));
      QZBitVector target(before), copy(source), taken(before);
      target = copy;
      copy.ClearBits();
      ASSERT_EQ(target, source);
      taken = std::move(target);
      ASSERT_EQ(target, QZBitVector());
      const QZBitVector& same = taken;
      taken = same;
      ASSERT_EQ(taken, source);
    }
  }
  EXPECT_NE(QZBitVector(10), QZBitVector(11));
}

TEST(BitVector, SetAlgebraIsThatOfANaiveOne) {
  std::mt19937 engine(4);
  for (const unsigned long sizeA : sizes) {
    for (const unsigned long sizeB : sizes) {
      SCOPED_TRACE(testing::Message() << sizeA << " and " << sizeB);
      const Bits a = RandomBits(sizeA, engine), b = RandomBits(sizeB, engine);
      const QZBitVector x = VectorOf(a), y = VectorOf(b);
      Bits all(std::max(sizeA, sizeB)), both = all, differ = all, onlyA = all, notA(sizeA);
      for (unsigned long i = 0; i < all.size(); ++i) {
        all[i] = At(a, i) || At(b, i);
        both[i] = At(a, i) && At(b, i);
        differ[i] = At(a, i) != At(b, i);
        onlyA[i] = At(a, i) && !At(b, i);
        if (i < sizeA) notA[i] = !a[i];
      }
      ASSERT_EQ(BitsOf(QZBitVectorOr(x, y)), all);
      ASSERT_EQ(BitsOf(QZBitVectorAnd(x, y)), both);
      ASSERT_EQ(BitsOf(QZBitVectorXor(x, y)), differ);
      ASSERT_EQ(BitsOf(QZBitVectorSub(x, y)), onlyA);
      ASSERT_EQ(BitsOf(QZBitVectorNot(x)), notA);
      ASSERT_EQ(QZBitVectorNot(x).CountBits(), CountOf(notA));
      ASSERT_EQ(QZBitVectorEqual(x, y), a == b);
      ASSERT_EQ(QZTanimoto(x, y), CountOf(all) == 0 ? 1.0 : 1.0 * CountOf(both) / CountOf(all));
      if (sizeA != sizeB) continue;
      unsigned int counts[4] = {99, 99, 99, 99};
      QZGetBitCounts(x, y, &counts[0], &counts[1], &counts[2]);
      ASSERT_EQ(std::tie(counts[0], counts[1], counts[2]),
                std::tuple(CountOf(onlyA), CountOf(differ) - CountOf(onlyA), CountOf(both)));
      QZGetBitCounts(x, y, &counts[0], &counts[1], &counts[2], &counts[3]);
      ASSERT_EQ(counts[3], sizeA - CountOf(all));
    }
  }
  QZBitVector self = VectorOf("FF01J"), other = self;
  EXPECT_TRUE((self ^= self).IsEmpty() && (other -= other).IsEmpty());
}

TEST(BitVector, EveryWayOfCountingGivesTheSame) {
  std::mt19937_64 engine(6);
  for (std::size_t size = 0; size < 200; ++size) {
    std::vector<std::uint64_t> a(size), b(size);
    for (std::size_t i = 0; i < size; ++i) {
      a[i] = size % 3 == 0 ? ~std::uint64_t{0} : engine();
      b[i] = size % 5 == 0 ? ~std::uint64_t{0} : engine() & engine();
    }
    std::uint64_t count = 0, both = 0, either = 0;
    for (unsigned long bit = 0; bit < size * 64; ++bit) {
      const std::uint64_t inA = a[bit / 64] >> (bit % 64) & 1, inB = b[bit / 64] >> (bit % 64) & 1;
      count += inA;
      both += inA & inB;
      either += inA | inB;
    }
    for (const BitCounter& counter : BitCounters) {
      if (!counter.isSupported()) continue;
      EXPECT_EQ(counter.count(a.data(), size), count) << counter.name << ' ' << size;
      const PairCounts pair = counter.countPair(a.data(), b.data(), size);
      EXPECT_EQ(pair.both, both) << counter.name << ' ' << size;
      EXPECT_EQ(pair.either, either) << counter.name << ' ' << size;
    }
  }
}

TEST(BitVector, RefusesMoreThanTheLargestSize) {
  Messages messages;
  const std::string refusal = "Warning: Max size for an QZBitVector is INT_MAX\n";
  EXPECT_EQ(QZBitVector(2147483648UL), QZBitVector());
  EXPECT_EQ(messages.Take(), refusal);
  QZBitVector vector = VectorOf("123");
  vector.SetSize(~0UL);
  EXPECT_EQ(vector, VectorOf("123"));
  EXPECT_EQ(messages.Take(), refusal);
  // A text for too many bits if each byte were a digit.
  std::string text(536870913, '\n');
  text.replace(0, 1, "1");
  text.replace(70, 3, "A0a");
  text.back() = 'H';
  EXPECT_TRUE(vector.FromHexString(text));
  EXPECT_EQ(HexOf(vector), "1A02H");
  EXPECT_EQ(messages.Take(), refusal);
  unsigned int counts[4] = {99, 99, 99, 99};
  QZGetBitCounts(QZBitVector(10), QZBitVector(2000), &counts[0], &counts[1], &counts[2], &counts[3]);
  EXPECT_EQ(counts[0] + counts[1] + counts[2] + counts[3], 0U);
  EXPECT_EQ(messages.Take(), "Warning: QZGetBitCounts: different bit vector size 10 != 2000\n");
}

TEST(BitVectorHex, WritesAndReadsBothOrders) {
  const std::pair<std::string, const char*> cases[] = {
      {{"1\0002J", 4}, "12J"}, {"F1I", "F1I"}, {"1GJ", "1J"}, {"aBcDeF", "FEDCBAJ"}, {"FFI", "F1I"}, {"\xff", "J"},
      {"0x1 2\t3", "3210J"},   {"FFG", "F7G"}, {"J1", "1J"},  {"FF00J", "FF00J"},    {"FFM", "F1I"}, {"FI", "1I"},
      {"ff00n", "00FFJ"},      {"12K", "21G"}, {" J", "J"},   {"FF00", "00FFJ"},     {"92K", "21G"}, {"J", "J"},
      {"FFJ\n", "FFJ"},        {"12L", "21H"}, {"N", "J"},    {"J12J", "12J"},       {"F8", "8FJ"}};
  for (const auto& [text, written] : cases) {
    EXPECT_EQ(HexOf(VectorOf(text)), written) << text;
    Bits bits;
    EXPECT_TRUE(QZParseHex(bits, text)) << text;
    std::string again;
    EXPECT_TRUE(QZMakeHex(again, bits, 0));
    EXPECT_EQ(again, written) << text;
  }
  EXPECT_EQ(HexOf(VectorOf("123456789abcdef01\n2J")), "123456789ABCDEF012J");
  EXPECT_EQ(HexOf(VectorOf("\n123456789abcdef0g1")), "10FEDCBA987654321J");
}

TEST(BitVectorHex, AMarkerThatTakesAwayTooMuchLeavesNoBit) {
  const std::pair<const char*, unsigned long> cases[] = {{"G", 0}, {"M", 0}, {"..I", 8}, {"\nK", 4}};
  Bits bits{true, false};
  for (const auto& [text, size] : cases) {
    QZBitVector vector = VectorOf("FFJ");
    EXPECT_FALSE(vector.FromHexString(text)) << text;
    EXPECT_EQ(vector, QZBitVector(size)) << text;
    EXPECT_FALSE(QZParseHex(bits, text)) << text;
    EXPECT_EQ(bits, (Bits{true, false})) << text;
  }
  QZBitVector vector = VectorOf("FFJ");
  EXPECT_TRUE(vector.FromHexString("") && QZParseHex(bits, ""));
  EXPECT_EQ(vector, VectorOf("FFJ"));
  EXPECT_EQ(bits, Bits(64));
}

TEST(BitVectorHex, LinesAreNoLongerThanAsked) {
  const std::pair<unsigned int, const char*> cases[] = {
      {1, "1\n2\n3\n4\n5\nJ"}, {2, "12\n34\n5J"}, {3, "123\n45J"}, {5, "12345\nJ"}, {6, "12345J"}};
  for (const auto& [length, expected] : cases) {
    std::string text = "old";
    QZMakeHex(text, VectorOf("12345J"), length);
    EXPECT_EQ(text, expected);
  }
  std::mt19937 engine(7);
  for (unsigned long size = 0; size < 300; ++size) {
    const Bits bits = RandomBits(size, engine);
    for (const unsigned int length : {0U, 1U, 7U, 16U, 17U, 80U}) {
      std::string text, same;
      QZMakeHex(text, bits, length);
      QZMakeHex(same, VectorOf(bits), length);
      ASSERT_EQ(text, same) << size << ' ' << length;
      ASSERT_EQ(BitsOf(VectorOf(text)), bits) << size << ' ' << length;
    }
  }
}
