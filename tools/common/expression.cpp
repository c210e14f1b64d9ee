#include "tools/common/expression.h"

#include <muParser.h>

#include <optional>

#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

[[noreturn]] void fail(const std::string& option, const std::string& text, const mu::Parser::exception_type& error) {
  const bool hasText = text.find('"') != std::string::npos;
  throw ToolError(option + ": '" + text + "': " + error.GetMsg() + (hasText ? " -match looks at texts" : ""));
}

double negate(double truth) { return truth == 0 ? 1 : 0; }

// An = that is no part of ==, !=, <= or >=: the parser would assign to the field and go on with the value.
bool assigns(const std::string& text) {
  for (std::size_t i = text.find('='); i != std::string::npos; i = text.find('=', i + 1)) {
    if (i + 1 < text.size() && text[i + 1] == '=') {
      ++i;
    } else if (i == 0 || std::string("!<>").find(text[i - 1]) == std::string::npos) {
      return true;
    }
  }
  return false;
}

}  // namespace

// A field of the formula. It is looked for under the type that it had last.
struct Expression::Operand {
  explicit Operand(const std::string& fieldName)
      : name(fieldName), asFloat(fieldName), asInt(fieldName), asBool(fieldName) {}

  std::optional<double> read(const QZRecord& record, int type) const {
    switch (type) {
      case 0:
        return record.GetValue<std::optional<double>>(asFloat);
      case 1:
        return record.GetValue<std::optional<double>>(asInt);
      default:
        return record.GetValue<std::optional<double>>(asBool);
    }
  }

  const QZFieldBase& field(int type) const {
    switch (type) {
      case 0:
        return asFloat;
      case 1:
        return asInt;
      default:
        return asBool;
    }
  }

  // False for null and for no such field.
  bool Load(const QZRecord& record, const std::string& optionName) {
    if (load(record)) return true;
    for (int type = 0; type < types; ++type) {
      const int state = record.CheckField(field(type));
      if (state == QZRecord::NoField) return false;
      if (state == QZRecord::OtherType) continue;
      met = true;
      lastType = type;
      return load(record);
    }
    throw ToolError(optionName + ": the field " + name + " is no number; -match looks at texts");
  }

  bool load(const QZRecord& record) {
    const std::optional<double> found = read(record, lastType);
    if (!found) return false;
    met = true;
    value = *found;
    return true;
  }

  static constexpr int types = 3;

  std::string name;
  QZField<double> asFloat;
  QZField<long> asInt;
  QZField<bool> asBool;
  int lastType = 0;
  bool met = false;
  double value = 0;
};

Expression::Expression(const std::string& optionName, const std::string& text)
    : option(optionName), parser(std::make_unique<mu::Parser>()) {
  if (assigns(text)) throw ToolError(option + ": '" + text + "': a single = compares nothing; use ==");
  try {
    parser->DefineInfixOprt("!", negate);
    parser->SetExpr(text);
    // The names are known only now: every one of them is a field.
    for (const auto& [name, place] : parser->GetUsedVar()) operands.emplace_back(name);
    for (Operand& operand : operands) parser->DefineVar(operand.name, &operand.value);
    parser->Eval();
    if (parser->GetNumResults() != 1)
      throw ToolError(option + ": '" + text + "' is several formulas; use && or || between conditions");
  } catch (const mu::Parser::exception_type& error) {
    fail(option, text, error);
  }
}

Expression::Expression(Expression&&) noexcept = default;
Expression::~Expression() = default;

bool Expression::Evaluate(const QZRecord& record, double& value) {
  bool complete = true;
  for (Operand& operand : operands) complete = operand.Load(record, option) && complete;
  if (!complete) return false;
  try {
    value = parser->Eval();
  } catch (const mu::Parser::exception_type& error) {
    fail(option, parser->GetExpr(), error);
  }
  return true;
}

std::vector<std::string> Expression::Operands() const {
  std::vector<std::string> names;
  for (const Operand& operand : operands) names.push_back(operand.name);
  return names;
}

std::set<std::string> Expression::Met() const {
  std::set<std::string> names;
  for (const Operand& operand : operands) {
    if (operand.met) names.insert(operand.name);
  }
  return names;
}

void Expression::AddMet(const std::set<std::string>& names) {
  for (Operand& operand : operands) operand.met = operand.met || names.count(operand.name) != 0;
}

std::vector<std::string> Expression::Unmet() const {
  std::vector<std::string> names;
  for (const Operand& operand : operands) {
    if (!operand.met) names.push_back(operand.name);
  }
  return names;
}

}  // namespace QZTools
