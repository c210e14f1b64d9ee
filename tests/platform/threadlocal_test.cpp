#include "qz/platform/threadlocal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

using QZPlatform::QZThreadLocal;

namespace {

template <class Work>
void InThread(Work work) {
  std::thread(work).join();
}

// Counts the values that are alive.
struct Live {
  Live() { ++count; }
  ~Live() { --count; }
  Live(const Live&) = delete;
  Live& operator=(const Live&) = delete;
  static inline std::atomic<int> count{0};
};

// Its values look up values of the same kind while they are made and while they go.
struct Nested {
  ~Nested() {
    if (QZThreadLocal<Nested>* const values = std::exchange(last, nullptr)) values->Get().depth = depth;
  }
  static inline QZThreadLocal<Nested>* inner = nullptr;
  static inline QZThreadLocal<Nested>* last = nullptr;
  int depth = inner != nullptr ? inner->Get().depth + 1 : 0;
};

}  // namespace

TEST(QZThreadLocal, EachObjectHasAValueForEachThreadWhichStartsFromTheDefault) {
  std::vector<QZThreadLocal<int>> values(100);
  const auto addTwice = [&values] {
    for (int round = 1; round <= 2; ++round) {
      for (std::size_t each = 0; each < values.size(); ++each) *values[each] += static_cast<int>(each);
    }
    for (std::size_t each = 0; each < values.size(); ++each)
      EXPECT_EQ(*values[each], 2 * static_cast<int>(each)) << each;
  };
  addTwice();
  InThread(addTwice);
  EXPECT_EQ(*values[7], 14);
}

TEST(QZThreadLocal, AnObjectAtTheAddressOfAFormerOneStartsAfresh) {
  std::optional<QZThreadLocal<int>> value;
  for (int round = 0; round < 50; ++round) {
    value.emplace();
    EXPECT_EQ(**value, 0) << "round " << round;
    **value = 7;
    value.reset();
  }
}

TEST(QZThreadLocal, AnEndingThreadFreesItsValueAndAnEndingObjectThoseOfAllThreads) {
  auto values = std::make_unique<QZThreadLocal<Live>>();
  QZThreadLocal<Live> others;
  std::promise<void> made, gone;
  std::thread thread([&] {
    values->Get();
    made.set_value();
    gone.get_future().wait();
    others.Get();  // sweeps what the first object left behind
  });
  made.get_future().wait();
  values->Get();
  InThread([&] {
    values->Get();
    EXPECT_EQ(Live::count, 3);
  });
  EXPECT_EQ(Live::count, 2);
  values.reset();
  EXPECT_EQ(Live::count, 0);
  gone.set_value();
  thread.join();
  EXPECT_EQ(Live::count, 0);
}

TEST(QZThreadLocal, AValueMayLookUpOthersWhileItIsMadeAndWhileItGoes) {
  QZThreadLocal<Nested> outer;
  QZThreadLocal<Nested> inner;
  InThread([&] {
    inner.Get();
    Nested::inner = &inner;
    EXPECT_EQ(outer->depth, 1);
    Nested::inner = nullptr;
    Nested::last = &outer;  // at the end of the thread
  });
  EXPECT_EQ(Nested::last, nullptr);
}

TEST(QZThreadLocal, AConstructorThatThrowsLeavesNothing) {
  static bool refuse = true;
  struct Refusing {
    int value = refuse ? throw 1 : 3;
  };
  QZThreadLocal<Refusing> values;
  EXPECT_THROW(values.Get(), int);
  refuse = false;
  EXPECT_EQ(values->value, 3);
}

TEST(QZThreadLocalDeathTest, TheMainThreadKeepsItsValuesUntilTheStaticsGo) {
  EXPECT_EXIT(
      {
        static QZThreadLocal<int> value;
        *value = 7;
        std::atexit([] { std::fprintf(stderr, "value %d", *value); });
        std::exit(0);
      },
      testing::ExitedWithCode(0), "value 7");
}

TEST(QZThreadLocal, ObjectsAndThreadsMayComeAndGoTogether) {
  for (int round = 0; round < 20; ++round) {
    auto values = std::make_unique<QZThreadLocal<Live>>();
    QZThreadLocal<Live> lasting;
    std::atomic<int> touched{0};
    std::vector<std::thread> threads;
    for (int each = 0; each < 4; ++each) {
      threads.emplace_back([&] {
        values->Get();
        ++touched;
        lasting.Get();  // while the first object goes
        QZThreadLocal<Live>().Get();
      });
    }
    while (touched < 4) std::this_thread::yield();
    values.reset();
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(Live::count, 0);
}
