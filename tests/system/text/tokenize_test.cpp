#include "qz/system/text/tokenize.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace QZSystem {
namespace {

using Tokens = std::vector<std::string>;

// A container that holds something before, so that what stays behind shows.
Tokens used() { return {"old", "tokens", "of a line before", "that was longer", "than", "most", "", "x"}; }

// The split told plainly: byte for byte.
Tokens split(const std::string& text, const std::string& delims, bool skipEmpty) {
  Tokens all(1);
  for (const char c : text) {
    if (delims.find(c) == std::string::npos) {
      all.back() += c;
    } else {
      all.emplace_back();
    }
  }
  Tokens tokens;
  for (const std::string& token : all) {
    if (!skipEmpty || !token.empty()) tokens.push_back(token);
  }
  return tokens;
}

// The four forms of the plain split, which must agree.
Tokens tokenize(const std::string& text, const std::string& delims, bool skipEmpty) {
  Tokens tokens = used();
  EXPECT_TRUE(QZStringTokenize(tokens, text, delims, skipEmpty));
  std::list<std::string> list(1, "old");
  EXPECT_TRUE(QZStringTokenize(list, text, delims, skipEmpty));
  EXPECT_EQ(Tokens(list.begin(), list.end()), tokens) << text;
  std::vector<std::string_view> views(40, "old");
  const std::vector<char> exact(text.begin(), text.end());
  EXPECT_TRUE(QZStringTokenize(views, std::string_view(exact.data(), exact.size()), delims, skipEmpty));
  EXPECT_EQ(Tokens(views.begin(), views.end()), tokens) << text;
  return tokens;
}

Tokens quoted(const std::string& text, const std::string& delims, const std::string& quotes, bool skipEmpty) {
  Tokens tokens = used();
  EXPECT_TRUE(QZStringTokenizeQuoted(tokens, text, delims, quotes, skipEmpty)) << text;
  std::list<std::string> list(1, "old");
  EXPECT_TRUE(QZStringTokenizeQuoted(list, text, delims, quotes, skipEmpty)) << text;
  EXPECT_EQ(Tokens(list.begin(), list.end()), tokens) << text;
  return tokens;
}

Tokens csv(const std::string& text) {
  Tokens tokens = used();
  EXPECT_TRUE(QZStringCSVTokenize(tokens, text, ',', '"')) << text;
  return tokens;
}

TEST(Tokenize, EveryDelimiterEndsAToken) {
  EXPECT_EQ(tokenize("", ",", false), Tokens({""}));
  EXPECT_EQ(tokenize("a,,b", ",", false), Tokens({"a", "", "b"}));
  EXPECT_EQ(tokenize(",a,", ",", false), Tokens({"", "a", ""}));
  EXPECT_EQ(tokenize("", ",", true), Tokens());
  EXPECT_EQ(tokenize(",,", ",", true), Tokens());
  EXPECT_EQ(tokenize(",,a,,b,,", ",", true), Tokens({"a", "b"}));
  EXPECT_EQ(tokenize("a,b", "", false), Tokens({"a,b"}));
  EXPECT_EQ(tokenize("a,b", "", true), Tokens({"a,b"}));
  EXPECT_EQ(tokenize("", "", false), Tokens({""}));
  EXPECT_EQ(tokenize("", "", true), Tokens());
  EXPECT_EQ(tokenize(std::string("a\0b", 3), std::string(1, '\0'), true), Tokens({"a", "b"}));
}

// Texts across the blocks in which delimiters are looked for, few delimiters and many, bytes above 127 among them.
TEST(Tokenize, AgreesWithAPlainSplitOnTextsOfEveryLength) {
  std::mt19937 random(1);
  const std::string alphabet("ab,; \t\n\0\x80\xff.", 11);
  for (const std::string& delims : {std::string(","), std::string(",;"), std::string(" \t\n"), std::string(",; \n"),
                                    std::string(",; \t\n"), std::string("\0\x80", 2), std::string("\xff")}) {
    for (std::size_t length = 0; length < 150; ++length) {
      std::string text;
      const auto spread = length % 3 == 0 ? alphabet.size() : std::size_t{3};
      while (text.size() < length) text += alphabet[random() % spread];
      for (const bool skipEmpty : {false, true}) {
        ASSERT_EQ(tokenize(text, delims, skipEmpty), split(text, delims, skipEmpty)) << text;
        if (text.empty()) continue;
        ASSERT_EQ(quoted(text, delims, "", skipEmpty), split(text, delims, skipEmpty)) << text;
        ASSERT_EQ(quoted(text, delims, "'", skipEmpty), split(text, delims, skipEmpty)) << text;
      }
    }
  }
}

TEST(Tokenize, TextMayBeATokenOfItsContainer) {
  for (std::size_t i = 0; i < 3; ++i) {
    Tokens tokens = {"a,b,c,d", "a,b,c,d", "a,b,c,d"};
    QZStringTokenize(tokens, tokens[i], ",", true);
    EXPECT_EQ(tokens, Tokens({"a", "b", "c", "d"}));
    tokens = {"'a,b',c", "'a,b',c", "'a,b',c"};
    QZStringTokenizeQuoted(tokens, tokens[i], ",", "'", true);
    EXPECT_EQ(tokens, Tokens({"'a,b'", "c"}));
    tokens = {"a b c", "a b c", "a b c"};
    QZStringTokenizeWhitespace(tokens, tokens[i], false, 0, nullptr);
    EXPECT_EQ(tokens, Tokens({"a", "b", "c"}));
    tokens = {",", ",", ","};
    QZStringTokenize(tokens, "a,b", tokens[i], true);
    EXPECT_EQ(tokens, Tokens({"a", "b"}));
  }
}

TEST(Tokenize, ViewsPointIntoTheText) {
  const std::string text = "ab,cd";
  std::vector<std::string_view> views;
  QZStringTokenize(views, text, ",");
  ASSERT_EQ(views.size(), 2u);
  EXPECT_EQ(views[1].data(), text.data() + 3);
}

TEST(Tokenize, QuotedTokenRunsBehindItsClosingQuote) {
  const struct {
    const char* text;
    Tokens all;
    Tokens filled;
  } cases[] = {
      {"", {}, {}},
      {"a,\"b,c\",d", {"a", "\"b,c\"", "d"}, {"a", "\"b,c\"", "d"}},
      {"'b,c'd,e", {"'b,c'd", "e"}, {"'b,c'd", "e"}},
      {"'b'',c',e", {"'b'',c'", "e"}, {"'b'',c'", "e"}},
      {"'b,c", {"'b,c"}, {"'b,c"}},
      {"'b'',c", {"'b'',c"}, {"'b'',c"}},
      {"a,'", {"a", "'"}, {"a", "'"}},
      {"',a", {"',a"}, {"',a"}},
      {"'',a", {"''", "a"}, {"''", "a"}},
      {"a'b,c'd", {"a'b", "c'd"}, {"a'b", "c'd"}},
      {"'a\"b,c\"d',e", {"'a\"b,c\"d'", "e"}, {"'a\"b,c\"d'", "e"}},
      {"''''", {"''''"}, {"''''"}},
      {",,'a,b',,", {"", "", "'a,b'", "", ""}, {"'a,b'"}},
      {",,", {"", "", ""}, {}},
      {"a,", {"a", ""}, {"a"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(quoted(c.text, ",", "'\"", false), c.all) << c.text;
    EXPECT_EQ(quoted(c.text, ",", "'\"", true), c.filled) << c.text;
  }
  EXPECT_EQ(quoted("a 'b\tc'\t'd'", " \t", "'", true), Tokens({"a", "'b\tc'", "'d'"}));
  EXPECT_EQ(quoted("'a'b'", "'", "'", false), Tokens({"", "a", "b", ""}));
}

TEST(Tokenize, QuotedWithoutDelimitersFails) {
  Tokens tokens = {"old"};
  EXPECT_FALSE(QZStringTokenizeQuoted(tokens, "a", "", "'", true));
  EXPECT_EQ(tokens, Tokens());
  std::list<std::string> list(1, "old");
  EXPECT_FALSE(QZStringTokenizeQuoted(list, "a", "", "'", true));
  EXPECT_EQ(list, std::list<std::string>(1, "old"));
  EXPECT_TRUE(QZStringTokenizeQuoted(list, "", "", "'", true));
  EXPECT_TRUE(list.empty());
}

TEST(Tokenize, CsvTakesTheQuotingOff) {
  EXPECT_EQ(csv("a,\"b,c\",d"), Tokens({"a", "b,c", "d"}));
  EXPECT_EQ(csv("\"a\"\"b\""), Tokens({"a\"b"}));
  EXPECT_EQ(csv("\"\"\"\""), Tokens({"\""}));
  EXPECT_EQ(csv("\"\""), Tokens({""}));
  EXPECT_EQ(csv("\"\"\"a\"\"\""), Tokens({"\"a\""}));
  EXPECT_EQ(csv("a\"b,c"), Tokens({"a\"b", "c"}));
  EXPECT_EQ(csv(""), Tokens());
  EXPECT_EQ(csv(",a,"), Tokens({"", "a", ""}));
  Tokens tokens;
  QZStringCSVTokenize(tokens, "a;'b;c'", ';', '\'');
  EXPECT_EQ(tokens, Tokens({"a", "b;c"}));
}

TEST(Tokenize, CsvReadsBackWhatItJoined) {
  std::mt19937 random(2);
  const char alphabet[] = "a,\" x";
  for (int i = 0; i < 20000; ++i) {
    Tokens items(2 + random() % 3);
    for (std::string& item : items) {
      for (std::size_t n = random() % 5; n != 0; --n) item += alphabet[random() % 5];
    }
    const std::string line = QZStringCSVJoin(items, ',', '"');
    ASSERT_EQ(csv(line), items) << line;
  }
}

TEST(Tokenize, CsvQuotesOnlyWhatNeedsIt) {
  EXPECT_EQ(QZStringCSVQuote("", ',', '"'), "");
  EXPECT_EQ(QZStringCSVQuote("a\"b", ',', '"'), "a\"b");
  EXPECT_EQ(QZStringCSVQuote("a,b\"", ',', '"'), "\"a,b\"\"\"");
  EXPECT_EQ(QZStringCSVQuote("\"a", ',', '"'), "\"\"\"a\"");
  EXPECT_EQ(QZStringCSVJoin({}, ',', '"'), "");
  EXPECT_EQ(QZStringCSVJoin({"a", "", "b,c"}, ',', '"'), "a,,\"b,c\"");
  EXPECT_EQ(QZStringCSVJoin({"a;", "b"}, ';', '\''), "'a;';b");
}

TEST(Tokenize, QuotesAreStrippedAndCollapsed) {
  const struct {
    const char* text;
    const char* stripped;
    const char* collapsed;
  } cases[] = {{"'a'", "a", "'a'"},
               {"'", "'", "'"},
               {"''", "", "''"},
               {"'a\"", "'a\"", "'a\""},
               {"xax", "xax", "xax"},
               {"", "", ""},
               {"'''", "'", "'''"},
               {"''''", "''", "'''"},
               {"'a''b'", "a''b", "'a'b'"},
               {"'a'''b'", "a'''b", "'a''b'"},
               {"'a''''b'", "a''''b", "'a''b'"},
               {"'a\"\"b'", "a\"\"b", "'a\"\"b'"},
               {"'''a'", "''a", "''a'"}};
  for (const auto& c : cases) {
    EXPECT_EQ(QZStringStripQuotes(c.text, "\"'"), c.stripped) << c.text;
    EXPECT_EQ(QZStringCollapseQuotes(c.text, "\"'"), c.collapsed) << c.text;
    EXPECT_EQ(QZStringStripQuotes(c.text, ""), c.text);
    EXPECT_EQ(QZStringCollapseQuotes(c.text, ""), c.text);
  }
}

TEST(Tokenize, WhitespaceGivesRunsOfOtherBytes) {
  const struct {
    std::string text;
    bool keepEmpty;
    unsigned long maxTokens;
    Tokens tokens;
    unsigned long end;
  } cases[] = {{"a b\t\r\nc", false, 0, {"a", "b", "c"}, 7},
               {"a   b", true, 0, {"a", "", "b"}, 5},
               {"  a b ", true, 0, {"", "a", "b", ""}, 6},
               {" a  ", true, 0, {"", "a", ""}, 4},
               {"   ", true, 0, {""}, 3},
               {"   ", false, 0, {}, 3},
               {"", true, 0, {}, 0},
               {"a b c", false, 2, {"a", "b"}, 4},
               {"a b  ", false, 2, {"a", "b"}, 5},
               {"a b  ", true, 2, {"a", "b", ""}, 5},
               {" a b", true, 1, {""}, 1},
               {"a  b", true, 1, {"a", ""}, 3},
               {"a\v\fb\xa0", false, 0, {"a\v\fb\xa0"}, 5},
               {std::string("a b\0c d", 7), false, 0, {"a", "b"}, 3}};
  for (const auto& c : cases) {
    Tokens tokens = used();
    unsigned long end = 99;
    EXPECT_TRUE(QZStringTokenizeWhitespace(tokens, c.text, c.keepEmpty, c.maxTokens, &end));
    EXPECT_EQ(tokens, c.tokens) << c.text;
    EXPECT_EQ(end, c.end) << c.text;
  }
}

TEST(Tokenize, JoinPutsTheSeparatorBetween) {
  EXPECT_EQ(QZStringJoin(Tokens({"a", "", "b"}), ", ", false), "a, , b");
  EXPECT_EQ(QZStringJoin(std::list<std::string>{"a", "b"}, ", ", true), "a, b, ");
  EXPECT_EQ(QZStringJoin(Tokens({""}), "-", true), "-");
  EXPECT_EQ(QZStringJoin(Tokens(), "-", true), "");
  EXPECT_EQ(QZStringJoin(std::list<std::string>(), "-", true), "");
}

}  // namespace
}  // namespace QZSystem
