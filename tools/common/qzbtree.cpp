#include "tools/common/qzbtree.h"

#include <algorithm>

#include "qz/system/qzb/item_impl.h"
#include "qz/system/qzb/qzbform.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr unsigned int deepest = 256;
constexpr std::string_view objectName = "QZBasePOD";
constexpr std::string_view ownFlags("\x01\x3F", 2);

using Damage = std::optional<QzbDamage>;

class InPlace : public qzisstream {
 public:
  explicit InPlace(std::string_view bytes) { set(bytes.data(), bytes.size(), false); }
};

bool isPrintable(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// Reads tag and length of an item as QZBinaryRead does.
Damage readHead(qzistream& in, unsigned long base, QzbNode& node) {
  node.offset = base + in.tell();
  char name[QZBTagBufferSize];
  const bool read = QZBReadTag(in, name, node.code);
  if (!read || node.code >= 0x80 || (node.code == 0 && *name == '\0'))
    return QzbDamage{node.offset, QZBReturn::ReadTagFailed};
  node.tag = name;
  const unsigned long lengthOffset = base + in.tell();
  node.length = QZBReadDataLength(in, QZBLargestLength);
  if (node.length == 0) return QzbDamage{lengthOffset, in.eof() ? QZBReturn::EndOfFile : QZBReturn::ReadLengthFailed};
  node.bodyOffset = base + in.tell();
  return {};
}

// Whether bytes are items from the first to the last, all with names that somebody may have chosen.
bool areItems(std::string_view bytes) {
  InPlace in(bytes);
  while (!in.eof()) {
    QzbNode item;
    if (readHead(in, 0, item) || item.length > in.size() - in.tell() || !isPrintable(item.tag)) return false;
    in.skip(static_cast<long>(item.length));
  }
  return !bytes.empty();
}

// Whether bytes are an object: those of the format's own name are, and others if they begin with this machine's flags
// and at least one value.
bool isObject(std::string_view tag, std::string_view bytes) {
  if (tag == objectName) return true;
  if (bytes.substr(0, ownFlags.size()) != ownFlags) return false;
  QZBWalk walk(bytes.data(), bytes.size());
  QZBEntry entry;
  return walk.Next(entry) && entry.form.shape != QZBShape::Unknown && isPrintable(entry.name);
}

Damage readContent(QzbNode& node, std::string_view bytes, unsigned int depth);

Damage readItems(std::vector<QzbNode>& items, std::string_view bytes, unsigned long base, unsigned int depth) {
  InPlace in(bytes);
  while (!in.eof()) {
    QzbNode& item = items.emplace_back();
    if (const Damage damage = readHead(in, base, item)) return damage;
    const unsigned long start = in.tell();
    const std::string_view content = bytes.substr(start, item.length);
    in.skip(static_cast<long>(item.length));
    if (const Damage damage = readContent(item, content, depth)) return damage;
    if (content.size() < item.length) return QzbDamage{base + start, QZBReturn::IncorrectSize};
  }
  return {};
}

// The rest of a payload: items, or bytes.
Damage readRest(QzbNode& node, std::string_view bytes, unsigned long base, unsigned int depth) {
  if (bytes.empty()) return {};
  if (depth < deepest && areItems(bytes)) return readItems(node.parts, bytes, base, depth);
  QzbNode& rest = node.parts.emplace_back();
  rest.offset = rest.bodyOffset = base;
  rest.length = bytes.size();
  rest.entry.body = bytes;
  return {};
}

// The payload of a handled value: a tag, a length, the name of the value, and what stands for the object.
Damage readHandled(QzbNode& value, std::string_view payload, unsigned int depth) {
  InPlace in(payload);
  QzbNode head;
  if (const Damage damage = readHead(in, value.bodyOffset, head)) return damage;
  value.writer = head.tag.empty() ? "code " + std::to_string(head.code) : head.tag;
  const unsigned long nameOffset = value.bodyOffset + in.tell();
  std::string name;
  switch (ReadValueName(in, name)) {
    case NameOutcome::Missing:
      return QzbDamage{nameOffset, QZBReturn::IncorrectHandlerType};
    case NameOutcome::Refused:
      return QzbDamage{nameOffset, QZBReturn::ReadTagFailed};
    case NameOutcome::Read:
      break;
  }
  const unsigned long start = in.tell();
  return readRest(value, payload.substr(start), value.bodyOffset + start, depth);
}

Damage readObject(QzbNode& object, std::string_view bytes, unsigned int depth) {
  object.kind = QzbNode::Kind::Object;
  QZBWalk walk(bytes.data(), bytes.size());
  for (QZBEntry entry; walk.Next(entry);) {
    QzbNode& value = object.parts.emplace_back();
    value.kind = QzbNode::Kind::Value;
    value.offset = object.bodyOffset + walk.EntryOffset();
    value.bodyOffset = object.bodyOffset + static_cast<unsigned long>(entry.body.data() - bytes.data());
    value.tag = std::string(entry.name);
    value.code = entry.code;
    value.length = entry.body.size();
    value.entry = entry;
    if (entry.form.shape == QZBShape::Unknown) value.kind = QzbNode::Kind::Unknown;
    if (entry.form.shape != QZBShape::Handled) continue;
    value.kind = QzbNode::Kind::Handled;
    if (const Damage damage = readHandled(value, entry.body, depth)) return damage;
  }
  if (walk.Status() == QZBReturn::Success) return {};
  return QzbDamage{object.bodyOffset + walk.EntryOffset(), walk.Status()};
}

Damage readContent(QzbNode& node, std::string_view bytes, unsigned int depth) {
  if (depth < deepest && isObject(node.tag, bytes)) return readObject(node, bytes, depth + 1);
  if (depth < deepest && areItems(bytes)) {
    node.kind = QzbNode::Kind::Group;
    return readItems(node.parts, bytes, node.bodyOffset, depth + 1);
  }
  node.entry.body = bytes;
  return {};
}

}  // namespace

std::optional<QzbDamage> ReadQzbItems(qzistream& in, const std::function<void(const QzbNode&)>& use) {
  std::string bytes;
  while (in.peek() >= 0) {
    QzbNode item;
    if (const Damage damage = readHead(in, 0, item)) return damage;
    const bool whole = in.readclaimed(bytes, item.length) == item.length;
    const Damage damage = readContent(item, bytes, 0);
    use(item);
    if (!whole) return QzbDamage{item.bodyOffset, QZBReturn::IncorrectSize};
    if (damage) return damage;
  }
  return {};
}

}  // namespace QZTools
