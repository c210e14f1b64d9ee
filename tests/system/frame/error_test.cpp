#include "qz/system/frame/error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <regex>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/errorimpl.h"

using namespace QZSystem;

namespace {

// QZThrow prints to a text, doesn't end the process and starts from zero, for the length of a test.
class QZThrowTest : public testing::Test {
 protected:
  QZThrowTest() {
    QZThrow.SetHandlerImpl(nullptr, true);
    QZThrow.SetOutputStream(out);
    QZThrow.SetStrict(false);
  }
  ~QZThrowTest() override { QZThrow.SetHandlerImpl(nullptr, true); }

  // What was printed since the last time.
  std::string Printed() {
    const std::string text = out.str();
    return text.substr(std::exchange(seen, text.size()));
  }

  qzosstream out;
  std::size_t seen = 0;
};

// The counts 1 to 9.
std::vector<unsigned int> Counts() {
  std::vector<unsigned int> counts;
  for (unsigned int level = 1; level < 10; ++level) counts.push_back(QZThrow.Count(level));
  return counts;
}

// Takes every message, counts its objects, and ends nothing.
class Collector : public QZErrorHandlerImplBase {
 public:
  Collector() { ++alive; }
  Collector(const Collector& other) : QZErrorHandlerImplBase(other) { ++alive; }
  ~Collector() override { --alive; }
  void Msg(unsigned int at, const std::string& text) override { texts.push_back(std::to_string(at) + " " + text); }
  QZErrorHandlerImplBase* CreateCopy() const override { return new Collector(*this); }

  std::vector<std::string> texts;
  static inline int alive = 0;
};

// Sees all messages before they are dropped or printed.
class Spy : public QZErrorHandlerStreamImpl {
 public:
  using QZErrorHandlerStreamImpl::QZErrorHandlerStreamImpl;
  void Msg(unsigned int at, const std::string& text) override {
    ++messages;
    QZErrorHandlerStreamImpl::Msg(at, text);
  }
  std::atomic<int> messages{0};
};

}  // namespace

TEST(QZErrorLevel, EachLevelHasItsName) {
  const char* const names[] = {"Undefined", "Debug", "Verbose", "Info",  "Warning",
                               "Error",     "Fatal", "Usage",   "Quiet", "Unknown Error Level"};
  for (unsigned int level = 0; level < 10; ++level) EXPECT_EQ(QZErrorLevelToString(level), names[level]) << level;
  EXPECT_EQ(QZErrorLevelToString(4000000000U), "Unknown Error Level");
}

TEST_F(QZThrowTest, EachLevelIsPrintedAndCountedInItsWay) {
  const std::tuple<unsigned int, const char*, std::size_t> cases[] = {
      {77, "Unknown Error Level(77): text\n", 9}, {4, "Warning: text\n", 4}, {2, "text\n", 2},
      {0, "Unknown Error Level(0): text\n", 9},   {5, "Warning: text\n", 4}, {3, "text\n", 3},
      {9, "Unknown Error Level(9): text\n", 9},   {1, "Debug: text\n", 1},   {8, "", 8}};
  QZThrow.SetLevel(0);
  for (const auto& [level, printed, counted] : cases) {
    std::vector<unsigned int> expected = Counts();
    ++expected[counted - 1];
    QZThrow.Msg(level, "text");
    EXPECT_EQ(Printed(), printed) << level;
    EXPECT_EQ(Counts(), expected) << level;
  }
  EXPECT_EQ(QZThrow.Count(0), 6U) << "the sum of the known levels";
  QZThrow.Clear();
  EXPECT_EQ(QZThrow.Count(0), 0U);
  EXPECT_EQ(QZThrow.Count(4000000000U), 3U) << "the unknown ones stay";
}

TEST_F(QZThrowTest, BothFormsOfEachLevelPrintTheSame) {
  const std::string text = "100 % of it";
  QZThrow.SetLevel(QZErrorLevel::Debug);
  QZThrow.Debug("%d %% of %s", 100, "it");
  QZThrow.Debug(text);
  QZThrow.Verbose("%d %% of %s", 100, "it");
  QZThrow.Verbose(text);
  QZThrow.Info("%d %% of %s", 100, "it");
  QZThrow.Info(text);
  QZThrow.Warning("%d %% of %s", 100, "it");
  QZThrow.Warning(text);
  QZThrow.Error("%d %% of %s", 100, "it");
  QZThrow.Error(text);
  QZThrow.Msg(QZErrorLevel::Info, "%d %% of %s", 100, "it");
  QZThrow.Msg(QZErrorLevel::Info, text);
  std::string expected;
  for (const char* prefix : {"Debug: ", "", "", "Warning: ", "Warning: ", ""}) {
    expected += prefix + text + "\n" + prefix + text + "\n";
  }
  EXPECT_EQ(Printed(), expected);
}

TEST_F(QZThrowTest, AMessageBelowTheThresholdIsNeitherPrintedNorCounted) {
  for (unsigned int threshold = 0; threshold < 12; ++threshold) {
    QZThrow.SetLevel(threshold);
    EXPECT_EQ(QZThrow.GetLevel(), threshold);
    for (const unsigned int level : {0U, 1U, 2U, 3U, 4U, 5U, 8U, 9U, 10U}) {
      const unsigned int before = QZThrow.Count(0) + QZThrow.Count(9);
      QZThrow.Msg(level, "%s", "text");
      QZThrow.Msg(level, std::string("text"));
      const unsigned int counted = QZThrow.Count(0) + QZThrow.Count(9) - before;
      EXPECT_EQ(counted, level >= threshold ? 2U : 0U) << level << " at threshold " << threshold;
      EXPECT_EQ(Printed().empty(), level < threshold || level == 8) << level << " at threshold " << threshold;
    }
  }
}

TEST_F(QZThrowTest, EachThreadHasAThresholdOfItsOwn) {
  QZThrow.SetLevel(QZErrorLevel::Warning);
  std::thread([&] {
    EXPECT_EQ(QZThrow.GetLevel(), QZErrorLevel::Info);
    QZThrow.Debug("dropped");
    QZThrow.SetLevel(QZErrorLevel::Debug);
    QZThrow.Debug("of the thread");
  }).join();
  QZThrow.Debug("dropped");
  QZThrow.Info("dropped");
  QZThrow.SetLevel(QZErrorLevel::Verbose);
  QZThrow.Debug("dropped");
  QZThrow.Verbose("seen");
  EXPECT_EQ(Printed(), "Debug: of the thread\nseen\n");
}

TEST_F(QZThrowTest, AFormattedMessageIsCutAt8191Characters) {
  for (const int length : {8190, 8191, 8192, 20000}) {
    QZThrow.Info("%*d", length, 7);
    EXPECT_EQ(Printed().size(), static_cast<std::size_t>(std::min(length, 8191)) + 1) << length;
    QZThrow.Info(std::string(static_cast<std::size_t>(length), 'x'));
    EXPECT_EQ(Printed().size(), static_cast<std::size_t>(length) + 1) << length;
  }
}

TEST_F(QZThrowTest, ANewOutputStreamTakesOverTheCountsAndTheThreshold) {
  QZThrow.SetLevel(QZErrorLevel::Warning);
  QZThrow.Warning("first");
  QZThrow.Msg(9, "unknown");
  qzosstream other;
  QZThrow.SetOutputStream(other);
  QZThrow.Info("dropped");
  QZThrow.Error("second");
  EXPECT_EQ(other.str(), "Warning: second\n");
  EXPECT_EQ(QZThrow.Count(4), 2U);
  EXPECT_EQ(QZThrow.Count(9), 1U);
  EXPECT_FALSE(QZThrow.GetStrict());
}

TEST_F(QZThrowTest, AnImplementationOfItsOwnSeesEveryMessage) {
  QZThrow.Debug("dropped, and not a word to anybody");
  Collector collector;
  QZThrow.SetHandlerImpl(&collector, false);
  QZThrow.Debug("number %d", 1);
  QZThrow.Verbose(std::string("text"));
  std::thread([] { QZThrow.Msg(0, "thread"); }).join();
  QZThrow.Fatal("goes on");
  QZThrow.Usage("goes on");
  EXPECT_EQ(collector.texts, (std::vector<std::string>{"1 number 1", "2 text", "0 thread", "6 goes on", "7 goes on"}));

  Spy spy(collector, out);
  spy.SetLevel(QZErrorLevel::Info);
  QZThrow.SetHandlerImpl(&spy, false);
  QZThrow.Debug("seen and then dropped");
  EXPECT_EQ(spy.messages, 1);
  EXPECT_EQ(Printed(), "");
}

TEST_F(QZThrowTest, OwnedImplementationsAreDeletedWhenTheyAreReplaced) {
  auto* const first = new Collector;
  for (const bool own : {true, true, false, true}) {  // false: the caller has taken it back
    QZThrow.SetHandlerImpl(first, own);
    EXPECT_EQ(Collector::alive, 1);
  }
  EXPECT_EQ(QZThrow.GetHandlerImpl(), first);
  QZThrow.SetHandlerImpl(new Collector, true);
  EXPECT_EQ(Collector::alive, 1);
  Collector kept;
  QZThrow.SetHandlerImpl(&kept, false);
  QZThrow.SetHandlerImpl(nullptr, false);
  EXPECT_EQ(Collector::alive, 1);
}

TEST(QZErrorHandler, CopiesOwnACopyOrShareWhatIsntOwned) {
  qzosstream out;
  QZErrorHandler owner;
  owner.SetOutputStream(out);
  owner.SetStrict(false);
  owner.SetLevel(QZErrorLevel::Warning);
  owner.Warning("one");
  QZErrorHandler copy(owner);
  EXPECT_EQ(copy.GetLevel(), QZErrorLevel::Warning);
  std::thread([&] { EXPECT_EQ(copy.GetLevel(), QZErrorLevel::Info); }).join();
  copy.Error("two");
  EXPECT_EQ(std::pair(copy.Count(4), owner.Count(4)), std::pair(2U, 1U));
  EXPECT_EQ(out.str(), "Warning: one\nWarning: two\n");

  Collector collector;
  QZErrorHandler sharing;
  sharing.SetHandlerImpl(&collector, false);
  QZErrorHandler& same = sharing;
  sharing = same;
  copy = sharing;
  copy.Debug("handed %s", "on");
  EXPECT_EQ(collector.texts, std::vector<std::string>{"1 handed on"});
}

TEST_F(QZThrowTest, LinesOfDifferentThreadsDontMix) {
  std::vector<std::thread> threads;
  for (int each = 0; each < 3; ++each) {
    threads.emplace_back([each] {
      for (int line = 0; line < 500; ++line) QZThrow.Warning("thread %d says the same as before", each);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(QZThrow.Count(4), 1500U);
  const std::regex line("Warning: thread [012] says the same as before\n");
  const std::string text = out.str();
  EXPECT_EQ(std::distance(std::sregex_iterator(text.begin(), text.end(), line), {}), 1500);
  EXPECT_EQ(text.size(), 1500U * 42);
}
