#pragma once

#include <string>

#include "qz/platform/stream.h"
#include "qz/system/data/base.h"
#include "qz/system/qzb/qzbhand.h"

/// Object streams: the attached data of an object as bytes, and back, with nothing lost that the reader doesn't know.
///
///     QZBWriteQZBase(out, molecule, "QZBasePOD", handler);
///
///     QZContainer copy;
///     unsigned int code = QZBinaryRead(in, copy, handler);   // a handler with QZBasePODReadFxn<QZContainer>
///     if (code != QZBReturn::Success) qzerr << QZGetQZBReturnString(code) << qzendl;
///
/// Single values, strings, arrays and vectors of the toolkit's types have forms of their own. Any other value goes
/// through a base writer of the handler, and on reading through a reader; without a reader it is kept as
/// `QZUnknownQZBData` under its name, and goes out again as the bytes that came in. Left out are values without a name,
/// a `bool` that is false, and values of a class that the handler has no base writer for. Objects may stand 256 deep in
/// one another. One thread at a time.
namespace QZSystem {

/// Writes the values of an object, in order, as an item with that tag; with an empty tag, the body of the item alone.
/// An object without anything to write writes nothing and gives true. A value whose base writer fails, or whose name
/// has more than 1023 bytes (1008 for a class), is left out after the Warning "Warning: Failed to write QZBase data for
/// tag %s.  Skipping...". False, with nothing written: for objects too deep in one another, for a value by the name of
/// "UnknownQZB" and a number from 128 to 255, and for an item of 4 GiB or more. A failure of the stream shows in the
/// stream.
bool QZBWriteQZBase(qzostream& out, const QZBase& object, const std::string& tag, const QZBinaryIOHandlerBase& handler);

/// The same with a handler that knows no class.
bool QZBWritePOD(qzostream& out, const QZBase& object, const std::string& tag);

/// Reads the body of an object item, `length` bytes, behind its tag and length, and adds its values to the object;
/// values that it has stay, also under the same names. Returns a code of QZBReturn; at the first damage it stops, and
/// what was read before stays attached. Code 2: objects too deep in one another; 4: fewer bytes than told, there or in
/// a value; 6: a tag; 8, 9, 11: tag, length or name within the payload of a class; or what a reader of the handler
/// gave.
[[nodiscard]] unsigned int QZBReadQZBase(qzistream& in, QZBase& object, unsigned long length,
                                         const QZBinaryIOHandlerBase& handler);

/// The same with a handler that knows no class.
[[nodiscard]] unsigned int QZBReadPOD(qzistream& in, QZBase& object, unsigned long length);

}  // namespace QZSystem
