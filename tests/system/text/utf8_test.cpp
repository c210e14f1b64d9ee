#include "qz/system/text/utf8.h"

#include <gtest/gtest.h>

#include <string>

using namespace QZSystem;

namespace {

const unsigned char* Bytes(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.c_str()); }

// The encoding of RFC 3629, without regard to what may be encoded.
std::string Encoded(unsigned int value, int length) {
  const unsigned int leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  std::string text(1, static_cast<char>(leads[length] | value >> (6 * (length - 1))));
  for (int i = length - 2; i >= 0; --i) text += static_cast<char>(0x80 | (value >> (6 * i) & 0x3F));
  return text;
}

}  // namespace

TEST(UTF8, EveryCharacterIsValidInItsShortestFormAlone) {
  for (unsigned int value = 1; value < 0x1FFFFF; ++value) {
    const int shortest = value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    const bool character = value < 0xD800 || (value > 0xDFFF && value < 0xFFFE) || (value > 0xFFFF && value < 0x110000);
    for (int length = shortest; length <= 4; ++length) {
      const bool valid = QZIsValidUTF8(Bytes(Encoded(value, length)));
      ASSERT_EQ(valid, character && length == shortest) << value << ' ' << length;
    }
    if (value > 0x3000 && value < 0x1FFF00) value += 13;
  }
}

TEST(UTF8, BrokenSequencesAreRejected) {
  for (const char* text :
       {"\xC0\x80", "\xED\xA0\x80", "\xEF\xBF\xBE", "\xF4\x90\x80\x80", "\x80", "a\xBF", "\xC3", "\xC3z", "\xE2\x82",
        "\xE2\x82z", "\xF0\x9F\x98", "\xF8\x88\x80\x80\x80", "\xFF", "\xC3\xC3\xA9", "ok \xF0\x9F\x98\x80 \xE9"}) {
    EXPECT_FALSE(QZIsValidUTF8(Bytes(text))) << text;
  }
  for (const char* text : {"", "plain", "\xC3\xA9t\xC3\xA9", "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBD"}) {
    EXPECT_EQ(QZBytesToUTF8(text), text);
  }
  EXPECT_EQ(QZBytesToUTF8("\xC3\xA9 \x80"), "\xC3\x83\xC2\xA9 \xE2\x82\xAC");
}

TEST(UTF8, Windows1252BecomesItsCharacters) {
  std::string bytes, expected;
  for (unsigned int byte = 1; byte < 0x100; ++byte) {
    bytes += static_cast<char>(byte);
    if (byte < 0x80 || byte >= 0xA0) expected += byte < 0x80 ? bytes.substr(byte - 1) : Encoded(byte, 2);
    // The published table, 0x80 to 0x9F, with the controls U+0081, U+008D, U+008F, U+0090 and U+009D.
    if (byte == 0x80) expected += u8"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ";
  }
  EXPECT_EQ(QZWin1252ToUTF8(Bytes(bytes)), expected);
}
