#include "qz/system/data/tagmap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "qz/system/data/tagmap_impl.h"
#include "tests/platform/childstatus.h"
#include "tests/system/data/allocations.h"

using namespace QZSystem;

thread_local long allocations = 0;
thread_local long failingAllocation = -1;

namespace {

// Stops a thread in its next allocation: 1 while it stands there, until another thread sets it to 2.
thread_local std::atomic<int>* pause = nullptr;

void* AllocateOrNull(std::size_t size) {
  if (std::atomic<int>* const here = std::exchange(pause, nullptr)) {
    *here = 1;
    while (*here == 1) std::this_thread::yield();
  }
  return allocations++ == failingAllocation ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* Allocate(std::size_t size) {
  if (void* const block = AllocateOrNull(size)) return block;
  throw std::bad_alloc();
}

unsigned int Add(TagBiMap& map, const std::string& name) { return map.FindOrAdd(name, nullptr).tag; }

void AddNumbered(TagBiMap& map, int count) {
  for (int i = 0; i < count; ++i) Add(map, "numbered" + std::to_string(i));
}

const std::string longName = "a name that is too long to stand inside a string object";

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AllocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return AllocateOrNull(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

void FailEachAllocation(const std::function<void()>& work, const std::function<void()>& afterFailure) {
  for (long failing = 0; failing < 100; ++failing) {
    allocations = 0;
    failingAllocation = failing;
    bool failed = false;
    try {
      work();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    const bool reached = allocations > failing;
    failingAllocation = -1;
    if (!reached) return;
    if (failed) afterFailure();
  }
  FAIL() << "it never gets through";
}

namespace {

TEST(TagBiMap, StartsWithTheFixedNames) {
  TagBiMap map;
  EXPECT_EQ(Add(map, ""), 0U);
  EXPECT_EQ(Add(map, "QZBondStereo"), 55U);
  EXPECT_STREQ(map.Name(55), "QZBondStereo");
  for (unsigned int tag : {0U, 1U, 54U, 56U, 1023U}) EXPECT_TRUE(map.Has(tag) && *map.Name(tag) == '\0') << tag;
  EXPECT_FALSE(map.Has(1024));
  EXPECT_EQ(Add(map, "first"), 1024U);
  EXPECT_EQ(Add(map, "second"), 1025U);
  EXPECT_EQ(Add(map, "first"), 1024U);
}

TEST(TagBiMap, ANewBlockBeginsWhenOneIsFull) {
  TagBiMap map;
  const char* const first = map.Name(Add(map, "first"));
  AddNumbered(map, 31742);
  EXPECT_EQ(Add(map, "last"), 32767U);
  EXPECT_FALSE(map.Has(32768));
  EXPECT_EQ(Add(map, "next"), 65536U);
  EXPECT_EQ(Add(map, "after"), 65537U);
  EXPECT_EQ(Add(map, "last"), 32767U);
  EXPECT_STREQ(map.Name(32767), "last");
  EXPECT_STREQ(map.Name(65536), "next");
  EXPECT_EQ(map.Name(1024), first) << "names don't move";
  EXPECT_TRUE(map.Has(40000)) << "the test is only against the next tag";
  for (unsigned int none : {32768U, 40000U, 65535U, 65538U, 0x20000U, 0x80000000U, 0xFFFFFFFFU})
    EXPECT_STREQ(map.Name(none), "") << none;
}

TEST(TagBiMap, FindsWhatAPlainMapFinds) {
  std::mt19937 random(3);
  TagBiMap map;
  std::map<std::string, unsigned int> model = {{"", 0U}, {"QZBondStereo", 55U}};
  unsigned int next = 1024;
  for (int round = 0; round < 5000; ++round) {
    // Few letters make prefixes of each other; they include the zero byte and those with the high bit set.
    std::string name;
    for (auto size = random() % 6; size > 0; --size) name += std::string("\0ab\xff", 4)[random() % 4];
    TagBiMap::Entry found;
    ASSERT_EQ(map.Find(name, found), model.count(name) == 1) << testing::PrintToString(name);
    if (model.emplace(name, next).second) ++next;
    std::string given = name;
    found = map.FindOrAdd(given, round % 2 ? &given : nullptr);
    ASSERT_EQ(found.tag, model[name]) << testing::PrintToString(name);
    ASSERT_EQ(found.name, name);
  }
}

TEST(TagBiMap, AFailedAllocationLeavesItAsItWas) {
  for (int before : {0, 1, 31744}) {  // in the first block; with the sorted list full; at the end of the block
    TagBiMap map;
    AddNumbered(map, before);
    const unsigned int expected = before == 31744 ? 65536U : static_cast<unsigned int>(1024 + before);
    int failures = 0;
    unsigned int tag = 0;
    FailEachAllocation([&] { tag = Add(map, longName); },
                       [&] {
                         ++failures;
                         TagBiMap::Entry entry;
                         EXPECT_FALSE(map.Find(longName, entry));
                         EXPECT_FALSE(map.Has(expected));
                       });
    EXPECT_EQ(tag, expected);
    EXPECT_GE(failures, before == 31744 ? 2 : 1);
    EXPECT_STREQ(map.Name(tag), longName.c_str());
  }
}

TEST(Tags, AskingForANameRegistersNothing) {
  EXPECT_EQ(QZGetTag(static_cast<const char*>(nullptr)), 0U);
  const unsigned int before = QZGetTag("asked before");
  for (int time = 0; time < 3; ++time) EXPECT_FALSE(QZHasTag(std::string("never registered")));
  EXPECT_EQ(QZGetTag("asked after"), before + 1);
  EXPECT_TRUE(QZHasTag(std::string("asked after")));
}

TEST(Tags, ANewNameIsMovedFromItsString) {
  std::string name = "moved: " + longName;
  const char* const text = name.data();
  const unsigned int tag = QZGetTag(std::move(name));
  EXPECT_EQ(QZGetTag(tag), text);
  EXPECT_EQ(QZGetTag("moved: " + longName), tag);
}

// Names of every length that differ in one byte have tags of their own, and keep them when asked again.
TEST(Tags, EveryByteCounts) {
  std::map<unsigned int, std::string> names;
  for (int round = 0; round < 2; ++round) {
    for (std::size_t size = 1; size <= 70; ++size) {
      std::string name(size, 'n');
      for (char& byte : name) {
        byte = 'm';
        const unsigned int tag = QZGetTag(name);
        EXPECT_EQ(names.emplace(tag, name).second, round == 0) << name;
        EXPECT_EQ(names[tag], name);
        EXPECT_EQ(QZGetTag(tag), name);
        byte = 'n';
      }
    }
  }
}

// These bytes bring the hash of the names to one value, whatever else stands in them: the first eight and those from
// the fifteenth on are what the hash mixes into its parts.
TEST(Tags, NamesThatShareAHashAreToldApart) {
  std::string name(31, '.');
  const std::uint64_t salts[] = {0x9E3779B97F4A7C15, 0x165667B19E3779F9};
  std::memcpy(&name[0], &salts[0], 8);
  std::memcpy(&name[15], &salts[1], 8);
  std::vector<unsigned int> tags;
  for (int round = 0; round < 2; ++round) {
    for (unsigned int i = 0; i < 300; ++i) {
      std::memcpy(&name[24], &i, sizeof i);
      const unsigned int tag = QZGetTag(name);
      if (round == 0) tags.push_back(tag);
      EXPECT_EQ(tag, tags[0] + i);
    }
  }
}

TEST(Tags, AKnownNameAllocatesNothing) {
  const std::string names[] = {"known to this thread", longName, "k"};
  for (const std::string& name : names) static_cast<void>(QZGetTag(name));
  const long before = allocations;
  for (const std::string& name : names) {
    EXPECT_TRUE(QZHasTag(name));
    EXPECT_EQ(QZGetTag(name), QZGetTag(name.c_str()));
  }
  EXPECT_EQ(allocations, before);
}

TEST(Tags, AFailedAllocationRegistersAllOrNothing) {
  std::vector<std::string> names;
  for (int i = 0; i < 100; ++i) names.push_back("try " + std::to_string(i) + ": " + longName);
  std::thread([&] {  // a thread that hasn't met any name yet
    std::size_t tries = 0;
    unsigned int tag = 0;
    FailEachAllocation([&] { tag = QZGetTag(names[tries++]); }, [&] { EXPECT_FALSE(QZHasTag(names[tries - 1])); });
    EXPECT_GT(tries, 2U);
    EXPECT_EQ(QZGetTag(names[tries - 1]), tag);
  })
      .join();
}

TEST(Tags, ThreadsAgree) {
  constexpr std::size_t count = 1500;
  std::vector<std::vector<unsigned int>> seen(4, std::vector<unsigned int>(count));
  std::vector<std::thread> threads;
  for (auto& tags : seen) {
    threads.emplace_back([&tags, forward = threads.size() % 2 == 0] {
      for (std::size_t i = 0; i < count; ++i) {
        const std::size_t number = forward ? i : count - 1 - i;
        const std::string name = "shared " + std::to_string(number);
        tags[number] = QZGetTag(name);
        EXPECT_EQ(QZGetTag(tags[number]), name);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& tags : seen) EXPECT_EQ(tags, seen[0]);
}

TEST(Tags, WorkInTheDestructorsOfAThread) {
  static std::atomic<unsigned int> late{0};
  struct Late {
    ~Late() { late = QZGetTag("registered at the end of a thread"); }
  };
  std::thread([] {
    static thread_local Late first;  // destroyed behind what the lookup below keeps for the thread
    static_cast<void>(first);
    static_cast<void>(QZGetTag("registered by a thread"));
  }).join();
  EXPECT_STREQ(QZGetTag(late.load()), "registered at the end of a thread");
}

TEST(TagsDeathTest, WorkUntilTheProcessHasEnded) {
  EXPECT_EXIT(
      {
        static const unsigned int tag = QZGetTag("registered before the end");
        static const char* const name = QZGetTag(tag);
        std::atexit([] {
          const unsigned int late = QZGetTag("registered at the end");
          const bool good = QZGetTag(name) == tag && QZGetTag(tag) == name && late != tag &&
                            QZGetTag("registered at the end") == late && QZHasTag(std::string(QZGetTag(late)));
          _exit(good ? 7 : 8);
        });
        std::exit(0);
      },
      testing::ExitedWithCode(7), "");
}

TEST(Tags, AChildProcessCanRegisterWhileAThreadOfItsParentDid) {
  std::atomic<bool> stop{false};
  std::thread thread([&] {
    for (int i = 0; !stop; ++i) static_cast<void>(QZGetTag("in the parent " + std::to_string(i % 2000)));
  });
  for (int round = 0; round < 20; ++round) {
    ASSERT_EQ(StatusOfChild([&] {
                const unsigned int tag = QZGetTag("in the child");
                return QZGetTag(tag) == std::string("in the child") ? 0 : 1;
              }),
              0);
  }
  stop = true;
  thread.join();
}

// In a process of its own, which has no map yet.
TEST(TagsDeathTest, AChildProcessCanRegisterWhileAThreadOfItsParentMakesTheMap) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(
      {
        alarm(60);  // for the case that a static object has made it
        std::atomic<int> making{0};
        std::thread thread([&] {
          pause = &making;
          static_cast<void>(QZGetTag("in the parent"));
        });
        while (making == 0) std::this_thread::yield();
        const int status = StatusOfChild([] { return QZGetTag("in the child") == 1024 ? 0 : 1; });
        const bool first = QZGetTag("in the parent too") == 1024;
        making = 2;
        thread.join();
        _exit(status == 0 && first && QZGetTag("in the parent") == 1025 ? 7 : 8);
      },
      testing::ExitedWithCode(7), "");
}

}  // namespace
