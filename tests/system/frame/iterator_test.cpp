#include "qz/system/frame/iterator.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/error.h"

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
    {"QZVectorIter", [](Shapes& s) -> Const* { return new QZVectorIter<const int>(s.ints); }},
    {"QZVectorCacheIter", [](Shapes& s) -> Const* { return new QZVectorCacheIter<const int>(new Ints(s.ints), true); }},
    {"QZVectorCacheIter, not owning",
     [](Shapes& s) -> Const* { return new QZVectorCacheIter<const int>(&s.ints, false); }},
    {"QZCacheIter", [](Shapes& s) -> Const* { return new QZCacheIter<const int>(s.ints); }},
    {"QZSTLIter", [](Shapes& s) -> Const* { return new QZSTLIter<ConstIterGuts<Ints>>(s.ints); }},
    {"QZSTLIter of a list", [](Shapes& s) -> Const* { return new QZSTLIter<ConstIterGuts<std::list<int>>>(s.list); }},
    {"QZSTLIter of pointers",
     [](Shapes& s) -> Const* { return new QZSTLIter<ConstDerefIterGuts<std::vector<int*>>>(s.pointers); }},
    {"QZSTLCacheIter", [](Shapes& s) -> Const* { return new QZSTLCacheIter<ConstIterGuts<Ints>>(s.ints); }},
    {"QZSortedIter",
     [](Shapes& s) -> Const* { return new QZSortedIter<const int>(new QZCacheIter<const int>(s.ints)); }},
    {"QZConcatIter", Concatenated},
};

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

TEST(Iterator, EveryKindStepsByAnyAmount) {
  for (const auto& [name, make] : kinds) {
    Shapes shapes(UpTo(9));
    const std::unique_ptr<Const> it(make(shapes));
    const std::pair<std::function<Const&(Const&)>, int> steps[] = {
        {[](Const& i) -> Const& { return i += 4U; }, 5}, {[](Const& i) -> Const& { return i -= 2U; }, 3},
        {[](Const& i) -> Const& { return i += 5; }, 8},  {[](Const& i) -> Const& { return i += -7; }, 1},
        {[](Const& i) -> Const& { return i -= -8; }, 9}, {[](Const& i) -> Const& { return i -= 3; }, 6},
        {[](Const& i) -> Const& { return i += 0U; }, 6}, {[](Const& i) -> Const& { return ++i; }, 7},
        {[](Const& i) -> Const& { return --i; }, 6},
    };
    int number = 0;
    for (const auto& [step, expected] : steps) {
      Const& result = step(*it);
      EXPECT_EQ(&result, it.get());
      ASSERT_TRUE(bool(*it)) << name << ", step " << number;
      EXPECT_EQ(**it, expected) << name << ", step " << number++;
    }
  }
}

TEST(Iterator, EveryKindComesBackFromBehindAnEnd) {
  for (const auto& [name, make] : kinds) {
    Shapes shapes(UpTo(3));
    const std::unique_ptr<Const> it(make(shapes));
    --*it;
    EXPECT_FALSE(bool(*it)) << name;
    ++*it;
    ASSERT_TRUE(bool(*it)) << name;
    EXPECT_EQ(**it, 1) << name;
    ++it->ToLast();
    EXPECT_FALSE(bool(*it)) << name;
    --*it;
    ASSERT_TRUE(bool(*it)) << name;
    EXPECT_EQ(**it, 3) << name;
    --*it;
    EXPECT_EQ(**it, 2) << name;
  }
}

TEST(Iterator, ACopyStandsWhereItsSourceStoodAndGoesItsOwnWay) {
  for (const auto& [name, make] : kinds) {
    Shapes shapes(UpTo(4));
    std::unique_ptr<Const> it(make(shapes));
    *it += 2U;
    const std::unique_ptr<Const> copy(it->Copy());
    const int expected = std::string(name) == "QZSortedIter" ? 1 : 3;  // its copy is listed anew
    ++*it;
    it.reset();
    ASSERT_TRUE(bool(*copy)) << name;
    EXPECT_EQ(**copy, expected) << name;
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

TEST(Iterator, ConvertsToAPointerToTheElement) {
  int value = 5;
  std::vector<int*> pointers = {&value};
  const QZVectorPtrIter<int> it(pointers);
  int* const element = it;
  EXPECT_EQ(element, &value);
  QZSTLIter<DerefIterGuts<std::vector<int*>>> deref(pointers);
  *deref = 6;
  EXPECT_EQ(value, 6);
}

TEST(Iterator, BitsOfAVectorAreHeldByTheIterator) {
  QZSTLCacheIter<ConstIterGuts<std::vector<bool>>> it({true, false, true});
  EXPECT_TRUE(*it);
  ++it;
  EXPECT_FALSE(*it);
  const std::unique_ptr<QZIterBase<const bool>> copy(it.Copy());
  EXPECT_TRUE(*++it);
  EXPECT_FALSE(**copy);
  EXPECT_TRUE(*copy->ToLast());
}

// --- concatenation

QZIterBase<int>* Cache(Ints values) { return new QZCacheIter<int>(std::move(values)); }

TEST(ConcatIter, PushOnAnyIteratorGivesOneSequence) {
  const struct { Ints first, second; } cases[] = {{{}, {1, 2}}, {{1, 2}, {}}, {{1}, {2, 3}}, {{}, {}}};
  for (const auto& each : cases) {
    QZIterBase<int>* const first = Cache(each.first);
    const std::unique_ptr<QZIterBase<int>> all(first->Push(Cache(each.second)));
    Ints expected = each.first;
    expected.insert(expected.end(), each.second.begin(), each.second.end());
    EXPECT_NE(all.get(), first);
    ASSERT_EQ(bool(*all), !expected.empty());
    if (*all) {
      EXPECT_EQ(**all, 1) << "on the first element before any step";
    }
    EXPECT_EQ(Forward(*all), expected);
  }
}

TEST(ConcatIter, PushGoesOnWhereTheFirstRanOut) {
  QZIterBase<int>* first = Cache({1, 2});
  *first += 2;
  const std::unique_ptr<QZIterBase<int>> all(first->Push(Cache({3, 4})));
  EXPECT_EQ(**all, 3);
  *all += 2;
  EXPECT_FALSE(bool(*all));
  EXPECT_EQ(all->Push(Cache({5})), all.get());
  EXPECT_EQ(**all, 5);
  *all -= 2;
  EXPECT_EQ(**all, 3) << "the last member is left by its front";
  --*all;
  EXPECT_EQ(**all, 2);
}

TEST(ConcatIter, PushStaysOnAnElement) {
  QZIterBase<int>* first = Cache({1, 2});
  ++*first;
  const std::unique_ptr<QZIterBase<int>> all(first->Push(Cache({3})));
  EXPECT_EQ(**all, 2);
  EXPECT_EQ(all->Push(Cache({4})), all.get());
  EXPECT_EQ(**all, 2);
}

TEST(ConcatIter, WithoutElementsIsOnNone) {
  QZConcatIter<int> none;
  EXPECT_FALSE(bool(++none));
  EXPECT_FALSE(bool(--none));
  EXPECT_FALSE(bool(none.ToFirst()));
  EXPECT_FALSE(bool(none.ToLast()));
  none.Push(Cache({}));
  EXPECT_FALSE(bool(none));
  EXPECT_FALSE(bool(--none.ToLast()));
  none.Push(nullptr)->Push(Cache({8}));
  EXPECT_EQ(*none, 8);
  EXPECT_EQ(*none.ToLast(), 8);
}

TEST(ConcatIter, AfterToLastOnNothingTheFirstMemberIsNext) {
  QZConcatIter<int> all;
  all.ToLast();
  all.Push(Cache({1, 2}));
  EXPECT_EQ(*all, 1);

  QZConcatIter<int> back;
  back.ToLast();
  back.Push(nullptr);
  EXPECT_FALSE(bool(--back));
}

// --- selections

TEST(PredIter, VisitsTheMatches) {
  const struct {
    Ints values, matches;
  } cases[] = {{{}, {}}, {{2}, {}}, {{1}, {1}}, {{2, 1, 4, 3}, {1, 3}}, {{1, 3, 2}, {1, 3}}, {{2, 4}, {}}};
  for (const auto& each : cases) {
    Shapes shapes(each.values);
    QZPredVectorPtrIter<Odd> it(shapes.pointers, Odd());
    EXPECT_EQ(bool(it), !each.matches.empty());
    if (it) {
      EXPECT_EQ(*it, each.matches.front());
    }
    EXPECT_EQ(Forward(it), each.matches);
    EXPECT_EQ(Backward(it), each.matches);
    const std::unique_ptr<QZIterBase<int>> copy(it.ToFirst().Copy());
    EXPECT_EQ(bool(*copy), bool(it));
    EXPECT_EQ(Forward(*copy), each.matches);
  }
}

TEST(PredIter, WithoutAMatchNoStepFindsOne) {
  Shapes shapes({2, 4, 6});
  QZPredVectorPtrIter<Odd> it(shapes.pointers, Odd());
  // On creation it rests on the last element: let that match, and it is on it.
  *shapes.pointers.back() = 7;
  ASSERT_TRUE(bool(it));
  EXPECT_EQ(*it, 7);
  *shapes.pointers.back() = 6;
  for (int steps : {1, 1, -1, -5, 9, -9}) {
    it += steps;
    EXPECT_FALSE(bool(it)) << steps;
  }
  EXPECT_FALSE(bool(it.ToFirst()));
  EXPECT_FALSE(bool(it.ToLast()));
}

TEST(PredIter, StopsAtANullPointerAndGoesOnBehindIt) {
  Shapes shapes({1, 2, 3});
  shapes.pointers[1] = nullptr;
  QZPredVectorPtrIter<Any> it(shapes.pointers, Any());
  EXPECT_FALSE(bool(++it));
  EXPECT_EQ(*++it, 3);
  EXPECT_FALSE(bool(--it));
  EXPECT_EQ(*--it, 1);
}

// --- sorted views

TEST(SortedIter, SortsStablyAndCopiesSorted) {
  int asked = 0;
  auto source = std::make_unique<QZCacheIter<int>>(Ints{31, 12, 30, 11, 5, 10, 32});
  ++*source;  // the list holds everything, wherever the source stands
  QZSortedIter<int> it(source.release(), ByTens(asked));
  const Ints sorted = {5, 12, 11, 10, 31, 30, 32};
  EXPECT_EQ(Forward(it), sorted);
  const std::unique_ptr<QZIterBase<int>> copy((it.ToFirst() += 3).Copy());
  EXPECT_EQ(**copy, 5);
  EXPECT_EQ(Forward(*copy), sorted);
}

TEST(SortedIter, OneElementIsNotCompared) {
  int asked = 0;
  QZSortedIter<int> one(Cache({3}), ByTens(asked));
  EXPECT_EQ(asked, 0);
  QZSortedIter<int> two(Cache({30, 10}), ByTens(asked));
  EXPECT_EQ(*two, 10);
  EXPECT_EQ(asked, 1);
}

TEST(SortedIter, PushShowsInCopiesOnly) {
  int asked = 0;
  QZSortedIter<int> it(nullptr, ByTens(asked));
  EXPECT_FALSE(bool(it.ToLast()));
  EXPECT_EQ(it.Push(Cache({20})), &it);
  EXPECT_FALSE(bool(it));
  EXPECT_EQ(it.Push(Cache({10, 30})), &it);
  EXPECT_FALSE(bool(it));
  const std::unique_ptr<QZIterBase<int>> copy(it.Copy());
  EXPECT_EQ(Forward(*copy), (Ints{10, 20, 30}));
}

TEST(SortedIter, ConstElementsTakeTheOrderOfTheirType) {
  int asked = 0;
  QZSortedIter<const int> it(new QZCacheIter<const int>({20, 10}), ByTens(asked));
  EXPECT_EQ(Forward(it), (Ints{10, 20}));
}

TEST(SortedIterCriterion, WithoutAnOrderNothingIsLess) {
  int a = 1, b = 20, asked = 0;
  const SortedIterCriterion<int> none;
  const std::unique_ptr<SortedIterCriterion<int>> noneCopy(none.CreateCopy());
  EXPECT_FALSE((*noneCopy)(&a, &b) || *noneCopy);
  const std::unique_ptr<SortedIterCriterion<int>> copy(SortedIterCriterion<int>(ByTens(asked)).CreateCopy());
  EXPECT_TRUE((*copy)(&a, &b));
  EXPECT_FALSE((*copy)(&b, &a));
}

// --- the empty iterator and the owner

TEST(EmptyIter, DereferencingItIsAnError) {
  auto* const former = new QZErrorHandler(QZThrow);
  qzosstream out;
  QZThrow.SetOutputStream(out);
  QZThrow.SetStrict(false);
  const QZEmptyIter<std::string> it;
  EXPECT_EQ(it.operator->(), nullptr);
  static_cast<void>(*it);
  QZThrow = *former;
  delete former;
  EXPECT_EQ(out.str(), "Warning: Dereferencing empty iterator\nWarning: Dereferencing empty iterator\n");
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
  EXPECT_EQ(seen, (Ints{1, 2, 3, 4}));
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
