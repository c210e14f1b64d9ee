#include "qz/system/progress/statusfile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "qz/platform/syscalls_impl.h"
#include "tests/system/progress/printed.h"

using namespace QZSystem;
namespace fs = std::filesystem;

namespace {

using QZPlatform::SystemCalls::Call;
using QZPlatform::SystemCalls::Fault;
using QZPlatform::SystemCalls::ScheduledFault;

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

  // What the file holds, "-" if it isn't there.
  std::string Content() const { return Content(path); }
  static std::string Content(const fs::path& of) {
    std::ifstream in(of);
    return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "-";
  }
  long FilesInFolder() const { return std::distance(fs::directory_iterator(folder), {}); }
  // Tells a file that was rewritten from one that took its name.
  static ino_t Number(const fs::path& of) {
    struct stat status = {};
    stat(of.c_str(), &status);
    return status.st_ino;
  }

  fs::path folder, path;
};

TEST_F(StatusFile, HoldsALineForEachOpenTask) {
  using Tracer = QZStatusFileTracer;
  const std::pair<void (*)(Tracer&), const char*> steps[] = {
      {[](Tracer& t) { t.Refresh(); }, "\n"},
      {[](Tracer& t) { t.SetProgress(5.0); }, " (%  5.00 done)\n"},
      {[](Tracer& t) { t.SetTask("run"); }, "run (%  5.00 done)\n"},
      {[](Tracer& t) { t.Push("read"); }, "run (%  5.00 done)\n read\n"},
      {[](Tracer& t) { t.SetProgress(12, 40); }, "run (%  5.00 done)\n read (12 of 40 done)\n"},
      {[](Tracer& t) { t.Push("line"); }, "run (%  5.00 done)\n read (12 of 40 done)\n  line\n"},
      {[](Tracer& t) { t.Pop(); }, "run (%  5.00 done)\n read (12 of 40 done)\n"},
      {[](Tracer& t) { t.SetTask("write"); }, "run (%  5.00 done)\n write (12 of 40 done)\n"},
      {[](Tracer& t) { t.SetProgress(4294967295U, 3); }, "run (%  5.00 done)\n write (-1 of 3 done)\n"},
      {[](Tracer& t) { t.SetProgress(16777217.0); }, "run (%  5.00 done)\n write (%16777216.00 done)\n"},
      {[](Tracer& t) { t.Pop(); }, "run (%  5.00 done)\n"},
      {[](Tracer& t) { t.Pop(), t.Pop(); }, ""},
      {[](Tracer& t) { t.SetProgress(1, 2); }, " (1 of 2 done)\n"},
      {[](Tracer& t) { t.Pop(), t.SetTask("again"); }, "again\n"},
  };
  auto tracer = std::make_unique<Tracer>(path, always);
  EXPECT_FALSE(tracer->Aborted());
  EXPECT_EQ(Content(), "-");
  for (const auto& [call, lines] : steps) {
    call(*tracer);
    EXPECT_EQ(Content(), lines);
  }
  EXPECT_EQ(FilesInFolder(), 1);
  tracer.reset();
  EXPECT_EQ(Content(), "Finished\n");
}

// A tracer made while the clock fails believes that decades have passed, which
// counts in seconds of the clock. After the writing they haven't.
TEST_F(StatusFile, NothingIsWrittenBeforeItsTime) {
  QZStatusFileTracer early(path, never);
  early.SetTask("run");
  EXPECT_EQ(Content(), "-");
  auto broken = std::make_unique<ScheduledFault>(Call::Clock, 1, Fault::Fail(EIO), true);
  QZStatusFileTracer tracer(path, never);
  broken.reset();
  for (const char* name : {"run", "later"}) tracer.SetTask(name);
  EXPECT_EQ(Content(), "run\n");
}

TEST_F(StatusFile, CopiesShareTheFileAndNotTheTasks) {
  QZStatusFileTracer tracer(path, always), other(folder / "other.status", always);
  tracer.SetTask("run");
  {
    QZStatusFileTracer copy(tracer);
    copy.Push("of the copy");
    EXPECT_EQ(Content(), "run\n of the copy\n");
  }
  EXPECT_EQ(Content(), "Finished\n");
  const QZStatusFileTracer& self = tracer;
  tracer = self;
  other = tracer;
  EXPECT_EQ(Content(folder / "other.status"), "Finished\n");
  other.Push("of the other");
  EXPECT_EQ(Content(), "run\n of the other\n");
  tracer.Refresh();
  EXPECT_EQ(Content(), "run\n");
}

TEST_F(StatusFile, APlainFileIsReplacedAndKeepsItsPermissions) {
  std::ofstream(path) << "old";
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  const std::ifstream old(path);  // keeps its number from being taken again
  const ino_t before = Number(path);
  QZStatusFileTracer(path, always).SetTask("run");
  EXPECT_NE(Number(path), before);
  EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(StatusFile, ALinkAndAFileInAFolderThatTakesNoOtherAreRewrittenInPlace) {
  const fs::path target = folder / "target";
  std::ofstream(target) << "a longer text than the status";
  fs::create_symlink("target", path);
  const ino_t before = Number(target);
  QZStatusFileTracer(path, always).SetTask("run");
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(Content(target), "Finished\n");
  QZStatusFileTracer direct(target, always);
  const ScheduledFault fault(Call::Open, 1, Fault::Fail(EACCES));
  direct.SetTask("run");
  EXPECT_EQ(Content(target), "run\n");
  EXPECT_EQ(Number(target), before);
}

TEST_F(StatusFile, WhatCannotBeWrittenIsLostInSilence) {
  QZStatusFileTracer tracer(path, always);
  tracer.SetTask("run");
  EXPECT_EQ(Printed([&] {
              for (const char* place : {"/dev/full", "/", "", "/proc/self/status"})
                QZStatusFileTracer(place, always).SetTask("lost");
              const ScheduledFault full(Call::Write, 1, Fault::Fail(ENOSPC), true);
              tracer.SetTask("lost");
            }),
            "");
  EXPECT_EQ(Content(), "run\n");
  EXPECT_EQ(FilesInFolder(), 1);
  tracer.SetTask("seen");
  EXPECT_EQ(Content(), "seen\n");
  fs::remove_all(folder);
  tracer.SetTask("vanished");
  EXPECT_FALSE(fs::exists(folder));
}

}  // namespace
