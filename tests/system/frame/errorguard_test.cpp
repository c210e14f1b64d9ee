#include "qz/system/frame/errorguard.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/platform/standardstream.h"
#include "qz/system/frame/error.h"

using namespace QZSystem;
using testing::ExitedWithCode;

namespace {

constexpr unsigned int Info = QZErrorLevel::Info, Warning = QZErrorLevel::Warning, Error = QZErrorLevel::Error;

// Messages go to a text while it stands.
class ErrorGuard : public testing::Test {
 protected:
  ErrorGuard() { QZThrow.SetOutputStream(out); }
  ~ErrorGuard() override { QZThrow.SetHandlerImpl(nullptr, true); }

  qzosstream out;
};

std::string Thrown(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

using Sent = std::vector<std::pair<unsigned int, std::string>>;

// What a guard, made with the arguments, says at its end of the messages that are sent under it.
template <class Guard, class... Arguments>
auto With(Arguments... arguments) {
  return [=](const Sent& messages, const std::function<void(Guard&)>& prepare = nullptr) {
    return Thrown([&] {
      Guard guard(arguments...);
      if (prepare) prepare(guard);
      for (const auto& [level, text] : messages) QZThrow.Msg(level, text);
    });
  };
}

}  // namespace

TEST_F(ErrorGuard, ExpectedMessagesMayStandAtTheirLevelOrAbove) {
  const auto check = With<QZPushQZThrowTest>(Warning, std::string("charge"));
  const auto alsoMass = [](unsigned int level) { return [=](auto& guard) { guard.AddSearchString(level, "mass"); }; };
  EXPECT_EQ(check({{Warning, "no charge here"}}), "");
  EXPECT_EQ(check({{Info, "read"}, {Warning, "charge"}, {Warning, "mass 3"}}, alsoMass(Info)), "");
  EXPECT_EQ(check({{Info, "mass"}, {Warning, "charge 1"}, {9, "other"}}, alsoMass(Warning)),
            "Failure: Could not find substring 'mass'\n at error level Warning\ninside the following messages:\n"
            "'''\ncharge 1\nother\n'''");
  EXPECT_EQ(check({{QZErrorLevel::Quiet, "charge"}}),
            "Failure: Could not find substring 'charge'\n at error level Warning\ninside the following messages:\n"
            "'''\n\n'''")
      << "the level itself must have messages, whatever is said above it";
  EXPECT_EQ(check({}, [](auto& guard) { guard.Clear(); }), "");
}

TEST_F(ErrorGuard, NoMessagesAreExpected) {
  const auto check = With<QZPushQZThrowHasNoMessages>();
  const std::string notEmpty = "Failure: ErrorHandler not empty, found the following messages:\n";
  EXPECT_EQ(check({{0, "undefined"}, {9, "unknown"}}), "");
  EXPECT_EQ(check({{Warning, "two"}, {Info, "one"}, {Warning, "three"}}),
            notEmpty + "level = 3\none\nlevel = 4\ntwo\nthree\n");
  EXPECT_EQ(check({{1, "step"}}), notEmpty + "level = 1\nstep\n") << "below the threshold, and so not printed";
  const auto lenient = With<QZPushQZThrowHasNoMessages>(std::vector<unsigned int>{Warning, Info});
  EXPECT_EQ(lenient({{Warning, "fine"}, {Info, "fine"}}), "");
  EXPECT_EQ(lenient({{Warning, "fine"}, {2, "not"}}), notEmpty + "level = 2\nnot\nlevel = 4\nfine\n");

  const auto atLevel = With<QZPushQZThrowHasNoMessagesAtLevel>(Warning);
  EXPECT_EQ(atLevel({{Info, "fine"}}), "");
  EXPECT_EQ(atLevel({{Warning, "w"}, {Info, "i"}}),
            "Failure: Has Messages at Error Level Warninglevel = 3\ni\nlevel = 4\nw\n");
}

TEST_F(ErrorGuard, OnlySomeMessagesAreExpected) {
  const auto check = With<QZPushQZThrowHasSpecficMessages>(Warning, std::string("charge"));
  EXPECT_EQ(check({}), "");
  EXPECT_EQ(check({{Warning, "a mass"}, {Warning, "charge"}}, [](auto& g) { g.AddSearchString(Warning, "mass"); }), "");
  EXPECT_EQ(check({{Warning, "charge"}, {Info, "charge"}}),
            "Failure: Has Extra Messages: level = 3\ncharge\nlevel = 4\ncharge\n");
  EXPECT_EQ(check({{Info, "charge"}}, [](auto& guard) { guard.SetReportLevel(Warning); }),
            "Failure: Has Extra Messages at Error Level Warning: level = 3\ncharge\n");

  // The first level with other messages is told.
  std::string err = "before";
  const QZErrorMessages messages{{Info, {"a1", "b"}}, {Warning, {"a2", "c", "d"}}, {Error, {"e"}}};
  EXPECT_TRUE(
      QZContainOnlySearchStrings(err, messages, {{Info, {"a", "b"}}, {Warning, {"a", "c", "d"}}, {Error, {""}}}));
  EXPECT_FALSE(QZContainOnlySearchStrings(err, messages, {{Info, {"b", "1"}}, {Warning, {"a"}}}));
  EXPECT_EQ(err, "\n'''\nc\nd\n'''");
}

TEST_F(ErrorGuard, AFatalThrowsWhereItIsSent) {
  QZPushSimpleQZThrowTester guard;
  const std::string after = "\nFatal message in error handler.";
  EXPECT_EQ(Thrown([] { QZThrow.Error("bad %d", 1); }), "bad 1" + after);
  QZThrow.SetStrict(false);
  QZThrow.Error("passing");
  EXPECT_EQ(Thrown([] { QZThrow.Fatal("worse"); }), "worse" + after);
  EXPECT_EQ(guard.GetErrorLog(), "level = 5\nbad 1\npassing\nlevel = 6\nworse\n");
  EXPECT_EQ(out.str(), "Warning: passing\n");
  EXPECT_EQ(guard.NumMessages(), 3U);
  EXPECT_TRUE(guard.HasMessagesAtLevel(Error) && !guard.HasMessagesAtLevel(Warning));
  guard.Clear();
  EXPECT_FALSE(guard.HasMessages());
}

TEST_F(ErrorGuard, AfterwardsTheHandlerIsAsItWas) {
  QZThrow.SetStrict(false);
  QZThrow.SetLevel(Warning);
  QZThrow.Warning("before");
  const auto expectAsBefore = [] {
    EXPECT_FALSE(QZThrow.GetStrict());
    EXPECT_EQ(QZThrow.GetLevel(), Warning);
    EXPECT_EQ(QZThrow.Count(Warning), 1U);
  };
  {
    const QZPushSimpleQZThrowTester guard;
    expectAsBefore();
    QZThrow.Warning("under the guard");
    QZThrow.Info("below the threshold");
    QZThrow.SetStrict(true);
    QZThrow.SetLevel(Info);
  }
  expectAsBefore();
  QZThrow.Warning("after");
  EXPECT_EQ(out.str(), "Warning: before\nWarning: under the guard\nWarning: after\n");
}

TEST_F(ErrorGuard, TheTestImplementationIsFoundWhileItIsInstalled) {
  const std::string missing = "QZThrow error test impl not installed";
  QZErrorHandlerTestImpl* impl = nullptr;
  EXPECT_EQ(Thrown([&] { GetErrorHandlerTestImpl(impl); }), missing);
  {
    const QZPushSimpleQZThrowTester guard;
    GetErrorHandlerTestImpl(impl);
    EXPECT_EQ(impl, QZThrow.GetHandlerImpl());
    const std::unique_ptr<QZErrorHandlerTestImpl> copy(QZGetErrorHandlerTestImpl()->CreateCopy());
    copy->Msg(Info, "of the copy");
    EXPECT_EQ(guard.NumMessagesAtLevel(Info), 1U);
  }
  EXPECT_EQ(Thrown([] { static_cast<void>(QZGetErrorHandlerTestImpl()); }), missing);
}

// An implementation that prints to no stream; what it takes shows.
class Silent : public QZErrorHandlerImplBase {
 public:
  explicit Silent(std::string& text) : taken(&text) {}
  void Msg(unsigned int, const std::string& text) override { *taken += text; }
  Silent* CreateCopy() const override { return new Silent(*this); }

 private:
  std::string* taken;
};

TEST_F(ErrorGuard, AnImplementationOfAnyKindComesBack) {
  std::string taken;
  QZThrow.SetHandlerImpl(new Silent(taken), true);
  testing::internal::CaptureStderr();
  {
    const QZPushSimpleQZThrowTester guard;
    QZThrow.Info("under the guard");
  }
  QZThrow.Info("after");
  EXPECT_EQ(taken, "after");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "under the guard\n");
}

// An exception passes through ten guards whose checks fail: guard 1 reports to the record of guard 2, guard 2 to that
// of 3 and so on, and guard 10 to the stream.
TEST_F(ErrorGuard, NestedGuardsUnwindInOrder) {
  const std::function<void(int)> nest = [&](int depth) {
    if (depth == 0) throw std::runtime_error("innermost");
    const QZPushQZThrowTest guard(Warning, "expected " + std::to_string(depth));
    nest(depth - 1);
  };
  EXPECT_EQ(Thrown([&] { nest(10); }), "innermost");
  const std::string text = out.str();
  for (std::size_t depth = 1, at = 0; depth <= 10; ++depth) {
    at = text.find("Warning: Failure: Could not find substring 'expected " + std::to_string(depth) + "'", at);
    ASSERT_NE(at, std::string::npos) << depth;
  }
  // Without an exception on its way the first failed check is thrown, and passes through the others.
  EXPECT_EQ(
      Thrown([] {
        const QZPushQZThrowHasNoMessagesAtLevel outer(Info);
        const QZPushSimpleQZThrowTester between;
        const QZPushQZThrowTest inner(Warning, "x");
      }),
      "Failure: Could not find substring 'x'\n at error level Warning\ninside the following messages:\n'''\n\n'''");
  auto onHeap = std::make_unique<QZPushQZThrowTest>(Warning, "x");
  EXPECT_NE(Thrown([&] { delete onHeap.release(); }), "");
  QZThrow.Info("last");
  EXPECT_EQ(out.str(), text + "last\n");
}

TEST_F(ErrorGuard, MessagesOfAllThreadsAreRecorded) {
  QZPushSimpleQZThrowTester guard;
  std::vector<std::thread> threads;
  for (unsigned int each = 1; each <= 4; ++each) {
    threads.emplace_back([each] {
      for (int i = 0; i < 500; ++i) QZThrow.Msg(each, std::string("text"));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (unsigned int each = 1; each <= 4; ++each) EXPECT_EQ(guard.NumMessagesAtLevel(each), 500U);
}

TEST(ErrorGuardDeathTest, AUsageEndsTheProcess) {
  const QZPushSimpleQZThrowTester guard;
  EXPECT_EXIT(QZThrow.Usage("tool IN OUT"), ExitedWithCode(0), "^Usage: tool IN OUT\n$");
}
