#pragma once

#include "qz/platform/stream.h"
#include "qz/system/frame/names.h"
#include "qz/system/qzb/qzbendian.h"

/// The primitives of QZB, the tag-length binary format: tags, lengths, return codes, and the walk that passes over
/// items without knowing them.
///
///     QZBWriteTag(out, "colours");
///     QZBWriteDataLength(out, payload.size());
///     out.write(payload);
///
///     unsigned int items = 0;
///     if (QZBinaryCount(in, items) != QZBReturn::Success) ...
///
/// An item is a tag, a length, and as many bytes. A length stands in groups of 7 bits, the low group first, one in a
/// byte; the last byte has its high bit set and the others don't. A tag is a code byte that stands for a name that the
/// format knows, or a zero byte, the length of the name, 1 to 1023, and the name. One thread at a time.
namespace QZSystem {

/// What the reading functions return.
struct QZBReturn {
  static constexpr unsigned int Success = 0;
  static constexpr unsigned int NoParentClass = 1;
  static constexpr unsigned int CheckFailed = 2;
  static constexpr unsigned int StreamFailed = 3;
  static constexpr unsigned int IncorrectSize = 4;
  static constexpr unsigned int Continue = 5;
  static constexpr unsigned int ReadTagFailed = 6;
  static constexpr unsigned int CorruptHeader = 7;
  static constexpr unsigned int EndOfFile = 8;
  static constexpr unsigned int ReadLengthFailed = 9;
  static constexpr unsigned int TypeCheckFailed = 10;
  static constexpr unsigned int IncorrectHandlerType = 11;
};

/// The text of a return code, "Read Tag Failed" for instance; good to the end of the process.
[[nodiscard]] const char* QZGetQZBReturnString(unsigned int code);

/// The size of the buffer that a name is read into: a name of 1023 bytes and a terminator.
inline constexpr unsigned long QZBTagBufferSize = 1024;

/// The largest length that an item can have.
inline constexpr unsigned long QZBLargestLength = 0xFFFFFFFF;

/// Write a length: 1 to 5 bytes, or 1 to 10. Always true; a failure shows in the stream.
bool QZBWriteDataLength(qzostream& out, unsigned int length);
bool QZBWriteDataLength(qzostream& out, unsigned long length);

/// Reads a length of at most `largest`. Returns 0 after the Warning "end of file reached in
/// QZBReadDataLength(QZPlatform::qzistream &)" or "data size corrupt in QZBinary file", and so for an empty item too.
[[nodiscard]] unsigned long QZBReadDataLength(qzistream& in, unsigned long largest);

/// How many bytes a length takes.
[[nodiscard]] unsigned int QZBDataLengthBytes(unsigned int length);
[[nodiscard]] unsigned int QZBDataLengthBytes(unsigned long length);

/// Writes a name as its code, or as text if it has none. False, with nothing written, unless the name has 1 to 1023
/// bytes; a failure of the stream shows in the stream alone.
bool QZBWriteTag(qzostream& out, const char* name);

/// Writes the code byte as given, and the name behind it if that byte is 0 and the name isn't empty. False if the name
/// has more than 1023 bytes, with nothing written, or if the stream doesn't take all of it.
bool QZBWriteTag(qzostream& out, const char* name, unsigned char code);

/// Reads a tag: the name, "" for a code that has none, and the raw code byte. `name` has room for QZBTagBufferSize
/// bytes. False at the end of the stream, also when it is the tag that ends it, since something always follows a tag;
/// and after the Warning "error occurred while reading tag in QZBinary file (len = %d)".
[[nodiscard]] bool QZBReadTag(qzistream& in, char* name, unsigned char& code);
[[nodiscard]] bool QZBReadTag(qzistream& in, char* name);

/// Look at the next tag without consuming it. A name that stands as text reads as "", with the code 0.
[[nodiscard]] bool QZBPeekTag(qzistream& in, char* name, unsigned char& code);
[[nodiscard]] bool QZBPeekTag(qzistream& in, char* name);

/// Puts the name of a code into a buffer of QZBTagBufferSize bytes, which is filled with zeros if the code has none.
void QZBGetNonUDTTag(char* name, unsigned int code);

/// Whether the name of that many bytes has a code.
[[nodiscard]] bool QZIsInternalQZBTag(const char* name, unsigned long length);

/// Passes over one item. Codes: 6 for a tag that can't be read, 8 where the stream ends behind it, 9 for an item
/// without content, which ends the walk. A payload that is cut short isn't noticed.
[[nodiscard]] unsigned int QZBinarySkip(qzistream& in);

/// Counts the items up to the end of the stream. The code is 0 if it ends behind an item, else that of the item at
/// which the walk stopped, with the items before it counted.
[[nodiscard]] unsigned int QZBinaryCount(qzistream& in, unsigned int& count);

}  // namespace QZSystem
