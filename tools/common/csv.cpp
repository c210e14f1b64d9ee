#include "tools/common/csv.h"

#include <algorithm>
#include <cstring>

#include "tools/common/toolerror.h"

namespace QZTools {

namespace {

constexpr char quote = '"';

// The place of a byte in text from `begin` on, or the end of the text.
std::size_t find(const std::string& text, char byte, std::size_t begin) {
  if (begin >= text.size()) return text.size();
  const void* hit = std::memchr(text.data() + begin, byte, text.size() - begin);
  return hit ? static_cast<std::size_t>(static_cast<const char*>(hit) - text.data()) : text.size();
}

// Where a cell in quotes, whose text begins there, has its closing quote; the end of the text where it may go on.
std::size_t closingQuote(std::string_view text, std::size_t begin) {
  std::size_t at = text.find(quote, begin);
  while (at != std::string_view::npos && at + 1 < text.size()) {
    if (text[at + 1] != quote) return at;
    at = text.find(quote, at + 2);
  }
  return text.size();
}

}  // namespace

std::size_t WholeRows(std::string_view text, char separator) {
  const std::size_t lastEnd = text.rfind('\n');
  if (lastEnd == std::string_view::npos) return 0;
  if (text.find(quote) == std::string_view::npos) return lastEnd + 1;
  const char ends[] = {separator, '\n', '\0'};
  std::size_t whole = 0;
  std::size_t cell = 0;
  while (cell < text.size()) {
    const std::size_t from = text[cell] == quote ? closingQuote(text, cell + 1) : cell;
    const std::size_t end = text.find_first_of(ends, from);
    if (end == std::string_view::npos) break;
    cell = end + 1;
    if (text[end] == '\n') whole = cell;
  }
  return whole;
}

bool CsvReader::readLine() {
  if (!in.getline(line)) return false;
  rowLine = ++lastLine;
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (rowLine == 1 && line.compare(0, byteOrderMark.size(), byteOrderMark) == 0) line.erase(0, byteOrderMark.size());
  return true;
}

bool CsvReader::appendLine() {
  if (!in.getline(more)) return false;
  ++lastLine;
  line += '\n';
  line += more;
  return true;
}

std::string CsvReader::Place() const {
  const std::string place = "line " + std::to_string(rowLine);
  return rows < 2 ? place : place + " (record " + std::to_string(rows - 1) + ")";
}

void CsvReader::fail(const char* what) const {
  throw ToolError(Place() + ", column " + std::to_string(spans.size() + 1) + ": " + what);
}

bool CsvReader::Next(std::vector<CsvCell>& row) {
  row.clear();
  spans.clear();
  do {
    if (!readLine()) return false;
  } while (!keepBlankLines && (line.empty() || line == "\r"));
  ++rows;

  // A row has one cell more than it has delimiters, so the loop ends behind a cell that no delimiter follows.
  std::size_t begin = 0;
  for (;;) {
    const std::size_t end = begin < line.size() && line[begin] == quote ? takeQuoted(begin) : takeUnquoted(begin);
    if (end >= line.size() || line[end] != delimiter) break;
    begin = end + 1;
  }
  // Only now: a quoted cell of several lines moves the text.
  for (const Span& span : spans) row.push_back({{line.data() + span.begin, span.length}, span.quoted});
  return true;
}

std::size_t CsvReader::takeUnquoted(std::size_t begin) {
  const std::size_t end = find(line, delimiter, begin);
  std::size_t length = end - begin;
  if (end == line.size() && length > 0 && line[end - 1] == '\r') --length;
  spans.push_back({begin, length, false});
  return end;
}

// The text is moved together over the halves of doubled quotes, in place.
std::size_t CsvReader::takeQuoted(std::size_t begin) {
  const std::size_t first = begin + 1;
  std::size_t kept = first;
  std::size_t at = first;
  for (;;) {
    const std::size_t stop = find(line, quote, at);
    if (kept != at) std::memmove(line.data() + kept, line.data() + at, stop - at);
    if (stop == line.size()) {
      kept += stop - at;
      line.resize(kept);
      if (!appendLine()) fail("the quote is never closed");
      at = kept;
      continue;
    }
    kept += stop - at;
    if (stop + 1 < line.size() && line[stop + 1] == quote) {
      line[kept++] = quote;
      at = stop + 2;
      continue;
    }
    const std::size_t behind = stop + 1;
    const bool closed =
        behind == line.size() || line[behind] == delimiter || (line[behind] == '\r' && behind + 1 == line.size());
    if (!closed) fail("text stands behind the closing quote");
    spans.push_back({first, kept - first, true});
    return behind;
  }
}

void CsvWriter::Plain(std::string_view text) {
  if (!first) row += delimiter;
  first = false;
  row += text;
}

void CsvWriter::Cell(std::string_view text) {
  const auto isSpecial = [this](char byte) {
    return byte == delimiter || byte == quote || byte == '\r' || byte == '\n';
  };
  if (!text.empty() && std::none_of(text.begin(), text.end(), isSpecial)) {
    Plain(text);
    return;
  }
  Plain({&quote, 1});
  for (char byte : text) {
    if (byte == quote) row += quote;
    row += byte;
  }
  row += quote;
}

void CsvWriter::EndRow() {
  row += '\n';
  out.write(row.data(), row.size());
  row.clear();
  first = true;
}

}  // namespace QZTools
