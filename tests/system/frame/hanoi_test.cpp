#include "qz/system/frame/hanoi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace QZSystem;

namespace {

// Elements that show by their number where they stood before the sort. The kinds differ in what the sort does with
// them: it moves these as int, as long and as bytes.
template <class Number>
struct Block {
  explicit Block(int k = 0, std::size_t n = 0) : key(static_cast<Number>(k)), number(static_cast<Number>(n)) {}
  Number key, number;
};
using Plain = Block<short>;
using EightBytes = Block<int>;
struct Wide : Block<long> {
  using Block::Block;
  long filler[3] = {};
};

// Moves only, and what it owns must come along.
struct Owning : Block<int> {
  explicit Owning(int k = 0, std::size_t n = 0) : Block(k, n), owned(std::make_unique<int>(k)) {}
  std::unique_ptr<int> owned;
};

struct NoDefault : Block<int> {
  NoDefault(int k, std::size_t n) : Block(k, n), text(static_cast<std::size_t>(40 + k), 'x') {}
  std::string text;
};

using Keys = std::vector<int>;
using Numbers = std::vector<std::size_t>;

template <class T>
std::vector<T> Elements(const Keys& keys) {
  std::vector<T> all;
  for (int key : keys) all.emplace_back(key, all.size());
  return all;
}

template <class T>
Numbers NumbersOf(const std::vector<T>& elements) {
  Numbers numbers;
  for (const auto& each : elements) numbers.push_back(static_cast<std::size_t>(each.number));
  return numbers;
}

Numbers StableOrder(const Keys& keys) {
  Numbers order(keys.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  return order;
}

// Where a run ends by the rule of the merge sort itself: a merge goes into the buffer that doesn't hold its first run.
bool EndsInOther(const Keys& keys, std::size_t count) {
  if (count < 2) return false;
  if (count == 2) return keys[1] < keys[0];
  return !EndsInOther(keys, count / 2);
}

constexpr auto byKey = [](const auto& a, const auto& b) { return a.key < b.key; };

template <class T>
int CompareKeys(const void* a, const void* b) {
  const T& x = *static_cast<const T*>(a);
  const T& y = *static_cast<const T*>(b);
  return x.key < y.key ? -7 : x.key > y.key ? 9 : 0;
}

// Sorts in place, and between two buffers.
template <class T, class InPlace, class Between>
void Check(const Keys& keys, const InPlace& inPlace, const Between& between) {
  std::vector<T> sorted = Elements<T>(keys);
  inPlace(sorted);
  ASSERT_EQ(NumbersOf(sorted), StableOrder(keys)) << testing::PrintToString(keys);
  std::vector<T> a = Elements<T>(keys), b = Elements<T>(Keys(keys.size(), -1));
  const bool inB = between(a, b);
  ASSERT_EQ(inB, EndsInOther(keys, keys.size())) << testing::PrintToString(keys);
  ASSERT_EQ(NumbersOf(inB ? b : a), StableOrder(keys)) << testing::PrintToString(keys);
}

template <class T>
void CheckTemplate(const Keys& keys) {
  Check<T>(
      keys, [](auto& all) { hanoisort(all.data(), all.size(), byKey); },
      [](auto& a, auto& b) { return hanoi(a.data(), a.size(), b.data(), byKey); });
}

template <class T>
void CheckBytes(const Keys& keys) {
  const auto bytes = [](auto& all) { return reinterpret_cast<char*>(all.data()); };
  Check<T>(
      keys, [&](auto& all) { hanoisort(all.data(), all.size(), sizeof(T), CompareKeys<T>); },
      [&](auto& a, auto& b) { return hanoi(bytes(a), a.size(), bytes(b), sizeof(T), CompareKeys<T>); });
}

void CheckAllKinds(const Keys& keys) {
  CheckTemplate<Plain>(keys);
  CheckTemplate<Wide>(keys);
  CheckTemplate<Owning>(keys);
  CheckTemplate<NoDefault>(keys);
  CheckBytes<Plain>(keys);
  CheckBytes<EightBytes>(keys);
  CheckBytes<Wide>(keys);
}

TEST(Hanoi, SortsEverySmallInputStably) {
  for (std::size_t count = 0; count <= 6; ++count) {
    const auto inputs = static_cast<int>(std::pow(4, count));
    for (int input = 0; input < inputs && !HasFatalFailure(); ++input) {
      Keys keys;
      for (int rest = input; keys.size() < count; rest /= 4) keys.push_back(rest % 4);
      CheckAllKinds(keys);
    }
  }
}

TEST(Hanoi, SortsEverySizeStably) {
  std::mt19937 random(5);
  for (std::size_t count = 7; count <= 300 && !HasFatalFailure(); ++count) {
    for (int range : {2, 10, 30000}) {
      Keys keys(count);
      for (int& key : keys) key = static_cast<int>(random() % static_cast<unsigned int>(range));
      CheckAllKinds(keys);
    }
  }
}

// Enough for a scratch block from the heap, and for merges that look ahead at what pointers point to. A truth value may
// be any number.
TEST(Hanoi, SortsManyPointersByAnyTruthValue) {
  std::mt19937 random(6);
  Keys keys(20001);
  for (int& key : keys) key = static_cast<int>(random() % 500);
  const std::vector<EightBytes> elements = Elements<EightBytes>(keys);
  std::vector<const EightBytes*> pointers;
  for (const EightBytes& each : elements) pointers.push_back(&each);
  hanoisort(pointers.data(), pointers.size(),
            [](const auto* a, const auto* b) { return a->key < b->key ? 1 + b->key : 0; });
  Numbers numbers;
  for (const EightBytes* each : pointers) numbers.push_back(static_cast<std::size_t>(each->number));
  EXPECT_EQ(numbers, StableOrder(keys));
}

// A block of 3 bytes, and of 4 on an odd address, can't be moved as numbers.
TEST(Hanoi, SortsBytesAtAnyAddress) {
  for (std::size_t size : {1U, 3U, 4U, 8U}) {
    std::string text = "-", expected = "-";
    for (char c : std::string("qwertyuiopasdfghjklzxcvbnm")) text += std::string(size, c);
    for (char c = 'a'; c <= 'z'; ++c) expected += std::string(size, c);
    hanoisort(&text[1], 26, size, [](const void* a, const void* b) { return std::memcmp(a, b, 1); });
    EXPECT_EQ(text, expected) << size;
  }
}

// Whatever a comparison that contradicts itself answers, all elements are still there.
TEST(Hanoi, ABadOrderLosesNothing) {
  std::mt19937 random(7);
  for (std::size_t count = 2; count < 200; ++count) {
    std::vector<int> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0);
    const std::vector<int> all = numbers;
    hanoisort(numbers.data(), count, [&](int, int) { return random() % 2 == 0; });
    std::sort(numbers.begin(), numbers.end());
    ASSERT_EQ(numbers, all);
  }
}

TEST(Hanoi, ATooLargeBlockIsAnAllocationFailure) {
  Plain one[2] = {Plain(2, 0), Plain(1, 1)};
  long number[2] = {2, 1};
  EXPECT_THROW(hanoisort(one, ~0UL / 2, byKey), std::bad_alloc);
  EXPECT_THROW(hanoisort(static_cast<void*>(one), ~0UL, 3, CompareKeys<Plain>), std::bad_alloc);
  EXPECT_THROW(hanoisort(static_cast<void*>(number), ~0UL / 8, 8, CompareKeys<EightBytes>), std::bad_alloc);
  EXPECT_EQ(one[0].key, 2);
}

}  // namespace
