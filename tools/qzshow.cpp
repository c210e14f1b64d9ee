// Shows what a file of records holds: its first rows, its fields, its statistics.

#include <algorithm>
#include <map>
#include <optional>

#include "tools/common/display.h"
#include "tools/common/fieldstats.h"
#include "tools/common/fieldwatch.h"
#include "tools/common/recordsettings.h"
#include "tools/common/rundisplay.h"
#include "tools/common/texttable.h"
#include "tools/common/tool.h"

using namespace QZSystem;
using namespace QZDataFlow;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Show what a file of records or a table holds
!PARAMETER -rows 1
  !TYPE unsigned
  !DEFAULT 20
  !SIMPLE true
  !BRIEF How many of the first rows are shown
!END
!PARAMETER -schema 2
  !TYPE bool
  !DEFAULT false
  !SIMPLE true
  !BRIEF Show the fields of the whole file instead: name, type, metadata, nulls
!END
!PARAMETER -stats 3
  !TYPE bool
  !DEFAULT false
  !SIMPLE true
  !BRIEF Show the statistics of each field over the whole file instead
  !DETAIL
    Numeric fields: count, nulls, least, mean and greatest value, standard deviation and
    a small histogram, by the logarithm where the numbers span more than four decades.
    Texts: the number of distinct ones and the most frequent.
!END
)";

bool isNumeric(const QZFieldBase& field) {
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  return kind == QZFieldKind::Int || kind == QZFieldKind::Float;
}

// Three significant digits, enough to compare by eye.
std::string shortNumber(double value) {
  std::string text;
  QZNumberToString(value, text, 'g', 3);
  return text;
}

// The names of options, and of attributes with their values.
std::string metaText(const QZFieldMeta& meta) {
  std::vector<std::string> parts;
  for (unsigned int option : meta.GetOptions()) parts.push_back(QZFieldMeta::GetName(option));
  std::string last;
  for (const auto& [key, bytes] : meta.GetAttributes(0)) {
    const std::string name = QZFieldMeta::GetName(key);
    if (name == last) continue;
    last = name;
    if (QZMetadata::TakesAttribute<std::string>(key)) parts.push_back(name + "=" + meta.GetAttribute<std::string>(key));
    if (QZMetadata::TakesAttribute<double>(key))
      parts.push_back(name + "=" + NumberText(meta.GetAttribute<double>(key)));
    if (QZMetadata::TakesAttribute<int>(key))
      parts.push_back(name + "=" + QZNumberToString(meta.GetAttribute<int>(key)));
  }
  return QZStringJoin(parts, ", ");
}

// Fields by name, in the order in which they were met.
template <class Entry>
class FieldList {
 public:
  Entry& For(const QZFieldBase& field) {
    const auto [place, isNew] = places.emplace(field.GetName(), entries.size());
    if (isNew) entries.push_back({field, {}});
    return entries[place->second].second;
  }
  const std::vector<std::pair<QZFieldBase, Entry>>& All() const { return entries; }

 private:
  std::map<std::string, std::size_t> places;
  std::vector<std::pair<QZFieldBase, Entry>> entries;
};

void showRows(RecordSource& source, unsigned int rows) {
  FieldList<std::vector<std::string>> columns;
  FieldWatch watch;
  ValueText texts;
  unsigned int count = 0;
  bool more = false;
  for (QZRecord record; !more && source.Next(record); CountRecord()) {
    if (count == rows) {
      more = true;
      break;
    }
    ++count;
    watch.See(record);
    for (const QZFieldBase& field : watch.Fields()) {
      std::vector<std::string>& cells = columns.For(field);
      cells.resize(count - 1);
      cells.emplace_back(texts.Of(record, field).value_or(std::string_view()));
    }
  }
  FinishDots();
  std::vector<TextTable::Column> headings;
  for (const auto& [field, cells] : columns.All()) headings.push_back({field.GetName(), isNumeric(field)});
  TextTable table(headings);
  for (unsigned int i = 0; i < count; ++i) {
    std::vector<std::string> row;
    for (const auto& [field, cells] : columns.All()) row.push_back(i < cells.size() ? cells[i] : "");
    table.AddRow(row);
  }
  table.Write(qzout, TerminalWidth());
  if (count == 0) qzout << "no records\n";
  if (more) qzout << "and more rows; see -rows\n";
}

struct Presence {
  unsigned long values = 0;
  unsigned long nulls = 0;
  std::string type;
  bool mixed = false;

  void See(const QZRecord& record, const QZFieldBase& field) {
    ++(record.IsNA(field) || !record.HasValue(field) ? nulls : values);
  }
};

void showSchema(RecordSource& source) {
  FieldList<Presence> fields;
  FieldWatch watch;
  unsigned long count = 0;
  for (QZRecord record; source.Next(record); CountRecord()) {
    ++count;
    watch.See(record);
    for (const QZFieldBase& field : watch.Fields()) {
      Presence& presence = fields.For(field);
      presence.See(record, field);
      if (!watch.Changed()) continue;
      const std::string type = field.GetTypeName();
      if (presence.type.empty()) presence.type = type;
      presence.mixed = presence.mixed || presence.type != type;
    }
  }
  FinishDots();
  TextTable table({{"name"}, {"type"}, {"values", true}, {"nulls", true}, {"missing", true}, {"metadata"}});
  for (const auto& [field, presence] : fields.All()) {
    const unsigned long missing = count - presence.values - presence.nulls;
    table.AddRow({field.GetName(), presence.type + (presence.mixed ? " and others" : ""),
                  QZNumberToString(presence.values), QZNumberToString(presence.nulls), QZNumberToString(missing),
                  metaText(field.PeekMeta())});
  }
  table.Write(qzout, TerminalWidth());
  qzout << count << (count == 1 ? " record\n" : " records\n");
}

struct Statistics {
  unsigned long nulls = 0;
  NumberStats numbers;
  TextStats texts;
};

// Takes in the values of records.
class StatisticsTaker {
 public:
  void Add(Statistics& statistics, const QZRecord& record, const QZFieldBase& field) {
    if (isNumeric(field)) {
      const std::optional<double> number = NumberOf(record, field, room);
      if (number) statistics.numbers.Add(*number);
      if (!number) ++statistics.nulls;
    } else {
      const std::optional<std::string_view> text = texts.Of(record, field);
      if (text) statistics.texts.Add(std::string(*text));
      if (!text) ++statistics.nulls;
    }
  }

 private:
  ValueText texts;
  std::vector<unsigned char> room;
};

void showNumbers(const FieldList<Statistics>& fields) {
  constexpr unsigned int histogramCells = 8;
  TextTable table({{"number"},
                   {"count", true},
                   {"nulls", true},
                   {"least", true},
                   {"mean", true},
                   {"greatest", true},
                   {"deviation", true},
                   {"histogram"}});
  bool any = false;
  for (const auto& [field, statistics] : fields.All()) {
    const NumberStats& numbers = statistics.numbers;
    // Records may disagree about the type of a field.
    if (!isNumeric(field) && numbers.Count() + numbers.NaNCount() == 0) continue;
    any = true;
    const auto shown = [&](double value) { return numbers.Count() > 0 ? shortNumber(value) : std::string(); };
    table.AddRow({field.GetName(), QZNumberToString(numbers.Count() + numbers.NaNCount()),
                  QZNumberToString(statistics.nulls), shown(numbers.Least()), shown(numbers.Mean()),
                  shown(numbers.Greatest()), shown(numbers.Deviation()),
                  numbers.Histogram(histogramCells) + (numbers.IsLogarithmic() ? " log" : "")});
  }
  if (any) table.Write(qzout, TerminalWidth());
}

void showTexts(const FieldList<Statistics>& fields) {
  constexpr std::size_t shownTexts = 5;
  TextTable table({{"text"}, {"count", true}, {"nulls", true}, {"distinct", true}, {"most frequent"}});
  bool any = false;
  for (const auto& [field, statistics] : fields.All()) {
    const TextStats& texts = statistics.texts;
    if (isNumeric(field) && texts.Count() == 0) continue;
    any = true;
    std::vector<std::string> frequent;
    for (const auto& [text, times] : texts.MostFrequent(shownTexts)) {
      frequent.push_back(text + " (" + QZNumberToString(times) + ")");
    }
    table.AddRow({field.GetName(), QZNumberToString(texts.Count()), QZNumberToString(statistics.nulls),
                  (texts.IsCut() ? "over " : "") + QZNumberToString(texts.Distinct()), QZStringJoin(frequent, ", ")});
  }
  if (any) table.Write(qzout, TerminalWidth());
}

void showStats(RecordSource& source) {
  FieldList<Statistics> fields;
  FieldWatch watch;
  StatisticsTaker taker;
  unsigned long count = 0;
  for (QZRecord record; source.Next(record); CountRecord()) {
    ++count;
    watch.See(record);
    for (const QZFieldBase& field : watch.Fields()) taker.Add(fields.For(field), record, field);
  }
  FinishDots();
  showNumbers(fields);
  showTexts(fields);
  qzout << count << (count == 1 ? " record\n" : " records\n");
}

void show(QZInterface& settings) {
  const auto source = OpenInput(settings, {}, "Reading");
  if (FlagSetting(settings, "-schema")) {
    showSchema(*source);
  } else if (FlagSetting(settings, "-stats")) {
    showStats(*source);
  } else {
    showRows(*source, CountSetting(settings, "-rows"));
  }
}

}  // namespace

int main(int argc, char** argv) { return RunTool(argc, argv, ownConfiguration + InputConfiguration(), show); }
