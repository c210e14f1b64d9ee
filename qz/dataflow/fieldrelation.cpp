// The one operation of metadata that knows fields, which are built on metadata themselves.

#include "qz/dataflow/field.h"
#include "qz/dataflow/metadata.h"

namespace QZDataFlow {

QZFieldMeta& QZFieldMeta::AddRelation(unsigned int key, const QZFieldBase& field) {
  if (QZMetadata::IsRelation(key)) AddAttribute(key, field.GetName());
  return *this;
}

}  // namespace QZDataFlow
