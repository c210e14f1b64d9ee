#include "tools/common/recordfile.h"

#include <algorithm>
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

// Of a record inside a field, and of a type that isn't known here, a cell has no more than a mark.
bool fitsCell(const QZFieldBase& field) {
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  return kind != QZFieldKind::Record && kind != QZFieldKind::RecordVec && kind != QZFieldKind::Other;
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

void Dropped::CountTable(const QZRecord& record, const FieldWatch& watch, const std::vector<QZFieldBase>& columns) {
  if (watch.Changed()) {
    description = {};
    description.recordMeta = hasMeta(record.GetRecordMeta()) ? 1 : 0;
    description.fields = watch.Fields().size();
    for (const QZFieldBase& column : columns) {
      const std::string name = column.GetName();
      const auto found = std::find_if(watch.Fields().begin(), watch.Fields().end(),
                                      [&](const QZFieldBase& field) { return field.GetName() == name; });
      if (found != watch.Fields().end() && fitsCell(*found)) --description.fields;
    }
    for (const QZFieldBase& field : watch.Fields()) {
      if (hasMeta(field.PeekMeta())) ++description.fieldMeta;
    }
  }
  addDescription();
  unknownSections += watch.UnknownSections();
  if (!watch.HasChildren()) return;
  for (const QZFieldBase& field : watch.Fields()) childRecords += record.GetChildRecords(field).size();
}

void Dropped::CountDocument(const QZRecord& record, const FieldWatch& watch) {
  if (watch.Changed()) {
    const QZRecordMeta meta = record.GetRecordMeta();
    const auto attributes = meta.GetAttributes(0);
    const bool more =
        std::any_of(attributes.begin(), attributes.end(), [](const auto& a) { return a.first != sourceId; });
    description = {};
    description.recordMeta = more || !meta.GetOptions().empty() ? 1 : 0;
  }
  addDescription();
  unknownSections += watch.UnknownSections();
  for (const QZFieldBase& field : watch.Fields()) countInside(record, field, watch.HasChildren());
}

void Dropped::addDescription() {
  recordMeta += description.recordMeta;
  fieldMeta += description.fieldMeta;
  fields += description.fields;
}

// Documents have the records inside a field, its value and its children, with the same gaps.
void Dropped::countInside(const QZRecord& record, const QZFieldBase& field, bool hasChildren) {
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  if (hasChildren) {
    for (const auto& [key, child] : record.GetChildRecords(field)) countInner(child);
  }
  if (kind == QZFieldKind::Record) countInner(record.GetValue(QZField<QZRecord>(field.GetName())));
  if (kind != QZFieldKind::RecordVec) return;
  for (const auto& each : record.GetValue(QZVectorField<QZRecord>(field.GetName()))) {
    if (each) countInner(*each);
  }
}

void Dropped::countInner(const QZRecord& record) {
  FieldWatch watch;
  watch.See(record);
  Dropped inner;
  inner.CountDocument(record, watch);
  recordMeta += inner.recordMeta;
  unknownSections += inner.unknownSections;
}

void Dropped::Add(const Dropped& more) {
  recordMeta += more.recordMeta;
  fieldMeta += more.fieldMeta;
  fields += more.fields;
  childRecords += more.childRecords;
  unknownSections += more.unknownSections;
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
