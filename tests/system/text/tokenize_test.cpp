#include "qz/system/text/tokenize.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace QZSystem {
namespace {

using Tokens = std::vector<std::string>;

// The tokens in one text, with a bar behind each.
template <class Found>
std::string Told(const Found& tokens) {
  std::string text;
  for (const auto& token : tokens) text.append(token).append("|");
  return text;
}

// A container that holds something before, so that what stays behind shows.
Tokens used() { return {"old", "tokens", "of a line before", "that was longer", "than", "most", "", "x"}; }

// The split told plainly: byte for byte.
std::string split(const std::string& text, const std::string& delims, bool skipEmpty) {
  Tokens tokens(1);
  for (const char c : text) {
    if (delims.find(c) == std::string::npos) {
      tokens.back() += c;
    } else if (!skipEmpty || !tokens.back().empty()) {
      tokens.emplace_back();
    }
  }
  if (skipEmpty && tokens.back().empty()) tokens.pop_back();
  return Told(tokens);
}

// The forms of the plain split, which must agree.
std::string tokenize(const std::string& text, const std::string& delims, bool skipEmpty) {
  Tokens tokens = used();
  EXPECT_TRUE(QZStringTokenize(tokens, text, delims, skipEmpty));
  std::list<std::string> list(1, "old");
  EXPECT_TRUE(QZStringTokenize(list, text, delims, skipEmpty));
  EXPECT_EQ(Told(list), Told(tokens)) << text;
  std::vector<std::string_view> views(40, "old");
  const std::vector<char> exact(text.begin(), text.end());
  EXPECT_TRUE(QZStringTokenize(views, std::string_view(exact.data(), exact.size()), delims, skipEmpty));
  EXPECT_EQ(Told(views), Told(tokens)) << text;
  return Told(tokens);
}

std::string quoted(const std::string& text, const std::string& delims, const std::string& quotes, bool skipEmpty) {
  Tokens tokens = used();
  EXPECT_TRUE(QZStringTokenizeQuoted(tokens, text, delims, quotes, skipEmpty)) << text;
  return Told(tokens);
}

// Texts across the blocks in which delimiters are looked for, few delimiters and many, bytes above 127 among them.
TEST(Tokenize, AgreesWithAPlainSplitOnTextsOfEveryLength) {
  std::mt19937 random(1);
  const std::string alphabet("ab,; \t\n\0\x80\xff.", 11);
  for (const std::string& delims : {std::string(), std::string(","), std::string(",;"), std::string(" \t\n"),
                                    std::string(",; \n"), std::string(",; \t\n"), std::string("\0\x80", 2)}) {
    for (std::size_t length = 0; length < 150; ++length) {
      std::string text;
      const auto spread = length % 3 == 0 ? alphabet.size() : std::size_t{3};
      while (text.size() < length) text += alphabet[random() % spread];
      for (const bool skipEmpty : {false, true}) {
        const std::string plain = split(text, delims, skipEmpty);
        ASSERT_EQ(tokenize(text, delims, skipEmpty), plain) << text;
        if (text.empty() || delims.empty()) continue;
        ASSERT_EQ(quoted(text, delims, "", skipEmpty), plain) << text;
        ASSERT_EQ(quoted(text, delims, "'", skipEmpty), plain) << text;
      }
    }
  }
  EXPECT_EQ(tokenize(",a,,b", ",", false), "|a||b|");
  EXPECT_EQ(tokenize(",a,,b", ",", true), "a|b|");
}

TEST(Tokenize, TextMayBeATokenOfItsContainer) {
  for (std::size_t i = 0; i < 3; ++i) {
    Tokens plain(3, "a b c"), quoted = plain, words = plain, delims(3, " ");
    QZStringTokenize(plain, plain[i], " ", true);
    QZStringTokenizeQuoted(quoted, quoted[i], " ", "'", true);
    QZStringTokenizeWhitespace(words, words[i], false, 0, nullptr);
    QZStringTokenize(delims, "a b c", delims[i], true);
    for (const Tokens& tokens : {plain, quoted, words, delims}) EXPECT_EQ(Told(tokens), "a|b|c|");
  }
}

TEST(Tokenize, QuotedTokenRunsBehindItsClosingQuote) {
  const std::pair<const char*, const char*> cases[] = {
      {"a,\"b,c\",d", "a|\"b,c\"|d|"}, {"'b,c", "'b,c|"}, {"'b'',c',e", "'b'',c'|e|"}, {"'',a", "''|a|"},
      {"'a\",b',e", "'a\",b'|e|"},     {"''''", "''''|"}, {"'b,c'd,e", "'b,c'd|e|"},   {"a,'", "a|'|"},
      {",'a,b',,", "|'a,b'|||"},       {"',a", "',a|"},   {"a'b,c'd", "a'b|c'd|"},     {",,", "|||"},
      {"'b'',c", "'b'',c|"},           {"", ""}};
  for (const auto& [text, tokens] : cases) EXPECT_EQ(quoted(text, ",", "'\"", false), tokens) << text;
  EXPECT_EQ(quoted(",,'a,b',", ",", "'", true), "'a,b'|");
  EXPECT_EQ(quoted("a 'b\tc'\t'd'", " \t", "'", true), "a|'b\tc'|'d'|");
  EXPECT_EQ(quoted("'a'b'", "'", "'", false), "|a|b||") << "delimiters go before quotes";

  std::list<std::string> list(1, "old");
  EXPECT_FALSE(QZStringTokenizeQuoted(list, "a", "", "'", true));
  EXPECT_EQ(Told(list), "old|");
  EXPECT_TRUE(QZStringTokenizeQuoted(list, "'a b' c", " ", "'", true));
  EXPECT_EQ(Told(list), "'a b'|c|");
  Tokens tokens = {"old"};
  EXPECT_FALSE(QZStringTokenizeQuoted(tokens, "a", "", "'", true) || !tokens.empty());
  EXPECT_EQ(quoted("", "", "'", true), "");
}

TEST(Tokenize, CsvReadsBackWhatItJoined) {
  std::mt19937 random(2);
  Tokens tokens = used();
  for (int i = 0; i < 20000; ++i) {
    Tokens items(2 + random() % 3);
    for (std::string& item : items) {
      for (std::size_t n = random() % 5; n != 0; --n) item += "a,\" x"[random() % 5];
    }
    QZStringCSVTokenize(tokens, QZStringCSVJoin(items, ',', '"'), ',', '"');
    ASSERT_EQ(tokens, items);
  }
  EXPECT_EQ(QZStringCSVJoin({"a;", "", "b'", "'", "c,"}, ';', '\''), "'a;';;b';'''';c,") << "quotes where needed";
  EXPECT_EQ(QZStringCSVJoin({}, ',', '"'), "");
  QZStringCSVTokenize(tokens, "'a';'b''b';'';c'd;'''e'''", ';', '\'');
  EXPECT_EQ(Told(tokens), "a|b'b||c'd|'e'|");
  EXPECT_TRUE(QZStringCSVTokenize(tokens, "", ',', '"'));
  EXPECT_EQ(Told(tokens), "");
}

TEST(Tokenize, QuotesAreStrippedAndCollapsed) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"'a\"\"b'", "a\"\"b", "'a\"\"b'"}, {"'a\"", "'a\"", "'a\""}, {"''''", "''", "'''"}, {"''", "", "''"},
      {"'a''''b'", "a''''b", "'a''b'"},   {"'''a'", "''a", "''a'"}, {"'a'", "a", "'a'"},   {"'", "'", "'"},
      {"'a'''b'", "a'''b", "'a''b'"},     {"xabx", "xabx", "xabx"}, {"'''", "'", "'''"},   {"", "", ""},
      {"'a''b'", "a''b", "'a'b'"}};
  for (const auto& [text, stripped, collapsed] : cases) {
    EXPECT_EQ(QZStringStripQuotes(text, "\"'"), stripped) << text;
    EXPECT_EQ(QZStringCollapseQuotes(text, "\"'"), collapsed) << text;
  }
}

TEST(Tokenize, WhitespaceGivesRunsOfOtherBytes) {
  const std::tuple<std::string, bool, unsigned long, std::string, unsigned long> cases[] = {
      {"a\vb\xa0", false, 0, "a\vb\xa0|", 4}, {"a b c", false, 2, "a|b|", 4}, {" a b", true, 1, "|", 1},
      {"a b\t\r\nc", false, 0, "a|b|c|", 7},  {"a b  ", false, 2, "a|b|", 5}, {"   ", true, 0, "|", 3},
      {{"a b\0c", 5}, false, 0, "a|b|", 3},   {"a b  ", true, 2, "a|b||", 5}, {"   ", false, 0, "", 3},
      {"  a b ", true, 0, "|a|b||", 6},       {"a  b", true, 1, "a||", 3},    {"", true, 0, "", 0},
      {"a   b", true, 0, "a||b|", 5}};
  for (const auto& [text, keepEmpty, maxTokens, expected, expectedEnd] : cases) {
    Tokens tokens = used();
    unsigned long end = 99;
    EXPECT_TRUE(QZStringTokenizeWhitespace(tokens, text, keepEmpty, maxTokens, &end));
    EXPECT_EQ(std::pair(Told(tokens), end), std::pair(expected, expectedEnd)) << text;
  }
}

TEST(Tokenize, JoinPutsTheSeparatorBetween) {
  EXPECT_EQ(QZStringJoin(Tokens({"a", "", "b"}), ", ", false), "a, , b");
  EXPECT_EQ(QZStringJoin(std::list<std::string>{"a", "b"}, ", ", true), "a, b, ");
  EXPECT_EQ(QZStringJoin(Tokens(), "-", true), "");
}

}  // namespace
}  // namespace QZSystem
