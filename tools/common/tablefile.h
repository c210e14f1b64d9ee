#pragma once

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/common/celltype.h"
#include "tools/common/chunkcutter.h"
#include "tools/common/csv.h"
#include "tools/common/display.h"
#include "tools/common/fieldwatch.h"
#include "tools/common/files.h"
#include "tools/common/recordfile.h"

namespace QZTools {

/// Records from the rows of a delimited table. The first line names the columns; an empty name becomes "column" and the
/// column's number. Empty cells are null; an empty cell in quotes is an empty text in a column of strings. One thread
/// at a time, const operations included.
class TableSource : public RecordSource {
 public:
  /// Reads the header line and the rows that the types are inferred from. Throws ToolError for what can't be read.
  TableSource(std::unique_ptr<Input> tableInput, char delimiter, const TableOptions& options);

  bool Next(QZDataFlow::QZRecord& record) override;
  std::string Place() const override;
  const std::vector<QZDataFlow::QZFieldBase>& Columns() const override { return fields; }
  bool Take(RecordChunk& chunk) override;
  bool HasSize() const override { return input->HasSize(); }
  std::unique_ptr<RecordSource> ForChunks() const override;
  void Begin(const RecordChunk& chunk, const RecordPlace& before) override;
  RecordPlace Reached() const override { return {reader.LinesRead(), records}; }

 private:
  // Reads chunks of the other one.
  explicit TableSource(const TableSource& other);

  void readHeader();
  void readAhead(unsigned int rows);
  void inferTypes();
  void setTypes(const std::string& list);
  void makeFields(const std::map<std::string, QZDataFlow::QZFieldMeta>& meta);
  bool nextRow();
  void setCell(QZDataFlow::QZRecord& record, std::size_t column);
  std::size_t columnOf(const std::string& name, const char* option) const;
  [[noreturn]] void fail(unsigned long atLine, const std::string& what) const;

  std::unique_ptr<Input> input;
  char separator;
  ChunkCutter cutter;
  CsvReader reader;
  std::vector<std::string> names;
  std::vector<CellType> types;
  std::vector<QZDataFlow::QZFieldBase> fields;
  // The stored form of a record of which all fields are null: every record begins as it.
  std::vector<unsigned char> nullRecord;
  std::deque<CsvRow> ahead;
  CsvRow current;
  std::vector<CsvCell> row;
  std::vector<unsigned char> bytes;
  unsigned long line = 0;
  unsigned long records = 0;
};

/// Records as rows of a delimited table whose columns are given or those of the first record. A column takes the value
/// of the field of its name, whatever its type. One thread at a time.
class TableSink : public RecordSink {
 public:
  TableSink(const std::string& path, char delimiter, const std::vector<QZDataFlow::QZFieldBase>& givenColumns,
            bool carriesMore);

  void Put(const QZDataFlow::QZRecord& record) override;
  void Finish() override;
  const Dropped& Losses() const override { return losses; }
  bool HasColumns() const override { return hasHeader; }
  std::unique_ptr<RecordSink> ForChunks(QZPlatform::qzostream& out) const override;
  void PutBytes(std::string_view bytes, unsigned long count, const Dropped& dropped) override;
  Dropped TakeLosses() override { return std::exchange(losses, {}); }

 private:
  // Puts rows alone, under the columns of the other one.
  TableSink(QZPlatform::qzostream& out, const TableSink& other);

  void writeHeader();
  void takeFields(const QZDataFlow::QZRecord& record);
  void writeCell(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field);

  Output output;
  char separator;
  CsvWriter writer;
  std::vector<QZDataFlow::QZFieldBase> columns;
  // For each column the field of its name in the present record; an invalid one where there is none.
  std::vector<QZDataFlow::QZFieldBase> fields;
  FieldWatch watch;
  ValueText texts;
  bool hasHeader = false;
  bool counts;
  Dropped losses;
};

}  // namespace QZTools
