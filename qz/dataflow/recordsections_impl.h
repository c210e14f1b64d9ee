#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "qz/dataflow/readbuffer.h"

namespace QZDataFlow {

/// The version of the stored form that is written.
inline constexpr std::string_view kRecordVersion = "1.0";
/// The name of the wrapper around a record.
inline constexpr std::string_view kRecordName = "record.v1";

/// The section "version" as it is written, with its name and length.
const std::vector<unsigned char>& VersionSection();

/// Whether these bytes are the name of a record and the length of its content as a writer puts them.
bool IsRecordHead(QZByteSlice head, std::size_t contentSize);

}  // namespace QZDataFlow
