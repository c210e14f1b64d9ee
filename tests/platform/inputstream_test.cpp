#include "qz/platform/inputstream.h"

#include <cstring>

#include "qz/platform/filestream.h"
#include "qz/platform/memorystream.h"
#include "qz/platform/wrapperstream.h"
#include "streamtest.h"

namespace {

using namespace streamtest;

// Shows a check the same bytes from each kind of source that knows its size.
template <class Check>
void forEachSizedKind(const std::string& bytes, Check check) {
  const auto show = [&](const char* kind, qzistream& in) {
    SCOPED_TRACE(std::to_string(bytes.size()) + " bytes from " + kind);
    EXPECT_EQ(in.size(), bytes.size());
    check(in);
  };
  const Folder folder;
  qzofstream out;
  out.open(folder / "a");
  EXPECT_EQ(out.write(bytes), bytes.size());
  EXPECT_TRUE(out.close());
  qzisstream memory, copy;
  qzifstream file;
  qziwrapperstream wrapper, outer;
  memory.set(bytes.data(), bytes.size(), false);
  show("memory", memory);
  copy.set(bytes);
  show("a copy", copy);
  file.open(folder / "a");
  show("a file", file);
  memory.set(bytes.data(), bytes.size(), false);
  wrapper.set(&memory, false);
  show("a wrapper", wrapper);
  file.open(folder / "a");
  wrapper.set(&file, false);
  outer.set(&wrapper, false);
  show("a wrapper of a wrapper", outer);
}

// Takes all bytes in steps of changing length.
void expectBytes(qzistream& in, const std::string& bytes) {
  std::string got;
  char room[7000];
  for (unsigned long step = 1;; step = step * 5 % 6991 + 3) {
    const int next = in.peek();
    const unsigned long count = in.read(room, step);
    EXPECT_EQ(next, count ? static_cast<unsigned char>(room[0]) : -1);
    got.append(room, count);
    EXPECT_EQ(in.tell(), got.size());
    if (count != step) break;
  }
  EXPECT_TRUE(got == bytes);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.get(), -1);
  EXPECT_FALSE(in.failed());
}

TEST(InputStream, DeliversTheSameBytesFromEachSourceWhateverTheChunks) {
  for (unsigned long size : {0UL, 1UL, 5UL, 32767UL, 32768UL, 32769UL, 65536UL, 200000UL}) {
    const std::string bytes = Bytes(size);
    forEachSizedKind(bytes, [&](qzistream& in) { expectBytes(in, bytes); });
  }
  const std::string bytes = Bytes(1000);
  for (unsigned long chunk : {1UL, 2UL, 3UL, 7UL, 499UL, 500UL, 999UL, 1000UL, 5000UL}) {
    SCOPED_TRACE("chunks of " + std::to_string(chunk));
    ChunkedStream in(bytes, chunk);
    expectBytes(in, bytes);
    EXPECT_LE(static_cast<unsigned long>(in.fills), (999 + chunk) / chunk + 3);
  }
}

TEST(InputStream, ASourceWithASizeEndsWithItsLastByteAndIsMovedAnywhere) {
  for (long size : {1L, 10L, 32768L, 100000L}) {
    const std::string bytes = Bytes(static_cast<unsigned long>(size));
    forEachSizedKind(bytes, [&](qzistream& in) {
      in.skip(size - 1);
      EXPECT_FALSE(in.eof());
      in.get();
      EXPECT_TRUE(in.eof());
      for (long position : {0L, size - 1, size / 2, 5L, 32768L, 32767L, 65536L, 1L}) {
        if (position >= size) continue;
        EXPECT_TRUE(in.seek(position)) << position;
        EXPECT_EQ(in.tell(), static_cast<unsigned long>(position));
        EXPECT_EQ(in.get(), static_cast<unsigned char>(bytes[static_cast<std::size_t>(position)])) << position;
      }
      EXPECT_TRUE(in.seek(size));
      EXPECT_EQ(in.get(), -1);
      for (long outside : {-1L, size + 1, 9223372036854775807L}) EXPECT_FALSE(in.seek(outside)) << outside;
      EXPECT_EQ(in.tell(), bytes.size());
      EXPECT_TRUE(in.seek(0));
      EXPECT_TRUE(Rest(in) == bytes);
    });
  }
}

TEST(InputStream, ASourceThatCannotSeekMovesInsideItsBuffer) {
  ChunkedStream in("abcdef", 4);
  EXPECT_EQ(in.buffered(), "abcd");
  in.skip(2);
  EXPECT_EQ(in.buffered(), "cd");
  EXPECT_TRUE(in.seek(0));
  EXPECT_EQ(in.get(), 'a');
  EXPECT_TRUE(in.seek(4));
  EXPECT_EQ(in.buffered(), "ef");
  in.skip(1);
  for (long outside : {3L, 7L, -1L}) EXPECT_FALSE(in.seek(outside)) << outside;
  EXPECT_EQ(in.get(), 'f');
  EXPECT_EQ(in.buffered(), "");
  in.open("abc");
  EXPECT_TRUE(in.eof() && in.failed()) << "it has no names";
  EXPECT_EQ(in.tell(), 0U);
}

TEST(InputStream, AnEmptyBufferAloneIsNotTheEnd) {
  ChunkedStream in("a\xff", 1);
  char room[1];
  EXPECT_EQ(in.read(room, 0), 0U);
  EXPECT_EQ(in.fills, 0);
  EXPECT_EQ(in.get(), 'a');
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(in.peek(), 255);
  EXPECT_EQ(in.get(), 255);
  EXPECT_FALSE(in.eof());  // nobody has looked yet
  EXPECT_EQ(in.peek(), -1);
  EXPECT_TRUE(in.eof());
}

TEST(InputStream, NoMoreIsReadThanThereIsRoomOrThereAreBytes) {
  ChunkedStream in("0123456789more", 4);
  std::string text(6, '.');
  EXPECT_EQ(in.read(text, 5), 5U);
  EXPECT_EQ(text, "01234.");
  EXPECT_EQ(in.read(text, ~0UL), 6U);
  EXPECT_EQ(text, "56789m");
  EXPECT_EQ(Rest(in), "ore");
  // A compiler that saw the count would warn of a copy that never happens.
  const volatile unsigned long huge = ~0UL;
  ChunkedStream again("0123456789", 3);
  char room[10];
  EXPECT_EQ(again.read(room, huge), 10U);
  EXPECT_EQ(std::string(room, 10), "0123456789");
}

TEST(InputStream, AClaimedLengthCostsNoMoreThanItBrings) {
  const std::string bytes = Bytes(300000);
  for (unsigned long count : {0UL, 1UL, 65536UL, 65537UL, 299999UL, 300000UL, 300001UL, 1UL << 62, ~0UL}) {
    const std::string expected = bytes.substr(0, count);
    ChunkedStream in(bytes, 1000);
    std::vector<unsigned char> got(3, 'x');
    EXPECT_EQ(in.readclaimed(got, count), expected.size()) << count;
    EXPECT_TRUE(std::string(got.begin(), got.end()) == expected) << count;
    EXPECT_LE(got.capacity(), 2 * expected.size() + 131072) << count;

    qzisstream sized;
    sized.set(bytes.data(), bytes.size(), false);
    std::string text = "old";
    EXPECT_EQ(sized.readclaimed(text, count), expected.size()) << count;
    EXPECT_TRUE(text == expected) << count;
  }
}

TEST(InputStream, SkipsForwardOnlyAndAtMostToTheEnd) {
  constexpr long most = 9223372036854775807L;
  const std::pair<long, const char*> cases[] = {
      {0, "bcdef"}, {-1, "bcdef"}, {-most - 1, "bcdef"}, {1, "cdef"}, {4, "f"}, {5, ""}, {6, ""}, {most, ""}};
  for (const auto& [count, rest] : cases) {
    ChunkedStream in("abcdef", 3);
    in.get();
    in.skip(count);
    EXPECT_EQ(in.tell(), 6 - std::strlen(rest)) << count;
    EXPECT_EQ(Rest(in), rest) << count;
  }
}

TEST(InputStream, LinesEndAtALineFeed) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"\n", {""}},
      {"a", {"a"}},
      {"a\n\n", {"a", ""}},
      {"a\r\nb\rc", {"a\r", "b\rc"}},
      {"one\ntwo\n\nthree, longer\n", {"one", "two", "", "three, longer"}}};
  for (const auto& [text, lines] : cases) {
    for (unsigned long chunk = 1; chunk != 9; ++chunk) {
      SCOPED_TRACE(text + (" in chunks of " + std::to_string(chunk)));
      ChunkedStream in(text, chunk), passed(text, chunk);
      std::vector<std::string> got;
      std::string line = "old";
      for (; in.getline(line); got.push_back(line)) EXPECT_TRUE(passed.skipline());
      EXPECT_FALSE(passed.skipline());
      EXPECT_EQ(got, lines);
      EXPECT_EQ(line, "");
    }
  }
}

}  // namespace
