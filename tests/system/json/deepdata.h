#pragma once

#include <utility>

#include "qz/system/data/container.h"

namespace QZSystem {

/// A container in a container, in all that many, under the name "in".
inline QZContainer Nested(int levels) {
  QZContainer outer;
  for (int i = 1; i < levels; ++i) {
    QZContainer inner = std::move(outer);
    outer = QZContainer();
    outer.SetData<QZContainer>("in", std::move(inner));
  }
  return outer;
}

inline int LevelsOf(const QZContainer& container) {
  int levels = 1;
  const QZContainer* at = &container;
  for (; at->HasData("in"); ++levels) at = &at->GetData<QZContainer>("in");
  return levels;
}

}  // namespace QZSystem
