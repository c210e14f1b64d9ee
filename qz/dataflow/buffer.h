#pragma once

// The encoder and the decoder of the binary forms of records.

#include "qz/dataflow/readbuffer.h"   // IWYU pragma: export
#include "qz/dataflow/writebuffer.h"  // IWYU pragma: export
