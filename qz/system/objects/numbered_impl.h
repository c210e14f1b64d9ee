#pragma once

#include <vector>

#include "qz/system/data/base.h"
#include "qz/system/frame/iterowner.h"

namespace QZSystem {

/// How many objects hang on `object` under "0", "1" and so on, by the count that stands under `countName`; 0 for none.
/// Of objects that the count tells of and that aren't there it believes in 1024.
[[nodiscard]] unsigned int NumberedCount(const QZBase& object, const char* countName);

/// Whether a name is a number below `count`, in decimal without padding, and which.
[[nodiscard]] bool IsNumberBelow(unsigned int count, const char* name, unsigned int& number);

/// Copies of the first `count` objects of class `T` that hang on `object` under their numbers, in that order. One that
/// isn't there is a default-constructed one; so is a value of another type, after the Warning of QZBase::GetData.
template <class T>
[[nodiscard]] std::vector<T> Numbered(const QZBase& object, unsigned int count) {
  std::vector<T> all(count);
  std::vector<bool> found(count);
  for (QZBaseData& value : QZIter(object.GetDataIter())) {
    unsigned int number = 0;
    if (!IsNumberBelow(count, QZGetTag(value.GetTag()), number) || found[number]) continue;
    found[number] = true;
    if (const auto* const holder = QZBaseImpl::As<T>(&value)) {
      all[number] = holder->GetData();
    } else {
      QZBaseImpl::CheckTypeWarning();
    }
  }
  return all;
}

}  // namespace QZSystem
