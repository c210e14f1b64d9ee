#include "tools/common/display.h"

#include <charconv>

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

template <class Type, class Value>
std::optional<std::string_view> ValueText::format() {
  Value value{};
  if (!Type::FromBytes(value, bytes)) return std::nullopt;
  text = Type::Format(value);
  return text;
}

std::optional<std::string_view> ValueText::wholeNumber() {
  long value = 0;
  if (!QZFieldType<long>::FromBytes(value, bytes)) return std::nullopt;
  return std::string_view(room, static_cast<std::size_t>(std::to_chars(room, room + sizeof room, value).ptr - room));
}

std::optional<std::string_view> ValueText::number() {
  double value = 0;
  if (!QZFieldType<double>::FromBytes(value, bytes)) return std::nullopt;
  return QZPrintShortest(value, room);
}

std::optional<std::string_view> ValueText::truth() {
  bool value = false;
  if (!QZFieldType<bool>::FromBytes(value, bytes)) return std::nullopt;
  return value ? "true" : "false";
}

std::optional<std::string_view> ValueText::blob() {
  text = QZBase85Encode(bytes);
  return text;
}

std::optional<std::string_view> ValueText::Of(const QZRecord& record, const QZFieldBase& field) {
  using Blob = std::vector<unsigned char>;
  bytes.clear();
  if (!record.GetBytes(bytes, field)) return std::nullopt;
  switch (QZGetFieldKind(field.GetType())) {
    case QZFieldKind::Int:
      return wholeNumber();
    case QZFieldKind::Float:
      return number();
    case QZFieldKind::Bool:
      return truth();
    case QZFieldKind::String:
      text.assign(bytes.begin(), bytes.end());
      return text;
    case QZFieldKind::Blob:
      return blob();
    case QZFieldKind::Range:
      return format<QZFieldType<QZRange>, QZRange>();
    case QZFieldKind::JSONObject:
      return format<QZFieldType<QZJSONObject>, QZJSONObject>();
    case QZFieldKind::Link:
      return format<QZFieldType<QZLinkObject>, QZLinkObject>();
    case QZFieldKind::Record:
      return format<QZFieldType<QZRecord>, QZRecord>();
    case QZFieldKind::IntVec:
      return format<QZVectorFieldType<long>, std::vector<std::optional<long>>>();
    case QZFieldKind::FloatVec:
      return format<QZVectorFieldType<double>, std::vector<std::optional<double>>>();
    case QZFieldKind::StringVec:
      return format<QZVectorFieldType<std::string>, std::vector<std::optional<std::string>>>();
    case QZFieldKind::BoolVec:
      return format<QZVectorFieldType<bool>, std::vector<std::optional<bool>>>();
    case QZFieldKind::BlobVec:
      return format<QZVectorFieldType<Blob>, std::vector<std::optional<Blob>>>();
    case QZFieldKind::RecordVec:
      return format<QZVectorFieldType<QZRecord>, std::vector<std::optional<QZRecord>>>();
    case QZFieldKind::Other:
      break;
  }
  text = "<" + field.GetTypeName() + " of length " + QZNumberToString(bytes.size()) + ">";
  return text;
}

std::string NumberText(double value) {
  char room[QZShortestRoom];
  return std::string(QZPrintShortest(value, room));
}

std::string DisplayText(const QZRecord& record, const QZFieldBase& field) {
  ValueText texts;
  return std::string(texts.Of(record, field).value_or(std::string_view()));
}

std::optional<double> NumberOf(const QZRecord& record, const QZFieldBase& field, std::vector<unsigned char>& room) {
  room.clear();
  if (!record.GetBytes(room, field)) return std::nullopt;
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  long whole = 0;
  double number = 0;
  bool truth = false;
  if (kind == QZFieldKind::Int && QZFieldType<long>::FromBytes(whole, room)) return static_cast<double>(whole);
  if (kind == QZFieldKind::Float && QZFieldType<double>::FromBytes(number, room)) return number;
  if (kind == QZFieldKind::Bool && QZFieldType<bool>::FromBytes(truth, room)) return truth ? 1.0 : 0.0;
  return std::nullopt;
}

}  // namespace QZTools
