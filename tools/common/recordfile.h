#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow.h"
#include "tools/common/csv.h"
#include "tools/common/fieldwatch.h"

namespace QZTools {

/// How records stand in a file.
enum class Format { Csv, Tsv, Json, Binary };

/// The format of a file: `word` ("csv", "tsv", "json", "binary") where it isn't empty, else by the extension of `path`
/// (.csv .tsv .json .jsonl .qzr). Throws ToolError, naming `option`, where neither tells.
Format FormatOf(const std::string& path, const std::string& word, const std::string& option);

/// What a reader of tables is told beyond the file itself.
struct TableOptions {
  /// Rows that the types of columns are inferred from.
  unsigned int inferRows = 1000;
  /// "name:Type,name:Type": types that aren't inferred.
  std::string types;
  /// Metadata by the name of the column.
  std::map<std::string, QZDataFlow::QZFieldMeta> meta;
};

/// Records as they stand in the input, some 64 KiB of them, for another thread to read.
struct RecordChunk {
  /// Rows of a table that were read ahead; they come before the text.
  std::deque<CsvRow> rows;
  std::string text;
  /// Binary records, without bytes where one is damaged, and where each begins in the input.
  std::vector<std::vector<unsigned char>> records;
  std::vector<unsigned long> offsets;
};

/// How far the reading has come: the lines and the records before a place.
struct RecordPlace {
  unsigned long lines = 0;
  unsigned long records = 0;
};

/// A stream of records in any format, with the place of the last one for messages.
///
///     std::unique_ptr<RecordSource> source = OpenRecords(path, format, {}, progress);
///     QZRecord record;
///     while (source->Next(record)) ...
///
/// One thread at a time, const operations included.
class RecordSource {
 public:
  virtual ~RecordSource() = default;

  /// Replaces `record` by the next one; false at the end. Throws ToolError, with file, line or record number, column
  /// and what to do, for input that can't be read; the records before it have been delivered.
  virtual bool Next(QZDataFlow::QZRecord& record) = 0;

  /// Where the last record stands: "nuclides.csv: line 12 (record 11)", "big.qzr: record 7 (byte 4411)".
  virtual std::string Place() const = 0;

  /// The fields that every record will have, in the order of the columns, for a table; empty where each record says
  /// for itself.
  virtual const std::vector<QZDataFlow::QZFieldBase>& Columns() const = 0;

  /// Moves the next records into `chunk`, which is empty or has been used; false at the end. Throws ToolError where the
  /// input can't be read; what only the reading of a record finds is for those who read it. Once this has been called
  /// Next isn't any more.
  virtual bool Take(RecordChunk& chunk) = 0;

  /// Whether the input has an end that is known beforehand, as a file has and a pipe has not.
  virtual bool HasSize() const = 0;

  /// A source of the same kind that reads chunks instead of the input.
  virtual std::unique_ptr<RecordSource> ForChunks() const = 0;

  /// Goes to the first record of a chunk, which must stand while it is read; before it came what `before` says.
  /// REQUIRES: made by ForChunks.
  virtual void Begin(const RecordChunk& chunk, const RecordPlace& before) = 0;

  /// How far the reading has come.
  virtual RecordPlace Reached() const = 0;

  /// Whether a record can hold more than the cells of a table.
  bool CarriesMore() const { return Columns().empty(); }
};

/// Opens `path` ("-" is standard input) for reading. `progress` is the word of the option -progress; `task` is the name
/// shown at the bar.
std::unique_ptr<RecordSource> OpenRecords(const std::string& path, Format format, const TableOptions& options,
                                          const std::string& progress, const std::string& task);

/// What a format couldn't carry, counted while records were written.
struct Dropped {
  unsigned long recordMeta = 0;
  unsigned long fieldMeta = 0;
  unsigned long fields = 0;
  unsigned long childRecords = 0;
  unsigned long unknownSections = 0;

  void Add(const Dropped& more);

  /// Counts what a table of these columns leaves out of the record that `watch` saw last.
  void CountTable(const QZDataFlow::QZRecord& record, const FieldWatch& watch,
                  const std::vector<QZDataFlow::QZFieldBase>& columns);
  /// Counts what a JSON document leaves out of the record that `watch` saw last, and of the records inside it.
  void CountDocument(const QZDataFlow::QZRecord& record, const FieldWatch& watch);

  bool Any() const;
  /// "3 child records, 1 unknown section"
  std::string Text() const;

 private:
  // What is counted alike for all records of the same fields and metadata.
  struct Description {
    unsigned long recordMeta = 0;
    unsigned long fieldMeta = 0;
    unsigned long fields = 0;
  };

  void addDescription();
  void countInside(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field, bool hasChildren);
  void countInner(const QZDataFlow::QZRecord& record);

  Description description;
};

/// Takes records in any format. A file appears under its name only when Finish has been called; otherwise nothing is
/// left of it. One thread at a time.
class RecordSink {
 public:
  virtual ~RecordSink() = default;

  /// Writes one record. Throws ToolError where it can't be written (a full disk), ToolEnd(0) where the reader of
  /// standard output went away.
  virtual void Put(const QZDataFlow::QZRecord& record) = 0;

  /// Closes the output and gives it its name.
  virtual void Finish() = 0;

  /// What has been dropped so far.
  virtual const Dropped& Losses() const = 0;

  /// Whether the columns of a table are known, which may come with the first record; true for other formats.
  virtual bool HasColumns() const = 0;

  /// A sink that makes the same bytes of records and hands them to `out`, which must outlive it. REQUIRES: HasColumns.
  virtual std::unique_ptr<RecordSink> ForChunks(QZPlatform::qzostream& out) const = 0;

  /// Writes what a sink made by ForChunks has made of so many records, dropping `dropped`. Throws as Put does.
  virtual void PutBytes(std::string_view bytes, unsigned long count, const Dropped& dropped) = 0;

  /// The losses since the last call.
  virtual Dropped TakeLosses() = 0;
};

/// Opens `path` ("-" is standard output) for writing. `columns` are the columns of a table; where they are empty a
/// table takes those of the first record. `carriesMore` says whether the records can hold what a format drops, as those
/// from a table can't.
std::unique_ptr<RecordSink> CreateRecords(const std::string& path, Format format,
                                          const std::vector<QZDataFlow::QZFieldBase>& columns, bool carriesMore);

/// Tells in one line what was dropped, or, with `strict`, throws it as a ToolError. Does nothing where nothing was.
void ReportLosses(const RecordSink& sink, const std::string& path, bool strict);

}  // namespace QZTools
