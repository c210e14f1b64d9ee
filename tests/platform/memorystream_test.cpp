#include "qz/platform/memorystream.h"

#include "streamtest.h"

namespace {

using namespace streamtest;

TEST(MemoryStream, ReadsInPlaceOrFromACopyAndPassesThatOn) {
  for (unsigned long count : {3UL, 32768UL, 32769UL}) {
    for (bool copy : {false, true}) {
      std::string bytes = Bytes(count);
      const std::string expected = copy ? bytes : std::string(count, 'x');
      auto in = std::make_unique<qzisstream>();
      in->set(bytes.data(), count, copy);
      in->skip(1);
      qzisstream constructed(*in), assigned;
      assigned.set("something else");
      assigned = *in;
      assigned = *&assigned;
      in.reset();
      std::fill(bytes.begin(), bytes.end(), 'x');
      for (qzisstream* each : {&constructed, &assigned}) {
        std::string whole = "old";
        each->getbuffer(whole);
        EXPECT_TRUE(whole == expected) << count;
        EXPECT_EQ(each->size(), count);
        EXPECT_TRUE(Rest(*each) == expected.substr(1)) << count;
        EXPECT_TRUE(each->eof());
      }
    }
  }
}

TEST(MemoryStream, TakesACopyOfItsOwnBytes) {
  for (unsigned long count : {100UL, 50000UL}) {
    const std::string bytes = Bytes(count);
    qzisstream in;
    in.set(bytes);
    in.skip(7);
    const std::string_view rest = in.buffered();
    in.set(rest.data(), rest.size(), true);
    EXPECT_TRUE(Rest(in) == bytes.substr(7)) << count;
  }
}

TEST(MemoryStream, CloseLetsGoOfTheContent) {
  qzisstream in;
  EXPECT_TRUE(in.eof());
  in.set(std::string(50000, 'a'));
  in.close();
  in.close();
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(in.size(), 0U);
  EXPECT_TRUE(in.seek(0));
  EXPECT_FALSE(in.seek(1));
  in.set("b");
  EXPECT_EQ(in.get(), 'b');
}

TEST(MemoryStream, CollectsWhatIsWritten) {
  const std::string bytes = Bytes(100000);
  for (unsigned long step : {999UL, 32767UL, 32768UL, 32769UL, 100000UL}) {
    qzosstream out;
    for (unsigned long at = 0; at < bytes.size(); at += step) {
      out.write(bytes.substr(at, step));
      ASSERT_TRUE(out.str() == bytes.substr(0, at + step)) << step;
    }
    EXPECT_TRUE(out.close());
    EXPECT_TRUE(out.str() == bytes) << step;
    EXPECT_EQ(out.tell(), bytes.size());
    EXPECT_EQ(out.write("x", 1), 0U);
  }
}

}  // namespace
