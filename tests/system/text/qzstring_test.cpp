#include "qz/system/text/qzstring.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/system/text/warnings.h"

namespace QZSystem {
namespace {

TEST(String, CaseIsThatOfAsciiLetters) {
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  std::string lower = all;
  std::string upper = all;
  for (int i = 0; i < 26; ++i) {
    lower[static_cast<std::size_t>('A' + i)] = static_cast<char>('a' + i);
    upper[static_cast<std::size_t>('a' + i)] = static_cast<char>('A' + i);
  }
  EXPECT_EQ(QZStringLower(all), lower);
  EXPECT_EQ(QZStringUpper(all), upper);
  EXPECT_TRUE(QZStringEquals(lower, upper));
}

TEST(String, EqualsIgnoresTheCaseOfLettersOnly) {
  const struct {
    const char* a;
    const char* b;
    bool equal;
  } cases[] = {{"", "", true},    {"Mass", "mASS", true}, {"Mass", "Mas", false}, {"[", "{", false},
               {"@", "`", false}, {"1", "\x11", false},   {"a b", "A B", true},   {"\xc4", "\xe4", false}};
  for (const auto& c : cases) EXPECT_EQ(QZStringEquals(c.a, c.b), c.equal) << c.a << " and " << c.b;
}

TEST(String, BlanksAreSpacesAndTabs) {
  const struct {
    const char* text;
    const char* stripped;
    const char* simplified;
    const char* spaces;
  } cases[] = {{"", "", "", ""},
               {" \t ", "", "", "      "},
               {" a  b ", "a  b", " a b", " a  b "},
               {"a\t \tb\t", "a\t \tb", "a b", "a         b    "},
               {"\na \n", "\na \n", "\na \n", "\na \n"},
               {"ab", "ab", "ab", "ab"}};
  for (const auto& c : cases) {
    EXPECT_EQ(QZStringStripWhiteSpace(c.text), c.stripped);
    EXPECT_EQ(QZStringSimplifyWhiteSpace(c.text), c.simplified);
    EXPECT_EQ(QZStringTabsToSpaces(c.text), c.spaces);
    EXPECT_EQ(QZStringTranslate(c.text), c.text);
  }
}

TEST(String, MatchTakesUpToTwoWildcards) {
  const struct {
    const char* text;
    const char* pattern;
    bool match;
  } cases[] = {{"", "", true},
               {"a", "", false},
               {"", "*", true},
               {"abc", "abc", true},
               {"abc", "ABC", false},
               {"abc", "ab", false},
               {"abc", "a*", true},
               {"abc", "*c", true},
               {"abc", "b*", false},
               {"abc", "*b", false},
               {"abc", "ab*bc", true},
               {"ab", "abc*", false},
               {"abc", "*", true},
               {"abc", "**", true},
               {"abc", "a**c", true},
               {"abc", "a**d", false},
               {"abc", "*b*", true},
               {"abc", "*x*", false},
               {"abc", "a*b*c", true},
               {"abc", "a*c*c", false},
               {"abc", "ab*b*c", false},
               {"abc", "ab*x*bc", false},
               {"abc", "abc*a*", false},
               {"a*b", "a*b", true},
               {"abcbd", "a*bcb*d", true},
               {"a*b*c*d", "a*b*c*d", true},
               {"", "*a*", false},
               {"aXbYc", "a*bY*c", true}};
  Warnings warnings;
  for (const auto& c : cases) {
    EXPECT_EQ(QZStringMatch(c.text, c.pattern), c.match) << c.text << " and " << c.pattern;
  }
  EXPECT_EQ(warnings.Take(), "");
}

TEST(String, MatchWarnsOfMoreWildcardsWhereTheEndsFit) {
  Warnings warnings;
  EXPECT_FALSE(QZStringMatch("abc", "x*b*c*"));
  EXPECT_FALSE(QZStringMatch("abc", "a*b***d"));
  EXPECT_EQ(warnings.Take(), "");
  EXPECT_FALSE(QZStringMatch("abc", "a*b*c*"));
  EXPECT_EQ(warnings.Take(), "Warning: QZStringMatch doesn't support more than two wildcards, *'s, in a pattern\n");
  EXPECT_FALSE(QZStringMatch("abc", "***"));
  EXPECT_EQ(warnings.Take(), "Warning: QZStringMatch doesn't support more than two wildcards, *'s, in a pattern\n");
}

TEST(String, FileExtensionPassesOverTheIgnored) {
  const struct {
    const char* name;
    const char* ignore;
    const char* extension;
  } cases[] = {{"a.txt", "", "txt"},
               {"a", "", ""},
               {"a.", "", ""},
               {"/x.d/a", "", ""},
               {"/x.d/A.TXT", "", "txt"},
               {"a.txt.gz", "", "gz"},
               {"a.txt.gz", "gz", "txt"},
               {"a.txt.GZ", "Gz", "txt"},
               {"a.txt.gz", "txt,gz", ""},
               {"a.b.txt.gz", "txt,gz", "b"},
               {"gz", "x", ""},
               {"a.txt", "gz", "txt"},
               {".txt", "", "txt"},
               {".txt", "gz", ""},
               {"a..txt..gz.", ",gz,,", "txt"},
               {"a.txt", ",", "txt"},
               {"a.", "x", ""}};
  for (const auto& c : cases) EXPECT_EQ(QZFileExtension(c.name, c.ignore), c.extension) << c.name << " " << c.ignore;
}

TEST(String, FileExtensionsAreAllBehindTheFirstDot) {
  using Extensions = std::vector<std::string>;
  EXPECT_EQ(QZFileExtensions("A.B.c"), Extensions({"b", "c"}));
  EXPECT_EQ(QZFileExtensions("/x.y/a..tar.GZ."), Extensions({"tar", "gz"}));
  EXPECT_EQ(QZFileExtensions(".profile"), Extensions({"profile"}));
  EXPECT_EQ(QZFileExtensions("a"), Extensions());
  EXPECT_EQ(QZFileExtensions(""), Extensions());
}

}  // namespace
}  // namespace QZSystem
