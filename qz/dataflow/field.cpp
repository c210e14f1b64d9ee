#include "qz/dataflow/field.h"

#include <utility>

#include "qz/dataflow/fieldtype.h"

namespace QZDataFlow {

QZFieldBase::QZFieldBase(std::string fieldName, QZFieldMeta fieldMeta, bool isReadonly, bool isNullable)
    : name(std::move(fieldName)), nullable(isNullable), readonly(isReadonly), meta(std::move(fieldMeta)) {}

std::string QZFieldBase::GetTypeName() const { return wrapper.empty() ? type : wrapper + ':' + type; }

template <class T>
QZField<T>::QZField(const std::string& fieldName, QZFieldMeta fieldMeta, bool isReadonly, bool isNullable)
    : QZFieldBase(fieldName, std::move(fieldMeta), isReadonly, isNullable) {
  type = QZGetFieldKindName(QZFieldType<T>::Kind);
}

template <class T>
QZVectorField<T>::QZVectorField(const std::string& fieldName, QZFieldMeta fieldMeta, bool isReadonly, bool isNullable)
    : QZFieldBase(fieldName, std::move(fieldMeta), isReadonly, isNullable) {
  type = QZGetFieldKindName(QZVectorFieldType<T>::Kind);
}

template class QZField<long>;
template class QZField<std::string>;
template class QZField<double>;
template class QZField<std::vector<unsigned char>>;
template class QZField<bool>;
template class QZField<QZRange>;
template class QZField<QZJSONObject>;
template class QZField<QZLinkObject>;
template class QZField<QZRecord>;
template class QZVectorField<long>;
template class QZVectorField<std::string>;
template class QZVectorField<double>;
template class QZVectorField<std::vector<unsigned char>>;
template class QZVectorField<bool>;
template class QZVectorField<QZRecord>;

}  // namespace QZDataFlow
