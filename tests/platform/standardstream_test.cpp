#include "qz/platform/standardstream.h"

#include <fcntl.h>

#include <cstdio>
#include <functional>

#include "qz/platform/memorystream.h"
#include "streamtest.h"
#include "tests/platform/childstatus.h"

namespace {

using namespace streamtest;

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

enum End { exits, dies };
constexpr int both = 3;

// Runs the function in a child with the descriptor going to a file, and returns what the file holds then.
std::string written(int descriptor, End end, const std::function<void()>& run) {
  const Folder folder;
  qzout.flush();
  std::fflush(nullptr);  // or the child would write it too
  EXPECT_EQ(StatusOfChild([&] {
              const int file = ::open((folder / "out").c_str(), O_CREAT | O_WRONLY | O_APPEND, 0600);
              for (int each : {1, 2}) {
                if (descriptor == each || descriptor == both) ::dup2(file, each);
              }
              run();
              if (end == exits) std::exit(0);
              return 0;
            }),
            0);
  return Content(folder / "out");
}

TEST(StandardStream, StreamsWorkBeforeMainAndUntilTheLastDestructor) {
  EXPECT_EQ(outermost.early, "made 1");
  const auto arm = [] {
    outermost.armed = true;
    qzout << "first, ";
  };
  EXPECT_EQ(written(both, exits, arm), "first, from the last destructor; error too");
}

TEST(StandardStream, OutputWaitsForTheFlush) {
  EXPECT_EQ(written(1, dies, [] { qzout << "a\nb"; }), "");
  EXPECT_EQ(written(1, dies, [] { qzout << "a" << qzendl << "b"; }), "a\n");
  for (unsigned long size : {32766UL, 32767UL, 32768UL, 32769UL, 65536UL}) {
    const std::string block = std::string(size, 'x');  // without a line end
    EXPECT_TRUE(written(1, exits, [&] { qzout << "a" << block << "b" << block << 1; }) ==
                "a" + block + "b" + block + "1")
        << size;
  }
}

TEST(StandardStream, ErrorsGoOutByTheLine) {
  const std::string line = std::string(70000, 'x') + '\n';
  EXPECT_EQ(written(2, dies,
                    [] {
                      qzerr << "Warning: " << 5 << "\n"
                            << "held";
                    }),
            "Warning: 5\n");
  EXPECT_EQ(written(2, dies, [] { qzerr << "dot" << qzflush; }), "dot");
  EXPECT_EQ(written(2, exits, [] { qzerr << "held"; }), "held");
  EXPECT_TRUE(written(2, dies, [&] { qzerr << "a" << line << "b" << line; }) == "a" + line + "b" + line);
}

TEST(StandardStream, ALineGoesOutInOneCallAndTellCountsWhatIsHeld) {
  const auto run = [] {
    const ScheduledFault writes(Call::Write, 0, Fault::None());
    const unsigned long before = qzerr.tell();
    qzerr << "Warning: "
          << "text " << 1.5 << qzendl;
    if (writes.Count() != 1 || qzerr.tell() != before + 18) ::_exit(1);
  };
  EXPECT_EQ(written(2, dies, run), "Warning: text 1.5\n");
}

TEST(StandardStream, AFailureShowsAndStays) {
  const auto run = [] {
    const ScheduledFault fault(Call::Write, 1, Fault::Fail(ENOSPC));
    qzout << "lost";
    if (qzout.flush() || qzout.error() != ENOSPC || qzout.write("x", 1) != 0) ::_exit(1);
  };
  EXPECT_EQ(written(1, exits, run), "");
}

}  // namespace
