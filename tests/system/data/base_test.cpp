#include "qz/system/data/base.h"

#include <gtest/gtest.h>

#include <atomic>
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

TEST(Base, SetsAndDeletesValuesInTheirPlace) {
  QZContainer object = Sample();
  EXPECT_TRUE(object.SetData("a", 7) && object.SetData("d", 8));
  EXPECT_EQ(Describe(object), "a=7 b a=2 c=3 d=8");
  EXPECT_EQ(object.GetData<int>(QZGetTag("a")), 7);
  EXPECT_EQ(object.GetData<std::string>("b"), "text");
  EXPECT_EQ(Describe(object.GetDataIter(QZGetTag("a"))), "a=7 a=2");
  EXPECT_TRUE(object.HasData("a") && object.DeleteData("a"));
  EXPECT_EQ(Describe(object), "b c=3 d=8");
  EXPECT_FALSE(object.HasData("a") || object.DeleteData("a"));
  EXPECT_EQ(Describe(object.GetDataIter(QZGetTag("a"))), "");
  EXPECT_TRUE(object.DeleteData(QZGetTag("c")) && object.DeleteData("b") && object.DeleteData("d"));
  EXPECT_EQ(Describe(object), "");
}

TEST(Base, AValueOfAnotherTypeIsRefusedAndReadAsADefault) {
  Messages messages;
  QZContainer object = Sample();
  const auto expectMismatch = [&](bool holds) {
    EXPECT_TRUE(holds);
    EXPECT_EQ(messages.Take(), "Warning: data type mismatch found when using generic data\n");
  };
  const int elements[] = {1};
  unsigned int count = 7;
  expectMismatch(!object.SetData("a", 7.5));
  expectMismatch(!object.SetData("a", true));
  expectMismatch(!object.SetData<int*>("a", elements, 1));
  expectMismatch(!object.SetData("b", "text"));
  expectMismatch(object.GetData<bool>("a") == false);
  expectMismatch(object.GetData<std::string>("a").empty());
  expectMismatch(object.GetData<float>("a") == 0.0F);
  expectMismatch(object.GetData<int*>("a", &count) == nullptr);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(Describe(object), "a=1 b a=2 c=3");
}

TEST(Base, ReadsAMissingValueAsADefault) {
  Messages messages;
  QZContainer object;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(object.GetData<int>("none"), 0);
    EXPECT_EQ(object.GetData<const char*>("none"), nullptr);
    EXPECT_EQ(object.GetData<std::string>("none"), "");
    EXPECT_EQ(&object.GetData<Ints>("none"), &QZContainer().GetData<Ints>("other")) << "one default for all";
    EXPECT_FALSE(object.HasData("none") || object.DeleteData("none"));
    object.AddData("some", 1);
  }
  EXPECT_EQ(messages.Take(), "");
}

TEST(Base, AnUnsignedIntIsAnInt) {
  Messages messages;
  QZContainer object;
  object.AddData("u", 0xFFFFFFFEU);
  object.AddData("i", 5);
  EXPECT_EQ(object.GetData<unsigned int>("u"), 0xFFFFFFFEU);
  EXPECT_EQ(object.GetData<int>("u"), -2);
  EXPECT_EQ(object.GetData<unsigned int>("i"), 5U);
  EXPECT_TRUE(object.SetData("u", 6) && object.SetData("i", 7U));
  EXPECT_EQ(Describe(object), "u=6 i=7");
  EXPECT_EQ(messages.Take(), "");
}

// The elements of an array, by the type that they are asked for.
template <class T>
std::vector<T> ArrayOf(const QZContainer& object, const char* name) {
  unsigned int count = 7;
  const T* const elements = object.GetData<T*>(name, &count);
  return {elements, elements + count};
}

TEST(Base, KeepsACopyOfAnArray) {
  float source[] = {1, 2, 3};
  QZContainer object;
  EXPECT_TRUE(object.SetData<float*>("x", source, 3));
  source[0] = 9;
  const QZContainer copy = object;
  EXPECT_EQ(object.GetData<float*>("x")[0], 1.0F);
  EXPECT_TRUE(object.SetData<float*>("x", source, 2));
  EXPECT_EQ(ArrayOf<float>(object, "x"), std::vector<float>({9, 2}));
  EXPECT_EQ(ArrayOf<float>(copy, "x"), std::vector<float>({1, 2, 3}));
  EXPECT_TRUE(object.SetData<float*>("x", object.GetData<float*>("x") + 1, 1)) << "from itself";
  EXPECT_EQ(ArrayOf<float>(object, "x"), std::vector<float>({2}));
}

TEST(Base, AnArrayHasTheTypeOfItsElements) {
  const int source[] = {1, 2};
  unsigned char bytes[] = {3, 4};
  QZContainer object;
  object.SetData("x", source, 2);
  object.AddData(QZGetTag("x"), source, 1);
  object.SetData("bytes", bytes, 2);
  object.SetData(QZGetTag("y"), source, 2);
  object.AddData<int*>("y", source, 1);
  object.SetData("text", "abc", 4);
  EXPECT_EQ(ArrayOf<int>(object, "x"), Ints({1, 2}));
  EXPECT_EQ(ArrayOf<int>(object, "y"), Ints({1, 2}));
  EXPECT_EQ(object.GetData<unsigned char*>("bytes")[1], 4);
  EXPECT_STREQ(object.GetData<char*>("text"), "abc");
  object.SetData<int*>("zeroes", nullptr, 2);
  object.SetData<int*>("none", source, 0);
  object.SetData<int*>("x", nullptr, 2);
  EXPECT_EQ(ArrayOf<int>(object, "zeroes"), Ints({0, 0}));
  for (const char* name : {"none", "x", "missing"}) EXPECT_EQ(ArrayOf<int>(object, name), Ints()) << name;
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

TEST(Base, HoldersTakeThePlaceOfAnyType) {
  Messages messages;
  QZContainer object = Sample();
  const QZBaseDataT<int> holder(QZGetTag("b"), 5);
  const QZBaseDataT<bool> other(QZGetTag("a"), true);
  EXPECT_TRUE(object.SetBaseData(&holder) && object.AddBaseData(&holder) && object.SetBaseData(&other));
  EXPECT_EQ(Describe(object), "a b=5 a=2 c=3 b=5");
  EXPECT_EQ(messages.Take(), "");

  QZContainer own;
  own.SetBaseData(&holder);
  own.AddBaseData(&*QZIter(own.GetDataIter()));
  own.SetBaseData(&*QZIter(own.GetDataIter()).ToLast());
  EXPECT_EQ(Describe(own), "b=5 b=5");
}

TEST(Base, EachIteratorStandsForItself) {
  QZContainer object = Sample();
  QZIter first(object.GetDataIter());
  const QZIter second(object.GetDataIter());
  ++first;
  EXPECT_EQ(first->GetTag(), QZGetTag("b"));
  EXPECT_EQ(second->GetTag(), QZGetTag("a"));
  object.Clear();
  for (const QZContainer& empty : {object, QZContainer()}) {
    EXPECT_FALSE(QZIter(empty.GetDataIter()) || QZIter(empty.GetDataIter(QZGetTag("a"))));
  }
}

TEST(Base, UnknownNamesAreRegisteredByObjectsWithDataOnly) {
  QZContainer object;
  EXPECT_FALSE(object.HasData("asked without data") || object.DeleteData("asked without data"));
  EXPECT_FALSE(object.GetData<int>("asked without data") || object.GetData<int*>("asked without data"));
  EXPECT_FALSE(QZHasTag(std::string("asked without data")));
  const char* const null = nullptr;
  object.SetData("", 1);
  EXPECT_FALSE(object.HasData("asked with data"));
  EXPECT_TRUE(QZHasTag(std::string("asked with data")));
  EXPECT_EQ(object.GetData<int>(null), 1) << "a null name is the empty one";
  EXPECT_TRUE(object.HasData(null) && object.DeleteData(null));
}

TEST(Base, ACopyIsIndependent) {
  QZContainer object = Sample();
  QZContainer copy = object, assigned;
  assigned.SetData("old", 1);
  assigned = object;
  const QZContainer& same = assigned;
  assigned = same;
  object.SetData("a", 9);
  object.DeleteData("c");
  EXPECT_EQ(Describe(copy), "a=1 b a=2 c=3");
  EXPECT_EQ(Describe(assigned), "a=1 b a=2 c=3");
  const QZContainer empty;
  for (int round = 0; round < 2; ++round) {
    object = empty;
    EXPECT_EQ(Describe(object), "");
    object.SetData("a", 5);
    EXPECT_EQ(Describe(object), "a=5");
  }
  object = QZContainer(QZContainer());
  EXPECT_EQ(Describe(object), "");
}

TEST(Base, AddsTheValuesOfAnother) {
  QZContainer object = Sample(), other;
  object += other;
  other += object;
  other.SetData("a", 9);
  object += other;
  EXPECT_EQ(Describe(object), "a=1 b a=2 c=3 a=9 b a=2 c=3");
  other += other;
  other.SetData("a", 8);
  EXPECT_EQ(Describe(other), "a=8 b a=2 c=3 a=9 b a=2 c=3") << "the new ones are copies";
}

TEST(Base, TakesWhatIsAttachedToIt) {
  QZContainer object;
  object.SetData("inner", Sample());
  object.SetData("rest", 1);
  QZContainer assigned = object, added = object, copied = object, moved = object;
  assigned = assigned.GetData<QZContainer>("inner");
  EXPECT_EQ(Describe(assigned), "a=1 b a=2 c=3");
  added += added.GetData<QZContainer>("inner");
  EXPECT_EQ(Describe(added), "inner rest=1 a=1 b a=2 c=3");
  QZCopyBaseData(copied, copied.GetData<QZContainer>("inner"));
  EXPECT_EQ(Describe(copied), "a=1 b a=2 c=3");
  QZCopyBaseData(copied, QZContainer());
  EXPECT_EQ(Describe(copied), "");
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
  const QZContainer object = Sample(), empty;
  const auto scan = [&] {
    for (const QZContainer* each : {&object, &empty}) {
      std::unique_ptr<QZIterBase<QZBaseData>> iters[60];
      for (auto& iter : iters) iter.reset(each->GetDataIter());
      for (auto& iter : iters) {
        for (iter->ToFirst(); *iter; ++*iter) static_cast<void>((*iter)->GetSize());
      }
    }
  };
  for (int round = 0; round < 2; ++round) {
    std::thread([&] {
      scan();
      EXPECT_EQ(AllocationsOf(scan), 0) << "once the pool of the thread is warm";
    }).join();
  }
}

TEST(Base, AllocatesOnceForEachValue) {
  constexpr int count = 10000;
  const unsigned int tag = QZGetTag("value");
  QZContainer object;
  const auto copy = [&] { const QZContainer other = object; };
  const auto add = [&] {
    for (int n = 0; n < count; ++n) object.AddData(tag, n);
  };
  EXPECT_EQ(AllocationsOf(copy), 0);
  EXPECT_LT(AllocationsOf(add), count + 20);
  EXPECT_EQ(AllocationsOf(copy), count + 2) << "the values, their list, its owner";
  object.Clear();
  EXPECT_EQ(AllocationsOf([&] { object.SetData(tag, 1); }), 1) << "the list stays allocated";
}

TEST(Base, ReadersNeedNoLock) {
  const QZContainer object = Sample();
  std::atomic<int> same{0};
  std::vector<std::thread> threads;
  for (int each = 0; each < 3; ++each) {
    threads.emplace_back([&] {
      same += Describe(object) == "a=1 b a=2 c=3" && object.HasData("c") && object.GetData<int>("a") == 1 &&
              object.GetData<std::vector<double>>("none").empty();
    });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(same, 3);
}

}  // namespace
