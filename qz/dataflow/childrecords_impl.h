#pragma once

#include <string>

#include "qz/dataflow/datarecord.h"

namespace QZDataFlow {

/// The field in which a child record carries its key while it stands among others in the stored form.
const QZField<std::string>& ChildKeyField();

/// Gives the child that field, in place of one of another type.
void SetChildKey(QZRecord& child, const std::string& key);

}  // namespace QZDataFlow
