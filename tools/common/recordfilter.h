#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/common/display.h"
#include "tools/common/expression.h"
#include "tools/common/fieldwatch.h"
#include "tools/common/recordsettings.h"

namespace QZTools {

/// What a run of qzfilter does to each record: decides whether it is kept, computes fields, drops others.
///
///     RecordFilter filter(settings, meta);
///     if (filter.Pass(record)) sink->Put(record);
///
/// One thread at a time, const operations included.
class RecordFilter {
 public:
  struct Matcher {
    std::string text;
    // The field of that name in the present record, of any type.
    QZDataFlow::QZFieldBase field;
  };

  struct Computed {
    QZDataFlow::QZField<double> field;
    Expression formula;
  };

  /// The names of fields that records have had, as far as the filter has looked at them.
  struct Met {
    // For each expression.
    std::vector<std::set<std::string>> operands;
    std::set<std::string> names;
  };

  /// As -where, -match, -set, -keep and -drop say; `meta` holds metadata of computed fields among others. Throws
  /// ToolError for a text that can't be taken.
  RecordFilter(const QZSystem::QZInterface& settings, const MetaByName& meta);

  /// The columns of a table after the run. Throws ToolError for names that are no columns.
  std::vector<QZDataFlow::QZFieldBase> Columns(const std::vector<QZDataFlow::QZFieldBase>& source) const;

  /// Decides; what is kept has its fields computed and trimmed. Only what the decision needs is computed before it.
  /// Throws ToolError where an operand is no number.
  bool Pass(QZDataFlow::QZRecord& record);

  /// What has been met so far, by this filter or by others of the same settings.
  Met GetMet() const;
  void AddMet(const Met& others);

  /// Says which names no record had, once all have been seen.
  void ReportUnmet(const std::string& path) const;

  bool IsComputed(const std::string& name) const;

 private:
  std::size_t countDecisive() const;
  void watchFields(const QZDataFlow::QZRecord& record);
  bool matches(const QZDataFlow::QZRecord& record);
  void compute(QZDataFlow::QZRecord& record, std::size_t from, std::size_t to);
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
  std::vector<QZDataFlow::QZFieldBase> unwanted;
  std::set<std::string> metNames;
};

}  // namespace QZTools
