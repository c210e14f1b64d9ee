#include "tools/common/texttable.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr const char* gap = "  ";
constexpr const char* ellipsis = "\xE2\x80\xA6";
constexpr std::size_t widestCell = 32;
constexpr std::size_t narrowestCell = 8;

bool beginsCodePoint(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

// The text in one line, with what a terminal would act on made visible.
std::string printable(const std::string& text) {
  std::string shown;
  for (char byte : text) {
    const unsigned char code = static_cast<unsigned char>(byte);
    if (byte == '\n') {
      shown += "\\n";
    } else if (byte == '\t') {
      shown += "\\t";
    } else if (code < 32 || code == 127) {
      shown += '?';
    } else {
      shown += byte;
    }
  }
  return shown;
}

std::string cut(const std::string& text, std::size_t width) {
  if (TextWidth(text) <= width) return text;
  std::string kept;
  std::size_t taken = 0;
  for (char byte : text) {
    if (beginsCodePoint(byte) && ++taken == width) break;
    kept += byte;
  }
  return kept + ellipsis;
}

// The opening and the names, with commas between them, in lines of that width.
void writeWrapped(qzostream& out, std::string line, const std::vector<std::string>& names, unsigned int width) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string next = names[i] + (i + 1 < names.size() ? "," : "");
    if (TextWidth(line) + 1 + TextWidth(next) > width) {
      out << line << '\n';
      line.assign(1, ' ');
    }
    line += " " + next;
  }
  out << line << '\n';
}

}  // namespace

unsigned int TerminalWidth(int descriptor) {
  unsigned int columns = 0;
  const char* const wanted = std::getenv("COLUMNS");
  if (wanted && QZStringToNumber(wanted, columns) && columns > 0) return columns;
  winsize size = {};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

std::size_t TextWidth(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsCodePoint));
}

void TextTable::AddRow(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = printable(cell);
  rows.push_back(std::move(cells));
}

// The width of each column that finds room. The widest are narrowed first; then the last ones go.
std::vector<std::size_t> TextTable::fit(unsigned int width) const {
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    std::size_t widest = TextWidth(columns[i].heading);
    for (const auto& row : rows) widest = std::max(widest, TextWidth(row[i]));
    widths.push_back(std::min(widest, widestCell));
  }
  const auto total = [&] {
    std::size_t sum = 0;
    for (std::size_t each : widths) sum += each + 2;
    return sum - 2;
  };
  while (widths.size() > 1 && total() > width) {
    const auto widest = std::max_element(widths.begin(), widths.end());
    if (*widest > narrowestCell) {
      --*widest;
    } else {
      widths.pop_back();
    }
  }
  return widths;
}

void TextTable::writeLine(qzostream& out, const std::vector<std::string>& cells,
                          const std::vector<std::size_t>& widths) const {
  std::string line;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const std::string text = cut(cells[i], widths[i]);
    const std::string fill(widths[i] - TextWidth(text), ' ');
    if (i > 0) line += gap;
    line += columns[i].alignRight ? fill + text : text + fill;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << '\n';
}

void TextTable::Write(qzostream& out, unsigned int width) const {
  if (columns.empty()) return;
  const std::vector<std::size_t> widths = fit(width);
  std::vector<std::string> headings;
  for (const Column& column : columns) headings.push_back(printable(column.heading));
  writeLine(out, headings, widths);
  for (const auto& row : rows) writeLine(out, row, widths);
  if (widths.size() == columns.size()) return;
  headings.erase(headings.begin(), headings.begin() + static_cast<std::ptrdiff_t>(widths.size()));
  const std::string count = QZNumberToString(headings.size());
  writeWrapped(out, "and " + count + (headings.size() > 1 ? " more columns:" : " more column:"), headings, width);
}

}  // namespace QZTools
