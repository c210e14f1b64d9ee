#include "tools/common/display.h"

#include <optional>
#include <vector>

#include "tools/common/csv.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

template <class T>
std::string scalarText(const QZRecord& record, const QZFieldBase& field) {
  return QZFieldType<T>::Format(record.GetValue(QZField<T>(field.GetName())));
}

template <class T>
std::string listText(const QZRecord& record, const QZFieldBase& field) {
  return QZVectorFieldType<T>::Format(record.GetValue(QZVectorField<T>(field.GetName())));
}

std::string valueText(const QZRecord& record, const QZFieldBase& field) {
  using Blob = std::vector<unsigned char>;
  const std::string& name = field.GetName();
  switch (QZGetFieldKind(field.GetType())) {
    case QZFieldKind::Int:
      return QZNumberToString(record.GetValue(QZField<long>(name)));
    case QZFieldKind::Float:
      return NumberText(record.GetValue(QZField<double>(name)));
    case QZFieldKind::Bool:
      return QZNumberToString(record.GetValue(QZField<bool>(name)));
    case QZFieldKind::String:
      return record.GetValue(QZField<std::string>(name));
    case QZFieldKind::Blob:
      return QZBase85Encode(record.GetValue(QZField<Blob>(name)));
    case QZFieldKind::Range:
      return scalarText<QZRange>(record, field);
    case QZFieldKind::JSONObject:
      return scalarText<QZJSONObject>(record, field);
    case QZFieldKind::Link:
      return scalarText<QZLinkObject>(record, field);
    case QZFieldKind::Record:
      return scalarText<QZRecord>(record, field);
    case QZFieldKind::IntVec:
      return listText<long>(record, field);
    case QZFieldKind::FloatVec:
      return listText<double>(record, field);
    case QZFieldKind::StringVec:
      return listText<std::string>(record, field);
    case QZFieldKind::BoolVec:
      return listText<bool>(record, field);
    case QZFieldKind::BlobVec:
      return listText<Blob>(record, field);
    case QZFieldKind::RecordVec:
      return listText<QZRecord>(record, field);
    case QZFieldKind::Other:
      break;
  }
  return "<" + field.GetTypeName() + " of length " + QZNumberToString(record.GetBytes(field).size()) + ">";
}

}  // namespace

std::string NumberText(double value) {
  char room[QZShortestRoom];
  return std::string(QZPrintShortest(value, room));
}

std::string DisplayText(const QZRecord& record, const QZFieldBase& field) {
  return record.HasValue(field) && !record.IsNA(field) ? valueText(record, field) : std::string();
}

void WriteCell(const QZRecord& record, const QZFieldBase& field, CsvWriter& writer) {
  writer.Cell(valueText(record, field));
}

}  // namespace QZTools
