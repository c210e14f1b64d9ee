#pragma once

namespace QZSystem {

/// Ends the process through the normal exit path with this status. Returns only if the process is ending already, by
/// this function in any thread or by the end of main: two exits at once would run static destructors beside each other.
/// The caller then goes on, so that a thread which waits for it isn't left waiting.
void EndProcess(int status);

/// Tells that the process is ending: EndProcess only returns from now on.
void ProcessIsEnding();

}  // namespace QZSystem
