#include "tools/common/recordsettings.h"

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

constexpr const char* inputText = R"(
!CATEGORY "Input" 1
  !BRIEF What is read
  !PARAMETER -in 1
    !TYPE string
    !KEYLESS 1
    !REQUIRED true
    !SIMPLE true
    !INPUT 1
    !BRIEF The file to read, - for standard input
    !DETAIL
      Its extension tells the format: .csv and .tsv are tables, .json and .jsonl records
      as JSON documents, one a line, .qzr binary records.
  !END
  !PARAMETER -informat 2
    !TYPE string
    !LEGAL_VALUE csv
    !LEGAL_VALUE tsv
    !LEGAL_VALUE json
    !LEGAL_VALUE binary
    !BRIEF The format of the input where its name doesn't tell
  !END
  !PARAMETER -types 3
    !TYPE string
    !BRIEF Types of a table's columns, as name:Type,name:Type
    !DETAIL
      The types are Int (64 bits), Float, Bool and String. A column that isn't named gets
      the narrowest type that fits its first rows. Empty cells are null.
  !END
  !PARAMETER -infer 4
    !TYPE unsigned
    !DEFAULT 1000
    !BRIEF Rows of a table that the types are inferred from
  !END
!END
)";

constexpr const char* outputText = R"(
!CATEGORY "Output" 2
  !BRIEF What is written
  !PARAMETER -out 1
    !TYPE string
%s    !REQUIRED %s
    !SIMPLE true
    !OUTPUT true
    !BRIEF The file to write, - for standard output
    !DETAIL
      Its extension tells the format as for -in. The file appears under its name only
      when it is complete.
  !END
  !PARAMETER -outformat 2
    !TYPE string
    !LEGAL_VALUE csv
    !LEGAL_VALUE tsv
    !LEGAL_VALUE json
    !LEGAL_VALUE binary
    !BRIEF The format of the output where its name doesn't tell
  !END
  !PARAMETER -strict 3
    !TYPE bool
    !DEFAULT false
    !BRIEF Fail where the output's format drops something of the input
  !END
!END
)";

bool isTable(Format format) { return format == Format::Csv || format == Format::Tsv; }

}  // namespace

void RefuseOption(const QZInterface& settings, const std::string& path) {
  if (path.size() < 2 || path.front() != '-') return;
  if (path == "-h" || path == "-help" || path == "-?") throw ToolError(path + " is no option; did you mean --help?");
  std::vector<std::string> names;
  for (const QZParameter& each : QZIter(settings.GetParameters())) names.push_back(each.GetName());
  const std::vector<std::string> near = NearWords(path, names);
  throw ToolError(path + " is neither an option nor a file" +
                  (near.empty() ? "; see --help all" : "; did you mean " + QZStringJoin(near, " or ") + "?"));
}

std::string InputConfiguration() { return inputText; }

std::string InputName(const QZInterface& settings) {
  const std::string path = TextSetting(settings, "-in");
  return path == "-" ? "standard input" : path;
}

std::string OutputName(const QZInterface& settings) {
  const std::string path = TextSetting(settings, "-out");
  return path == "-" ? "standard output" : path;
}

std::string OutputConfiguration(bool required, bool keyless) {
  std::string text = outputText;
  for (const char* each : {keyless ? "    !KEYLESS 2\n" : "", required ? "true" : "false"}) {
    text.replace(text.find("%s"), 2, each);
  }
  return text;
}

std::unique_ptr<RecordSource> OpenInput(const QZInterface& settings, const MetaByName& meta, const std::string& task) {
  const std::string path = TextSetting(settings, "-in");
  RefuseOption(settings, path);
  const Format format = FormatOf(path, TextSetting(settings, "-informat"), "-informat");
  TableOptions options;
  options.inferRows = CountSetting(settings, "-infer");
  options.types = TextSetting(settings, "-types");
  options.meta = meta;
  if (!isTable(format) && !options.types.empty()) {
    throw ToolError(path + ": -types is for tables; these records bring their types along");
  }
  return OpenRecords(path, format, options, TextSetting(settings, "-progress"), task);
}

std::unique_ptr<RecordSink> CreateOutput(const QZInterface& settings, const std::vector<QZFieldBase>& columns,
                                         bool carriesMore) {
  const std::string path = TextSetting(settings, "-out");
  RefuseOption(settings, path);
  return CreateRecords(path, FormatOf(path, TextSetting(settings, "-outformat"), "-outformat"), columns, carriesMore);
}

void FinishOutput(const QZInterface& settings, RecordSink& sink) {
  ReportLosses(sink, OutputName(settings), FlagSetting(settings, "-strict"));
  sink.Finish();
}

void FieldMetaSetter::Apply(QZRecord& record) {
  anyRecord = true;
  if (meta.empty()) return;
  for (QZFieldBase& field : record.GetFields()) {
    const auto wanted = meta.find(field.GetName());
    if (wanted == meta.end()) continue;
    met.insert(field.GetName());
    QZFieldMeta merged = field.GetMeta();
    merged.Merge(wanted->second);
    field.SetMeta(merged);
    // Describing a field anew makes it forget that it is null.
    const bool isNull = record.IsNA(field);
    record.AddField(field);
    if (isNull) record.SetBytes(field, std::nullopt);
  }
}

void FieldMetaSetter::RequireMet(const std::string& path) const {
  if (!anyRecord) return;
  for (const auto& [name, fieldMeta] : meta) {
    if (met.count(name) == 0) throw ToolError(path + ": no record has the field " + name + " (named in -meta)");
  }
}

}  // namespace QZTools
