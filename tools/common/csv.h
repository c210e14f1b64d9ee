#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "qz/platform.h"

namespace QZTools {

/// A cell of a row: its text without quotes, and whether it stood in quotes.
struct CsvCell {
  std::string_view text;
  bool quoted = false;
};

/// A row that is kept, its texts owned.
struct CsvRow {
  std::vector<std::string> texts;
  std::vector<bool> quoted;
  unsigned long line = 0;
};

/// The length of the whole rows that the text begins with; 0 where the first one may go on.
std::size_t WholeRows(std::string_view text, char separator);

/// Reads rows of delimited text (RFC 4180).
///
///     CsvReader table(in, ',');
///     std::vector<CsvCell> row;
///     while (table.Next(row)) use(table.Line(), row);
///
/// Lines end in LF or CR LF; a quoted cell may hold delimiters, doubled quotes and line ends; a UTF-8 byte order mark
/// in front of the first row is dropped. A quote inside an unquoted cell is data. One thread at a time.
class CsvReader {
 public:
  /// Reads from `source`, which must outlive the reader.
  CsvReader(QZPlatform::qzistream& source, char separator) : in(source), delimiter(separator) {}

  /// Delivers the next row; false at the end of the stream. The cells are views into the reader, good until the next
  /// call. Blank lines are passed over unless KeepBlankLines was asked for.
  ///
  /// Throws ToolError, with line, record and column number, for a quote that never closes and for text behind a closing
  /// quote.
  bool Next(std::vector<CsvCell>& row);

  /// In a table of one column a blank line is a row with an empty cell.
  void KeepBlankLines(bool keep) { keepBlankLines = keep; }

  /// Goes on in the middle of a table: so many lines and rows, the header line included, came before.
  void Resume(unsigned long lines, unsigned long rowsBefore) {
    lastLine = lines;
    rows = rowsBefore;
  }

  /// The lines that have been read so far.
  unsigned long LinesRead() const { return lastLine; }

  /// The line on which the last row began, from 1.
  unsigned long Line() const { return rowLine; }

  /// Where the last row stands: "line 1", and for a row below the header line "line 12 (record 11)".
  std::string Place() const;

 private:
  struct Span {
    std::size_t begin;
    std::size_t length;
    bool quoted;
  };

  bool readLine();
  std::size_t unquotedEnd(std::size_t begin) const;
  std::size_t takeUnquoted(std::size_t begin);
  std::size_t takeQuoted(std::size_t begin);
  bool appendLine();
  [[noreturn]] void fail(const char* what) const;

  QZPlatform::qzistream& in;
  char delimiter;
  bool keepBlankLines = false;
  std::string line;
  std::string more;
  std::vector<Span> spans;
  unsigned long rowLine = 0;
  unsigned long lastLine = 0;
  unsigned long rows = 0;
};

/// Writes rows of delimited text (RFC 4180), each closed by LF.
///
///     CsvWriter table(out, ',');
///     table.Cell("name");
///     table.Null();
///     table.EndRow();
///
/// An empty text is written as a pair of quotes, so that it differs from no value. One thread at a time.
class CsvWriter {
 public:
  CsvWriter(QZPlatform::qzostream& sink, char separator) : out(sink), delimiter(separator) {}

  /// Adds a cell, in quotes where it is empty or holds a delimiter, a quote, CR or LF.
  void Cell(std::string_view text);

  /// Adds a cell whose text needs no quotes: a number, a bool.
  void Plain(std::string_view text);

  /// Adds an empty cell, which means no value.
  void Null() { Plain({}); }

  /// Writes the row out.
  void EndRow();

 private:
  QZPlatform::qzostream& out;
  char delimiter;
  bool first = true;
  std::string row;
};

}  // namespace QZTools
