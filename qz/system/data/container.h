#pragma once

#include <vector>

#include "qz/system/data/base.h"

namespace QZSystem {

/// An object that is nothing but its attached data: what a value is that has named values of its own.
///
///     QZContainer cell;
///     cell.SetData("a", 5.43);
///     crystal.SetData("cell", cell);
///     double a = crystal.GetData<QZContainer>("cell").GetData<double>("a");
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZContainer : public QZBase {
 public:
  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  /// A copy of all values, at every depth.
  [[nodiscard]] QZContainer* CreateCopy() const override;
};

extern template class QZBaseDataT<QZContainer>;
extern template class QZBaseDataT<std::vector<QZContainer>>;

}  // namespace QZSystem
