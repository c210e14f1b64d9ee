#include "qz/system/frame/hanoi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace QZSystem;

namespace {

// An element that shows by its number where it stood before the sort. The kinds differ in what the sort does with them.
struct Plain {
  short key = 0;
  short number = 0;
};

struct Wide {
  long key = 0;
  long number = 0;
  long filler[3] = {};
};

struct Owning {
  Owning() = default;
  Owning(short k, short n) : key(k), number(n), owned(std::make_unique<short>(k)) {}
  short key = 0;
  short number = 0;
  std::unique_ptr<short> owned;  // moves only, and must come along
};

struct NoDefault {
  NoDefault(short k, short n) : key(k), number(n), text(static_cast<std::size_t>(40 + k), 'x') {}
  short key;
  short number;
  std::string text;
};

template <class T>
T Element(int key, std::size_t number) {
  return {static_cast<decltype(T::key)>(key), static_cast<decltype(T::number)>(number)};
}
template <>
Owning Element<Owning>(int key, std::size_t number) {
  return {static_cast<short>(key), static_cast<short>(number)};
}

using Keys = std::vector<int>;

template <class T>
std::vector<T> Elements(const Keys& keys) {
  std::vector<T> all;
  for (int key : keys) all.push_back(Element<T>(key, all.size()));
  return all;
}

std::vector<std::size_t> StableOrder(const Keys& keys) {
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  return order;
}

template <class Range>
std::vector<std::size_t> Numbers(const Range& elements) {
  std::vector<std::size_t> numbers;
  for (const auto& each : elements) numbers.push_back(static_cast<std::size_t>(each.number));
  return numbers;
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

template <class T>
void CheckTemplate(const Keys& keys) {
  std::vector<T> sorted = Elements<T>(keys);
  hanoisort(sorted.data(), sorted.size(), byKey);
  ASSERT_EQ(Numbers(sorted), StableOrder(keys)) << testing::PrintToString(keys);

  std::vector<T> a = Elements<T>(keys), b = Elements<T>(Keys(keys.size(), -1));
  const bool inB = hanoi(a.data(), a.size(), b.data(), byKey);
  ASSERT_EQ(inB, EndsInOther(keys, keys.size())) << testing::PrintToString(keys);
  ASSERT_EQ(Numbers(inB ? b : a), StableOrder(keys)) << testing::PrintToString(keys);
}

template <class T>
void CheckBytes(const Keys& keys) {
  std::vector<T> sorted = Elements<T>(keys);
  hanoisort(static_cast<void*>(sorted.data()), sorted.size(), sizeof(T), CompareKeys<T>);
  ASSERT_EQ(Numbers(sorted), StableOrder(keys)) << testing::PrintToString(keys);

  std::vector<T> a = Elements<T>(keys), b(keys.size());
  const bool inB =
      hanoi(reinterpret_cast<char*>(a.data()), a.size(), reinterpret_cast<char*>(b.data()), sizeof(T), CompareKeys<T>);
  ASSERT_EQ(inB, EndsInOther(keys, keys.size())) << testing::PrintToString(keys);
  ASSERT_EQ(Numbers(inB ? b : a), StableOrder(keys)) << testing::PrintToString(keys);
}

struct EightBytes {
  int key = 0;
  int number = 0;
};

void CheckAllKinds(const Keys& keys) {
  CheckTemplate<Plain>(keys);
  CheckTemplate<Wide>(keys);
  CheckTemplate<Owning>(keys);
  CheckTemplate<NoDefault>(keys);
  CheckBytes<Plain>(keys);       // moved as int
  CheckBytes<EightBytes>(keys);  // moved as long
  CheckBytes<Wide>(keys);        // moved as bytes
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

// Enough for a scratch block from the heap, and for merges that look ahead at what pointers point to.
TEST(Hanoi, SortsManyPointers) {
  std::mt19937 random(6);
  Keys keys(20001);
  for (int& key : keys) key = static_cast<int>(random() % 500);
  const std::vector<EightBytes> elements = Elements<EightBytes>(keys);
  std::vector<const EightBytes*> pointers;
  for (const EightBytes& each : elements) pointers.push_back(&each);
  hanoisort(pointers.data(), pointers.size(), [](const auto* a, const auto* b) { return a->key < b->key; });
  std::vector<std::size_t> numbers;
  for (const EightBytes* each : pointers) numbers.push_back(static_cast<std::size_t>(each->number));
  EXPECT_EQ(numbers, StableOrder(keys));
}

// A truth value may be any number.
TEST(Hanoi, TakesAnyTruthValue) {
  std::vector<int> numbers(1000);
  std::iota(numbers.rbegin(), numbers.rend(), 0);
  hanoisort(numbers.data(), numbers.size(), [](int a, int b) { return a < b ? 1 + b : 0; });
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

// A block of 3 bytes, and of 4 on an odd address, can't be moved as numbers.
TEST(Hanoi, SortsBytesAtAnyAddress) {
  for (std::size_t size : {1U, 3U, 4U, 8U}) {
    std::string text = "-";
    std::vector<std::string> words;
    for (char c : std::string("qwertyuiopasdfghjklzxcvbnm")) words.emplace_back(size, c);
    for (const std::string& word : words) text += word;
    hanoisort(&text[1], words.size(), size, [](const void* a, const void* b) { return std::memcmp(a, b, 1); });
    std::sort(words.begin(), words.end());
    std::string expected = "-";
    for (const std::string& word : words) expected += word;
    EXPECT_EQ(text, expected) << size;
  }
}

TEST(Hanoi, TwoInOrderAreNotTouched) {
  Plain a[] = {{1, 0}, {1, 1}}, b[] = {{8, 8}, {9, 9}};
  EXPECT_FALSE(hanoi(a, 2, b, byKey));
  EXPECT_EQ(a[0].number, 0);
  EXPECT_EQ(b[0].key, 8);
  EXPECT_EQ(b[1].key, 9);
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
  Plain one[2] = {{2, 0}, {1, 1}};
  long number[2] = {2, 1};
  EXPECT_THROW(hanoisort(one, ~0UL / 2, byKey), std::bad_alloc);
  EXPECT_THROW(hanoisort(static_cast<void*>(one), ~0UL, 3, CompareKeys<Plain>), std::bad_alloc);
  EXPECT_THROW(hanoisort(static_cast<void*>(number), ~0UL / 8, 8, CompareKeys<EightBytes>), std::bad_alloc);
  EXPECT_EQ(one[0].key, 2);
}

}  // namespace
