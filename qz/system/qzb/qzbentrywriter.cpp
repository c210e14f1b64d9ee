#include "qz/system/qzb/qzbentrywriter.h"

#include <algorithm>
#include <cstring>

#include "qz/system/qzb/qzblength_impl.h"
#include "qz/system/qzb/qzbtags_impl.h"

namespace QZSystem {

namespace {

// From this size on, a copy costs more than an entry in the list of pieces.
constexpr unsigned long largeSize = 512;

constexpr unsigned long firstCapacity = 512;
constexpr unsigned long longestLength = 5;
constexpr unsigned long longestTag = QZBTagBufferSize - 1;

// Names and texts are short: two copies that may overlap cost less than a call.
char* putBytes(char* to, const char* bytes, unsigned long size) {
  if (size > 16) {
    std::memcpy(to, bytes, size);
  } else if (size >= 8) {
    std::memcpy(to, bytes, 8);
    std::memcpy(to + size - 8, bytes + size - 8, 8);
  } else if (size >= 4) {
    std::memcpy(to, bytes, 4);
    std::memcpy(to + size - 4, bytes + size - 4, 4);
  } else {
    for (unsigned long i = 0; i < size; ++i) to[i] = bytes[i];
  }
  return to + size;
}

char* putTag(char* to, std::string_view name, unsigned char code) {
  *to++ = static_cast<char>(code);
  if (code != 0) return to;
  return putBytes(PutLength(to, name.size()), name.data(), name.size());
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
  const unsigned long more = std::max({firstCapacity, 2 * capacity, flagBytes + used + size});
  std::unique_ptr<char[]> larger(new char[more]);
  if (used != 0) std::memcpy(larger.get(), collected.get(), flagBytes + used);
  larger[0] = static_cast<char>(QZBIntEndian());
  larger[1] = static_cast<char>(QZBFloatEndian());
  collected = std::move(larger);
  capacity = more;
}

// The tag and the type byte of an entry, with room behind them; null for a name that can't be written.
char* QZBEntryWriter::PutHead(std::string_view name, unsigned char type, unsigned long bodyRoom) {
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
  to = putBytes(PutLength(to, size), static_cast<const char*>(bytes), copied);
  Use(to);
  if (copied != size) Refer(static_cast<const char*>(bytes), size);
  return true;
}

bool QZBEntryWriter::Add(std::string_view name, const std::vector<bool>& elements) {
  char* to = elements.size() > QZBLargestLength ? nullptr
                                                : PutHead(name, QZBType::BoolVector, longestLength + elements.size());
  if (!to) return false;
  to = PutLength(to, elements.size());
  for (bool element : elements) *to++ = element ? 1 : 0;
  Use(to);
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
  to = putBytes(to, HandledPrefix.data(), HandledPrefix.size());
  to = putBytes(to, name.data(), name.size());
  *to++ = static_cast<char>(QZBType::CharVector);
  return PutLength(to, size);
}

bool QZBEntryWriter::AddHandled(std::string_view name, std::string_view payload) {
  const unsigned long copied = payload.size() < largeSize ? payload.size() : 0;
  char* to = PutHandledHead(name, payload.size(), copied);
  if (!to) return false;
  to = putBytes(to, payload.data(), copied);
  Use(to);
  if (copied != payload.size()) Refer(payload.data(), payload.size());
  return true;
}

bool QZBEntryWriter::AddHandled(std::string_view name, std::unique_ptr<char[]> payload, unsigned long size) {
  const bool added = AddHandled(name, std::string_view(payload.get(), size));
  if (added && size >= largeSize) kept.push_back(std::move(payload));
  return added;
}

void QZBEntryWriter::Refer(const char* bytes, unsigned long size) {
  pieces.push_back({used, bytes, size});
  referred += size;
}

bool QZBEntryWriter::Write(qzostream& out, const std::string& tag) const {
  if (IsEmpty()) return true;
  if (!tag.empty()) {
    if (Size() > QZBLargestLength || !QZBWriteTag(out, tag.c_str())) return false;
    QZBWriteDataLength(out, Size());
  }
  const char* from = collected.get();
  for (const Piece& piece : pieces) {
    const char* const to = collected.get() + flagBytes + piece.position;
    out.write(from, static_cast<unsigned long>(to - from));
    out.write(piece.bytes, piece.size);
    from = to;
  }
  out.write(from, static_cast<unsigned long>(collected.get() + flagBytes + used - from));
  return true;
}

void QZBEntryWriter::Clear() {
  used = 0;
  referred = 0;
  pieces.clear();
  kept.clear();
}

}  // namespace QZSystem
