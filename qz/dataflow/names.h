#pragma once

#include "qz/system/frame/names.h"

/// The data-flow layer speaks of everything above it by its plain name.
namespace QZDataFlow {
using namespace QZSystem;
}
