#include "qz/system/data/base.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "qz/system/data/container.h"
#include "qz/system/frame/iterowner.h"
#include "tests/system/cli/messages.h"
#include "tests/system/data/allocations.h"

using namespace QZSystem;

namespace {

constexpr const char* mismatch = "Warning: data type mismatch found when using generic data\n";

using Ints = std::vector<int>;

// The names of the values in order, each `int` with its value: "a=1 b a=2".
std::string Describe(QZIterBase<QZBaseData>* taken) {
  std::string text;
  for (const QZBaseData& each : QZIter(taken)) {
    if (!text.empty()) text += ' ';
    text += QZGetTag(each.GetTag());
    if (each.GetDataType() == QZBaseDataT<int>::DataType()) {
      text += "=" + std::to_string(static_cast<const QZBaseDataT<int>&>(each).GetData());
    }
  }
  return text;
}

std::string Describe(const QZBase& object) { return Describe(object.GetDataIter()); }

QZContainer Sample() {
  QZContainer object;
  object.AddData("a", 1);
  object.AddData("b", std::string("text"));
  object.AddData("a", 2);
  object.AddData("c", 3);
  return object;
}

TEST(Base, SetsAValueInItsPlace) {
  QZContainer object = Sample();
  EXPECT_TRUE(object.SetData("a", 7));
  EXPECT_TRUE(object.SetData("d", 8));
  EXPECT_EQ(Describe(object), "a=7 b a=2 c=3 d=8");
  EXPECT_EQ(object.GetData<int>("a"), 7);
  EXPECT_EQ(object.GetData<int>(QZGetTag("a")), 7);
  EXPECT_EQ(object.GetData<std::string>("b"), "text");
}

TEST(Base, RefusesAValueOfAnotherType) {
  Messages messages;
  QZContainer object = Sample();
  EXPECT_FALSE(object.SetData("a", 7.5));
  EXPECT_EQ(messages.Take(), mismatch);
  EXPECT_FALSE(object.SetData("a", true));
  const int elements[] = {1};
  EXPECT_FALSE(object.SetData<int*>("a", elements, 1));
  EXPECT_FALSE(object.SetData("b", "text"));
  EXPECT_EQ(messages.Take(), std::string(mismatch) + mismatch + mismatch);
  EXPECT_EQ(Describe(object), "a=1 b a=2 c=3");
  EXPECT_EQ(object.GetData<std::string>("b"), "text");
}

TEST(Base, ReadsAMissingValueAsADefault) {
  Messages messages;
  QZContainer object;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(object.GetData<int>("none"), 0);
    EXPECT_EQ(object.GetData<bool>("none"), false);
    EXPECT_EQ(object.GetData<double>("none"), 0.0);
    EXPECT_EQ(object.GetData<const char*>("none"), nullptr);
    EXPECT_EQ(object.GetData<std::string>("none"), "");
    EXPECT_EQ(&object.GetData<Ints>("none"), &QZContainer().GetData<Ints>("other")) << "one default for all";
    EXPECT_FALSE(object.HasData("none"));
    EXPECT_FALSE(object.DeleteData("none"));
    object.AddData("some", 1);
  }
  EXPECT_EQ(messages.Take(), "");
}

TEST(Base, ReadsAValueOfAnotherTypeAsADefault) {
  Messages messages;
  QZContainer object = Sample();
  object.AddData("yes", true);
  EXPECT_EQ(object.GetData<int>("yes"), 0);
  EXPECT_EQ(object.GetData<std::string>("a"), "");
  EXPECT_EQ(object.GetData<float>("a"), 0.0F);
  unsigned int count = 7;
  EXPECT_EQ(object.GetData<int*>("a", &count), nullptr);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(messages.Take(), std::string(mismatch) + mismatch + mismatch + mismatch);
}

TEST(Base, AnUnsignedIntIsAnInt) {
  Messages messages;
  QZContainer object;
  object.AddData("u", 0xFFFFFFFEU);
  object.AddData("i", 5);
  EXPECT_EQ(object.GetData<unsigned int>("u"), 0xFFFFFFFEU);
  EXPECT_EQ(object.GetData<int>("u"), -2);
  EXPECT_EQ(object.GetData<unsigned int>("i"), 5U);
  EXPECT_TRUE(object.SetData("u", 6));
  EXPECT_TRUE(object.SetData("i", 7U));
  EXPECT_EQ(Describe(object), "u=6 i=7");
  EXPECT_EQ(messages.Take(), "");
}

TEST(Base, KeepsACopyOfAnArray) {
  float source[] = {1, 2, 3};
  QZContainer object;
  unsigned int count = 0;
  EXPECT_TRUE(object.SetData<float*>("x", source, 3));
  source[0] = 9;
  const QZContainer copy = object;
  EXPECT_EQ(object.GetData<float*>("x")[0], 1.0F);
  EXPECT_TRUE(object.SetData<float*>("x", source, 2));
  EXPECT_EQ(object.GetData<float*>("x", &count)[0], 9.0F);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(copy.GetData<float*>("x", &count)[2], 3.0F);
  EXPECT_EQ(count, 3U);
}

TEST(Base, AnArrayHasTheTypeOfItsElements) {
  const double source[] = {1, 2};
  unsigned char bytes[] = {3, 4};
  QZContainer object;
  object.SetData("x", source, 2);
  object.AddData(QZGetTag("x"), source, 1);
  object.SetData("bytes", bytes, 2);
  object.SetData<double>(QZGetTag("y"), source, 2);
  object.SetData("text", "abc", 4);
  EXPECT_EQ(object.GetData<double*>("x")[1], 2);
  EXPECT_EQ(object.GetData<double*>("y")[1], 2);
  EXPECT_EQ(object.GetData<unsigned char*>("bytes")[1], 4);
  EXPECT_STREQ(object.GetData<char*>("text"), "abc");
}

TEST(Base, AnArrayMayBeSetFromItself) {
  const int source[] = {1, 2, 3};
  QZContainer object;
  object.AddData<int*>("x", source, 3);
  EXPECT_TRUE(object.SetData<int*>("x", object.GetData<int*>("x") + 1, 2));
  unsigned int count = 0;
  const int* const elements = object.GetData<int*>("x", &count);
  EXPECT_EQ(Ints(elements, elements + count), Ints({2, 3}));
}

TEST(Base, AnArrayOfNothing) {
  const QZHalfFloat source[] = {{1}, {2}};
  QZContainer object;
  object.SetData<QZHalfFloat*>("zeroes", nullptr, 2);
  object.SetData<QZHalfFloat*>("none", source, 0);
  object.SetData<QZHalfFloat*>("lost", source, 2);
  object.SetData<QZHalfFloat*>("lost", nullptr, 2);
  unsigned int count = 7;
  EXPECT_EQ(object.GetData<QZHalfFloat*>("zeroes", &count)[1].bits, 0);
  EXPECT_EQ(count, 2U);
  for (const char* name : {"none", "lost", "missing"}) {
    EXPECT_EQ(object.GetData<QZHalfFloat*>(name, &count), nullptr) << name;
    EXPECT_EQ(count, 0U) << name;
    count = 7;
  }
}

TEST(Base, AnyClassCanBeAttached) {
  struct Point {
    double x = 1, y = 2;
  };
  QZContainer object;
  object.SetData("p", Point{3, 4});
  object.SetData("shared", std::make_shared<int>(5));
  object.SetData("text", "kept by its pointer");
  const QZContainer copy = object;
  EXPECT_EQ(copy.GetData<Point>("p").y, 4);
  EXPECT_EQ(copy.GetData<Point>("none").y, 2);
  EXPECT_EQ(*copy.GetData<std::shared_ptr<int>>("shared"), 5);
  EXPECT_EQ(copy.GetData<const char*>("text"), object.GetData<const char*>("text"));
}

TEST(Base, DeletesAllValuesOfAName) {
  QZContainer object = Sample();
  EXPECT_TRUE(object.HasData("a"));
  EXPECT_TRUE(object.DeleteData("a"));
  EXPECT_EQ(Describe(object), "b c=3");
  EXPECT_FALSE(object.HasData("a"));
  EXPECT_FALSE(object.DeleteData("a"));
  EXPECT_TRUE(object.DeleteData(QZGetTag("c")));
  EXPECT_TRUE(object.DeleteData("b"));
  EXPECT_EQ(Describe(object), "");
}

TEST(Base, HoldersTakeThePlaceOfAnyType) {
  Messages messages;
  QZContainer object = Sample();
  const QZBaseDataT<int> holder(QZGetTag("b"), 5);
  EXPECT_TRUE(object.SetBaseData(&holder));
  EXPECT_TRUE(object.AddBaseData(&holder));
  const QZBaseDataT<bool> other(QZGetTag("a"), true);
  EXPECT_TRUE(object.SetBaseData(&other));
  EXPECT_EQ(Describe(object), "a b=5 a=2 c=3 b=5");
  EXPECT_EQ(messages.Take(), "");

  QZContainer own;
  own.SetBaseData(&holder);
  own.AddBaseData(&*QZIter(own.GetDataIter()));
  own.SetBaseData(&*QZIter(own.GetDataIter()).ToLast());
  EXPECT_EQ(Describe(own), "b=5 b=5");
}

TEST(Base, IteratorsGoThroughTheValuesInOrder) {
  const QZContainer object = Sample();
  EXPECT_EQ(Describe(object.GetDataIter(QZGetTag("a"))), "a=1 a=2");
  EXPECT_EQ(Describe(object.GetDataIter(QZGetTag("c"))), "c=3");
  EXPECT_EQ(Describe(object.GetDataIter(QZGetTag("none"))), "");

  const QZIter none(object.GetDataIter(QZGetTag("none")));
  EXPECT_FALSE(none);
  for (const QZContainer& empty : {QZContainer(), [] {
                                     auto o = Sample();
                                     o.Clear();
                                     return o;
                                   }()}) {
    EXPECT_FALSE(QZIter(empty.GetDataIter()));
    EXPECT_FALSE(QZIter(empty.GetDataIter(QZGetTag("a"))));
  }
}

TEST(Base, EachIteratorStandsForItself) {
  const QZContainer object = Sample();
  QZIter first(object.GetDataIter());
  const QZIter second(object.GetDataIter());
  ++first;
  EXPECT_EQ(first->GetTag(), QZGetTag("b"));
  EXPECT_EQ(second->GetTag(), QZGetTag("a"));
}

TEST(Base, UnknownNamesAreRegisteredByObjectsWithDataOnly) {
  QZContainer object;
  static_cast<void>(object.HasData("asked without data"));
  static_cast<void>(object.DeleteData("asked without data"));
  static_cast<void>(object.GetData<int>("asked without data"));
  static_cast<void>(object.GetData<int*>("asked without data"));
  EXPECT_FALSE(QZHasTag(std::string("asked without data")));
  object.SetData("some", 1);
  static_cast<void>(object.HasData("asked with data"));
  EXPECT_TRUE(QZHasTag(std::string("asked with data")));
}

TEST(Base, ANullNameIsTheEmptyOne) {
  const char* const null = nullptr;
  QZContainer object;
  object.SetData("", 1);
  EXPECT_TRUE(object.HasData(null));
  EXPECT_EQ(object.GetData<int>(null), 1);
  EXPECT_TRUE(object.DeleteData(null));
}

TEST(Base, ACopyIsIndependent) {
  QZContainer object = Sample();
  QZContainer copy = object;
  QZContainer assigned;
  assigned.SetData("old", 1);
  assigned = object;
  object.SetData("a", 9);
  object.DeleteData("c");
  EXPECT_EQ(Describe(copy), "a=1 b a=2 c=3");
  EXPECT_EQ(Describe(assigned), "a=1 b a=2 c=3");
}

TEST(Base, AssignsFromItselfAndFromNothing) {
  QZContainer object = Sample();
  const QZContainer& same = object;
  object = same;
  EXPECT_EQ(Describe(object), "a=1 b a=2 c=3");
  object = QZContainer(QZContainer());
  EXPECT_EQ(Describe(object), "");
  object.SetData("a", 5);
  EXPECT_EQ(Describe(object), "a=5");
  const QZContainer empty;
  object = empty;
  EXPECT_EQ(Describe(object), "");
  object.SetData("a", 6);
  EXPECT_EQ(Describe(object), "a=6");
}

TEST(Base, AddsTheValuesOfAnother) {
  QZContainer object = Sample();
  QZContainer other;
  object += other;
  other += object;
  other.SetData("a", 9);
  object += other;
  EXPECT_EQ(Describe(object), "a=1 b a=2 c=3 a=9 b a=2 c=3");
  other += other;
  other.SetData("a", 8);
  EXPECT_EQ(Describe(other), "a=8 b a=2 c=3 a=9 b a=2 c=3") << "the new ones are copies";
}

TEST(Base, CopiesTheDataAlone) {
  QZContainer to = Sample();
  QZContainer from;
  from.AddData("x", 1);
  from.AddData("x", 2);
  QZCopyBaseData(to, from);
  EXPECT_EQ(Describe(to), "x=1 x=2");
  QZCopyBaseData(to, QZContainer());
  EXPECT_EQ(Describe(to), "");
}

TEST(Base, TakesWhatIsAttachedToIt) {
  QZContainer inner = Sample();
  QZContainer object;
  object.SetData("inner", inner);
  object.SetData("rest", 1);
  QZContainer assigned = object, added = object, copied = object, moved = object;
  assigned = assigned.GetData<QZContainer>("inner");
  EXPECT_EQ(Describe(assigned), "a=1 b a=2 c=3");
  added += added.GetData<QZContainer>("inner");
  EXPECT_EQ(Describe(added), "inner rest=1 a=1 b a=2 c=3");
  QZCopyBaseData(copied, copied.GetData<QZContainer>("inner"));
  EXPECT_EQ(Describe(copied), "a=1 b a=2 c=3");
  moved = std::move(const_cast<QZContainer&>(moved.GetData<QZContainer>("inner")));
  EXPECT_EQ(Describe(moved), "a=1 b a=2 c=3");
}

TEST(Base, AFailedAllocationChangesNothing) {
  const std::string longText(100, 'x');
  QZContainer source = Sample();
  source.SetData<int*>("array", nullptr, 5);
  QZContainer sample;
  sample.AddData("old", 1);
  sample.AddData("text", longText);
  const QZBaseDataT<std::string> holder(QZGetTag("text"), "other");
  const std::function<void(QZContainer&)> works[] = {
      [&](QZContainer& object) { object = source; },
      [&](QZContainer& object) { object += source; },
      [&](QZContainer& object) { QZCopyBaseData(object, source); },
      [&](QZContainer& object) { object.SetData("new", longText); },
      [&](QZContainer& object) { object.AddData("new", longText); },
      [&](QZContainer& object) { object.SetBaseData(&holder); },
      [&](QZContainer& object) { object.AddBaseData(&holder); },
  };
  for (const auto& work : works) {
    for (const QZContainer& start : {sample, QZContainer()}) {
      QZContainer object = start;
      FailEachAllocation(
          [&] {
            object = QZContainer(start);
            work(object);
          },
          [&] {
            EXPECT_EQ(Describe(object), Describe(start)) << "work " << (&work - works);
            EXPECT_EQ(object.GetData<std::string>("text"), start.GetData<std::string>("text"));
          });
    }
  }
}

// The number of allocations that some work makes.
template <class Work>
long AllocationsOf(const Work& work) {
  const long before = allocations;
  work();
  return allocations - before;
}

TEST(Base, AScanAllocatesNothing) {
  const QZContainer object = Sample();
  const QZContainer empty;
  const auto scan = [&] {
    for (const QZContainer* each : {&object, &empty}) {
      QZIterBase<QZBaseData>* iters[60];
      for (auto*& iter : iters) iter = each->GetDataIter();
      for (auto*& iter : iters) {
        for (iter->ToFirst(); *iter; ++*iter) static_cast<void>((*iter)->GetSize());
        delete iter;
      }
    }
  };
  scan();
  EXPECT_EQ(AllocationsOf(scan), 0);
  std::thread([&] {
    scan();
    EXPECT_EQ(AllocationsOf(scan), 0) << "in another thread";
  }).join();
}

TEST(Base, AllocatesOnceForEachValue) {
  constexpr int count = 10000;
  QZContainer object;
  EXPECT_EQ(AllocationsOf([&] { const QZContainer copy = object; }), 0);
  const unsigned int tag = QZGetTag("value");
  EXPECT_LT(AllocationsOf([&] {
              for (int n = 0; n < count; ++n) object.AddData(tag, n);
            }),
            count + 20);
  EXPECT_EQ(AllocationsOf([&] { const QZContainer copy = object; }), count + 2) << "the values, their list, its owner";
  object.Clear();
  EXPECT_EQ(AllocationsOf([&] { object.SetData(tag, 1); }), 1) << "the list stays allocated";
}

TEST(Base, ReadersNeedNoLock) {
  const QZContainer object = Sample();
  bool same[3] = {};
  std::vector<std::thread> threads;
  for (bool& each : same) {
    threads.emplace_back([&each, &object] {
      each = Describe(object) == "a=1 b a=2 c=3" && object.HasData("c") && object.GetData<int>("a") == 1 &&
             object.GetData<std::vector<double>>("none").empty();
    });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_TRUE(same[0] && same[1] && same[2]);
}

}  // namespace
