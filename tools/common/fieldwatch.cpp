#include "tools/common/fieldwatch.h"

#include <string_view>

namespace QZTools {

using namespace QZDataFlow;

bool FieldWatch::See(const QZRecord& record) {
  record.ToBytes(bytes);
  description.clear();
  unknownSections = 0;
  hasChildren = false;
  QZReadBuffer buffer(bytes);
  QZReadBuffer content;
  QZReadBuffer section;
  std::string_view name;
  // A record without anything has no bytes.
  const bool hasSections = buffer.Unwrap(name, content);
  while (hasSections && content.IsValid()) {
    const unsigned char* const begin = content.Position();
    if (!content.Unwrap(name, section)) break;
    if (name == "fields" || name == "meta") {
      description.append(begin, content.Position());
    } else if (name == "children") {
      hasChildren = true;
    } else if (name != "version" && name != "data") {
      ++unknownSections;
    }
  }
  changed = !any || description != lastDescription;
  any = true;
  if (!changed) return false;
  lastDescription.swap(description);
  fields = record.GetFields();
  return true;
}

}  // namespace QZTools
