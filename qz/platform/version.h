#pragma once

#include <string>

namespace QZPlatform {

class qzostream;

/// The version of one library of a toolkit.
///
///     QZVersion MyVersion() { return {"mytoolkit", "MyLibrary", "1.2.0"}; }
///     static const bool registered = (QZRegisterVersion(&MyVersion), true);
///
/// Const operations may run in parallel; a change needs exclusive access.
struct QZVersion {
  std::string toolkit;
  std::string library;
  std::string release;
};

/// Adds a version to those that QZGetVersions lists. Works from any static initialiser to the last static destructor.
/// Safe from any thread.
/// REQUIRES: `version` isn't null and stays callable until the process ends.
void QZRegisterVersion(QZVersion (*version)());

/// Prints a line for each registered version, in order of registration: toolkit, library and release with one blank
/// between. Safe from any thread.
void QZGetVersions(qzostream& out);

}  // namespace QZPlatform
