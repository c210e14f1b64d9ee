#include "qz/platform/inputstream.h"

#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;
using streamtest::Bytes;
using streamtest::ChunkedStream;

TEST(InputStream, DeliversTheSameBytesWhateverTheChunks) {
  const std::string bytes = Bytes(1000);
  for (unsigned long chunk : {1UL, 2UL, 3UL, 7UL, 499UL, 500UL, 999UL, 1000UL, 5000UL}) {
    ChunkedStream in(bytes, chunk);
    std::string got;
    char room[64];
    for (unsigned long step = 1;; step = step % 61 + 3) {
      const unsigned long before = in.tell();
      const int next = in.peek();
      const unsigned long count = in.read(room, step);
      EXPECT_EQ(next, count ? static_cast<unsigned char>(room[0]) : -1) << "chunk " << chunk;
      EXPECT_EQ(in.tell(), before + count) << "chunk " << chunk;
      got.append(room, count);
      if (count != step) break;
    }
    EXPECT_EQ(got, bytes) << "chunk " << chunk;
    EXPECT_TRUE(in.eof());
  }
}

TEST(InputStream, AnEmptyBufferAloneIsNotTheEnd) {
  ChunkedStream in("ab", 1);
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(in.get(), 'a');
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(in.peek(), 'b');
  EXPECT_EQ(in.get(), 'b');
  EXPECT_FALSE(in.eof());  // nobody has looked yet
  EXPECT_EQ(in.peek(), -1);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.get(), -1);
}

TEST(InputStream, FillsOncePerBlock) {
  ChunkedStream in(Bytes(100), 10);
  while (in.get() >= 0) {
  }
  EXPECT_EQ(in.fills, 11);
}

TEST(InputStream, BytesAbove127AreNotTheEnd) {
  ChunkedStream in("\xff\x80", 1);
  EXPECT_EQ(in.get(), 255);
  EXPECT_EQ(in.peek(), 128);
}

TEST(InputStream, AReadOfNothingChangesNothing) {
  ChunkedStream in("a", 1);
  char room[1];
  EXPECT_EQ(in.read(room, 0), 0U);
  EXPECT_EQ(in.fills, 0);
  in.get();
  EXPECT_EQ(in.read(room, 0), 0U);
  EXPECT_FALSE(in.eof());
}

TEST(InputStream, AHugeCountGetsWhatIsThere) {
  // A compiler that saw the count would warn of a copy that never happens.
  const volatile unsigned long huge = ~0UL;
  for (unsigned long chunk : {3UL, 100UL}) {
    ChunkedStream in("0123456789", chunk);
    char room[10];
    EXPECT_EQ(in.read(room, huge), 10U);
    EXPECT_EQ(std::string(room, 10), "0123456789");
  }
}

TEST(InputStream, ReadsIntoAStringAsFarAsItIsSized) {
  ChunkedStream in("0123456789", 4);
  std::string text(6, '.');
  EXPECT_EQ(in.read(text, 5), 5U);
  EXPECT_EQ(text, "01234.");
  EXPECT_EQ(in.read(text, ~0UL), 5U);
  EXPECT_EQ(text, "56789.");
  std::string rest = "old";
  EXPECT_EQ(in.read(rest), 0U);
  EXPECT_EQ(rest, "");
}

TEST(InputStream, ReadsAllThatIsLeft) {
  const std::string bytes = Bytes(200000);
  ChunkedStream in(bytes, 32768);
  in.skip(7);
  std::string rest = "old";
  EXPECT_EQ(in.read(rest), 199993U);
  EXPECT_EQ(rest, bytes.substr(7));
}

TEST(InputStream, AClaimedLengthCostsNoMoreThanItBrings) {
  const std::string bytes = Bytes(300000);
  for (unsigned long count : {0UL, 1UL, 65536UL, 65537UL, 299999UL, 300000UL, 300001UL, 1UL << 62, ~0UL}) {
    ChunkedStream in(bytes, 1000);
    std::vector<unsigned char> got(3, 'x');
    const unsigned long there = std::min(count, bytes.size());
    EXPECT_EQ(in.readclaimed(got, count), there) << count;
    EXPECT_EQ(std::string(got.begin(), got.end()), bytes.substr(0, there)) << count;
    EXPECT_LE(got.capacity(), 2 * there + 131072) << count;

    qzisstream sized;
    sized.set(bytes.data(), bytes.size(), false);
    std::string text = "old";
    EXPECT_EQ(sized.readclaimed(text, count), there) << count;
    EXPECT_EQ(text, bytes.substr(0, there)) << count;
  }
}

TEST(InputStream, SkipsForwardOnlyAndAtMostToTheEnd) {
  struct Case {
    long count;
    unsigned long position;
  };
  const Case cases[] = {{0, 1},  {-1, 1},  {-9223372036854775807L - 1, 1}, {1, 2},
                        {9, 10}, {10, 10}, {9223372036854775807L, 10}};
  for (const Case& each : cases) {
    ChunkedStream in("0123456789", 3);
    in.get();
    in.skip(each.count);
    EXPECT_EQ(in.tell(), each.position) << each.count;
    EXPECT_EQ(in.peek(), each.position == 10 ? -1 : static_cast<int>('0' + each.position)) << each.count;
  }
}

TEST(InputStream, LinesEndAtALineFeed) {
  struct Case {
    const char* text;
    std::vector<std::string> lines;
  };
  const Case cases[] = {
      {"", {}},
      {"\n", {""}},
      {"a", {"a"}},
      {"a\n", {"a"}},
      {"a\n\n", {"a", ""}},
      {"a\r\nb\rc", {"a\r", "b\rc"}},
      {"one\ntwo\n\nthree, longer\n", {"one", "two", "", "three, longer"}},
  };
  for (const Case& each : cases) {
    for (unsigned long chunk = 1; chunk != 9; ++chunk) {
      ChunkedStream in(each.text, chunk);
      ChunkedStream passed(each.text, chunk);
      std::vector<std::string> got;
      std::string line = "old";
      while (in.getline(line)) got.push_back(line);
      EXPECT_EQ(got, each.lines) << each.text << " in chunks of " << chunk;
      EXPECT_EQ(line, "");
      for (size_t n = 0; n != each.lines.size(); ++n) EXPECT_TRUE(passed.skipline()) << each.text;
      EXPECT_FALSE(passed.skipline()) << each.text;
    }
  }
}

TEST(InputStream, BufferedShowsWhatStandsReady) {
  ChunkedStream in("abcdef", 4);
  EXPECT_EQ(in.buffered(), "abcd");
  in.skip(1);
  EXPECT_EQ(in.buffered(), "bcd");
  in.skip(3);
  EXPECT_EQ(in.buffered(), "ef");
  in.skip(2);
  EXPECT_EQ(in.buffered(), "");
  EXPECT_TRUE(in.eof());
}

TEST(InputStream, ASourceThatCannotSeekMovesInsideItsBuffer) {
  ChunkedStream in("abcdef", 4);
  in.skip(2);
  EXPECT_TRUE(in.seek(0));
  EXPECT_EQ(in.get(), 'a');
  EXPECT_TRUE(in.seek(4));
  EXPECT_EQ(in.get(), 'e');
  EXPECT_FALSE(in.seek(3));
  EXPECT_FALSE(in.seek(7));
  EXPECT_FALSE(in.seek(-1));
  EXPECT_EQ(in.get(), 'f');
}

TEST(InputStream, OpeningAKindThatHasNoNamesFails) {
  ChunkedStream in("abc", 3);
  in.open("abc");
  EXPECT_TRUE(in.eof());
  EXPECT_TRUE(in.failed());
  EXPECT_EQ(in.tell(), 0U);
}

}  // namespace
