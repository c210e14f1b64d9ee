#pragma once

namespace QZPlatform {}

/// The system layer speaks of streams, files, threads and time by their plain names.
namespace QZSystem {
using namespace QZPlatform;
}
