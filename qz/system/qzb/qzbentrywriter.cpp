#include "qz/system/qzb/qzbentrywriter.h"

#include <algorithm>
#include <cstring>

#include "qz/system/qzb/qzblength_impl.h"
#include "qz/system/qzb/qzbtags_impl.h"
#include "qz/system/qzb/shortname_impl.h"

namespace QZSystem {

namespace {

// From this size on, a copy costs more than an entry in the list of pieces.
constexpr unsigned long largeSize = 512;

// Of these sizes the heap keeps blocks at hand.
constexpr unsigned long firstCapacity = 1000;
constexpr unsigned long usualPieces = 8;
constexpr unsigned long longestLength = 5;
constexpr unsigned long longestTag = QZBTagBufferSize - 1;

char* putTag(char* to, std::string_view name, unsigned char code) {
  *to++ = static_cast<char>(code);
  if (code != 0) return to;
  return PutBytes(PutLength(to, name.size()), name.data(), name.size());
}

// False for a code that can't be written.
bool codeOf(std::string_view name, unsigned char& code) {
  code = 0;
  if (!MayHaveCode(name[0])) return true;
  code = UnknownCodeOf(name);
  if (code == 0) code = TagCode(name);
  return code < 0x80;
}

}  // namespace

void QZBEntryWriter::Grow(unsigned long size) {
  const unsigned long used = start ? Collected() : flagBytes;
  const unsigned long capacity = std::max({firstCapacity, 2 * used, used + size});
  std::unique_ptr<char[]> larger(new char[capacity]);
  if (start) std::memcpy(larger.get(), start, used);
  block = std::move(larger);
  start = block.get();
  limit = start + capacity;
  Begin();
  at = start + used;
}

// The tag and the type byte of an entry, with room behind them; null for a name that can't be written.
char* QZBEntryWriter::PutHead(std::string_view name, unsigned char type, unsigned long bodyRoom) {
  if (!IsShortName(name)) return PutLongHead(name, type, bodyRoom);
  char* const to = PutShortName(Room(longestShortName + 3 + bodyRoom), name);
  *to = static_cast<char>(type);
  return to + 1;
}

char* QZBEntryWriter::PutLongHead(std::string_view name, unsigned char type, unsigned long bodyRoom) {
  if (name.empty() || name.size() > longestTag) return nullptr;
  unsigned char code = 0;
  if (!codeOf(name, code)) return nullptr;
  char* to = putTag(Room(1 + longestLength + name.size() + 1 + bodyRoom), name, code);
  *to++ = static_cast<char>(type);
  return to;
}

bool QZBEntryWriter::AddBytes(std::string_view name, unsigned char type, const void* bytes, unsigned long size) {
  if (size > QZBLargestLength) return false;
  const unsigned long copied = size < largeSize ? size : 0;
  char* to = PutHead(name, type, 1 + longestLength + copied);
  if (!to) return false;
  if (QZGetQZBForm(type).flag == QZBFlag::Short) *to++ = static_cast<char>(QZBShortEndian());
  at = PutBytes(PutLength(to, size), static_cast<const char*>(bytes), copied);
  if (copied != size) Refer(static_cast<const char*>(bytes), size);
  return true;
}

bool QZBEntryWriter::Add(std::string_view name, const std::vector<bool>& elements) {
  char* to = elements.size() > QZBLargestLength ? nullptr
                                                : PutHead(name, QZBType::BoolVector, longestLength + elements.size());
  if (!to) return false;
  to = PutLength(to, elements.size());
  for (bool element : elements) *to++ = element ? 1 : 0;
  at = to;
  return true;
}

// Both halves of the head and the length. A name that begins like a second tag would be read as one: then the second
// half alone says the same.
char* QZBEntryWriter::PutHandledHead(std::string_view name, unsigned long size, unsigned long bodyRoom) {
  if (name.empty() || name.size() > longestTag - HandledPrefix.size() || size > QZBLargestLength) return nullptr;
  unsigned char code = 0;
  const bool isAlone = StartsWith(name, HandledPrefix);
  if (!isAlone && !codeOf(name, code)) return nullptr;
  char* to = Room(2 * (1 + longestLength + name.size() + 1) + HandledPrefix.size() + longestLength + bodyRoom);
  if (!isAlone) {
    to = putTag(to, name, code);
    *to++ = static_cast<char>(QZBType::Handled);
  }
  *to++ = 0;
  to = PutLength(to, HandledPrefix.size() + name.size());
  to = PutBytes(to, HandledPrefix.data(), HandledPrefix.size());
  to = PutBytes(to, name.data(), name.size());
  *to++ = static_cast<char>(QZBType::CharVector);
  return PutLength(to, size);
}

bool QZBEntryWriter::AddHandled(std::string_view name, std::string_view payload) {
  const unsigned long copied = payload.size() < largeSize ? payload.size() : 0;
  char* to = PutHandledHead(name, payload.size(), copied);
  if (!to) return false;
  at = PutBytes(to, payload.data(), copied);
  if (copied != payload.size()) Refer(payload.data(), payload.size());
  return true;
}

bool QZBEntryWriter::AddHandled(std::string_view name, std::unique_ptr<char[]> payload, unsigned long size) {
  const bool added = AddHandled(name, std::string_view(payload.get(), size));
  if (added && size >= largeSize) kept.push_back(std::move(payload));
  return added;
}

void QZBEntryWriter::Refer(const char* bytes, unsigned long size) {
  if (pieces.empty()) pieces.reserve(usualPieces);
  pieces.push_back({Collected(), bytes, size});
  referred += size;
}

bool QZBEntryWriter::Write(qzostream& out, const std::string& tag) const {
  if (IsEmpty()) return true;
  if (!tag.empty()) {
    if (Size() > QZBLargestLength || !QZBWriteTag(out, tag.c_str())) return false;
    QZBWriteDataLength(out, Size());
  }
  const char* from = start;
  for (const Piece& piece : pieces) {
    const char* const to = start + piece.position;
    out.write(from, static_cast<unsigned long>(to - from));
    out.write(piece.bytes, piece.size);
    from = to;
  }
  out.write(from, static_cast<unsigned long>(at - from));
  return true;
}

void QZBEntryWriter::Clear() {
  if (start) at = start + flagBytes;
  referred = 0;
  pieces.clear();
  kept.clear();
}

}  // namespace QZSystem
