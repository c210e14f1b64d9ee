#pragma once

#include "qz/system/frame/error.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

class QZInterface;

/// Conditions over several parameters, which a program states in a text beside that of its interface:
///
///     const unsigned char requirements[] =
///         "!REQUIREMENT\n"
///         "  !OPTION -in -out\n"
///         "  !OPTION -list !-out\n"
///         "  !ERROR_MSG\n"
///         "    Give -in and -out, or else -list alone.\n"
///         "!END\n";
///     if (!QZHasRequired(itf, requirements)) return 1;
///
/// A requirement is met when all conditions of one of its options hold; an option without conditions always does.
/// `-key` holds when the parameter has a value or a default, `-key value` when IsSetToString(value) does, and `!-key`
/// and `!-key value` hold when these don't. Keys are names or aliases, compared without regard to case. Lines whose
/// first word begins with "#" are comments. One thread at a time.

/// Whether every parameter that is marked required is set, and every requirement of the text is met; to be asked when
/// all values are in and loaded. `requirements` is zero-terminated, or null for none.
///
/// Every required parameter that isn't set is reported, at `level`. Of the requirements the first that fails or can't
/// be read is reported, at `level`, and gives false at once; a key that names no parameter is an Error whatever the
/// level.
bool QZHasRequired(const QZInterface& itf, const unsigned char* requirements = nullptr,
                   unsigned int level = QZErrorLevel::Error);

}  // namespace QZSystem
