#include "qz/system/progress/statusfile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include "qz/platform/syscalls_impl.h"

using namespace QZSystem;
namespace SystemCalls = QZPlatform::SystemCalls;
namespace fs = std::filesystem;

namespace {

constexpr float always = 0;
constexpr float never = 1e8F;  // seconds of processor time

// A folder with a status file in it.
class StatusFile : public testing::Test {
 protected:
  StatusFile() : folder(fs::path(testing::TempDir()) / ("status" + std::to_string(getpid()))) {
    fs::remove_all(folder);
    fs::create_directory(folder);
    path = folder / "run.status";
  }
  ~StatusFile() override { fs::remove_all(folder); }

  static std::string Content(const fs::path& of) {
    std::ifstream in(of);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::string Content() const { return Content(path); }

  // The files of the folder.
  long Count() const { return std::distance(fs::directory_iterator(folder), {}); }

  static ino_t Number(const fs::path& of) {
    struct stat status = {};
    stat(of.c_str(), &status);
    return status.st_ino;
  }

  fs::path folder, path;
};

}  // namespace

TEST_F(StatusFile, HoldsALineForEachOpenTask) {
  using Tracer = QZStatusFileTracer;
  const struct {
    std::function<void(Tracer&)> call;
    const char* lines;
  } steps[] = {
      {[](Tracer& t) { t.Refresh(); }, "\n"},
      {[](Tracer& t) { t.SetProgress(5.0); }, " (%  5.00 done)\n"},
      {[](Tracer& t) { t.SetTask("run"); }, "run (%  5.00 done)\n"},
      {[](Tracer& t) { t.Push("read"); }, "run (%  5.00 done)\n read\n"},
      {[](Tracer& t) { t.SetProgress(12, 40); }, "run (%  5.00 done)\n read (12 of 40 done)\n"},
      {[](Tracer& t) { t.Push("line"); }, "run (%  5.00 done)\n read (12 of 40 done)\n  line\n"},
      {[](Tracer& t) { t.SetProgress(42.5); }, "run (%  5.00 done)\n read (12 of 40 done)\n  line (% 42.50 done)\n"},
      {[](Tracer& t) { t.Pop(); }, "run (%  5.00 done)\n read (12 of 40 done)\n"},
      {[](Tracer& t) { t.SetTask("write"); }, "run (%  5.00 done)\n write (12 of 40 done)\n"},
      {[](Tracer& t) { t.SetProgress(4294967295U, 3); }, "run (%  5.00 done)\n write (-1 of 3 done)\n"},
      {[](Tracer& t) { t.SetProgress(16777217.0); }, "run (%  5.00 done)\n write (%16777216.00 done)\n"},
      {[](Tracer& t) { t.SetProgress(100.0); }, "run (%  5.00 done)\n write (%100.00 done)\n"},
      {[](Tracer& t) { t.Pop(); }, "run (%  5.00 done)\n"},
      {[](Tracer& t) { t.Pop(); }, ""},
      {[](Tracer& t) { t.Pop(); }, ""},
      {[](Tracer& t) { t.SetProgress(1, 2); }, " (1 of 2 done)\n"},
      {[](Tracer& t) { t.Pop(); }, ""},
      {[](Tracer& t) { t.SetTask("again"); }, "again\n"},
  };
  {
    QZStatusFileTracer tracer(path, always);
    EXPECT_FALSE(tracer.Aborted());
    EXPECT_FALSE(fs::exists(path));
    for (const auto& step : steps) {
      step.call(tracer);
      EXPECT_EQ(Content(), step.lines);
    }
    EXPECT_EQ(Count(), 1);
  }
  EXPECT_EQ(Content(), "Finished\n");
}

TEST_F(StatusFile, NothingIsWrittenBeforeItsTime) {
  {
    QZStatusFileTracer tracer(path, never);
    tracer.SetTask("run");
    tracer.Push("read");
    tracer.SetProgress(1, 2);
    tracer.SetProgress(50.0);
    tracer.Pop();
    tracer.Refresh();
    EXPECT_FALSE(fs::exists(path));
  }
  EXPECT_EQ(Content(), "Finished\n");
}

// A tracer made while the clock fails believes that decades have passed, which counts in seconds of the clock. After
// the writing they haven't.
TEST_F(StatusFile, ALongWaitCountsByTheClock) {
  auto broken =
      std::make_unique<SystemCalls::ScheduledFault>(SystemCalls::Call::Clock, 1, SystemCalls::Fault::Fail(EIO), true);
  QZStatusFileTracer tracer(path, never);
  broken.reset();
  tracer.SetTask("run");
  EXPECT_EQ(Content(), "run\n");
  tracer.SetTask("later");
  EXPECT_EQ(Content(), "run\n");
}

TEST_F(StatusFile, CopiesShareTheFileAndNotTheTasks) {
  const fs::path otherPath = folder / "other.status";
  {
    QZStatusFileTracer tracer(path, always);
    tracer.SetTask("run");
    {
      QZStatusFileTracer copy(tracer);
      copy.Push("of the copy");
      EXPECT_EQ(Content(), "run\n of the copy\n");
    }
    EXPECT_EQ(Content(), "Finished\n");
    tracer.Refresh();
    EXPECT_EQ(Content(), "run\n");

    QZStatusFileTracer other(otherPath, always);
    other.SetTask("other");
    other = tracer;
    EXPECT_EQ(Content(otherPath), "Finished\n");
    EXPECT_EQ(Content(), "run\n");
    const QZStatusFileTracer& self = other;
    other = self;
    EXPECT_EQ(Content(), "run\n");
    other.Push("of the other");
    EXPECT_EQ(Content(), "run\n of the other\n");
  }
  EXPECT_EQ(Content(), "Finished\n");
}

TEST_F(StatusFile, NobodySeesHalfOfAPlainFile) {
  std::ofstream(path) << "old";
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  const ino_t old = Number(path);
  const std::ifstream open(path);
  QZStatusFileTracer tracer(path, always);
  tracer.SetTask("run");
  EXPECT_NE(Number(path), old);
  EXPECT_EQ(Content(), "run\n");
  EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(StatusFile, ALinkIsRewrittenWhereItLeads) {
  const fs::path target = folder / "target";
  std::ofstream(target) << "a longer text than the status";
  fs::create_symlink("target", path);
  const ino_t before = Number(target);
  {
    QZStatusFileTracer tracer(path, always);
    tracer.SetTask("run");
    EXPECT_EQ(Content(target), "run\n");
  }
  EXPECT_EQ(Content(target), "Finished\n");
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(Number(target), before);
}

TEST_F(StatusFile, AFileInAFolderThatTakesNoOtherIsRewrittenInPlace) {
  std::ofstream(path) << "a longer text than the status";
  const ino_t before = Number(path);
  QZStatusFileTracer tracer(path, always);
  const SystemCalls::ScheduledFault fault(SystemCalls::Call::Open, 1, SystemCalls::Fault::Fail(EACCES));
  tracer.SetTask("run");
  EXPECT_EQ(Content(), "run\n");
  EXPECT_EQ(Number(path), before);
}

TEST_F(StatusFile, WhatCannotBeWrittenIsLostInSilence) {
  testing::internal::CaptureStderr();
  {
    QZStatusFileTracer tracer(path, always);
    tracer.SetTask("run");
    {
      const SystemCalls::ScheduledFault full(SystemCalls::Call::Write, 1, SystemCalls::Fault::Fail(ENOSPC), true);
      tracer.SetTask("lost");
      EXPECT_EQ(Content(), "run\n");
      EXPECT_EQ(Count(), 1);
    }
    tracer.SetTask("seen");
    EXPECT_EQ(Content(), "seen\n");
    fs::remove_all(folder);
    tracer.SetTask("vanished");
  }
  EXPECT_FALSE(fs::exists(folder));
  for (const char* place : {"/dev/full", "/", "", "/proc/self/status"}) {
    QZStatusFileTracer tracer(place, always);
    tracer.SetTask("lost");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
