#include "qz/platform/outputstream.h"

#include <limits>

#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace streamtest;

// Takes so many bytes and then no more.
class LimitedStream : public qzostream {
 public:
  explicit LimitedStream(unsigned long most = ~0UL) : room(most) { open("limited"); }

  bool _qzopen(const char*) override { return true; }
  bool _qzclose() override { return closes; }
  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override {
    const unsigned long taken = std::min(count, room - content.size());
    content.append(reinterpret_cast<const char*>(bytes), taken);
    return taken;
  }
  bool _qzflush() override { return flushes; }

  unsigned long room;
  std::string content;
  bool closes = true;
  bool flushes = true;
};

template <class T>
std::string inserted(const T& value) {
  qzosstream out;
  out << value;
  return out.str();
}

template <class Integer>
void expectLimitsInserted() {
  for (const Integer value : {std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max()})
    EXPECT_EQ(inserted(value), std::to_string(value));
}

TEST(OutputStream, InsertsNumbersAndBytes) {
  expectLimitsInserted<short>();
  expectLimitsInserted<unsigned short>();
  expectLimitsInserted<int>();
  expectLimitsInserted<unsigned int>();
  expectLimitsInserted<long>();
  expectLimitsInserted<unsigned long>();
  expectLimitsInserted<long long>();
  expectLimitsInserted<unsigned long long>();
  EXPECT_EQ(inserted(0.1) + inserted(0.1F), "0.10.1");
  EXPECT_EQ(inserted(1e300), "1e+300");
  EXPECT_EQ(inserted(true) + inserted(false), "10");
  EXPECT_EQ(inserted('a') + inserted(static_cast<signed char>('b')) + inserted(static_cast<unsigned char>('c')), "abc");
}

TEST(OutputStream, InsertsTextWithItsZeros) {
  EXPECT_EQ(inserted(std::string("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(inserted(std::string_view("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(inserted("text"), "text");
  EXPECT_EQ(inserted(static_cast<const char*>(nullptr)), "");
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
    for (int time : {1, 2}) EXPECT_FALSE(out.close()) << room << ", time " << time;
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
  LimitedStream out;
  out << "a" << qzendl << "b" << qzflush;
  EXPECT_EQ(out.content, "a\nb");
  out.flushes = false;
  EXPECT_FALSE(out.flush());
  EXPECT_EQ(out.write("b", 1), 0U);

  LimitedStream closing;
  closing.closes = false;
  EXPECT_FALSE(closing.close());
  LimitedStream closed;
  for (int time : {1, 2}) EXPECT_TRUE(closed.close()) << time;
  EXPECT_TRUE(closed.eof());
  EXPECT_EQ(closed.write("a", 1), 0U);
  EXPECT_EQ(closed.error(), EBADF);
}

}  // namespace
