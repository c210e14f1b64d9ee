#pragma once

#include <deque>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "qz/dataflow.h"

namespace mu {
class Parser;
}

namespace QZTools {

/// A formula over the numeric fields of a record, in the grammar of the muparser library: + - * / ^, comparisons, &&
/// ||, !, ? :, sqrt, exp, ln, log10, sin, min, max and so on.
///
///     Expression heavy("-where", "mass > 100 && charge != 0");
///     double value = 0;
///     if (heavy.Evaluate(record, value) && value != 0) ...
///
/// One thread at a time, const operations included.
class Expression {
 public:
  /// `option` is the option that the text was given for. Throws ToolError for a text that is no formula.
  Expression(const std::string& option, const std::string& text);
  Expression(Expression&&) noexcept;
  ~Expression();

  /// The value for a record; false where an operand is null or missing. Throws ToolError where an operand is no number.
  bool Evaluate(const QZDataFlow::QZRecord& record, double& value);

  /// The names of the fields that it uses.
  std::vector<std::string> Operands() const;

  /// The names that records have had, by this formula or one of the same text.
  std::set<std::string> Met() const;
  void AddMet(const std::set<std::string>& names);

  /// The names that no record has had so far.
  std::vector<std::string> Unmet() const;

 private:
  struct Operand;

  std::string option;
  std::deque<Operand> operands;
  std::unique_ptr<mu::Parser> parser;
};

}  // namespace QZTools
