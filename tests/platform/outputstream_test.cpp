#include "qz/platform/outputstream.h"

#include <cerrno>
#include <limits>

#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;

// Takes so many bytes and then no more.
class LimitedStream : public qzostream {
 public:
  explicit LimitedStream(unsigned long most) : room(most) { open("limited"); }

  bool _qzopen(const char*) override { return true; }
  bool _qzclose() override { return closes; }
  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override {
    ++calls;
    const unsigned long taken = std::min(count, room - content.size());
    content.append(reinterpret_cast<const char*>(bytes), taken);
    return taken;
  }
  bool _qzflush() override { return flushes; }

  unsigned long room;
  std::string content;
  int calls = 0;
  bool closes = true;
  bool flushes = true;
};

template <class T>
std::string inserted(const T& value) {
  qzosstream out;
  out << value;
  return out.str();
}

TEST(OutputStream, InsertsTheShortestTextThatReadsBack) {
  EXPECT_EQ(inserted(0.1), "0.1");
  EXPECT_EQ(inserted(0.1F), "0.1");
  EXPECT_EQ(inserted(1e300), "1e+300");
  EXPECT_EQ(inserted(-0.0), "-0");
  for (double value : {1.0 / 3, 5e-324, 1.7976931348623157e308, 123456789.125, -2.5e-9}) {
    qzisstream in;
    in.set(inserted(value));
    double back = 0;
    in >> back;
    EXPECT_EQ(back, value);
  }
}

TEST(OutputStream, InsertsIntegersBoolsAndBytes) {
  EXPECT_EQ(inserted(std::numeric_limits<short>::min()), "-32768");
  EXPECT_EQ(inserted(std::numeric_limits<unsigned short>::max()), "65535");
  EXPECT_EQ(inserted(std::numeric_limits<int>::min()), "-2147483648");
  EXPECT_EQ(inserted(std::numeric_limits<unsigned int>::max()), "4294967295");
  EXPECT_EQ(inserted(std::numeric_limits<long>::min()), "-9223372036854775808");
  EXPECT_EQ(inserted(std::numeric_limits<unsigned long>::max()), "18446744073709551615");
  EXPECT_EQ(inserted(-1LL), "-1");
  EXPECT_EQ(inserted(18446744073709551615ULL), "18446744073709551615");
  EXPECT_EQ(inserted(true) + inserted(false), "10");
  EXPECT_EQ(inserted('a') + inserted(static_cast<signed char>('b')) + inserted(static_cast<unsigned char>('c')), "abc");
}

TEST(OutputStream, InsertsTextWithItsZeros) {
  EXPECT_EQ(inserted(std::string("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(inserted(std::string_view("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(inserted("text"), "text");
  EXPECT_EQ(inserted(static_cast<const char*>(nullptr)), "");
  qzosstream out;
  EXPECT_EQ(out.write(std::string("\0\0", 2)), 2U);
  out << qzendl << qzflush;
  EXPECT_EQ(out.str(), std::string("\0\0\n", 3));
}

TEST(OutputStream, PassesOnEveryByteInOrder) {
  const std::string bytes = streamtest::Bytes(300000);
  for (unsigned long step : {1UL, 1000UL, 32767UL, 32768UL, 32769UL, 100000UL}) {
    LimitedStream out(~0UL);
    for (unsigned long at = 0; at < bytes.size(); at += step) {
      const unsigned long count = std::min(step, bytes.size() - at);
      ASSERT_EQ(out.write(bytes.data() + at, count), count) << "step " << step;
      ASSERT_EQ(out.tell(), at + count) << "step " << step;
    }
    EXPECT_TRUE(out.close());
    EXPECT_EQ(out.content, bytes) << "step " << step;
    EXPECT_LE(out.calls, 20) << "step " << step;
  }
}

TEST(OutputStream, AFailedWriteStaysUntilOpen) {
  for (unsigned long room : {0UL, 1UL, 32768UL, 40000UL}) {
    LimitedStream out(room);
    unsigned long accepted = 0;
    while (out.write("0123456789", 10) == 10) accepted += 10;
    EXPECT_LE(accepted, room + 32768) << room;
    EXPECT_TRUE(out.failed() && out.eof()) << room;
    out.room = ~0UL;
    EXPECT_EQ(out.write("a", 1), 0U) << room;
    EXPECT_FALSE(out.flush()) << room;
    EXPECT_FALSE(out.close()) << room;
    EXPECT_FALSE(out.close()) << room;
    EXPECT_EQ(out.content.size(), room);
    out.open("again");
    EXPECT_FALSE(out.failed() || out.eof());
    EXPECT_EQ(out.write("a", 1), 1U);
    EXPECT_TRUE(out.close());
    EXPECT_EQ(out.content.size(), room + 1);
  }
}

TEST(OutputStream, ALargeWriteTellsHowMuchWasTaken) {
  LimitedStream out(50000);
  out << "ab";
  EXPECT_EQ(out.write(std::string(60000, 'x')), 49998U);
  EXPECT_EQ(out.tell(), 50000U);
  EXPECT_TRUE(out.failed());
}

TEST(OutputStream, FlushAndCloseTellOfTheSink) {
  LimitedStream out(~0UL);
  out << "a";
  EXPECT_TRUE(out.flush());
  EXPECT_EQ(out.content, "a");
  out.flushes = false;
  EXPECT_FALSE(out.flush());
  EXPECT_EQ(out.write("b", 1), 0U);

  LimitedStream closing(~0UL);
  closing.closes = false;
  EXPECT_FALSE(closing.close());
}

TEST(OutputStream, AClosedStreamTakesNothing) {
  LimitedStream out(~0UL);
  EXPECT_TRUE(out.close());
  EXPECT_TRUE(out.close());
  EXPECT_TRUE(out.eof());
  EXPECT_EQ(out.write("a", 1), 0U);
  EXPECT_EQ(out.error(), EBADF);
}

}  // namespace
