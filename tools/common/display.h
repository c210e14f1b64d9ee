#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow.h"

namespace QZTools {

/// Makes texts of values, as a table shows them: numbers in the shortest form that reads back, base85 for a blob, JSON
/// text as it is, the display form for lists, ranges and records.
///
///     ValueText texts;
///     for (const QZFieldBase& field : fields) {
///       if (const auto text = texts.Of(record, field)) writer.Cell(*text);
///     }
///
/// One thread at a time.
class ValueText {
 public:
  /// The text of the field's value, good until the next call; none where the record has no such field of that type, or
  /// it is null, has no value, or one whose bytes don't decode.
  std::optional<std::string_view> Of(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field);

 private:
  template <class Type, class Value>
  std::optional<std::string_view> format();
  std::optional<std::string_view> wholeNumber();
  std::optional<std::string_view> number();
  std::optional<std::string_view> truth();
  std::optional<std::string_view> blob();

  std::vector<unsigned char> bytes;
  std::string text;
  char room[QZPlatform::QZShortestRoom];
};

/// The same text on its own, "" where there is none.
std::string DisplayText(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field);

/// The value of an Int, a Float or a Bool as a number; none as above, and for other types.
std::optional<double> NumberOf(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field,
                               std::vector<unsigned char>& room);

/// The shortest text that reads back to the number.
std::string NumberText(double value);

}  // namespace QZTools
