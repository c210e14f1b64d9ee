#include "tools/common/metasetting.h"

#include <vector>

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

[[noreturn]] void failUnknown(const std::string& name) {
  std::vector<std::string> names;
  for (const auto& [key, known] : QZMetadata::GetMetaConstants()) names.push_back(QZFieldMeta::GetName(key));
  const std::vector<std::string> near = NearWords(name, names);
  throw ToolError("-meta: there is no metadata " + name +
                  (near.empty() ? "" : "; did you mean " + QZStringJoin(near, " or ") + "?"));
}

void setValue(QZFieldMeta& meta, unsigned int key, const std::string& name, const std::string& value) {
  double number = 0;
  int whole = 0;
  if (QZMetadata::TakesAttribute<std::string>(key)) {
    meta.AddAttribute(key, value);
  } else if (QZMetadata::TakesAttribute<double>(key) && QZStringToNumber(value, number)) {
    meta.AddAttribute(key, number);
  } else if (QZMetadata::TakesAttribute<int>(key) && QZStringToNumber(value, whole)) {
    meta.AddAttribute(key, whole);
  } else {
    throw ToolError("-meta: " + name + " doesn't take the value '" + value + "'");
  }
}

// "Units.Mass.Da" or "Annotation.Description=text"
void setItem(QZFieldMeta& meta, const std::string& item) {
  const std::size_t equals = item.find('=');
  const std::string name = QZStringStripWhiteSpace(item.substr(0, equals));
  const unsigned int key = QZMeta::GetValue(name);
  if (key == 0) failUnknown(name);
  if (equals != std::string::npos) {
    setValue(meta, key, name, QZStringStripWhiteSpace(item.substr(equals + 1)));
  } else if (QZMetadata::IsOption(key)) {
    meta.SetOption(key);
  } else {
    throw ToolError("-meta: " + name + " needs a value: " + name + "=...");
  }
}

}  // namespace

std::map<std::string, QZFieldMeta> ParseMeta(const std::string& text) {
  std::map<std::string, QZFieldMeta> all;
  std::vector<std::string> items;
  QZStringTokenize(items, text, ";", true);
  for (const std::string& item : items) {
    if (QZStringStripWhiteSpace(item).empty()) continue;
    const std::size_t colon = item.find(':');
    const std::string column = QZStringStripWhiteSpace(item.substr(0, colon));
    if (colon == std::string::npos || column.empty() || QZStringStripWhiteSpace(item.substr(colon + 1)).empty()) {
      throw ToolError("-meta: '" + QZStringStripWhiteSpace(item) +
                      "' isn't a column, a colon and the name of metadata");
    }
    setItem(all[column], item.substr(colon + 1));
  }
  return all;
}

}  // namespace QZTools
