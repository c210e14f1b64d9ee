#include "tools/common/recordfile.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "tools/common/streamfile.h"
#include "tools/common/tablefile.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

struct FormatName {
  const char* name;
  Format format;
};

constexpr FormatName words[] = {
    {"csv", Format::Csv}, {"tsv", Format::Tsv}, {"json", Format::Json}, {"binary", Format::Binary}};

constexpr FormatName extensions[] = {{"csv", Format::Csv},
                                     {"tsv", Format::Tsv},
                                     {"json", Format::Json},
                                     {"jsonl", Format::Json},
                                     {"qzr", Format::Binary}};

// The one piece of record metadata that a JSON document has.
constexpr unsigned int sourceId = 0x01000001;

char delimiterOf(Format format) { return format == Format::Tsv ? '\t' : ','; }

// The sections of a record's bytes that this version doesn't know.
unsigned long countUnknownSections(const QZRecord& record) {
  static constexpr std::string_view known[] = {"version", "fields", "meta", "data", "children"};
  const std::vector<unsigned char> bytes = record.ToBytes();
  QZReadBuffer buffer(bytes);
  QZReadBuffer content;
  std::string name;
  if (!buffer.Unwrap(name, content)) return 0;
  unsigned long count = 0;
  QZReadBuffer section;
  while (content.IsValid() && content.Unwrap(name, section)) {
    if (std::find(std::begin(known), std::end(known), name) == std::end(known)) ++count;
  }
  return count;
}

bool hasMeta(const QZMeta& meta) { return !meta.GetOptions().empty() || !meta.GetAttributes(0).empty(); }

// "1 record", "2 records"; nothing for none.
void addCount(std::vector<std::string>& parts, const char* before, unsigned long count, const char* one) {
  if (count > 0) parts.push_back(before + QZNumberToString(count) + " " + one + (count > 1 ? "s" : ""));
}

}  // namespace

Format FormatOf(const std::string& path, const std::string& word, const std::string& option) {
  for (const FormatName& each : words) {
    if (word == each.name) return each.format;
  }
  const std::string extension = QZFileExtension(path);
  for (const FormatName& each : extensions) {
    if (extension == each.name) return each.format;
  }
  throw ToolError(path + ": the name doesn't tell the format; give " + option + " csv, tsv, json or binary");
}

void Dropped::CountTable(const QZRecord& record, const std::vector<QZFieldBase>& columns) {
  std::set<std::string_view> kept;
  for (const QZFieldBase& column : columns) kept.insert(column.GetName());
  for (const QZFieldBase& field : record.GetFields()) {
    if (kept.count(field.GetName()) == 0) ++fields;
    if (hasMeta(field.PeekMeta())) ++fieldMeta;
    childRecords += record.GetChildRecords(field).size();
  }
  if (hasMeta(record.GetRecordMeta())) ++recordMeta;
  unknownSections += countUnknownSections(record);
}

void Dropped::CountDocument(const QZRecord& record) {
  const QZRecordMeta meta = record.GetRecordMeta();
  const auto attributes = meta.GetAttributes(0);
  const bool more =
      std::any_of(attributes.begin(), attributes.end(), [](const auto& a) { return a.first != sourceId; });
  if (more || !meta.GetOptions().empty()) ++recordMeta;
  unknownSections += countUnknownSections(record);
}

bool Dropped::Any() const { return (recordMeta | fieldMeta | fields | childRecords | unknownSections) != 0; }

std::string Dropped::Text() const {
  std::vector<std::string> parts;
  addCount(parts, "the metadata of ", recordMeta, "record");
  addCount(parts, "the metadata of ", fieldMeta, "field");
  addCount(parts, "", fields, "field");
  addCount(parts, "", childRecords, "child record");
  addCount(parts, "", unknownSections, "unknown section");
  return QZStringJoin(parts, ", ");
}

std::unique_ptr<RecordSource> OpenRecords(const std::string& path, Format format, const TableOptions& options,
                                          const std::string& progress, const std::string& task) {
  auto input = std::make_unique<Input>(path, progress, task);
  switch (format) {
    case Format::Json:
      return std::make_unique<DocumentSource>(std::move(input));
    case Format::Binary:
      return std::make_unique<BinarySource>(std::move(input));
    case Format::Csv:
    case Format::Tsv:
      break;
  }
  return std::make_unique<TableSource>(std::move(input), delimiterOf(format), options);
}

std::unique_ptr<RecordSink> CreateRecords(const std::string& path, Format format,
                                          const std::vector<QZFieldBase>& columns, bool carriesMore) {
  if (format == Format::Json || format == Format::Binary) {
    return std::make_unique<StreamSink>(path, format, carriesMore);
  }
  return std::make_unique<TableSink>(path, delimiterOf(format), columns, carriesMore);
}

void ReportLosses(const RecordSink& sink, const std::string& path, bool strict) {
  if (!sink.Losses().Any()) return;
  const std::string text = path + ": the format can't hold " + sink.Losses().Text();
  if (strict) throw ToolError(text);
  QZThrow.Info(text);
}

}  // namespace QZTools
