#pragma once

/// All the kinds of parameter that a program can declare.
///
///     QZIntParameter count("-count", 10);           // plainparameter.h: float, double, int, unsigned, bool, string
///     QZConstParameter colour("-colour", 1, "red");  // constparameter.h: numbers with keywords, bit masks
///     QZFileParameter table("-table");               // fileparameter.h: contents of files
///
/// Const operations may run in parallel; a change needs exclusive access.
#include "qz/system/cli/constparameter.h"
#include "qz/system/cli/fileparameter.h"
#include "qz/system/cli/plainparameter.h"
