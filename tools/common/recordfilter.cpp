#include "tools/common/recordfilter.h"

#include <algorithm>

#include "tools/common/metasetting.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

struct Pattern {
  std::string name;
  std::string text;
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

std::vector<RecordFilter::Matcher> parsePatterns(const std::string& text) {
  std::vector<RecordFilter::Matcher> patterns;
  for (const Pattern& pattern : parsePairs("-match", text)) {
    if (std::count(pattern.text.begin(), pattern.text.end(), '*') > 2) {
      throw ToolError("-match: the pattern '" + pattern.text + "' has more than two *");
    }
    patterns.push_back({pattern.text, QZFieldBase(pattern.name)});
  }
  return patterns;
}

std::vector<RecordFilter::Computed> parseComputed(const std::string& text, const MetaByName& meta) {
  std::vector<RecordFilter::Computed> computed;
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

}  // namespace

RecordFilter::RecordFilter(const QZInterface& settings, const MetaByName& meta)
    : patterns(parsePatterns(TextSetting(settings, "-match"))),
      computed(parseComputed(TextSetting(settings, "-set"), meta)),
      keep(parseNames(TextSetting(settings, "-keep"))),
      drop(parseNames(TextSetting(settings, "-drop"))) {
  const std::string condition = TextSetting(settings, "-where");
  if (!condition.empty()) where.emplace("-where", condition);
  decisive = countDecisive();
}

// All up to the last one that the condition or a pattern uses: each may use those before it.
std::size_t RecordFilter::countDecisive() const {
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

bool RecordFilter::IsComputed(const std::string& name) const {
  return std::any_of(computed.begin(), computed.end(), [&](const Computed& c) { return c.field.GetName() == name; });
}

std::vector<QZFieldBase> RecordFilter::Columns(const std::vector<QZFieldBase>& source) const {
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

void RecordFilter::compute(QZRecord& record, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; ++i) {
    Computed& each = computed[i];
    double value = 0;
    const bool known = each.formula.Evaluate(record, value);
    if (record.CheckField(each.field) == QZRecord::OtherType) record.DeleteField(each.field);
    record.SetValue(each.field, known ? std::optional<double>(value) : std::nullopt);
  }
}

// Finds the fields that patterns look at and those to be dropped, where the record has others than the one before.
void RecordFilter::watchFields(const QZRecord& record) {
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

bool RecordFilter::matches(const QZRecord& record) {
  for (const Matcher& pattern : patterns) {
    const std::optional<std::string_view> text = texts.Of(record, pattern.field);
    if (!text || !QZStringMatch(std::string(*text), pattern.text)) return false;
  }
  return true;
}

bool RecordFilter::Pass(QZRecord& record) {
  compute(record, 0, decisive);
  double value = 0;
  if (where && !(where->Evaluate(record, value) && value != 0)) return false;
  if (!patterns.empty() || !keep.empty() || !drop.empty()) watchFields(record);
  if (!matches(record)) return false;
  compute(record, decisive, computed.size());
  for (const QZFieldBase& field : unwanted) record.DeleteField(field);
  return true;
}

RecordFilter::Met RecordFilter::GetMet() const {
  Met met;
  if (where) met.operands.push_back(where->Met());
  for (const Computed& each : computed) met.operands.push_back(each.formula.Met());
  met.names = metNames;
  return met;
}

void RecordFilter::AddMet(const Met& others) {
  std::size_t next = 0;
  if (where) where->AddMet(others.operands[next++]);
  for (Computed& each : computed) each.formula.AddMet(others.operands[next++]);
  metNames.insert(others.names.begin(), others.names.end());
}

void RecordFilter::ReportUnmet(const std::string& path) const {
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

}  // namespace QZTools
