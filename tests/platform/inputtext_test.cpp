#include <cmath>
#include <limits>

#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;
using streamtest::ChunkedStream;

constexpr int MostChunk = 12;

// What stands behind the text that was taken.
std::string rest(qzistream& in) {
  std::string text;
  in.read(text);
  return text;
}

template <class T>
struct Case {
  std::string text;
  T value;
  std::string rest;
};

// Reads each text in chunks of every size, so that a block ends at every place of it, and in place.
template <class T>
void check(const std::vector<Case<T>>& cases) {
  for (const Case<T>& each : cases) {
    for (unsigned long chunk = 1; chunk != MostChunk; ++chunk) {
      ChunkedStream in(each.text, chunk);
      T value = T();
      in >> value;
      EXPECT_EQ(value, each.value) << '"' << each.text << "\" in chunks of " << chunk;
      EXPECT_EQ(in.tell(), each.text.size() - each.rest.size()) << '"' << each.text << "\" in chunks of " << chunk;
      EXPECT_EQ(rest(in), each.rest) << '"' << each.text << "\" in chunks of " << chunk;
    }
    qzisstream in;
    in.set(each.text);
    T value = T();
    in >> value;
    EXPECT_EQ(value, each.value) << '"' << each.text << '"';
    EXPECT_EQ(rest(in), each.rest) << '"' << each.text << '"';
  }
}

TEST(InputText, IntegersTakeTheirFullRangeAndNoMore) {
  check<short>({{"32767", 32767, ""}, {"-32768", -32768, ""}, {"32768", 0, "32768"}, {" -32769", 0, "-32769"}});
  check<int>({{"2147483647", 2147483647, ""},
              {"-2147483648", -2147483647 - 1, ""},
              {"2147483648", 0, "2147483648"},
              {"12345678901234567890123 x", 0, "12345678901234567890123 x"}});
  check<long>({{"9223372036854775807", 9223372036854775807, ""},
               {"-9223372036854775808", -9223372036854775807 - 1, ""},
               {"9223372036854775808", 0, "9223372036854775808"}});
  check<unsigned short>({{"65535", 65535, ""}, {"65536", 0, "65536"}, {"-1", 0, "-1"}});
  check<unsigned int>({{"4294967295", 4294967295U, ""}, {"4294967296", 0, "4294967296"}});
  check<unsigned long>({{"18446744073709551615", ~0UL, ""}, {"18446744073709551616", 0, "18446744073709551616"}});
}

TEST(InputText, AnIntegerEndsWhereItsDigitsEnd) {
  check<int>({{" \t\r\n42,7", 42, ",7"},
              {"+7-", 7, "-"},
              {"0x10", 0, "x10"},
              {"007.5", 7, ".5"},
              {"12 13", 12, " 13"},
              {"", 0, ""},
              {" ", 0, ""},
              {"  x1", 0, "x1"},
              {" -", 0, "-"},
              {" + 1", 0, "+ 1"},
              {"--1", 0, "--1"}});
}

TEST(InputText, RealNumbersTakeTheLongestText) {
  const double infinity = std::numeric_limits<double>::infinity();
  check<double>({{"1.5e3 x", 1500, " x"},
                 {"-.5.5", -0.5, ".5"},
                 {"1.e", 1, "e"},
                 {"1e+", 1, "e+"},
                 {"2e-1e", 0.2, "e"},
                 {"0x1.8p1,", 3, ","},
                 {"0x", 0, "x"},
                 {"0xg", 0, "xg"},
                 {"infinit", infinity, "init"},
                 {"-INFINITY5", -infinity, "5"},
                 {"1e999", infinity, ""},
                 {"+", 0, "+"},
                 {"-e5", 0, "-e5"},
                 {".", 0, "."},
                 {"in", 0, "in"},
                 {"na", 0, "na"},
                 {"", 0, ""},
                 {"1_000", 1, "_000"}});
  check<float>({{"0.1,", 0.1F, ","}, {"1e39", std::numeric_limits<float>::infinity(), ""}, {" e", 0, "e"}});
}

TEST(InputText, NotANumberMayNameItsKind) {
  const std::pair<std::string, std::string> cases[] = {
      {"nan", ""}, {"nan(a_1)x", "x"}, {"-NaN(", "("}, {"nan(a-", "(a-"}};
  for (const auto& [text, left] : cases) {
    for (unsigned long chunk = 1; chunk != MostChunk; ++chunk) {
      ChunkedStream in(text, chunk);
      double value = 0;
      in >> value;
      EXPECT_TRUE(std::isnan(value)) << text;
      EXPECT_EQ(rest(in), left) << text << " in chunks of " << chunk;
    }
  }
}

TEST(InputText, BoolTakesTheLongestWord) {
  check<bool>({{"true", true, ""},
               {"Yes1", true, "1"},
               {"t", true, ""},
               {"trues", true, "s"},
               {"tru", true, "ru"},
               {"10", true, "0"},
               {"on", true, ""},
               {" ONE", true, "E"},
               {"off!", false, "!"},
               {"n", false, ""},
               {"fals", false, "als"},
               {"2", false, "2"},
               {" o", false, "o"},
               {"", false, ""}});
}

TEST(InputText, AStringTakesOneWord) {
  check<std::string>({{" \n one two", "one", " two"},
                      {"longer,than;one-chunk\tx", "longer,than;one-chunk", "\tx"},
                      {std::string("a\0b c", 5), std::string("a\0b", 3), " c"},
                      {"a\vb", "a\vb", ""},
                      {"  ", "", ""},
                      {"", "", ""}});
}

TEST(InputText, EachCharKindTakesOneByte) {
  check<char>({{" a", ' ', "a"}, {"\n", '\n', ""}, {"", '\0', ""}});
  check<unsigned char>({{"\xff"
                         "1",
                         255, "1"},
                        {"", 0, ""}});
  check<signed char>({{"\xff"
                       "1",
                       -1, "1"},
                      {"", 0, ""}});
}

TEST(InputText, AFailureSetsTheTarget) {
  ChunkedStream in("x", 1);
  int number = 7;
  double real = 7;
  bool flag = true;
  in >> number >> real >> flag;
  EXPECT_EQ(number, 0);
  EXPECT_EQ(real, 0);
  EXPECT_FALSE(flag);
  std::string word = "old";
  in >> word >> word;
  EXPECT_EQ(word, "");
}

TEST(InputText, ValuesFollowEachOtherOverBlockEnds) {
  std::string text;
  for (int n = 0; n != 20000; ++n) text += std::to_string(n) + (n % 3 ? " " : ".5\n");
  for (unsigned long chunk : {1UL, 7UL, 4096UL, 32768UL}) {
    ChunkedStream in(text, chunk);
    for (int n = 0; n != 20000; ++n) {
      double value = -1;
      in >> value;
      ASSERT_EQ(value, n % 3 ? n : n + 0.5) << "chunk " << chunk;
    }
  }
}

TEST(InputText, AnEndlessNumberIsReadInOneGo) {
  const std::string text = std::string(3000000, '1') + "e-2999999 -" + std::string(1000000, '7');
  ChunkedStream in(text, 32768);
  double real = 0;
  int number = -1;
  in >> real >> number;
  EXPECT_NEAR(real, 1.1111111111111112, 1e-15);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(in.get(), '-');
  in.skip(999999);
  EXPECT_EQ(in.get(), '7');
  EXPECT_EQ(in.get(), -1);
}

TEST(InputText, ALookAheadKeepsPositionsAndSeeks) {
  ChunkedStream in("12 -abc", 4);
  int value = 0;
  in >> value >> value;  // the second looks over the block's end and takes nothing
  EXPECT_EQ(in.tell(), 3U);
  EXPECT_EQ(in.get(), '-');
  EXPECT_TRUE(in.seek(3));
  EXPECT_EQ(in.buffered(), "-abc");
  EXPECT_FALSE(in.seek(0));
}

TEST(InputText, TheRestGoesToAnotherStream) {
  const std::string text = "x " + streamtest::Bytes(100000);
  ChunkedStream in(text, 1000);
  qzosstream out;
  std::string word;
  in >> word >> out;
  EXPECT_EQ(out.str(), text.substr(1));
  EXPECT_TRUE(in.eof());
}

qzstream& rewound(qzstream& stream) {
  stream._qzseek(0);
  return stream;
}

TEST(InputText, ManipulatorsAreCalled) {
  ChunkedStream in("  \r\n\tx", 2);
  in >> qzws >> rewound;
  EXPECT_EQ(in.get(), 'x');
  in >> qzws;
  EXPECT_TRUE(in.eof());
}

}  // namespace
