#pragma once

#include "qz/platform/stream.h"

namespace QZPlatform {

/// Standard error and standard output of the process.
///
///     qzout << "3171 records" << qzendl;
///     qzerr << "Warning: column 2 is empty" << qzendl;
///
/// One thread at a time. Both work from any static initialiser to the last static destructor.
/// `qzerr`, and `qzout` on a terminal, go out with every insertion that holds a line end, else `qzout` waits for a
/// full buffer; `flush()` and the end of the process push out what is held.
extern qzostream& qzerr;
extern qzostream& qzout;

/// Counts the units that can use the two streams. Each unit that includes this header has one: the first sets
/// `qzout` up, the last flushes both, and from then on every write goes out at once.
class qzstandardstreamuser {
 public:
  qzstandardstreamuser();
  ~qzstandardstreamuser();
  qzstandardstreamuser(const qzstandardstreamuser&) = delete;
  qzstandardstreamuser& operator=(const qzstandardstreamuser&) = delete;
};

static const qzstandardstreamuser qzstandardstreamuserOfThisUnit;

}  // namespace QZPlatform
