#pragma once

/// The platform layer, namespace QZPlatform: streams, files, threads, per-thread values, time, numbers, binary values,
/// compression and the registry of versions.

#include "qz/platform/binarydump.h"
#include "qz/platform/binaryvalue.h"
#include "qz/platform/bufferpool.h"
#include "qz/platform/clock.h"
#include "qz/platform/compress.h"
#include "qz/platform/file.h"
#include "qz/platform/filereplace.h"
#include "qz/platform/filestream.h"
#include "qz/platform/halffloat.h"
#include "qz/platform/inputstream.h"
#include "qz/platform/machine.h"
#include "qz/platform/memorystream.h"
#include "qz/platform/number.h"
#include "qz/platform/numbertext.h"
#include "qz/platform/outputstream.h"
#include "qz/platform/standardstream.h"
#include "qz/platform/stream.h"
#include "qz/platform/streambase.h"
#include "qz/platform/thread.h"
#include "qz/platform/threadlocal.h"
#include "qz/platform/version.h"
#include "qz/platform/wrapperstream.h"
