#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "qz/system/data/tagfacts_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/theonly_impl.h"
#include "qz/system/qzb/item_impl.h"
#include "qz/system/qzb/nesting_impl.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/payload_impl.h"
#include "qz/system/qzb/qzbentrywriter.h"
#include "qz/system/qzb/qzbtags_impl.h"
#include "qz/system/qzb/shortname_impl.h"
#include "qz/system/qzb/unknowndata.h"

// The layout stands in objectread.cpp.

namespace QZSystem {

namespace {

constexpr const char* writerFailed = "Warning: Failed to write QZBase data for tag %s.  Skipping...";

// Unknown data under such a name is what a whole item was: it has no place in another object.
constexpr std::string_view unknownPrefix = "QZUnknownQZB";

constexpr unsigned char firstRefusedCode = 0x80;

using AddWritten = bool (*)(QZBEntryWriter&, std::string_view name, const QZBaseData&);

template <class T>
bool addSingle(QZBEntryWriter& item, std::string_view name, const QZBaseData& value) {
  return item.Add(name, static_cast<const QZBaseDataT<T>&>(value).GetData());
}

template <class T>
bool addArray(QZBEntryWriter& item, std::string_view name, const QZBaseData& value) {
  const auto& array = static_cast<const QZBaseDataTPtr<T*>&>(value);
  return item.AddArray(name, array.GetData(), array.GetSize());
}

// The kept bytes are the payload.
bool addUnknown(QZBEntryWriter& item, std::string_view name, const QZBaseData& value) {
  const QZUnknownQZBData& unknown = static_cast<const QZBaseDataT<QZUnknownQZBData>&>(value).GetData();
  if (StartsWith(name, unknownPrefix)) return true;
  return item.AddHandled(name, std::string_view(unknown.data.data(), unknown.data.size()));
}

// The types that the format has forms for, by identity. Identities are hashes, so their bits spread well, and a value's
// form is found at the first or second look.
class FormTable {
 public:
  FormTable() {
    Put<bool, int, float, double, std::string>();
    PutArrays<bool, char, unsigned char, int, unsigned int, float, double, QZHalfFloat>();
    Put<std::vector<bool>, std::vector<char>, std::vector<unsigned char>, std::vector<short>,
        std::vector<unsigned short>, std::vector<int>, std::vector<unsigned int>, std::vector<float>,
        std::vector<double>, std::vector<QZHalfFloat>>();
    Insert(QZBaseDataT<QZUnknownQZBData>::DataType(), addUnknown);
  }

  /// How a value of that identity is added, null for a class that the format doesn't know.
  [[nodiscard]] AddWritten Find(const void* type) const {
    std::size_t slot = Start(type);
    while (slots[slot].type != type && slots[slot].add) slot = (slot + 1) % slots.size();
    return slots[slot].add;
  }

 private:
  struct Slot {
    const void* type = nullptr;
    AddWritten add = nullptr;
  };

  static std::size_t Start(const void* type) { return reinterpret_cast<std::uintptr_t>(type) >> 58; }

  void Insert(const void* type, AddWritten add) {
    std::size_t slot = Start(type);
    while (slots[slot].add) slot = (slot + 1) % slots.size();
    slots[slot] = {type, add};
  }
  template <class... T>
  void Put() {
    (Insert(QZBaseDataT<T>::DataType(), addSingle<T>), ...);
  }
  template <class... T>
  void PutArrays() {
    (Insert(QZBaseDataTPtr<T*>::DataType(), addArray<T>), ...);
  }

  std::array<Slot, 64> slots;
};

const FormTable& forms() { return TheOnly<FormTable>(); }

// A name, and in front of it what its tag begins with: an entry begins with a copy of it.
struct alignas(64) KnownName {
  static constexpr unsigned long room = 40;

  void Learn(unsigned int theTag, const char* name) {
    text = name;
    tag = theTag;
    headSize = 0;
    if (Text().size() + 2 > room || !IsShortName(Text())) return;
    headSize = static_cast<unsigned int>(PutShortName(head, Text()) - head);
  }
  [[nodiscard]] std::string_view Text() const { return text; }

  char head[room];
  unsigned int headSize;  // 0 for a name that isn't short enough, or may have a code
  unsigned int tag;
  const char* text;
};

TagFacts<KnownName> knownNames;

enum class Outcome { Done, Refused, WriterFailed, TooDeep };

// A value of a class, which a base writer of the handler writes into a block of its own. One that nobody writes is left
// out without a word.
Outcome addHandled(QZBEntryWriter& item, std::string_view name, const QZBaseData& value,
                   const QZBinaryIOHandlerBase& handler) {
  const QZWriteFxn<QZBaseData>* const writer = FindBaseWriter(handler, value.GetDataType());
  if (!writer) return Outcome::Done;
  const auto body = std::make_unique<BodyStream>();
  const bool written = (*writer)(*body, value, handler);
  if (WritingIsTooDeep()) return Outcome::TooDeep;
  if (!written) return Outcome::WriterFailed;
  const unsigned long size = body->Bytes().size();
  return item.AddHandled(name, body->Release(), size) ? Outcome::Done : Outcome::Refused;
}

// An entry of any kind. False if nothing of the object is to be written.
[[gnu::noinline]] bool addValue(QZBEntryWriter& item, std::string_view name, const QZBaseData& value,
                                const QZBinaryIOHandlerBase& handler) {
  if (name.empty()) return true;
  const AddWritten add = forms().Find(value.GetDataType());
  const Outcome outcome = !add                     ? addHandled(item, name, value, handler)
                          : add(item, name, value) ? Outcome::Done
                                                   : Outcome::Refused;
  if (outcome == Outcome::Done) return true;
  if (outcome == Outcome::TooDeep) return false;
  if (outcome == Outcome::Refused && UnknownCodeOf(name) >= firstRefusedCode) return false;
  QZThrow.Warning(writerFailed, name.data());
  return true;
}

}  // namespace

// An object item that is being collected. The usual entries, a number or a short text under a name that is known, take
// one step without a call, and the place that they go to stays in a register from one to the next. One thread at a
// time.
class ObjectItem {
 public:
  ObjectItem() = default;
  // Collects the entries in this memory as long as they fit.
  ObjectItem(char* memory, unsigned long size) : item(memory, size) {}

  // False if nothing of the object is to be written.
  bool Add(const std::vector<QZBaseData*>& values, const QZBinaryIOHandlerBase& handler);

  bool Write(qzostream& out, const std::string& tag) const { return item.Write(out, tag); }

 private:
  static constexpr unsigned long longestBody = 63;
  static constexpr unsigned long shortRoom = KnownName::room + 2 + longestBody;

  static char* PutShort(char* to, const KnownName& name, const QZBaseData& value);
  static char* PutBody(char* to, unsigned char type, const char* bytes, unsigned long size);
  template <class T>
  static char* PutNumber(char* to, unsigned char type, const QZBaseData& value);

  QZBEntryWriter item;
};

bool ObjectItem::Add(const std::vector<QZBaseData*>& values, const QZBinaryIOHandlerBase& handler) {
  char* to = item.at;
  for (const QZBaseData* value : values) {
    if (!value) continue;
    const KnownName& name = knownNames.Of(value->GetTag());
    const bool isRoom = static_cast<unsigned long>(item.limit - to) >= shortRoom;
    if (char* const end = isRoom && name.headSize != 0 ? PutShort(to, name, *value) : nullptr) {
      to = end;
      continue;
    }
    item.at = to;
    if (!addValue(item, name.Text(), *value, handler)) return false;
    to = item.at;
  }
  item.at = to;
  return true;
}

// Null, with nothing of worth at `to`, for any other entry. Nearly always the class is the very one, which shows sooner
// than its identity does.
inline char* ObjectItem::PutShort(char* to, const KnownName& name, const QZBaseData& value) {
  std::memcpy(to, name.head, KnownName::room);
  to += name.headSize;
  const std::type_info* const type = &typeid(value);
  if (type == &typeid(QZBaseDataT<int>)) return PutNumber<int>(to, QZBType::Int, value);
  if (type == &typeid(QZBaseDataT<double>)) return PutNumber<double>(to, QZBType::Double, value);
  if (type == &typeid(QZBaseDataT<std::string>)) {
    const std::string& text = static_cast<const QZBaseDataT<std::string>&>(value).GetData();
    return PutBody(to, QZBType::String, text.data(), text.size());
  }
  // What an object keeps instead of a flag, since a single one that is false has no entry.
  if (type == &typeid(QZBaseDataTPtr<bool*>)) {
    const auto& flags = static_cast<const QZBaseDataTPtr<bool*>&>(value);
    return PutBody(to, QZBType::BoolArray, reinterpret_cast<const char*>(flags.GetData()), flags.GetSize());
  }
  return nullptr;
}

inline char* ObjectItem::PutBody(char* to, unsigned char type, const char* bytes, unsigned long size) {
  if (size > longestBody) return nullptr;
  to[0] = static_cast<char>(type);
  to[1] = ShortLength(size);
  return PutBytes(to + 2, bytes, size);
}

template <class T>
inline char* ObjectItem::PutNumber(char* to, unsigned char type, const QZBaseData& value) {
  *to = static_cast<char>(type);
  std::memcpy(to + 1, &static_cast<const QZBaseDataT<T>&>(value).GetData(), sizeof(T));
  return to + 1 + sizeof(T);
}

// Kept apart: only the outermost object has so large a frame.
[[gnu::noinline]] static bool writeOutermost(qzostream& out, const std::vector<QZBaseData*>& values,
                                             const std::string& tag, const QZBinaryIOHandlerBase& handler) {
  char memory[2048];
  ObjectItem item(memory, sizeof memory);
  return item.Add(values, handler) && item.Write(out, tag);
}

bool QZBWriteQZBase(qzostream& out, const QZBase& object, const std::string& tag,
                    const QZBinaryIOHandlerBase& handler) {
  const std::vector<QZBaseData*>* const values = QZBaseImpl::DataOf(object);
  if (!values || values->empty()) return true;
  const NestingLevel level(WritingDepth());
  if (level.IsOutermost()) WritingIsTooDeep() = false;
  if (!level.IsAllowed()) WritingIsTooDeep() = true;
  if (WritingIsTooDeep()) return false;
  if (level.IsOutermost()) return writeOutermost(out, *values, tag, handler);
  ObjectItem item;
  return item.Add(*values, handler) && item.Write(out, tag);
}

bool QZBWritePOD(qzostream& out, const QZBase& object, const std::string& tag) {
  return QZBWriteQZBase(out, object, tag, TheOnly<QZBinaryIOHandler>());
}

}  // namespace QZSystem
