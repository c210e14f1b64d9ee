#pragma once

#include <cstddef>
#include <vector>

#include "qz/dataflow/readbuffer.h"

namespace QZDataFlow {

/// The section "version" as it is written, with its name and length.
const std::vector<unsigned char>& VersionSection();

/// Whether these bytes are the name of a record and the length of its content as a writer puts them.
bool IsRecordHead(QZByteSlice head, std::size_t contentSize);

}  // namespace QZDataFlow
