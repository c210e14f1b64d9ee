// Delimited tables: what is read is written, and read again gives the same cells.
#include "fuzz/fuzzing.h"
#include "tools/common/csv.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

struct OwnedCell {
  std::string text;
  bool quoted;
};

using Rows = std::vector<std::vector<OwnedCell>>;

bool readRows(const std::string& text, Rows& rows) {
  BytesStream in(text);
  CsvReader reader(in, ',');
  reader.KeepBlankLines(true);
  try {
    for (std::vector<CsvCell> row; reader.Next(row);) {
      rows.emplace_back();
      for (const CsvCell& cell : row) rows.back().push_back({std::string(cell.text), cell.quoted});
    }
  } catch (const ToolError&) {
    return false;
  }
  return true;
}

std::string writeRows(const Rows& rows) {
  qzosstream out;
  CsvWriter writer(out, ',');
  for (const auto& row : rows) {
    for (const OwnedCell& cell : row) {
      if (cell.text.empty() && !cell.quoted) {
        writer.Null();
      } else {
        writer.Cell(cell.text);
      }
    }
    writer.EndRow();
  }
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Rows rows;
  if (!readRows(TextOf(data, size), rows)) return 0;
  const std::string text = writeRows(rows);
  // A byte order mark that stood behind another would be taken for one.
  if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) return 0;
  Rows again;
  Require(readRows(text, again));
  Require(again.size() == rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Require(again[i].size() == rows[i].size());
    for (std::size_t j = 0; j < rows[i].size(); ++j) Require(again[i][j].text == rows[i][j].text);
  }
  return 0;
}
