#include "qz/platform/standardstream.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <functional>

#include "qz/platform/memorystream.h"
#include "qz/platform/syscalls_impl.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

// Comes before all other static objects of the program and goes after them.
struct Outermost {
  Outermost() {
    qzosstream text;
    text << "made " << 1;
    early = text.str();
    qzerr.flush();
  }
  ~Outermost() {
    if (armed) qzout << "from the last destructor";
    if (armed) qzerr << "; error too";
  }
  std::string early;
  bool armed = false;
};
Outermost outermost __attribute__((init_priority(102)));

// Runs the function in a child with the descriptor going to a file, and returns what the file holds then.
std::string written(int descriptor, const std::function<void()>& run, bool throughExit = true) {
  streamtest::Folder folder;
  const std::string path = folder / "out";
  qzout.flush();
  std::fflush(nullptr);  // or the child would write it too
  const pid_t child = ::fork();
  if (child == 0) {
    const int file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND, 0600);
    for (int each = 1; each <= 2; ++each)
      if (descriptor == each || descriptor == 3) ::dup2(file, each);
    run();
    if (throughExit) std::exit(0);
    ::_exit(0);
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  return streamtest::Content(path);
}

TEST(StandardStream, StreamsWorkBeforeMain) { EXPECT_EQ(outermost.early, "made 1"); }

TEST(StandardStream, OutputIsFlushedAtExit) {
  EXPECT_EQ(written(1, [] { qzout << "a" << 1 << std::string(40000, 'x'); }), "a1" + std::string(40000, 'x'));
}

TEST(StandardStream, BlocksOfAnySizeGoOutInOrder) {
  for (unsigned long size : {32766UL, 32767UL, 32768UL, 32769UL, 65536UL}) {
    const std::string block = std::string(size, 'x');  // without a line end
    EXPECT_EQ(written(1, [&] { qzout << "a" << block << "b" << block << "c"; }), "a" + block + "b" + block + "c")
        << size;
  }
}

TEST(StandardStream, OutputWaitsForTheFlush) {
  EXPECT_EQ(written(
                1, [] { qzout << "a\nb"; }, false),
            "");
  EXPECT_EQ(written(
                1, [] { qzout << "a" << qzendl << "b"; }, false),
            "a\n");
}

TEST(StandardStream, ErrorsGoOutByTheLine) {
  EXPECT_EQ(written(
                2, [] { qzerr << "Warning: " << 5 << '\n'
                              << "held"; }, false),
            "Warning: 5\n");
  EXPECT_EQ(written(
                2, [] { qzerr << "dot" << qzflush; }, false),
            "dot");
  EXPECT_EQ(written(2, [] { qzerr << "held"; }), "held");
  const std::string line(70000, 'x');
  EXPECT_EQ(written(
                2, [&] { qzerr << "a" << line << '\n'
                               << "b" << (line + "\n"); }, false),
            "a" + line + "\nb" + line + "\n");
}

TEST(StandardStream, ALineGoesOutInOneCall) {
  EXPECT_EQ(written(2,
                    [] {
                      const ScheduledFault writes(Call::Write, 0, Fault::None());
                      qzerr << "Warning: "
                            << "text " << 1.5 << qzendl;
                      if (writes.Count() != 1) ::_exit(1);
                    }),
            "Warning: text 1.5\n");
}

TEST(StandardStream, TheLastDestructorStillWrites) {
  EXPECT_EQ(written(3,
                    [] {
                      outermost.armed = true;
                      qzout << "first, ";
                    }),
            "first, from the last destructor; error too");
}

TEST(StandardStream, AFailureShowsAndStays) {
  EXPECT_EQ(written(1,
                    [] {
                      const ScheduledFault fault(Call::Write, 1, Fault::Fail(ENOSPC));
                      qzout << "lost";
                      const bool failed = !qzout.flush() && qzout.error() == ENOSPC && qzout.write("x", 1) == 0;
                      if (!failed) ::_exit(1);
                    }),
            "");
}

TEST(StandardStream, TellCountsWhatWasWritten) {
  EXPECT_EQ(written(2,
                    [] {
                      const unsigned long before = qzerr.tell();
                      qzerr << "held"
                            << "line\n";
                      if (qzerr.tell() != before + 9) ::_exit(1);
                    }),
            "heldline\n");
}

}  // namespace
