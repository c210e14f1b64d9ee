#pragma once

#include "qz/platform/stream.h"
#include "qz/system/cli/interface.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Fills parameters from a parameter file, a text that gives them by key, a line for each:
///
///     #comment
///     -in      data.txt
///     -names   'first name' second
///
/// Words in single or double quotes may hold blanks; keys are compared without regard to case, aliases included.
/// A parameter that has a value already keeps it, unless `overwrite` is set, which adds the values of the line behind
/// those already there.
///
/// Each fault (an unknown key, a key without value, a value that isn't legal or doesn't load, several values for a
/// parameter that is no list) is sent to QZThrow at `level` and makes the result false; the reading goes on to the end
/// of the stream. One thread at a time.
bool QZParseParameterFile(QZInterface& itf, qzistream& in, bool overwrite = false,
                          unsigned int level = QZErrorLevel::Error);

}  // namespace QZSystem
