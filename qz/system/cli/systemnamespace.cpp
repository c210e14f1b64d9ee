#include "qz/system/cli/systemnamespace.h"

#include <algorithm>
#include <cassert>

#include "qz/system/frame/error.h"
#include "qz/system/text/tokenize.h"

namespace QZSystem {

namespace {

constexpr char unknownWord[] = "%s is not a valid %s expression primitive!";
constexpr char unknownConstant[] = "%i is not a valid %s constant!";
constexpr char unknownFlags[] = "%i is not a valid %s value!";

// A tab, and the name in a column of its own.
std::string nameLine(const std::string& name) {
  constexpr std::size_t width = 12;
  std::string line = "\t" + name;
  if (name.size() < width) line.append(width - name.size(), ' ');
  return line;
}

std::string constantsText(const std::vector<QZNamespacePrim>& primitives) {
  std::string text = " \n";
  for (const QZNamespacePrim& each : primitives) {
    if (!each.detail.empty()) text.append(nameLine(each.name)).append(" - ").append(each.detail).append("\n");
  }
  return text;
}

std::string flagsText(const std::vector<QZNamespacePrim>& primitives) {
  std::string text = "Primitive expressions :\n";
  for (const QZNamespacePrim& each : primitives) {
    text.append(nameLine(each.name));
    if (!each.detail.empty()) text.append(" - ").append(each.detail);
    text.append("\n");
  }
  return text.append("\n\tCombined expressions :\n\tCreated by combining primitive tokens with | \n");
}

}  // namespace

QZIterBase<const QZNamespacePrim>* QZNamespaceInterface::GetPrimitives() const {
  return new QZSTLIter<ConstIterGuts<std::vector<QZNamespacePrim>>>(primitives);
}

const QZNamespacePrim* QZNamespaceInterface::Find(const std::string& word) const {
  const auto at = std::find_if(primitives.begin(), primitives.end(),
                               [&word](const QZNamespacePrim& each) { return each.name == word; });
  return at == primitives.end() ? nullptr : &*at;
}

void QZNamespaceInterface::TellUnknown(const std::string& word) const {
  QZThrow.Warning(unknownWord, word.c_str(), name.c_str());
}

bool QZNamespaceInterface::Combine(const std::string& text, unsigned int& value) const {
  std::vector<std::string> words;
  QZStringTokenize(words, text, "|", true);
  value = 0;
  for (const std::string& word : words) {
    const QZNamespacePrim* found = Find(word);
    if (found == nullptr) {
      TellUnknown(word);
      return false;
    }
    value |= found->value;
  }
  return true;
}

bool QZNamespaceInterface::IsValid(const std::string& text) const {
  if (Find(text) != nullptr) return true;
  if (kind == Constants) {
    TellUnknown(text);
    return false;
  }
  unsigned int value = 0;
  return Combine(text, value);
}

unsigned int QZNamespaceInterface::GetValue(const std::string& text, unsigned int defaultValue) const {
  if (const QZNamespacePrim* found = Find(text)) return found->value;
  if (kind == Constants) {
    TellUnknown(text);
    return defaultValue;
  }
  unsigned int value = 0;
  return Combine(text, value) ? value : defaultValue;
}

bool QZNamespaceInterface::Express(unsigned int value, std::string& expression) const {
  bool any = false;
  for (const QZNamespacePrim& each : primitives) {
    if (each.value == 0 || (value & each.value) != each.value) continue;
    if (any) expression += '|';
    any = true;
    expression += each.name;
  }
  return any;
}

std::string QZNamespaceInterface::GetName(unsigned int value, const std::string& defaultName) const {
  const auto at = std::find_if(primitives.begin(), primitives.end(),
                               [value](const QZNamespacePrim& each) { return each.value == value; });
  if (at != primitives.end()) return at->name;
  const bool plain = kind == Constants;
  std::string expression;
  if (!plain && Express(value, expression)) return expression;
  // Numbers are told as signed ones.
  QZThrow.Warning(plain ? unknownConstant : unknownFlags, static_cast<int>(value), name.c_str());
  return defaultName;
}

void QZAddDetails(QZParameter* p, const QZNamespaceInterface* ns) {
  assert(p != nullptr && ns != nullptr);
  p->AddDetail(ns->kind == QZNamespaceInterface::Constants ? constantsText(ns->primitives) : flagsText(ns->primitives));
}

bool QZAddLegalValues(QZParameter* p, const QZNamespaceInterface* ns, bool addDetails) {
  assert(p != nullptr && ns != nullptr);
  if (ns->kind == QZNamespaceInterface::Constants) {
    for (const QZNamespacePrim& each : ns->primitives) p->AddLegalValue(each.name);
  }
  if (addDetails) QZAddDetails(p, ns);
  return true;
}

QZParameter* QZCreateParam(QZInterface& itf, const std::string& classid, const std::string& name,
                           const std::string& alias, const std::string& brief, unsigned int isList) {
  QZParameter* parameter = itf.AddParameter(classid);
  if (parameter == nullptr) return nullptr;
  parameter->SetName(name);
  parameter->AddAlias(alias);
  parameter->SetVisibility(0);
  parameter->SetBrief(brief);
  if (isList != 0) parameter->SetIsList(true);
  return parameter;
}

QZParameter* QZCreateParamWithRange(QZInterface& itf, const std::string& classid, const std::string& name,
                                    const std::string& alias, const std::string& brief, const std::string& low,
                                    const std::string& high) {
  QZParameter* parameter = QZCreateParam(itf, classid, name, alias, brief, 0);
  if (parameter != nullptr) parameter->AddLegalRange(low, high);
  return parameter;
}

QZParameter* QZCreateStringParam(QZInterface& itf, const std::string& name, const std::string& alias,
                                 const std::string& brief) {
  return QZCreateParam(itf, "string", name, alias, brief, 0);
}

}  // namespace QZSystem
