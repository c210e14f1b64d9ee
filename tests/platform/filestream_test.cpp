#include "qz/platform/filestream.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "qz/platform/syscalls_impl.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;
using streamtest::Bytes;
using streamtest::Content;
using streamtest::Folder;
using streamtest::Pipe;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

constexpr unsigned long NoSize = ~0UL;

std::string readAll(qzistream& in) {
  std::string text;
  in.read(text);
  return text;
}

TEST(FileStream, ReadsBackWhatWasWritten) {
  Folder folder;
  for (unsigned long size : {0UL, 1UL, 32767UL, 32768UL, 32769UL, 65536UL, 200000UL}) {
    const std::string bytes = Bytes(size);
    qzofstream out;
    out.open(folder / "a");
    EXPECT_EQ(out.write(bytes), size);
    EXPECT_TRUE(out.close());
    EXPECT_EQ(Content(folder / "a"), bytes) << size;
    qzifstream in;
    in.open(folder / "a");
    EXPECT_FALSE(in.eof()) << size;
    EXPECT_EQ(in.size(), size);
    EXPECT_EQ(readAll(in), bytes) << size;
    EXPECT_EQ(in._qzsize(), size);
    EXPECT_TRUE(in.eof()) << size;
  }
}

TEST(FileStream, EndsRightAfterTheLastByteOfARegularFile) {
  Folder folder;
  for (long size : {1L, 32768L, 40000L}) {
    qzifstream in;
    in.open(folder.File("a", Bytes(static_cast<unsigned long>(size))));
    in.skip(size - 1);
    EXPECT_FALSE(in.eof()) << size;
    EXPECT_GE(in.get(), 0);
    EXPECT_TRUE(in.eof()) << size;
  }
}

TEST(FileStream, WhatCannotBeReadFailsToOpen) {
  Folder folder;
  const std::pair<std::string, int> cases[] = {{folder / "nothing", ENOENT},
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
    EXPECT_TRUE(in.eof()) << path;
  }
  qzifstream in;
  in.open(static_cast<const char*>(nullptr));
  EXPECT_TRUE(in.eof());
}

TEST(FileStream, WhatCannotBeWrittenFailsToOpen) {
  Folder folder;
  for (const std::string& path : {folder.path, folder / "no/such", std::string(), folder / std::string("a\0b", 3)}) {
    qzofstream out;
    out.open(path);
    EXPECT_TRUE(out.eof() && out.failed()) << path;
    EXPECT_EQ(out.write("x", 1), 0U) << path;
    EXPECT_FALSE(out.close()) << path;
  }
}

TEST(FileStream, OpenClosesWhatIsOpen) {
  Folder folder;
  qzofstream out;
  out.open(folder / "a");
  out << "first";
  out.open(folder / "b");
  EXPECT_EQ(Content(folder / "a"), "first");
  EXPECT_EQ(out.tell(), 0U);
  out << "2";
  EXPECT_TRUE(out.close());
  EXPECT_EQ(Content(folder / "b"), "2");

  qzifstream in;
  in.open(folder / "a");
  in.skip(3);
  in.open(folder / "b");
  EXPECT_EQ(in.tell(), 0U);
  EXPECT_EQ(in.size(), 1U);
  EXPECT_EQ(readAll(in), "2");
  in.open(folder / "nothing");
  EXPECT_TRUE(in.eof());
  in.open(folder / "a");
  EXPECT_FALSE(in.failed());
  EXPECT_EQ(readAll(in), "first");
}

TEST(FileStream, NoDescriptorIsLeftOpen) {
  Folder folder;
  const int before = ::dup(0);
  ::close(before);
  {
    qzifstream in;
    qzofstream out;
    for (int n = 0; n != 3; ++n) {
      out.open(folder / "a");
      in.open(folder / "a");
      in.open(folder.path);
    }
    in.open(folder / "a");
  }
  const int after = ::dup(0);
  ::close(after);
  EXPECT_EQ(after, before);
}

TEST(FileStream, SeeksInsideTheBufferAndOutside) {
  Folder folder;
  const std::string bytes = Bytes(100000);
  qzifstream in;
  in.open(folder.File("a", bytes));
  for (long position : {0L, 99999L, 40000L, 5L, 32768L, 32767L, 65536L, 100L}) {
    EXPECT_TRUE(in.seek(position)) << position;
    EXPECT_EQ(in.tell(), static_cast<unsigned long>(position));
    EXPECT_EQ(in.get(), static_cast<unsigned char>(bytes[static_cast<size_t>(position)])) << position;
  }
  EXPECT_TRUE(in.seek(100000));
  EXPECT_EQ(in.get(), -1);
  for (long outside : {-1L, 100001L, 9223372036854775807L}) {
    EXPECT_FALSE(in.seek(outside)) << outside;
    EXPECT_EQ(in.tell(), 100000U);
  }
  EXPECT_TRUE(in.seek(0));
  EXPECT_EQ(readAll(in), bytes);
}

TEST(FileStream, AfterASeekToTheEndAReadLooksForMore) {
  Folder folder;
  const std::string path = folder.File("a", "");
  qzifstream in;
  in.open(path);
  EXPECT_EQ(in.get(), -1);
  EXPECT_TRUE(in.eof());
  folder.File("a", "more");
  EXPECT_TRUE(in.seek(0));
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(readAll(in), "more");
}

TEST(FileStream, ALongSkipReadsNothing) {
  Folder folder;
  const std::string path = folder.File("sparse", "");
  ASSERT_EQ(::truncate(path.c_str(), 1L << 40), 0);
  qzifstream in;
  in.open(path);
  EXPECT_EQ(in.size(), 1UL << 40);
  ScheduledFault reads(Call::Read, 0, Fault::None());
  in.skip((1L << 40) - 5);
  EXPECT_EQ(in.tell(), (1UL << 40) - 5);
  EXPECT_EQ(in.get(), 0);
  in.skip(9223372036854775807L);
  EXPECT_EQ(in.tell(), 1UL << 40);
  EXPECT_TRUE(in.eof());
  EXPECT_LE(reads.Count(), 2U);
}

TEST(FileStream, AFileMadeUpByTheSystemHasNoSize) {
  qzifstream in;
  in.open("/proc/self/status");
  EXPECT_EQ(in.size(), NoSize);
  std::string line;
  EXPECT_TRUE(in.getline(line));
  EXPECT_EQ(line.substr(0, 5), "Name:");
  EXPECT_EQ(in.size(), NoSize);
  EXPECT_GT(readAll(in).size(), 100U);
}

TEST(FileStream, ADeviceHasNoSize) {
  qzifstream in;
  in.open("/dev/null");
  EXPECT_FALSE(in.failed());
  EXPECT_EQ(in.size(), NoSize);
  EXPECT_EQ(in.get(), -1);
  in.open("/dev/zero");
  unsigned char bytes[4];
  EXPECT_EQ(in.read(bytes, 4), 4U);
  EXPECT_EQ(in.size(), NoSize);
}

TEST(FileStream, APipeIsReadAsItArrives) {
  Pipe pipe;
  qzifstream in;
  in.attach(pipe.Read(), false);
  EXPECT_EQ(in.size(), NoSize);
  EXPECT_TRUE(in.seek(0));  // where it stands
  pipe.Give("12 ab");
  int value = 0;
  in >> value;
  EXPECT_EQ(value, 12);
  in.skip(3);
  EXPECT_FALSE(in.eof());
  EXPECT_FALSE(in.seek(100));
  EXPECT_TRUE(in.seek(3));
  std::thread writer([&] {
    pipe.Give(std::string(200000, 'x'));
    pipe.CloseWrite();
  });
  EXPECT_EQ(readAll(in), "ab" + std::string(200000, 'x'));
  writer.join();
  EXPECT_TRUE(in.eof());
  EXPECT_FALSE(in.failed());
}

TEST(FileStream, AnAttachedDescriptorIsReadFromItsPlaceAndStaysOpen) {
  Folder folder;
  const int descriptor = ::open(folder.File("a", "0123456789").c_str(), O_RDONLY);
  ASSERT_EQ(::lseek(descriptor, 4, SEEK_SET), 4);
  {
    qzifstream in;
    in.attach(descriptor, false);
    EXPECT_EQ(in.tell(), 4U);
    EXPECT_EQ(in.size(), 10U);
    EXPECT_EQ(in.get(), '4');
    EXPECT_TRUE(in.seek(9));
    EXPECT_EQ(in.get(), '9');
    EXPECT_EQ(in.get(), -1);
  }
  EXPECT_EQ(::close(descriptor), 0);
  qzifstream in;
  in.attach(descriptor, false);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.error(), EBADF);
}

TEST(FileStream, AFullDiskShows) {
  qzofstream out;
  out.open("/dev/full");
  EXPECT_FALSE(out.eof());
  EXPECT_EQ(out.write("x", 1), 1U);  // it waits in the buffer
  EXPECT_FALSE(out.flush());
  EXPECT_EQ(out.error(), ENOSPC);
  EXPECT_EQ(out.write("x", 1), 0U);
  EXPECT_FALSE(out.close());
  out.open("/dev/null");
  EXPECT_EQ(out.write("x", 1), 1U);
  EXPECT_TRUE(out.close());
}

TEST(FileStream, AClosedPipeShows) {
  const auto before = ::signal(SIGPIPE, SIG_IGN);
  Pipe pipe;
  pipe.CloseRead();
  qzofstream out;
  out.attach(pipe.Write(), false);
  out << "x" << qzendl;
  EXPECT_EQ(out.error(), EPIPE);
  ::signal(SIGPIPE, before);
}

TEST(FileStream, ADescriptorThatWouldBlockIsWaitedFor) {
  Pipe pipe;
  for (int end : {pipe.Read(), pipe.Write()}) ASSERT_EQ(::fcntl(end, F_SETFL, O_NONBLOCK), 0);
  const std::string bytes = Bytes(500000);
  std::thread writer([&] {
    qzofstream out;
    out.attach(pipe.Write(), false);
    EXPECT_EQ(out.write(bytes), bytes.size());
    EXPECT_TRUE(out.close());
    pipe.CloseWrite();
  });
  qzifstream in;
  in.attach(pipe.Read(), false);
  EXPECT_EQ(readAll(in), bytes);
  writer.join();
}

// Interruptions and short moves at every single place change nothing.
TEST(FileStream, InterruptedAndShortCallsAreContinued) {
  Folder folder;
  const std::string bytes = Bytes(100000);
  const Fault faults[] = {Fault::Interrupt(), Fault::Shorten(1), Fault::Shorten(1000), Fault::Fail(EAGAIN)};
  for (const Fault& fault : faults) {
    for (unsigned long nth = 1; nth != 8; ++nth) {
      {
        ScheduledFault scheduled(Call::Write, nth, fault);
        qzofstream out;
        out.open(folder / "a");
        for (unsigned long at = 0; at != bytes.size(); at += 10000) out.write(bytes.data() + at, 10000);
        EXPECT_TRUE(out.close());
      }
      EXPECT_EQ(Content(folder / "a"), bytes);
      ScheduledFault scheduled(Call::Read, nth, fault);
      qzifstream in;
      in.open(folder / "a");
      EXPECT_EQ(readAll(in), bytes);
      EXPECT_FALSE(in.failed());
    }
  }
  ScheduledFault all(Call::Read, 1, Fault::Shorten(1), true);
  qzifstream in;
  in.open(folder / "a");
  EXPECT_EQ(readAll(in), bytes);
}

TEST(FileStream, ReadingStopsAtAnErrorAndTellsIt) {
  Folder folder;
  folder.File("a", Bytes(100000));
  for (unsigned long nth = 1; nth != 5; ++nth) {
    ScheduledFault scheduled(Call::Read, nth, Fault::Fail(EIO));
    qzifstream in;
    in.open(folder / "a");
    EXPECT_EQ(readAll(in).size(), std::min((nth - 1) * 32768, 100000UL)) << nth;
    EXPECT_TRUE(in.eof());
    EXPECT_EQ(in.error(), nth == 5 ? 0 : EIO) << nth;
  }
}

TEST(FileStream, EveryFailingCallOfAWriterShows) {
  Folder folder;
  const auto write = [&] {
    qzofstream out;
    out.open(folder / "a");
    for (int n = 0; n != 10; ++n) out << std::string(10000, 'x');
    return out.close();
  };
  ScheduledFault counting(Call::Any, 0, Fault::None());
  EXPECT_TRUE(write());
  const unsigned long calls = counting.Count();
  EXPECT_GE(calls, 5U);
  for (unsigned long nth = 1; nth <= calls; ++nth) {
    for (bool forGood : {false, true}) {
      ScheduledFault scheduled(Call::Any, nth, Fault::Fail(ENOSPC), forGood);
      EXPECT_FALSE(write()) << nth;
    }
  }
}

TEST(FileStream, AFailedLookAtTheFileFailsToOpen) {
  Folder folder;
  folder.File("a", "x");
  const int before = ::dup(0);
  ::close(before);
  ScheduledFault scheduled(Call::Status, 1, Fault::Fail(EIO));
  qzifstream in;
  in.open(folder / "a");
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.error(), EIO);
  const int after = ::dup(0);
  ::close(after);
  EXPECT_EQ(after, before);
}

TEST(FileStream, AFailedSeekMovesNothing) {
  Folder folder;
  qzifstream in;
  in.open(folder.File("a", Bytes(100000)));
  in.skip(10);
  ScheduledFault scheduled(Call::Seek, 1, Fault::Fail(EIO));
  EXPECT_FALSE(in.seek(90000));
  EXPECT_EQ(in.tell(), 10U);
  in.skip(89990);  // its seek succeeds again
  EXPECT_EQ(in.tell(), 90000U);
}

}  // namespace
