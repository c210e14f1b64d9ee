#pragma once

#include <string>
#include <vector>

#include "qz/system.h"

namespace QZTools {

/// The columns of the terminal that a descriptor, standard output or standard error, goes to: COLUMNS where it is set
/// to a number, else what the terminal says, else 80.
unsigned int TerminalWidth(int descriptor = 1);

/// The cells that a text takes on a terminal: one for each code point of its UTF-8.
std::size_t TextWidth(const std::string& text);

/// A table of aligned columns under a heading line, made to fit a width: long cells are cut, with an ellipsis, and
/// columns that find no room are named in a line below.
///
///     TextTable table({{"name", false}, {"mass", true}});
///     table.AddRow({"H-1", "1.0078"});
///     table.Write(qzout, TerminalWidth());
///
/// One thread at a time.
class TextTable {
 public:
  struct Column {
    std::string heading;
    bool alignRight = false;
  };

  explicit TextTable(std::vector<Column> tableColumns) : columns(std::move(tableColumns)) {}

  /// REQUIRES: a cell for each column.
  void AddRow(std::vector<std::string> cells);

  /// Columns beyond the first are left out where they don't fit.
  void Write(QZPlatform::qzostream& out, unsigned int width) const;

 private:
  std::vector<std::size_t> fit(unsigned int width) const;
  void writeLine(QZPlatform::qzostream& out, const std::vector<std::string>& cells,
                 const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns;
  std::vector<std::vector<std::string>> rows;
};

}  // namespace QZTools
