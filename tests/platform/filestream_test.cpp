#include "qz/platform/filestream.h"

#include <fcntl.h>

#include <csignal>
#include <thread>

#include "streamtest.h"

namespace {

using namespace streamtest;

constexpr unsigned long noSize = ~0UL;

int NextDescriptor() {
  const int next = ::dup(0);
  ::close(next);
  return next;
}

TEST(FileStream, WhatCannotBeOpenedSaysWhy) {
  Folder folder;
  const std::pair<std::string, int> cases[] = {{folder / "no/such", ENOENT},
                                               {folder.path, EISDIR},
                                               {folder.File("a", "x") + "/b", ENOTDIR},
                                               {"", ENOENT},
                                               {(folder / "a") + std::string("\0", 1), ENOENT}};
  for (const auto& [path, number] : cases) {
    qzifstream in;
    in.open(path);
    EXPECT_TRUE(in.eof() && in.failed()) << path;
    EXPECT_EQ(in.error(), number) << path;
    EXPECT_EQ(in.get(), -1) << path;
    EXPECT_EQ(in.size(), 0U) << path;
    EXPECT_FALSE(in.seek(0)) << path;
    qzofstream out;
    out.open(path);
    EXPECT_TRUE(out.eof() && out.failed()) << path;
    EXPECT_EQ(out.error(), number) << path;
    EXPECT_EQ(out.write("x", 1), 0U) << path;
    EXPECT_FALSE(out.close()) << path;
  }
  qzifstream in;
  in.open(static_cast<const char*>(nullptr));
  EXPECT_TRUE(in.eof());
}

TEST(FileStream, OpenClosesWhatIsOpenAndLeavesNoDescriptor) {
  Folder folder;
  const int before = NextDescriptor();
  {
    qzofstream out;
    out.open(folder / "a");
    out << "first";
    out.open(folder / "b");
    EXPECT_EQ(Content(folder / "a"), "first");
    EXPECT_EQ(out.tell(), 0U);
    qzifstream in;
    in.open(folder / "a");
    in.skip(3);
    in.open(folder.path);
    EXPECT_TRUE(in.eof());
    const ScheduledFault scheduled(Call::Status, 1, Fault::Fail(EIO));
    in.open(folder / "a");
    EXPECT_TRUE(in.eof());
    EXPECT_EQ(in.error(), EIO);
    in.open(folder / "a");
    EXPECT_FALSE(in.failed());
    EXPECT_EQ(Rest(in), "first");
  }
  EXPECT_EQ(NextDescriptor(), before);
}

TEST(FileStream, AnEmptyFileShowsItsEndToAReadAndMayGrow) {
  Folder folder;
  qzifstream in;
  in.open(folder.File("a", ""));
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(in.get(), -1);
  EXPECT_TRUE(in.eof());
  folder.File("a", "more");
  EXPECT_TRUE(in.seek(0));
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(Rest(in), "more");
  EXPECT_EQ(in.size(), noSize);
}

TEST(FileStream, AFailedSeekMovesNothing) {
  Folder folder;
  qzifstream in;
  in.open(folder.File("a", Bytes(100000)));
  in.skip(10);
  const ScheduledFault scheduled(Call::Seek, 1, Fault::Fail(EIO));
  EXPECT_FALSE(in.seek(90000));
  EXPECT_EQ(in.tell(), 10U);
  in.skip(89990);  // its seek succeeds again
  EXPECT_EQ(in.tell(), 90000U);
}

TEST(FileStream, ALongSkipReadsNothing) {
  Folder folder;
  const std::string path = folder.File("sparse", "");
  std::filesystem::resize_file(path, 1UL << 40);
  qzifstream in;
  in.open(path);
  EXPECT_EQ(in.size(), 1UL << 40);
  const ScheduledFault reads(Call::Read, 0, Fault::None());
  in.skip((1L << 40) - 5);
  EXPECT_EQ(in.tell(), (1UL << 40) - 5);
  EXPECT_EQ(in.get(), 0);
  in.skip(9223372036854775807L);
  EXPECT_EQ(in.tell(), 1UL << 40);
  EXPECT_TRUE(in.eof());
  EXPECT_LE(reads.Count(), 2U);
}

TEST(FileStream, WhatTheSystemMakesUpHasNoSize) {
  const std::pair<const char*, std::string> cases[] = {
      {"/proc/self/status", "Name:"}, {"/dev/null", ""}, {"/dev/zero", std::string(5, '\0')}};
  for (const auto& [path, start] : cases) {
    qzifstream in;
    in.open(path);
    EXPECT_FALSE(in.failed()) << path;
    EXPECT_EQ(in.size(), noSize) << path;
    std::string got(5, '.');
    got.resize(in.read(got, 5));
    EXPECT_EQ(got, start);
    EXPECT_EQ(in.size(), noSize) << path;
  }
}

TEST(FileStream, APipeIsReadAsItArrives) {
  Pipe pipe;
  qzifstream in;
  in.attach(pipe.Read(), false);
  EXPECT_EQ(in.size(), noSize);
  EXPECT_TRUE(in.seek(0));  // where it stands
  pipe.Give("12 ab");
  int value = 0;
  in >> value;
  EXPECT_EQ(value, 12);
  in.skip(3);
  EXPECT_FALSE(in.eof());
  EXPECT_FALSE(in.seek(100));
  EXPECT_TRUE(in.seek(3));
  // An end that would block is waited for.
  for (int end : {pipe.Read(), pipe.Write()}) ASSERT_EQ(::fcntl(end, F_SETFL, O_NONBLOCK), 0);
  const std::string bytes = Bytes(500000);
  std::thread writer([&] {
    qzofstream out;
    out.attach(pipe.Write(), false);
    EXPECT_EQ(out.write(bytes), bytes.size());
    EXPECT_TRUE(out.close());
    pipe.Close(pipe.Write());
  });
  EXPECT_TRUE(Rest(in) == "ab" + bytes);
  writer.join();
  EXPECT_TRUE(in.eof());
  EXPECT_FALSE(in.failed());
}

TEST(FileStream, AnAttachedDescriptorIsReadFromItsPlaceAndStaysOpen) {
  Folder folder;
  const int descriptor = ::open(folder.File("a", "0123456789").c_str(), O_RDONLY);
  ASSERT_EQ(::lseek(descriptor, 4, SEEK_SET), 4);
  qzifstream in;
  in.attach(descriptor, false);
  EXPECT_EQ(in.tell(), 4U);
  EXPECT_EQ(in.size(), 10U);
  EXPECT_EQ(in.get(), '4');
  EXPECT_TRUE(in.seek(9));
  EXPECT_EQ(Rest(in), "9");
  in.close();
  EXPECT_EQ(::close(descriptor), 0);
  in.attach(descriptor, false);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.error(), EBADF);
}

TEST(FileStream, ASinkThatRefusesShows) {
  qzofstream out;
  out.open("/dev/full");
  EXPECT_EQ(out.write("x", 1), 1U);  // it waits in the buffer
  EXPECT_FALSE(out.flush());
  EXPECT_EQ(out.error(), ENOSPC);
  EXPECT_EQ(out.write("x", 1), 0U);
  EXPECT_FALSE(out.close());

  const auto before = std::signal(SIGPIPE, SIG_IGN);
  Pipe pipe;
  pipe.Close(pipe.Read());
  out.attach(pipe.Write(), false);
  out << "x" << qzendl;
  EXPECT_EQ(out.error(), EPIPE);
  std::signal(SIGPIPE, before);
}

TEST(FileStream, InterruptedAndShortCallsAreContinued) {
  Folder folder;
  const std::string bytes = Bytes(100000);
  const auto expectReadBack = [&](unsigned long nth, const Fault& fault, bool forGood) {
    const ScheduledFault scheduled(Call::Read, nth, fault, forGood);
    qzifstream in;
    in.open(folder / "a");
    EXPECT_TRUE(Rest(in) == bytes) << nth;
    EXPECT_FALSE(in.failed());
  };
  for (const Fault& fault : {Fault::Interrupt(), Fault::Shorten(1), Fault::Shorten(1000), Fault::Fail(EAGAIN)}) {
    for (unsigned long nth = 1; nth != 8; ++nth) {
      {
        const ScheduledFault scheduled(Call::Write, nth, fault);
        qzofstream out;
        out.open(folder / "a");
        for (unsigned long at = 0; at != bytes.size(); at += 10000) out.write(bytes.data() + at, 10000);
        EXPECT_TRUE(out.close());
      }
      EXPECT_TRUE(Content(folder / "a") == bytes) << nth;
      expectReadBack(nth, fault, false);
    }
  }
  expectReadBack(1, Fault::Shorten(1), true);
}

}  // namespace
