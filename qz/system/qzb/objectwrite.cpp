#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qz/system/frame/error.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/item_impl.h"
#include "qz/system/qzb/nesting_impl.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/payload_impl.h"
#include "qz/system/qzb/qzbentrywriter.h"
#include "qz/system/qzb/qzbtags_impl.h"
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

const FormTable& forms() {
  static const FormTable table;
  return table;
}

// The names of the tags that the thread has written last, with their lengths; a name never changes once it is there.
std::string_view nameOf(unsigned int tag) {
  struct Known {
    unsigned int tag;
    std::string_view name;
  };
  thread_local std::array<Known, 256> known{};
  Known& slot = known[tag % known.size()];
  if (slot.tag != tag || slot.name.empty()) slot = {tag, QZGetTag(tag)};
  return slot.name;
}

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

// False if nothing of the object is to be written.
bool addValue(QZBEntryWriter& item, const QZBaseData& value, const QZBinaryIOHandlerBase& handler) {
  const std::string_view name = nameOf(value.GetTag());
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

bool QZBWriteQZBase(qzostream& out, const QZBase& object, const std::string& tag,
                    const QZBinaryIOHandlerBase& handler) {
  const QZIter<QZBaseData> values(object.GetDataIter());
  if (!values) return true;
  const NestingLevel level(WritingDepth());
  if (level.IsOutermost()) WritingIsTooDeep() = false;
  if (!level.IsAllowed()) WritingIsTooDeep() = true;
  if (WritingIsTooDeep()) return false;
  QZBEntryWriter item;
  QZIterBase<QZBaseData>& value = *values.Get();
  for (; value; ++value) {
    if (!addValue(item, *value, handler)) return false;
  }
  return item.Write(out, tag);
}

// Never destroyed: static objects may be written by their destructors.
bool QZBWritePOD(qzostream& out, const QZBase& object, const std::string& tag) {
  static const QZBinaryIOHandler& handler = *new QZBinaryIOHandler;
  return QZBWriteQZBase(out, object, tag, handler);
}

}  // namespace QZSystem
