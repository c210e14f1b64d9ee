#pragma once

#include <cstddef>

#include "qz/dataflow/names.h"

namespace QZDataFlow {

/// The records that may stand inside each other in a document, the outermost counted; the same for reading and writing.
inline constexpr std::size_t kMaxRecordDepth = 256;

}  // namespace QZDataFlow
