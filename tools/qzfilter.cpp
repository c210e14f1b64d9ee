// Picks records by conditions, computes fields, drops others.

#include <algorithm>
#include <optional>
#include <set>

#include "tools/common/display.h"
#include "tools/common/expression.h"
#include "tools/common/fieldwatch.h"
#include "tools/common/metasetting.h"
#include "tools/common/recordsettings.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZDataFlow;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Pick records by conditions, compute fields, drop others
!CATEGORY "Selection" 3
  !BRIEF Which records are kept
  !PARAMETER -where 1
    !TYPE string
    !SIMPLE true
    !BRIEF A condition over numeric fields, as "half_life > 1e9 && mass_number < 100"
    !DETAIL
      Operators: + - * / ^ == != < > <= >= && || ! and the conditional a ? b : c.
      Functions: sqrt, exp, ln, log10, log2, sin, cos, tan, abs, min, max, avg, rint and more.
      A null or missing operand makes the condition false. Computed fields may be used. The names
      of fields are letters, digits and _ here; texts are for -match.
  !END
  !PARAMETER -match 2
    !TYPE string
    !SIMPLE true
    !BRIEF Patterns for texts, as "element=C*; spin=*+"; all of them must match
    !DETAIL
      A * stands for any text, also none; two of them at most. Upper and lower case differ.
      A null or missing value doesn't match.
  !END
  !PARAMETER -limit 3
    !TYPE unsigned
    !LEGAL_RANGE 1 inf
    !BRIEF Stop after this many records have been kept
  !END
  !PARAMETER -count 4
    !TYPE bool
    !DEFAULT false
    !BRIEF Print how many records are kept; nothing is written to -out
  !END
!END
!CATEGORY "Fields" 4
  !BRIEF What the records hold
  !PARAMETER -set 1
    !TYPE string
    !SIMPLE true
    !BRIEF Computed fields, as "decay = ln(2) / half_life; rate = 2 * decay"
    !DETAIL
      They are Floats, computed in this order, so that a formula and -where may use those before
      it. A null or missing operand makes the value null.
  !END
  !PARAMETER -meta 2
    !TYPE string
    !BRIEF Metadata of fields, computed or not, as column:Name; column:Name=value
  !END
  !PARAMETER -keep 3
    !TYPE string
    !BRIEF Names of the fields to keep, with commas between them
  !END
  !PARAMETER -drop 4
    !TYPE string
    !BRIEF Names of the fields to drop, with commas between them
  !END
!END
)";

struct Pattern {
  std::string name;
  std::string text;
};

struct Matcher {
  explicit Matcher(const Pattern& pattern) : text(pattern.text), field(pattern.name) {}

  std::string text;
  // The field of that name in the present record, of any type.
  QZFieldBase field;
};

struct Computed {
  QZField<double> field;
  Expression formula;
};

std::string strip(const std::string& text) { return QZStringStripWhiteSpace(text); }

// "name = text; name = text"
std::vector<Pattern> parsePairs(const std::string& option, const std::string& text) {
  std::vector<Pattern> pairs;
  std::vector<std::string> items;
  QZStringTokenize(items, text, ";", true);
  for (const std::string& item : items) {
    if (strip(item).empty()) continue;
    const std::size_t equals = item.find('=');
    if (equals == std::string::npos || strip(item.substr(0, equals)).empty()) {
      throw ToolError(option + ": '" + strip(item) + "' isn't a name, = and a text");
    }
    pairs.push_back({strip(item.substr(0, equals)), strip(item.substr(equals + 1))});
  }
  return pairs;
}

std::vector<Matcher> parsePatterns(const std::string& text) {
  std::vector<Matcher> patterns;
  for (const Pattern& pattern : parsePairs("-match", text)) {
    if (std::count(pattern.text.begin(), pattern.text.end(), '*') > 2) {
      throw ToolError("-match: the pattern '" + pattern.text + "' has more than two *");
    }
    patterns.emplace_back(pattern);
  }
  return patterns;
}

std::vector<Computed> parseComputed(const std::string& text, const MetaByName& meta) {
  std::vector<Computed> computed;
  for (const Pattern& pair : parsePairs("-set", text)) {
    const auto found = meta.find(pair.name);
    const QZFieldMeta fieldMeta = found == meta.end() ? QZFieldMeta() : found->second;
    computed.push_back({QZField<double>(pair.name, fieldMeta, false, true), Expression("-set", pair.text)});
  }
  return computed;
}

std::set<std::string> parseNames(const std::string& text) {
  std::vector<std::string> items;
  QZStringTokenize(items, text, ",", true);
  std::set<std::string> names;
  for (const std::string& item : items) names.insert(strip(item));
  return names;
}

std::vector<std::string> namesOf(const std::vector<QZFieldBase>& fields) {
  std::vector<std::string> names;
  for (const QZFieldBase& field : fields) names.push_back(field.GetName());
  return names;
}

std::string advice(const std::string& name, const std::vector<std::string>& candidates) {
  const std::vector<std::string> near = NearWords(name, candidates);
  return near.empty() ? "" : "; did you mean " + QZStringJoin(near, " or ") + "?";
}

// What a run does to each record.
class Filter {
 public:
  Filter(const QZInterface& settings, const MetaByName& meta)
      : patterns(parsePatterns(TextSetting(settings, "-match"))),
        computed(parseComputed(TextSetting(settings, "-set"), meta)),
        keep(parseNames(TextSetting(settings, "-keep"))),
        drop(parseNames(TextSetting(settings, "-drop"))) {
    const std::string condition = TextSetting(settings, "-where");
    if (!condition.empty()) where.emplace("-where", condition);
    decisive = countDecisive();
  }

  // The columns of a table after the run. Names that are no columns are refused.
  std::vector<QZFieldBase> Columns(const std::vector<QZFieldBase>& source) const;

  // Decides; what is kept has its fields computed and trimmed. Only what the decision needs is computed before it.
  bool Pass(QZRecord& record);

  // Says which names no record had, once all have been seen.
  void ReportUnmet(const std::string& path) const;

  bool IsComputed(const std::string& name) const;

 private:
  std::size_t countDecisive() const;
  void watchFields(const QZRecord& record);
  bool matches(const QZRecord& record);
  void compute(QZRecord& record, std::size_t from, std::size_t to);
  bool stays(const std::string& name) const { return (keep.empty() || keep.count(name) != 0) && drop.count(name) == 0; }

  std::optional<Expression> where;
  std::vector<Matcher> patterns;
  std::vector<Computed> computed;
  // So many of the computed fields come before the decision.
  std::size_t decisive = 0;
  std::set<std::string> keep;
  std::set<std::string> drop;
  FieldWatch watch;
  ValueText texts;
  std::vector<QZFieldBase> unwanted;
  std::set<std::string> metNames;
};

// All up to the last one that the condition or a pattern uses: each may use those before it.
std::size_t Filter::countDecisive() const {
  std::set<std::string> used;
  if (where) {
    for (const std::string& name : where->Operands()) used.insert(name);
  }
  for (const Matcher& pattern : patterns) used.insert(pattern.field.GetName());
  std::size_t count = 0;
  for (std::size_t i = 0; i < computed.size(); ++i) {
    if (used.count(computed[i].field.GetName()) != 0) count = i + 1;
  }
  return count;
}

bool Filter::IsComputed(const std::string& name) const {
  return std::any_of(computed.begin(), computed.end(), [&](const Computed& c) { return c.field.GetName() == name; });
}

std::vector<QZFieldBase> Filter::Columns(const std::vector<QZFieldBase>& source) const {
  if (source.empty()) return {};
  std::vector<QZFieldBase> all = source;
  const auto require = [&](const std::string& option, const std::string& name) {
    const std::vector<std::string> names = namesOf(all);
    if (std::find(names.begin(), names.end(), name) != names.end()) return;
    throw ToolError(option + ": the table has no column " + name + advice(name, names));
  };
  for (const Computed& each : computed) {
    for (const std::string& name : each.formula.Operands()) require("-set", name);
    const auto same =
        std::find_if(all.begin(), all.end(), [&](const QZFieldBase& f) { return f.GetName() == each.field.GetName(); });
    if (same == all.end()) {
      all.push_back(each.field);
    } else {
      *same = each.field;
    }
  }
  if (where) {
    for (const std::string& name : where->Operands()) require("-where", name);
  }
  for (const Matcher& pattern : patterns) require("-match", pattern.field.GetName());
  for (const std::string& name : keep) require("-keep", name);
  for (const std::string& name : drop) require("-drop", name);
  all.erase(std::remove_if(all.begin(), all.end(), [&](const QZFieldBase& f) { return !stays(f.GetName()); }),
            all.end());
  if (all.empty()) throw ToolError("-keep and -drop leave no field");
  return all;
}

void Filter::compute(QZRecord& record, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; ++i) {
    Computed& each = computed[i];
    double value = 0;
    const bool known = each.formula.Evaluate(record, value);
    if (record.CheckField(each.field) == QZRecord::OtherType) record.DeleteField(each.field);
    record.SetValue(each.field, known ? std::optional<double>(value) : std::nullopt);
  }
}

// Finds the fields that patterns look at and those to be dropped, where the record has others than the one before.
void Filter::watchFields(const QZRecord& record) {
  if (!watch.See(record)) return;
  unwanted.clear();
  for (const Computed& each : computed) {
    metNames.insert(each.field.GetName());
    if (!stays(each.field.GetName())) unwanted.push_back(each.field);
  }
  for (const QZFieldBase& field : watch.Fields()) {
    metNames.insert(field.GetName());
    if (!stays(field.GetName()) && !IsComputed(field.GetName())) unwanted.push_back(field);
    for (Matcher& pattern : patterns) {
      if (pattern.field.GetName() == field.GetName()) pattern.field = field;
    }
  }
}

bool Filter::matches(const QZRecord& record) {
  for (const Matcher& pattern : patterns) {
    const std::optional<std::string_view> text = texts.Of(record, pattern.field);
    if (!text || !QZStringMatch(std::string(*text), pattern.text)) return false;
  }
  return true;
}

bool Filter::Pass(QZRecord& record) {
  compute(record, 0, decisive);
  double value = 0;
  if (where && !(where->Evaluate(record, value) && value != 0)) return false;
  if (!patterns.empty() || !keep.empty() || !drop.empty()) watchFields(record);
  if (!matches(record)) return false;
  compute(record, decisive, computed.size());
  for (const QZFieldBase& field : unwanted) record.DeleteField(field);
  return true;
}

void Filter::ReportUnmet(const std::string& path) const {
  std::set<std::string> unmet;
  const auto add = [&](const Expression& expression) {
    for (const std::string& name : expression.Unmet()) unmet.insert(name);
  };
  if (where) add(*where);
  for (const Computed& each : computed) add(each.formula);
  for (const std::string& name : unmet) QZThrow.Info(path + ": no record has the field " + name);
  if (metNames.empty()) return;
  unmet.clear();
  for (const Matcher& pattern : patterns) unmet.insert(pattern.field.GetName());
  unmet.insert(keep.begin(), keep.end());
  unmet.insert(drop.begin(), drop.end());
  for (const std::string& name : unmet) {
    if (metNames.count(name) == 0) QZThrow.Info(path + ": no record that was kept or matched has the field " + name);
  }
}

void filter(QZInterface& settings) {
  const std::string path = InputName(settings);
  const bool counts = FlagSetting(settings, "-count");
  if (!counts && TextSetting(settings, "-out").empty()) {
    throw ToolError("Give the file to write as -out (or second), or -count to count only");
  }
  const MetaByName meta = ParseMeta(TextSetting(settings, "-meta"));
  Filter run(settings, meta);
  MetaByName columnMeta;
  for (const auto& [name, fieldMeta] : meta) {
    if (!run.IsComputed(name)) columnMeta.emplace(name, fieldMeta);
  }
  const auto source = OpenInput(settings, columnMeta, "Filtering");
  const std::vector<QZFieldBase> columns = run.Columns(source->Columns());
  const auto sink = counts ? nullptr : CreateOutput(settings, columns, source->CarriesMore());
  FieldMetaSetter setter(source->CarriesMore() ? columnMeta : MetaByName());

  const unsigned long limit = CountSetting(settings, "-limit");
  unsigned long seen = 0;
  unsigned long kept = 0;
  for (QZRecord record; (limit == 0 || kept < limit) && source->Next(record); ++seen) {
    CheckInterrupt();
    setter.Apply(record);
    if (!run.Pass(record)) continue;
    ++kept;
    if (sink) sink->Put(record);
  }
  if (seen > 0 && source->CarriesMore()) run.ReportUnmet(path);
  setter.RequireMet(path);
  if (sink) FinishOutput(settings, *sink);
  if (counts) qzout << kept << '\n';
  QZThrow.Verbose(path + ": kept " + QZNumberToString(kept) + " of " + QZNumberToString(seen) + " records");
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool(argc, argv, ownConfiguration + InputConfiguration() + OutputConfiguration(false), filter);
}
