#include "tools/common/expression.h"

#include <muParser.h>

#include <optional>

#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

[[noreturn]] void fail(const std::string& option, const std::string& text, const mu::Parser::exception_type& error) {
  throw ToolError(option + ": '" + text + "': " + error.GetMsg());
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

  // False for null and for no such field.
  bool Load(const QZRecord& record, const std::string& option) {
    for (int i = 0; i < 3; ++i) {
      const int type = (lastType + i) % 3;
      const std::optional<double> found = read(record, type);
      if (!found) continue;
      lastType = type;
      value = *found;
      met = true;
      return true;
    }
    const bool hasNumber = record.HasField(asFloat) || record.HasField(asInt) || record.HasField(asBool);
    met = met || hasNumber;
    if (!hasNumber && record.CheckField(asFloat) == QZRecord::OtherType) {
      throw ToolError(option + ": the field " + name + " is no number; -match looks at texts");
    }
    return false;
  }

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
  try {
    parser->SetExpr(text);
    // The names are known only now: every one of them is a field.
    for (const auto& [name, place] : parser->GetUsedVar()) operands.emplace_back(name);
    for (Operand& operand : operands) parser->DefineVar(operand.name, &operand.value);
    parser->Eval();
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

std::vector<std::string> Expression::Unmet() const {
  std::vector<std::string> names;
  for (const Operand& operand : operands) {
    if (!operand.met) names.push_back(operand.name);
  }
  return names;
}

}  // namespace QZTools
