#include <vector>

#include "qz/system/cli/exports.h"

namespace QZSystem {

namespace {

std::vector<std::string> texts(QZIter<const std::string> items) {
  std::vector<std::string> list;
  for (const std::string& item : items) list.push_back(item);
  return list;
}

std::vector<std::string> texts(QZIter<const QZParameter::Range> ranges) {
  std::vector<std::string> list;
  for (const QZParameter::Range& range : ranges) list.push_back("(" + range.first + " to " + range.second + ")");
  return list;
}

// "a, b and c"
std::string sentence(const std::vector<std::string>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " and " : ", ";
    text += items[i];
  }
  return text;
}

void writeItem(const std::string& heading, const std::string& text, qzostream& out) {
  out << "\n\\item[\\code{" << heading << "}] " << text << '\n';
}

// Nothing for an empty list, and the heading in the plural for several.
void writeList(const char* one, const char* several, const std::vector<std::string>& items, qzostream& out) {
  if (!items.empty()) writeItem(items.size() > 1 ? several : one, sentence(items), out);
}

}  // namespace

bool QZWriteParameterLatex(const QZParameter& parameter, qzostream& out) {
  writeItem(parameter.GetName(), parameter.GetBrief(), out);
  out << "\n\\begin{description}\n";
  writeList("Alias", "Aliases", texts(QZIter(parameter.GetAliases())), out);
  writeItem("Type", parameter.ClassID(), out);
  if (!parameter.GetHasDefault(0)) writeItem("Default", "No default", out);
  for (unsigned int i = 0; parameter.GetHasDefault(i); ++i) writeItem("Default", parameter.GetStringDefault(i), out);
  writeList("Legal Value", "Legal Values", texts(QZIter(parameter.GetLegalValues())), out);
  writeList("Illegal Value", "Illegal Values", texts(QZIter(parameter.GetIllegalValues())), out);
  writeList("LegalRange", "LegalRanges", texts(QZIter(parameter.GetLegalRanges())), out);
  writeList("IllegalRange", "IllegalRanges", texts(QZIter(parameter.GetIllegalRanges())), out);
  out << "\n\\end{description}\n\n";
  for (const std::string& line : QZIter(parameter.GetDetail())) out << line << '\n';
  out << '\n';
  return true;
}

}  // namespace QZSystem
