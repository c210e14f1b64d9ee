#include "qz/system/frame/iterator.h"

#include <gtest/gtest.h>

#include <deque>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/system/cli/messages.h"

using namespace QZSystem;

namespace {

using Ints = std::vector<int>;

struct Odd : QZUnaryPredicate<int> {
  bool operator()(const int& n) const override { return n % 2 != 0; }
  Odd* CreateCopy() const override { return new Odd(*this); }
};

struct Any : QZUnaryPredicate<int> {
  bool operator()(const int&) const override { return true; }
  Any* CreateCopy() const override { return new Any(*this); }
};

// Sorts by tens, so that elements of one ten show whether the sort is stable; counts its questions.
struct ByTens : QZBinaryPredicate<int, int> {
  explicit ByTens(int& calls) : asked(&calls) {}
  bool operator()(const int& a, const int& b) const override {
    ++*asked;
    return a / 10 < b / 10;
  }
  ByTens* CreateCopy() const override { return new ByTens(*this); }
  int* asked;
};

// A vector of ints in every shape that an iterator can walk.
struct Shapes {
  explicit Shapes(const Ints& values) : ints(values), list(values.begin(), values.end()) {
    for (int& each : ints) pointers.push_back(&each);
  }

  Ints ints;
  std::list<int> list;
  std::vector<int*> pointers;
};

using Const = QZIterBase<const int>;
using Make = Const* (*)(Shapes&);

// Every kind of iterator that can show const ints; a concatenation as two halves between empty ones.
Const* Concatenated(Shapes& s) {
  const auto middle = s.ints.begin() + static_cast<long>(s.ints.size() / 2);
  auto* all = new QZConcatIter<const int>;
  all->Push(new QZEmptyIter<const int>)->Push(nullptr);
  all->Push(new QZCacheIter<const int>(Ints(s.ints.begin(), middle)));
  all->Push(new QZCacheIter<const int>(Ints()));
  all->Push(new QZCacheIter<const int>(Ints(middle, s.ints.end())));
  all->Push(new QZEmptyIter<const int>);
  return &all->ToFirst();
}

const std::pair<const char*, Make> kinds[] = {
    {"QZSTLIter of pointers",
     [](Shapes& s) -> Const* { return new QZSTLIter<ConstDerefIterGuts<std::vector<int*>>>(s.pointers); }},
    {"QZSTLCacheIter", [](Shapes& s) -> Const* { return new QZSTLCacheIter<ConstIterGuts<Ints>>(s.ints); }},
    {"QZVectorCacheIter, not owning",
     [](Shapes& s) -> Const* { return new QZVectorCacheIter<const int>(&s.ints, false); }},
    {"QZSTLIter", [](Shapes& s) -> Const* { return new QZSTLIter<ConstIterGuts<Ints>>(s.ints); }},
    {"QZSortedIter",
     [](Shapes& s) -> Const* { return new QZSortedIter<const int>(new QZCacheIter<const int>(s.ints)); }},
    {"QZVectorIter", [](Shapes& s) -> Const* { return new QZVectorIter<const int>(s.ints); }},
    {"QZVectorCacheIter", [](Shapes& s) -> Const* { return new QZVectorCacheIter<const int>(new Ints(s.ints), true); }},
    {"QZCacheIter", [](Shapes& s) -> Const* { return new QZCacheIter<const int>(s.ints); }},
    {"QZSTLIter of a list", [](Shapes& s) -> Const* { return new QZSTLIter<ConstIterGuts<std::list<int>>>(s.list); }},
    {"QZConcatIter", Concatenated}};

// The element that an iterator is on, 0 for none.
template <class Iterator>
int At(const Iterator& it) {
  return it ? *it : 0;
}

template <class T>
Ints Forward(QZIterBase<T>& it) {
  Ints seen;
  for (it.ToFirst(); it; ++it) seen.push_back(*it);
  return seen;
}

template <class T>
Ints Backward(QZIterBase<T>& it) {
  Ints seen;
  if (!it.ToLast()) return seen;
  for (; it && seen.size() < 100; --it) seen.insert(seen.begin(), *it.operator->());
  return seen;
}

Ints UpTo(int n) {
  Ints values;
  for (int i = 1; i <= n; ++i) values.push_back(i);
  return values;
}

TEST(Iterator, EveryKindWalksBothWays) {
  for (const auto& [name, make] : kinds) {
    for (int size = 0; size <= 5; ++size) {
      SCOPED_TRACE(testing::Message() << name << ", " << size);
      Shapes shapes(UpTo(size));
      const std::unique_ptr<Const> it(make(shapes));
      EXPECT_EQ(bool(*it), size > 0) << "on the first element from the start";
      EXPECT_EQ(Forward(*it), shapes.ints);
      EXPECT_EQ(Backward(*it), shapes.ints);
    }
  }
}

TEST(Iterator, EveryKindStepsByAnyAmountAndComesBackFromBehindAnEnd) {
  for (const auto& [name, make] : kinds) {
    SCOPED_TRACE(name);
    Shapes shapes(UpTo(9));
    const std::unique_ptr<Const> owner(make(shapes));
    Const& it = *owner;
    const auto expect = [&it](Const& result, int element) {
      EXPECT_EQ(&result, &it);
      EXPECT_EQ(At(it), element);
    };
    expect(it += 4U, 5);
    expect(it -= 2U, 3);
    expect(it += 5, 8);
    expect(it += -7, 1);
    expect(it -= -8, 9);
    expect(it -= 3, 6);
    expect(it += 0U, 6);
    expect(++it, 7);
    expect(--it, 6);
    expect(--it.ToFirst(), 0);
    expect(++it, 1);
    expect(++it.ToLast(), 0);
    expect(--it, 9);
    expect(--it, 8);
  }
}

TEST(Iterator, ACopyStandsWhereItsSourceStoodAndGoesItsOwnWay) {
  for (const auto& [name, make] : kinds) {
    Shapes shapes(UpTo(4));
    std::unique_ptr<Const> it(make(shapes));
    *it += 2U;
    const std::unique_ptr<Const> copy(it->Copy());
    ++*it;
    it.reset();
    EXPECT_EQ(At(*copy), std::string(name) == "QZSortedIter" ? 1 : 3) << name << ": a sorted copy is listed anew";
    EXPECT_EQ(Forward(*copy), shapes.ints) << name;
  }
}

TEST(Iterator, SnapshotsKeepWhatTheirSourceLoses) {
  Ints source = {1, 2, 3};
  QZCacheIter<int> cache(source);
  QZSTLCacheIter<ConstIterGuts<Ints>> stl(source);
  auto shared = std::make_unique<QZVectorCacheIter<int>>(&source, false);
  const std::unique_ptr<QZIterBase<int>> own(shared->Copy());
  shared.reset();
  source.assign(3, 7);
  EXPECT_EQ(Forward(cache), UpTo(3));
  EXPECT_EQ(Forward(stl), UpTo(3));
  EXPECT_EQ(Forward(*own), UpTo(3));
}

TEST(Iterator, ElementsAreReachedInPlace) {
  int value = 5;
  std::vector<int*> pointers = {&value};
  const QZVectorPtrIter<int> it(pointers);
  int* const element = it;
  EXPECT_EQ(element, &value);
  QZSTLIter<DerefIterGuts<std::vector<int*>>> deref(pointers);
  *deref = 6;
  EXPECT_EQ(value, 6);
  // Bits are held by the iterator.
  QZSTLCacheIter<ConstIterGuts<std::vector<bool>>> bits({true, false, true});
  EXPECT_TRUE(*bits);
  ++bits;
  const std::unique_ptr<QZIterBase<const bool>> copy(bits.Copy());
  EXPECT_TRUE(*++bits);
  EXPECT_FALSE(**copy);
}

// --- concatenation

using Owner = std::unique_ptr<QZIterBase<int>>;

QZIterBase<int>* Cache(Ints values) { return new QZCacheIter<int>(std::move(values)); }

TEST(ConcatIter, PushOnAnyIteratorGivesOneSequence) {
  for (const auto& [ones, twos] : {std::pair(0, 2), {2, 0}, {1, 2}, {0, 0}}) {
    Ints expected = UpTo(ones + twos);
    const auto middle = expected.begin() + ones;
    QZIterBase<int>* const first = Cache(Ints(expected.begin(), middle));
    const Owner all(first->Push(Cache(Ints(middle, expected.end()))));
    EXPECT_NE(all.get(), first);
    EXPECT_EQ(At(*all), expected.empty() ? 0 : 1) << "on the first element before any step";
    EXPECT_EQ(Forward(*all), expected);
  }
}

TEST(ConcatIter, PushGoesOnWhereTheFirstRanOutAndStaysOnAnElement) {
  QZIterBase<int>* first = Cache({1, 2});
  *first += 2;
  const Owner all(first->Push(Cache({3, 4})));
  EXPECT_EQ(At(*all), 3);
  EXPECT_EQ(At(*all += 2), 0);
  EXPECT_EQ(all->Push(Cache({5})), all.get());
  EXPECT_EQ(At(*all), 5);
  EXPECT_EQ(At(*all -= 2), 3) << "the last member is left by its front";
  EXPECT_EQ(At(--*all), 2);
  EXPECT_EQ(all->Push(Cache({6})), all.get());
  EXPECT_EQ(At(*all), 2);
  const Owner more(Cache({7})->Push(Cache({8})));
  EXPECT_EQ(At(*more), 7);
}

TEST(ConcatIter, WithoutElementsIsOnNone) {
  QZConcatIter<int> none;
  EXPECT_EQ(At(++none) + At(--none) + At(none.ToFirst()) + At(none.ToLast()), 0);
  none.Push(Cache({}));
  EXPECT_EQ(At(none) + At(--none.ToLast()), 0);
  none.Push(nullptr)->Push(Cache({8}));
  EXPECT_EQ(At(none), 8);
  EXPECT_EQ(At(none.ToLast()), 8);
  // After ToLast on nothing the first member is next.
  QZConcatIter<int> all, back;
  all.ToLast();
  all.Push(Cache({1, 2}));
  EXPECT_EQ(At(all), 1);
  back.ToLast();
  back.Push(nullptr);
  EXPECT_EQ(At(--back), 0);
}

// --- selections

TEST(PredIter, VisitsTheMatches) {
  const std::pair<Ints, Ints> cases[] = {
      {{}, {}}, {{2}, {}}, {{1}, {1}}, {{2, 1, 4, 3}, {1, 3}}, {{1, 3, 2}, {1, 3}}, {{2, 4}, {}}};
  for (const auto& [values, matches] : cases) {
    Shapes shapes(values);
    QZPredVectorPtrIter<Odd> it(shapes.pointers, Odd());
    EXPECT_EQ(At(it), matches.empty() ? 0 : 1);
    EXPECT_EQ(Forward(it), matches);
    EXPECT_EQ(Backward(it), matches);
    const Owner copy(it.ToFirst().Copy());
    EXPECT_EQ(At(*copy), At(it));
    EXPECT_EQ(Forward(*copy), matches);
  }
}

TEST(PredIter, WithoutAMatchNoStepFindsOne) {
  Shapes shapes({2, 4, 6});
  QZPredVectorPtrIter<Odd> it(shapes.pointers, Odd());
  *shapes.pointers.back() = 7;
  EXPECT_EQ(At(it), 7) << "on creation it rests on the last element";
  *shapes.pointers.back() = 6;
  for (int steps : {1, 1, -1, -5, 9, -9}) EXPECT_EQ(At(it += steps), 0) << steps;
  EXPECT_EQ(At(it.ToFirst()) + At(it.ToLast()), 0);
}

TEST(PredIter, StopsAtANullPointerAndGoesOnBehindIt) {
  Shapes shapes({1, 2, 3});
  shapes.pointers[1] = nullptr;
  QZPredVectorPtrIter<Any> it(shapes.pointers, Any());
  EXPECT_FALSE(bool(++it));
  EXPECT_EQ(At(++it), 3);
  EXPECT_FALSE(bool(--it));
  EXPECT_EQ(At(--it), 1);
}

// --- sorted views

TEST(SortedIter, SortsStablyAndCopiesSorted) {
  int asked = 0;
  auto source = std::make_unique<QZCacheIter<int>>(Ints{31, 12, 30, 11, 5, 10, 32});
  ++*source;  // the list holds everything, wherever the source stands
  QZSortedIter<int> it(source.release(), ByTens(asked));
  const Ints sorted = {5, 12, 11, 10, 31, 30, 32};
  EXPECT_EQ(Forward(it), sorted);
  const Owner copy((it.ToFirst() += 3).Copy());
  EXPECT_EQ(At(*copy), 5);
  EXPECT_EQ(Forward(*copy), sorted);
  asked = 0;
  QZSortedIter<int> one(Cache({3}), ByTens(asked));
  EXPECT_EQ(asked, 0) << "one element isn't compared";
  QZSortedIter<int> two(Cache({30, 10}), ByTens(asked));
  EXPECT_EQ(At(two), 10);
  EXPECT_EQ(asked, 1);
}

TEST(SortedIter, PushShowsInCopiesOnly) {
  int asked = 0;
  QZSortedIter<int> it(nullptr, ByTens(asked));
  EXPECT_FALSE(bool(it.ToLast()));
  for (const Ints& more : {Ints{20}, Ints{10, 30}}) {
    EXPECT_EQ(it.Push(Cache(more)), &it);
    EXPECT_FALSE(bool(it));
  }
  const Owner copy(it.Copy());
  EXPECT_EQ(Forward(*copy), (Ints{10, 20, 30}));
}

TEST(SortedIterCriterion, WithoutAnOrderNothingIsLess) {
  int a = 1, b = 20, asked = 0;
  const SortedIterCriterion<int> none;
  const std::unique_ptr<SortedIterCriterion<int>> noneCopy(none.CreateCopy());
  EXPECT_FALSE((*noneCopy)(&a, &b) || *noneCopy);
  const std::unique_ptr<SortedIterCriterion<int>> copy(SortedIterCriterion<int>(ByTens(asked)).CreateCopy());
  EXPECT_TRUE((*copy)(&a, &b) && !(*copy)(&b, &a));
  QZSortedIter<const int> it(new QZCacheIter<const int>({20, 10}), ByTens(asked));
  EXPECT_EQ(Forward(it), (Ints{10, 20})) << "const elements take the order of their type";
}

// --- the empty iterator and the owner

TEST(EmptyIter, DereferencingItIsAnError) {
  Messages messages;
  const QZEmptyIter<std::string> it;
  EXPECT_EQ(it.operator->(), nullptr);
  static_cast<void>(*it);
  EXPECT_EQ(messages.Take(), "Warning: Dereferencing empty iterator\nWarning: Dereferencing empty iterator\n");
}

TEST(Iter, WalksEveryElementFromTheFirst) {
  Ints seen;
  QZIter all(Cache({1, 2, 3}));
  ++all;
  for (int& each : all) seen.push_back(each);
  EXPECT_FALSE(bool(all)) << "the walk leaves it behind the last element";
  for (int each : QZIter(Cache({4}))) seen.push_back(each);
  for (int each : QZIter<int>()) seen.push_back(each);
  for (int each : QZIter<int>(nullptr)) seen.push_back(each);
  EXPECT_EQ(seen, UpTo(4));
}

TEST(Iter, PushKeepsWhicheverIteratorGoesOn) {
  QZIter<int> all;
  all.Push(QZIter<int>());
  all.Push(QZIter(Cache({1})));
  all.Push(QZIter(Cache({2})));  // makes a concatenation
  all.Push(QZIter(Cache({3})));  // goes on with the same
  all.Push(QZIter<int>());
  QZIter<int> copy = all.Copy();
  const QZIter<int> taken = std::move(all);
  EXPECT_EQ(Forward(*taken.Get()), UpTo(3));
  EXPECT_EQ(*copy.ToLast(), 3);
  EXPECT_EQ(*--copy, 2);
}

}  // namespace
