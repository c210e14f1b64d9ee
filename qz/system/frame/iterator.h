#pragma once

// All iterators: the interface, the wrapper that owns one, and the family that hands out vectors, containers,
// selections, concatenations and sorted views.

#include "qz/system/frame/iterbase.h"
#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/frame/iterpred.h"
#include "qz/system/frame/itersorted.h"
#include "qz/system/frame/iterstl.h"
#include "qz/system/frame/itervector.h"
