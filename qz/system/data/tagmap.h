#pragma once

#include <string>

/// Tags: names as small integers, for the life of the process.
///
///     static const unsigned int chargeTag = QZGetTag("charge");
///     molecule.SetData(chargeTag, -1);
///     qzout << QZGetTag(chargeTag) << qzendl;  // charge
///
/// Files store the names and never the numbers. The tag of a name that the calling thread has met before is found
/// without a lock or an allocation. The tags work from any static initialiser to the end of the process, and names are
/// never forgotten. Safe from any thread.
namespace QZSystem {

/// The tag of a name, which is registered if it is new. The empty name and a null pointer have the tag 0. Throws
/// std::bad_alloc, with nothing registered, if there is no room for a new name.
[[nodiscard]] unsigned int QZGetTag(const char* name);
[[nodiscard]] unsigned int QZGetTag(const std::string& name);
/// The same; a new name is moved from the string.
[[nodiscard]] unsigned int QZGetTag(std::string&& name);

/// The name of a tag, good to the end of the process; "" for a number that is no tag.
[[nodiscard]] const char* QZGetTag(unsigned int tag);

/// Whether a number is below the tag that the next new name gets. The first tags are set aside, so not every such
/// number has a name.
[[nodiscard]] bool QZHasTag(unsigned int tag);

/// Whether a name is registered. Registers nothing.
[[nodiscard]] bool QZHasTag(const std::string& name);

}  // namespace QZSystem
