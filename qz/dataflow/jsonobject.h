#pragma once

#include <string>

#include "qz/dataflow/names.h"

namespace QZDataFlow {

/// The text of a JSON document whose top-level value is an object, or nothing.
///
///     const QZJSONObject settings("{\"depth\": 3}");
///     if (!settings.GetText().empty()) record.SetValue(field, settings);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZJSONObject {
 public:
  QZJSONObject() = default;
  /// Keeps `text` as it stands. When it isn't such a document: the messages of JSONParseHelper, the warning "JSON
  /// object constructed with invalid string: " with the text, and an empty object.
  explicit QZJSONObject(const std::string& text);

  const std::string& GetText() const { return content; }

 private:
  std::string content;
};

/// A JSON document that refers to something elsewhere; a QZJSONObject under another type name.
class QZLinkObject : public QZJSONObject {
 public:
  using QZJSONObject::QZJSONObject;
};

}  // namespace QZDataFlow
