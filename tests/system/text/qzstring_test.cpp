#include "qz/system/text/qzstring.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

using Pairs = std::vector<std::pair<const char*, const char*>>;

TEST(String, CaseIsThatOfAsciiLetters) {
  std::string all, lower, upper;
  for (int c = 0; c < 256; ++c) {
    all += static_cast<char>(c);
    lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  }
  EXPECT_EQ(QZStringLower(all), lower);
  EXPECT_EQ(QZStringUpper(all), upper);
  EXPECT_TRUE(QZStringEquals(lower, upper));
  for (const auto& [a, b] : Pairs{{"Mass", "Mas"}, {"[", "{"}, {"@", "`"}, {"1", "\x11"}, {"\xc4", "\xe4"}}) {
    EXPECT_FALSE(QZStringEquals(a, b)) << a << " and " << b;
  }
}

TEST(String, BlanksAreSpacesAndTabs) {
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"", "", "", ""},
      {" \t ", "", "", "      "},
      {" a  b ", "a  b", " a b", " a  b "},
      {"a\t \tb\t", "a\t \tb", "a b", "a         b    "},
      {"\na \n", "\na \n", "\na \n", "\na \n"}};
  for (const auto& [text, stripped, simplified, spaces] : cases) {
    EXPECT_EQ(QZStringStripWhiteSpace(text), stripped);
    EXPECT_EQ(QZStringSimplifyWhiteSpace(text), simplified);
    EXPECT_EQ(QZStringTabsToSpaces(text), spaces);
    EXPECT_EQ(QZStringTranslate(text), text);
  }
}

TEST(String, MatchTakesUpToTwoWildcards) {
  Messages messages;
  const auto matches = [](const char* pattern) { return QZStringMatch("abcb", pattern); };
  for (const char* pattern : {"abcb", "a*", "*b", "*", "**", "*c*", "a**b", "a*c*b", "abcb*", "abc*bcb", "a*b*cb"}) {
    EXPECT_TRUE(matches(pattern)) << pattern;
  }
  for (const char* pattern : {"", "ABCB", "abc", "b*", "*c", "abcba*", "a**c", "*x*", "a*a*b", "abc*bc*b", "abcb*b*",
                              "x*b*c*", "ab*x*cb", "a*b***d"}) {
    EXPECT_FALSE(matches(pattern)) << pattern;
  }
  EXPECT_TRUE(QZStringMatch("", "") && QZStringMatch("", "*") && !QZStringMatch("", "*a*"));
  EXPECT_TRUE(QZStringMatch("a*b*c*d", "a*b*c*d")) << "the same text";
  EXPECT_EQ(messages.Take(), "");
  for (const char* pattern : {"a*b*c*", "***"}) {
    EXPECT_FALSE(matches(pattern));
    EXPECT_EQ(messages.Take(), "Warning: QZStringMatch doesn't support more than two wildcards, *'s, in a pattern\n");
  }
}

TEST(String, FileExtensionPassesOverTheIgnored) {
  for (const auto& [name, extension] :
       Pairs{{"a", ""}, {"a.", ""}, {"/x.d/a", ""}, {"/d.e/A.TXT", "txt"}, {"a.b.gz", "gz"}, {".txt", "txt"}}) {
    EXPECT_EQ(QZFileExtension(name), extension) << name;
  }
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"a..txt.gz.", ",gz,,", "txt"}, {"a.txt", "gz", "txt"}, {"a.b.txt.gz", "txt,gz", "b"}, {".profile", "gz", ""},
      {"a.txt.gz", "txt,gz", ""},     {"a.txt", ",", "txt"},  {"a.txt.GZ", "Gz", "txt"},     {"noname", "x", ""}};
  for (const auto& [name, ignore, extension] : cases) {
    EXPECT_EQ(QZFileExtension(name, ignore), extension) << name << " " << ignore;
  }
  using Extensions = std::vector<std::string>;
  EXPECT_EQ(QZFileExtensions("/x.y/a..tar.GZ."), Extensions({"tar", "gz"}));
  EXPECT_EQ(QZFileExtensions(".profile"), Extensions({"profile"}));
  EXPECT_EQ(QZFileExtensions("a"), Extensions());
}

}  // namespace
}  // namespace QZSystem
