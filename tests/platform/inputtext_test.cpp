#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace streamtest;

// Each case is a text with a bar where the reading stops, an arrow, and the value. The text is read over the old value
// from chunks of every size, so that a block ends at every place of it, and in place.
template <class T>
void check(const T& old, const std::vector<std::string>& cases) {
  for (const std::string& each : cases) {
    const std::size_t bar = each.find('|');
    const std::size_t arrow = each.find(" -> ", bar);
    const std::string rest = each.substr(bar + 1, arrow - bar - 1);
    const auto read = [&](qzistream& in) {
      T value = old;
      in >> value;
      EXPECT_EQ(in.tell(), bar);
      EXPECT_EQ(Rest(in), rest);
      qzosstream out;
      out << value;
      EXPECT_EQ(out.str(), each.substr(arrow + 4));
    };
    for (unsigned long chunk = 1; chunk != 12; ++chunk) {
      SCOPED_TRACE('"' + each + "\" in chunks of " + std::to_string(chunk));
      ChunkedStream in(each.substr(0, bar) + rest, chunk);
      read(in);
    }
    SCOPED_TRACE('"' + each + '"');
    qzisstream in;
    in.set(each.substr(0, bar) + rest);
    read(in);
  }
}

TEST(InputText, AnIntegerIsTheDigitsThatItsTypeHolds) {
  check<short>(7, {"32767| -> 32767", "-32768| -> -32768", "|32768 -> 0", " |-32769 -> 0", "|327670 -> 0"});
  check<int>(7, {"-2147483648| -> -2147483648", "|2147483648 -> 0", "|-2147483649 -> 0"});
  check<long>(7, {"-9223372036854775808| -> -9223372036854775808", "|9223372036854775808 -> 0"});
  check<unsigned short>(7, {"65535| -> 65535", "|65536 -> 0", "|-1 -> 0"});
  check<unsigned int>(7, {"4294967295| -> 4294967295", "|4294967296 -> 0"});
  check<unsigned long>(7, {"18446744073709551615| -> 18446744073709551615", "|18446744073709551616 -> 0"});
  check<int>(7, {" \t\r\n42|,7 -> 42", "+7|- -> 7", "0|x10 -> 0", "| -> 0", " | -> 0", "  |x1 -> 0", " |- -> 0",
                 " |+ 1 -> 0"});
}

TEST(InputText, RealNumbersAndBoolsTakeTheLongestText) {
  check<double>(7, {"1.5e3| x -> 1500", "-.5|.5 -> -0.5", "1.|e -> 1", "2e-1|e -> 0.2", "1|e+ -> 1", "0x1.8p1|, -> 3",
                    "0|xg -> 0", "inf|init -> inf", "-INFINITY|5 -> -inf", "|-e5 -> 0", "|na -> 0", "| -> 0",
                    "nan| -> nan", "nan(a_1)|x -> nan", "nan|(a- -> nan"});
  check<float>(7, {"0.1|, -> 0.1", "1e39| -> inf", " |e -> 0"});
  check<bool>(true, {"true| -> 1", "Yes|1 -> 1", "true|s -> 1", "y|e -> 1", "no|on -> 0", "off| -> 0", "FALSE|! -> 0",
                     "n| -> 0", "0| -> 0", "|\x11 -> 0", "t|ru -> 1", "1|0 -> 1", " ON|E -> 1", "f|als -> 0", "|2 -> 0",
                     " |o -> 0", "| -> 0"});
}

TEST(InputText, AStringTakesOneWordAndACharOneByte) {
  using namespace std::string_literals;
  check<std::string>("old", {" \n one| two -> one", "longer,than;one-chunk|\tx -> longer,than;one-chunk",
                             "a\0b| c -> a\0b"s, "a\vb| -> a\vb", "  | -> ", "| -> "});
  check<char>('o', {" |a ->  ", "\n| -> \n", "| -> \0"s});
  check<unsigned char>('o', {"\xff|+ -> \xff", "| -> \0"s});
  check<signed char>('o', {"\xff|+ -> \xff", "| -> \0"s});
}

TEST(InputText, AnEndlessNumberIsReadInOneGo) {
  const std::string text = std::string(3000000, '1') + "e-2999999 -" + std::string(1000000, '7');
  ChunkedStream in(text, 32768);
  double real = 0;
  int number = -1;
  in >> real >> number;
  EXPECT_NEAR(real, 1.1111111111111112, 1e-15);
  EXPECT_EQ(number, 0);
  EXPECT_TRUE(Rest(in) == "-" + std::string(1000000, '7'));
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

qzstream& rewound(qzstream& stream) {
  stream._qzseek(0);
  return stream;
}

TEST(InputText, ManipulatorsAreCalledAndTheRestGoesToAnotherStream) {
  const std::string bytes = Bytes(100000);
  ChunkedStream in(" \r\n\tx " + bytes, 1000);
  qzosstream out;
  std::string word;
  in >> qzws >> rewound >> word >> out;
  EXPECT_EQ(word, "x");
  EXPECT_TRUE(out.str() == " " + bytes);
  EXPECT_TRUE(in.eof());
}

}  // namespace
