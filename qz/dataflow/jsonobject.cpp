#include "qz/dataflow/jsonobject.h"

#include "qz/system/frame/error.h"
#include "qz/system/json/check.h"

namespace QZDataFlow {

namespace {

constexpr char kInvalidText[] = "JSON object constructed with invalid string: ";

}  // namespace

QZJSONObject::QZJSONObject(const std::string& text) {
  if (JSONCheckHelper(text)) {
    content = text;
  } else {
    QZThrow.Warning(kInvalidText + text);
  }
}

}  // namespace QZDataFlow
