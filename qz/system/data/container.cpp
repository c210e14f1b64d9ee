#include "qz/system/data/container.h"

namespace QZSystem {

const void* QZContainer::GetDataType() const { return QZGetDataType<QZContainer>(); }

bool QZContainer::IsDataType(const void* type) const {
  return type == QZGetDataType<QZContainer>() || QZBase::IsDataType(type);
}

QZContainer* QZContainer::CreateCopy() const { return new QZContainer(*this); }

template class QZBaseDataT<QZContainer>;
template class QZBaseDataT<std::vector<QZContainer>>;

}  // namespace QZSystem
