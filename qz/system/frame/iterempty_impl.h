#pragma once

namespace QZSystem {

/// Tells that somebody dereferenced an iterator over nothing.
void SendEmptyDereference();

}  // namespace QZSystem
