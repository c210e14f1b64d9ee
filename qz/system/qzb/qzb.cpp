#include "qz/system/qzb/qzb.h"

#include <cstring>
#include <string_view>

#include "qz/system/frame/error.h"
#include "qz/system/qzb/qzblength_impl.h"
#include "qz/system/qzb/qzbtags_impl.h"

namespace QZSystem {

namespace {

constexpr const char* lengthEnd = "end of file reached in QZBReadDataLength(QZPlatform::qzistream &)";
constexpr const char* lengthCorrupt = "data size corrupt in QZBinary file";
constexpr const char* tagCorrupt = "error occurred while reading tag in QZBinary file (len = %lu)";

constexpr const char* returnStrings[] = {
    "Success",        "No Parent Class",    "Check Failed",      "Stream Failed",
    "Incorrect Size", "Continue",           "Read Tag Failed",   "Corrupt Header",
    "End of File",    "Read Length Failed", "Type Check Failed", "Incorrect Handler Type"};

constexpr unsigned long longestTag = QZBTagBufferSize - 1;

bool isTagLength(unsigned long length) { return length >= 1 && length <= longestTag; }

}  // namespace

void SendLengthEnd() { QZThrow.Warning(lengthEnd); }

void SendLengthCorrupt() { QZThrow.Warning(lengthCorrupt); }

void SendTagCorrupt(unsigned long length) { QZThrow.Warning(tagCorrupt, length); }

const char* QZGetQZBReturnString(unsigned int code) {
  return code < std::size(returnStrings) ? returnStrings[code] : "Unknown QZBReturn Error";
}

bool QZBWriteDataLength(qzostream& out, unsigned int length) {
  return QZBWriteDataLength(out, static_cast<unsigned long>(length));
}

bool QZBWriteDataLength(qzostream& out, unsigned long length) {
  char bytes[10];
  out.write(bytes, static_cast<unsigned long>(PutLength(bytes, length) - bytes));
  return true;
}

unsigned long QZBReadDataLength(qzistream& in, unsigned long largest) {
  unsigned long length;
  ReadLength(in, largest, length);
  return length;
}

unsigned int QZBDataLengthBytes(unsigned int length) { return QZBDataLengthBytes(static_cast<unsigned long>(length)); }

unsigned int QZBDataLengthBytes(unsigned long length) {
  unsigned int bytes = 1;
  while (length >>= 7) ++bytes;
  return bytes;
}

bool QZBWriteTag(qzostream& out, const char* name) {
  const std::string_view text(name);
  if (!isTagLength(text.size())) return false;
  const unsigned char code = TagCode(text);
  out.write(&code, 1);
  if (code != 0) return true;
  QZBWriteDataLength(out, text.size());
  out.write(text.data(), text.size());
  return true;
}

bool QZBWriteTag(qzostream& out, const char* name, unsigned char code) {
  const std::string_view text(name);
  if (text.size() > longestTag || out.write(&code, 1) != 1) return false;
  if (code != 0 || text.empty()) return true;
  QZBWriteDataLength(out, text.size());
  return out.write(text.data(), text.size()) == text.size();
}

bool QZBReadTag(qzistream& in, char* name, unsigned char& code) {
  *name = '\0';
  const int first = in.get();
  if (first < 0) return false;
  code = static_cast<unsigned char>(first);
  if (in.eof()) return false;
  if (code != 0) {
    QZBGetNonUDTTag(name, code);
    return true;
  }
  const unsigned long length = QZBReadDataLength(in, QZBLargestLength);
  if (!isTagLength(length)) {
    SendTagCorrupt(length);
    return false;
  }
  name[in.read(name, length)] = '\0';
  return !in.eof();
}

bool QZBReadTag(qzistream& in, char* name) {
  unsigned char code;
  return QZBReadTag(in, name, code);
}

bool QZBPeekTag(qzistream& in, char* name, unsigned char& code) {
  *name = '\0';
  const int first = in.peek();
  if (first < 0) return false;
  code = static_cast<unsigned char>(first);
  if (code != 0) QZBGetNonUDTTag(name, code);
  return true;
}

bool QZBPeekTag(qzistream& in, char* name) {
  unsigned char code;
  return QZBPeekTag(in, name, code);
}

void QZBGetNonUDTTag(char* name, unsigned int code) {
  const std::string_view known = code <= 0xFF ? TagName(static_cast<unsigned char>(code)) : std::string_view();
  if (known.empty()) {
    std::memset(name, 0, QZBTagBufferSize);
  } else {
    name[known.copy(name, known.size())] = '\0';
  }
}

bool QZIsInternalQZBTag(const char* name, unsigned long length) { return TagCode({name, length}) != 0; }

unsigned int QZBinarySkip(qzistream& in) {
  char name[QZBTagBufferSize];
  unsigned char code = 0;
  if (!QZBReadTag(in, name, code) || (code == 0 && *name == '\0')) return QZBReturn::ReadTagFailed;
  if (in.eof()) return QZBReturn::EndOfFile;
  const unsigned long length = QZBReadDataLength(in, QZBLargestLength);
  if (length == 0) return in.eof() ? QZBReturn::EndOfFile : QZBReturn::ReadLengthFailed;
  in.skip(static_cast<long>(length));
  return QZBReturn::Success;
}

unsigned int QZBinaryCount(qzistream& in, unsigned int& count) {
  count = 0;
  unsigned int status;
  while ((status = QZBinarySkip(in)) == QZBReturn::Success) ++count;
  return status == QZBReturn::ReadTagFailed && in.eof() ? QZBReturn::Success : status;
}

}  // namespace QZSystem
