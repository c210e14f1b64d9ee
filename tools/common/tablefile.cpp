#include "tools/common/tablefile.h"

#include <algorithm>
#include <unordered_set>

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

QZFieldBase makeField(const std::string& name, CellType type) {
  constexpr bool readonly = false;
  constexpr bool nullable = true;
  switch (type) {
    case CellType::Int:
      return QZField<long>(name, {}, readonly, nullable);
    case CellType::Float:
      return QZField<double>(name, {}, readonly, nullable);
    case CellType::Bool:
      return QZField<bool>(name, {}, readonly, nullable);
    case CellType::String:
      break;
  }
  return QZField<std::string>(name, {}, readonly, nullable);
}

std::string nearText(const std::string& word, const std::vector<std::string>& candidates) {
  const std::vector<std::string> near = NearWords(word, candidates);
  return near.empty() ? "the columns are " + QZStringJoin(candidates, ", ")
                      : "did you mean " + QZStringJoin(near, " or ") + "?";
}

}  // namespace

TableSource::TableSource(std::unique_ptr<Input> tableInput, char delimiter, const TableOptions& options)
    : input(std::move(tableInput)), separator(delimiter), reader(input->Stream(), delimiter) {
  readHeader();
  readAhead(options.inferRows);
  inferTypes();
  setTypes(options.types);
  makeFields(options.meta);
}

TableSource::TableSource(const TableSource& other)
    : input(std::make_unique<Input>(other.input->Name())),
      separator(other.separator),
      reader(input->Stream(), separator),
      names(other.names),
      types(other.types),
      fields(other.fields),
      nullRecord(other.nullRecord) {
  reader.KeepBlankLines(names.size() == 1);
}

std::unique_ptr<RecordSource> TableSource::ForChunks() const {
  return std::unique_ptr<RecordSource>(new TableSource(*this));
}

bool TableSource::Take(RecordChunk& chunk) {
  chunk.rows.clear();
  chunk.text.clear();
  if (!ahead.empty()) {
    chunk.rows.swap(ahead);
    return true;
  }
  return cutter.Next(*input, chunk.text, [this](std::string_view part) { return WholeRows(part, separator); });
}

void TableSource::Begin(const RecordChunk& chunk, const RecordPlace& before) {
  ahead = chunk.rows;
  input->Read(chunk.text);
  reader.Resume(before.lines, before.records + 1);
  records = before.records;
}

void TableSource::fail(unsigned long atLine, const std::string& what) const {
  throw ToolError(input->Name() + ": line " + QZNumberToString(atLine) + what);
}

void TableSource::readHeader() {
  try {
    if (!reader.Next(row)) {
      input->Finish();
      throw ToolError(input->Name() + ": has no header line");
    }
  } catch (const ToolError& error) {
    const std::string what = error.what();
    if (what.compare(0, input->Name().size(), input->Name()) == 0) throw;
    throw ToolError(input->Name() + ": " + what);
  }
  std::unordered_set<std::string> known;
  for (const CsvCell& cell : row) {
    std::string name(cell.text);
    if (name.empty()) name = "column" + QZNumberToString(names.size() + 1);
    if (!known.insert(name).second) {
      fail(reader.Line(), ": column " + name + " occurs twice; give each column a name of its own");
    }
    names.push_back(name);
  }
  reader.KeepBlankLines(names.size() == 1);
}

// One row of the file, or of those read ahead. Row and line are set.
bool TableSource::nextRow() {
  if (!ahead.empty()) {
    current = std::move(ahead.front());
    ahead.pop_front();
    row.clear();
    for (std::size_t i = 0; i < current.texts.size(); ++i) row.push_back({current.texts[i], current.quoted[i]});
    line = current.line;
    return true;
  }
  bool hasRow = false;
  try {
    hasRow = reader.Next(row);
  } catch (const ToolError& error) {
    throw ToolError(input->Name() + ": " + error.what());
  }
  if (!hasRow) {
    input->Finish();
    return false;
  }
  line = reader.Line();
  if (row.size() != names.size()) {
    throw ToolError(input->Name() + ": " + reader.Place() + ": has " + QZNumberToString(row.size()) +
                    (row.size() == 1 ? " cell" : " cells") + ", the header line has " + QZNumberToString(names.size()));
  }
  return true;
}

void TableSource::readAhead(unsigned int rows) {
  std::deque<CsvRow> kept;
  while (kept.size() < rows && nextRow()) {
    CsvRow keep;
    keep.line = line;
    for (const CsvCell& cell : row) {
      keep.texts.emplace_back(cell.text);
      keep.quoted.push_back(cell.quoted);
    }
    kept.push_back(std::move(keep));
  }
  ahead = std::move(kept);
}

void TableSource::inferTypes() {
  std::vector<TypeGuess> guesses(names.size());
  for (const CsvRow& kept : ahead) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (!kept.texts[i].empty()) guesses[i].See(kept.texts[i]);
    }
  }
  for (const TypeGuess& guess : guesses) types.push_back(guess.Type());
}

std::size_t TableSource::columnOf(const std::string& name, const char* option) const {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) {
    throw ToolError(input->Name() + ": has no column " + name + " (named in " + option + "); " + nearText(name, names));
  }
  return static_cast<std::size_t>(found - names.begin());
}

void TableSource::setTypes(const std::string& list) {
  std::vector<std::string> items;
  QZStringTokenize(items, list, ",", true);
  for (const std::string& item : items) {
    const std::size_t colon = item.rfind(':');
    CellType type = CellType::String;
    if (colon == std::string::npos || !CellTypeOf(QZStringStripWhiteSpace(item.substr(colon + 1)), type)) {
      throw ToolError("-types: '" + item + "' isn't a name, a colon and one of Int, Float, Bool, String");
    }
    types[columnOf(QZStringStripWhiteSpace(item.substr(0, colon)), "-types")] = type;
  }
}

void TableSource::makeFields(const std::map<std::string, QZFieldMeta>& meta) {
  for (std::size_t i = 0; i < names.size(); ++i) fields.push_back(makeField(names[i], types[i]));
  for (const auto& [name, fieldMeta] : meta) fields[columnOf(name, "-meta")].SetMeta(fieldMeta);
  QZRecord record;
  for (const QZFieldBase& field : fields) record.SetBytes(field, std::nullopt);
  record.ToBytes(nullRecord);
}

void TableSource::setCell(QZRecord& record, std::size_t column) {
  const CsvCell& cell = row[column];
  const bool isNull = cell.text.empty() && !(cell.quoted && types[column] == CellType::String);
  if (isNull) {
    return;
  }
  if (!CellToBytes(cell.text, types[column], bytes)) {
    const std::string type = CellTypeName(types[column]);
    fail(line, " (record " + QZNumberToString(records) + "), column " + names[column] + ": '" + std::string(cell.text) +
                   "' is no " + type + "; give the column another type with -types " + names[column] +
                   ":String, or look at more rows with -infer");
  }
  record.SetBytes(fields[column], bytes);
}

bool TableSource::Next(QZRecord& record) {
  if (!nextRow()) return false;
  ++records;
  if (!record.FromBytes(nullRecord)) record.Clear();
  for (std::size_t i = 0; i < fields.size(); ++i) setCell(record, i);
  return true;
}

std::string TableSource::Place() const {
  return input->Name() + ": line " + QZNumberToString(line) + " (record " + QZNumberToString(records) + ")";
}

TableSink::TableSink(const std::string& path, char delimiter, const std::vector<QZFieldBase>& givenColumns,
                     bool carriesMore)
    : output(path),
      separator(delimiter),
      writer(output.Stream(), delimiter),
      columns(givenColumns),
      fields(givenColumns),
      counts(carriesMore) {
  if (!columns.empty()) writeHeader();
}

TableSink::TableSink(qzostream& out, const TableSink& other)
    : output(out),
      separator(other.separator),
      writer(output.Stream(), separator),
      columns(other.columns),
      fields(other.columns),
      hasHeader(true),
      counts(other.counts) {}

std::unique_ptr<RecordSink> TableSink::ForChunks(qzostream& out) const {
  return std::unique_ptr<RecordSink>(new TableSink(out, *this));
}

void TableSink::PutBytes(std::string_view bytes, unsigned long, const Dropped& dropped) {
  output.Stream().write(bytes.data(), bytes.size());
  output.Check();
  losses.Add(dropped);
}

void TableSink::writeHeader() {
  hasHeader = true;
  for (const QZFieldBase& column : columns) writer.Cell(column.GetName());
  writer.EndRow();
}

// Finds the columns among the fields of a record that brings its own.
void TableSink::takeFields(const QZRecord& record) {
  if (!watch.See(record)) return;
  if (!hasHeader) {
    columns = watch.Fields();
    writeHeader();
  }
  fields.clear();
  for (const QZFieldBase& column : columns) {
    const auto sameName = [&](const QZFieldBase& field) { return field.GetName() == column.GetName(); };
    const auto found = std::find_if(watch.Fields().begin(), watch.Fields().end(), sameName);
    fields.push_back(found == watch.Fields().end() ? QZFieldBase() : *found);
  }
}

void TableSink::writeCell(const QZRecord& record, const QZFieldBase& field) {
  const std::optional<std::string_view> text = field.IsValid() ? texts.Of(record, field) : std::nullopt;
  if (text) {
    writer.Cell(*text);
  } else {
    writer.Null();
  }
}

void TableSink::Put(const QZRecord& record) {
  if (counts) takeFields(record);
  for (const QZFieldBase& field : fields) writeCell(record, field);
  writer.EndRow();
  output.Check();
  if (counts) losses.CountTable(record, watch, columns);
}

void TableSink::Finish() { output.Finish(); }

}  // namespace QZTools
