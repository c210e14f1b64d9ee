#include "qz/platform/memorystream.h"

#include "streamtest.h"

namespace {

using namespace QZPlatform;

TEST(MemoryStream, EndsRightAfterTheLastByte) {
  for (unsigned long count : {0UL, 1UL, 5UL, 40000UL}) {
    for (bool copy : {false, true}) {
      const std::string bytes = streamtest::Bytes(count);
      qzisstream in;
      in.set(bytes.data(), count, copy);
      EXPECT_EQ(in.size(), count);
      for (unsigned long n = 0; n != count; ++n) {
        ASSERT_FALSE(in.eof()) << n << " of " << count;
        ASSERT_EQ(in.get(), static_cast<unsigned char>(bytes[n]));
      }
      EXPECT_TRUE(in.eof()) << count;
      EXPECT_FALSE(in._qzfill());
      EXPECT_TRUE(in.eof());
      EXPECT_EQ(in.tell(), count);
    }
  }
}

TEST(MemoryStream, IsEmptyWhenMade) {
  qzisstream in;
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.size(), 0U);
  EXPECT_EQ(in.peek(), -1);
}

TEST(MemoryStream, ReadsInPlaceWithoutACopy) {
  char block[] = "abc";
  qzisstream in;
  in.set(block, 3, false);
  EXPECT_EQ(in.get(), 'a');
  block[1] = 'x';
  EXPECT_EQ(in.get(), 'x');
  EXPECT_EQ(in.buffered().data(), block + 2);
}

TEST(MemoryStream, ACopyOutlivesItsSource) {
  for (unsigned long count : {3UL, 32768UL, 32769UL}) {
    std::string bytes = streamtest::Bytes(count);
    const std::string kept = bytes;
    qzisstream in;
    in.set(bytes.data(), count, true);
    std::fill(bytes.begin(), bytes.end(), '\0');
    std::string got;
    in.read(got);
    EXPECT_EQ(got, kept) << count;
  }
}

TEST(MemoryStream, TakesACopyOfItsOwnBytes) {
  for (unsigned long count : {100UL, 50000UL}) {
    const std::string bytes = streamtest::Bytes(count);
    qzisstream in;
    in.set(bytes);
    in.skip(7);
    const std::string_view rest = in.buffered();
    in.set(rest.data(), rest.size(), true);
    std::string got;
    in.getbuffer(got);
    EXPECT_EQ(got, bytes.substr(7)) << count;
  }
}

TEST(MemoryStream, SeeksAnywhereInItsContent) {
  qzisstream in;
  in.set("abc");
  in.skip(3);
  EXPECT_TRUE(in.seek(0));
  EXPECT_FALSE(in.eof());
  EXPECT_EQ(in.get(), 'a');
  EXPECT_TRUE(in.seek(2));
  EXPECT_EQ(in.get(), 'c');
  EXPECT_TRUE(in.seek(3));
  EXPECT_EQ(in.get(), -1);
  EXPECT_TRUE(in.eof());
  for (long outside : {-1L, 4L, 9223372036854775807L}) {
    EXPECT_FALSE(in.seek(outside)) << outside;
    EXPECT_EQ(in.tell(), 3U);
  }
}

TEST(MemoryStream, AnEmptyContentSeeksToItsStartOnly) {
  qzisstream in;
  in.set("", 0, false);
  EXPECT_TRUE(in.seek(0));
  EXPECT_FALSE(in.seek(1));
  EXPECT_TRUE(in.eof());
}

TEST(MemoryStream, GivesItsWholeContentAtAnyPosition) {
  qzisstream in;
  in.set("content");
  in.skip(4);
  std::string whole = "old";
  in.getbuffer(whole);
  EXPECT_EQ(whole, "content");
  EXPECT_EQ(in.get(), 'e');
}

TEST(MemoryStream, CopiesReadIndependently) {
  for (unsigned long count : {10UL, 60000UL}) {
    const std::string bytes = streamtest::Bytes(count);
    auto source = std::make_unique<qzisstream>();
    source->set(bytes);
    source->skip(4);
    const qzisstream copy(*source);
    qzisstream assigned;
    assigned.set("something else");
    assigned = *source;
    assigned = *&assigned;
    source.reset();
    for (qzisstream each : {copy, assigned}) {
      std::string got;
      each.getbuffer(got);
      EXPECT_EQ(got, bytes);
      EXPECT_EQ(each.size(), count);
      each.read(got);
      EXPECT_EQ(got, bytes.substr(4));
      EXPECT_TRUE(each.eof());
    }
  }
}

TEST(MemoryStream, ACopyOfAnInPlaceStreamReadsTheSameBlock) {
  char block[] = "abc";
  qzisstream in;
  in.set(block, 3, false);
  qzisstream copy(in);
  block[0] = 'x';
  EXPECT_EQ(copy.get(), 'x');
}

TEST(MemoryStream, CloseLetsGoOfTheContent) {
  qzisstream in;
  in.set(std::string(50000, 'a'));
  in.close();
  in.close();
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.size(), 0U);
  EXPECT_FALSE(in.seek(1));
  in.set("b");
  EXPECT_EQ(in.get(), 'b');
}

TEST(MemoryStream, CollectsWhatIsWritten) {
  const std::string bytes = streamtest::Bytes(100000);
  for (unsigned long step : {1UL, 999UL, 32768UL, 100000UL}) {
    qzosstream out;
    for (unsigned long at = 0; at < bytes.size(); at += step) {
      const std::string part = bytes.substr(at, step);
      ASSERT_EQ(out.write(part), part.size());
      ASSERT_EQ(out.tell(), at + part.size());
      if (step > 1) {
        ASSERT_EQ(out.str(), bytes.substr(0, at + part.size()));
      }
    }
    EXPECT_EQ(out.str(), bytes);
    EXPECT_TRUE(out.close());
    EXPECT_EQ(out.str(), bytes);
    EXPECT_EQ(out.tell(), bytes.size());
    EXPECT_EQ(out.write("x", 1), 0U);
  }
}

}  // namespace
