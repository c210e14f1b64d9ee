#include "tools/common/csv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qz/platform.h"
#include "tools/common/toolerror.h"

using namespace QZTools;
using namespace QZPlatform;

namespace {

using Rows = std::vector<std::vector<std::string>>;

// Quoted cells are marked by a q in front.
Rows readRows(const std::string& text, char delimiter = ',', bool keepBlankLines = false) {
  qzisstream in;
  in.set(text.data(), text.size(), false);
  CsvReader reader(in, delimiter);
  reader.KeepBlankLines(keepBlankLines);
  Rows rows;
  for (std::vector<CsvCell> row; reader.Next(row);) {
    rows.emplace_back();
    for (const CsvCell& cell : row) rows.back().push_back((cell.quoted ? "q" : "") + std::string(cell.text));
  }
  return rows;
}

std::string failure(const std::string& text) {
  try {
    return readRows(text), "";
  } catch (const ToolError& error) {
    return error.what();
  }
}

TEST(Csv, ReadsRows) {
  const struct {
    const char* text;
    Rows rows;
  } cases[] = {
      {"", {}},
      {"a,b\n", {{"a", "b"}}},
      {"a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}},
      {"\xEF\xBB\xBF"
       "a,b\n",
       {{"a", "b"}}},
      {"\xEF\xBB\xBF"
       "\"a\",b\n",
       {{"qa", "b"}}},
      {"\"a,b\",c\n", {{"qa,b", "c"}}},
      {"\"say \"\"hi\"\"\",x\n", {{"qsay \"hi\"", "x"}}},
      {"\"\",\n", {{"q", ""}}},
      {"\"one\ntwo\r\nthree\",4\n5,6\n", {{"qone\ntwo\r\nthree", "4"}, {"5", "6"}}},
      {"\"a\"\"\nb\"\"\"\n", {{"qa\"\nb\""}}},
      {"a\"b,c\"\"d\n", {{"a\"b", "c\"\"d"}}},
      {"a\rb,c\r\r\n", {{"a\rb", "c\r"}}},
      {"a,b\n\n\r\nc,d\n", {{"a", "b"}, {"c", "d"}}},
      {"\"last\"", {{"qlast"}}},
  };
  for (const auto& each : cases) EXPECT_EQ(readRows(each.text), each.rows) << each.text;
  EXPECT_EQ(readRows("a\tb,c\n", '\t'), (Rows{{"a", "b,c"}}));
  EXPECT_EQ(readRows("x\n\n1\n", ',', true), (Rows{{"x"}, {""}, {"1"}}));
  EXPECT_EQ(readRows(std::string("a\0b,c\n", 6)), (Rows{{std::string("a\0b", 3), "c"}}));
}

TEST(Csv, TellsWhereARowIsBroken) {
  EXPECT_EQ(failure("a,b\n1,\"2\n3"), "line 2 (record 1), column 2: the quote is never closed");
  EXPECT_EQ(failure("a\n\"b\"c\n"), "line 2 (record 1), column 1: text stands behind the closing quote");
  EXPECT_EQ(failure("\"b\"\rc\n"), "line 1, column 1: text stands behind the closing quote");
}

TEST(Csv, CountsTheLinesInsideQuotes) {
  const std::string text = "a\n\"1\n2\n3\"\n4\n";
  qzisstream in;
  in.set(text.data(), text.size(), false);
  CsvReader reader(in, ',');
  std::vector<CsvCell> row;
  std::vector<unsigned long> lines;
  while (reader.Next(row)) lines.push_back(reader.Line());
  EXPECT_THAT(lines, testing::ElementsAre(1, 2, 5));
}

TEST(Csv, WritesWhatItReadsBack) {
  const std::vector<std::string> cells = {"plain", "", "a,b", "say \"hi\"", "one\ntwo", "\r", " blank "};
  qzosstream out;
  CsvWriter writer(out, ',');
  for (const std::string& cell : cells) writer.Cell(cell);
  writer.Null();
  writer.EndRow();
  EXPECT_EQ(out.str(), "plain,\"\",\"a,b\",\"say \"\"hi\"\"\",\"one\ntwo\",\"\r\", blank ,\n");
  EXPECT_EQ(readRows(out.str()), (Rows{{"plain", "q", "qa,b", "qsay \"hi\"", "qone\ntwo", "q\r", " blank ", ""}}));
}

TEST(Csv, CutsWholeRows) {
  const std::pair<const char*, std::size_t> cases[] = {
      {"a,b", 0},       {"a\nb", 2},       {"a,\"b\nc\"\nd", 8}, {"\"a\n", 0},  {"\"a\"\"\n\"\nb", 7},
      {"a\"b\nc\"", 4}, {"x\n\"a\"\"", 2}, {"\"a\"b\n\"c\n", 5}, {"\n\n\"", 2}, {"\"a\",\"b\r\n\"\r\n", 11}};
  for (const auto& [text, size] : cases) EXPECT_EQ(WholeRows(text, ','), size) << text;
}

}  // namespace
