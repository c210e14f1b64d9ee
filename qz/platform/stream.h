#pragma once

#include "qz/platform/inputstream.h"
#include "qz/platform/outputstream.h"
#include "qz/platform/streambase.h"

/// The streams that all signatures of the toolkit take, `qzistream` and `qzostream`, over their base `qzstream`.
///
///     void copyLines(qzistream& in, qzostream& out) {
///       for (std::string line; in.getline(line);) out << line << '\n';
///     }
///
/// One thread at a time. Kinds of stream: "filestream.h", "memorystream.h", "wrapperstream.h", "standardstream.h".
