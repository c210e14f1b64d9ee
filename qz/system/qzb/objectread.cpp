#include <cassert>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/item_impl.h"
#include "qz/system/qzb/nesting_impl.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/payload_impl.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbwalk.h"
#include "qz/system/qzb/unknowndata.h"

// The format of an object item:
//
//   tag, length                 absent in a body that stands alone
//   int flag, float flag        the byte order of the writer
//   for each value:
//     tag                       the name
//     type byte                 the form of the body, see qzbform.h
//     body                      an element; or a length in bytes and elements, behind a flag byte for shorts
//
// A value of a class has the type byte 0x60, and then a second tag, "!HandledQZBTag:" with the name behind it, the byte
// 0x51 and a length: to a reader that knows no classes it is a vector of bytes under a name of its own. Its payload:
//
//   tag                         of the function that wrote it
//   length
//   tag                         the name once more
//   item                        the object, as QZBinaryWrite writes it

namespace QZSystem {

namespace {

using AddRead = void (*)(QZBase&, unsigned int tag, const QZBEntry&);

template <class T>
void addSingle(QZBase& object, unsigned int tag, const QZBEntry& entry) {
  object.AddData<T>(tag, entry.Get<T>());
}

template <>
void addSingle<bool>(QZBase& object, unsigned int tag, const QZBEntry& entry) {
  object.AddData<bool>(tag, entry.body[0] != 0);
}

void addString(QZBase& object, unsigned int tag, const QZBEntry& entry) {
  object.AddData<std::string>(tag, std::string(entry.body));
}

template <class T>
void fill(T* to, const QZBEntry& entry) {
  entry.CopyTo(to);
}

// Every byte but 0 is true; a `bool` itself can't hold anything but 0 and 1.
void fill(bool* to, const QZBEntry& entry) {
  for (char each : entry.body) *to++ = each != 0;
}

// The holder makes the array, and the elements go straight into it: where they stand in the stream they aren't aligned.
template <class T>
void addArray(QZBase& object, unsigned int tag, const QZBEntry& entry) {
  object.AddData<T*>(tag, nullptr, static_cast<unsigned int>(entry.Count()));
  QZIter<QZBaseData> added(object.GetDataIter());
  QZHolderOf<T*>* const holder = QZBaseImpl::As<T*>(added.ToLast().Get()->operator->());
  assert(holder);
  fill(holder->GetData(), entry);
}

template <class T>
void addVector(QZBase& object, unsigned int tag, const QZBEntry& entry) {
  std::vector<T> elements(entry.Count());
  fill(elements.data(), entry);
  object.AddData<std::vector<T>>(tag, std::move(elements));
}

template <>
void addVector<bool>(QZBase& object, unsigned int tag, const QZBEntry& entry) {
  std::vector<bool> elements;
  elements.reserve(entry.body.size());
  for (char each : entry.body) elements.push_back(each != 0);
  object.AddData<std::vector<bool>>(tag, std::move(elements));
}

AddRead adderOf(unsigned char type) {
  switch (type) {
    case QZBType::Int:
      return addSingle<int>;
    case QZBType::Bool:
      return addSingle<bool>;
    case QZBType::BoolArray:
      return addArray<bool>;
    case QZBType::Float:
      return addSingle<float>;
    case QZBType::FloatArray:
      return addArray<float>;
    case QZBType::CharArray:
      return addArray<char>;
    case QZBType::UCharArray:
      return addArray<unsigned char>;
    case QZBType::Double:
      return addSingle<double>;
    case QZBType::String:
      return addString;
    case QZBType::DoubleArray:
      return addArray<double>;
    case QZBType::HalfFloatArray:
      return addArray<QZHalfFloat>;
    case QZBType::IntArray:
      return addArray<int>;
    case QZBType::UIntArray:
      return addArray<unsigned int>;
    case QZBType::BoolVector:
      return addVector<bool>;
    case QZBType::CharVector:
      return addVector<char>;
    case QZBType::UCharVector:
      return addVector<unsigned char>;
    case QZBType::ShortVector:
      return addVector<short>;
    case QZBType::UShortVector:
      return addVector<unsigned short>;
    case QZBType::IntVector:
      return addVector<int>;
    case QZBType::UIntVector:
      return addVector<unsigned int>;
    case QZBType::FloatVector:
      return addVector<float>;
    case QZBType::DoubleVector:
      return addVector<double>;
    case QZBType::HalfFloatVector:
      return addVector<QZHalfFloat>;
    default:
      return nullptr;
  }
}

// The reading of one object: all that a level needs lives in one block of the heap, and what isn't a way down is never
// inlined, so that the frames of 256 levels fit on a small stack.
class Reading {
 public:
  Reading(qzistream& in, QZBase& target, unsigned long length)
      : item(in, length), walk(item.Bytes().data(), item.Bytes().size()), object(target) {}

  /// Adds values up to the first that only a function can read; false at the end and where reading stops.
  [[gnu::noinline]] bool ToHandled();

  /// Reads the head of that value's payload. True if the handler has a reader for it; else the payload is kept.
  [[gnu::noinline]] bool Open(const QZBinaryIOHandlerBase& handler);

  /// Calls the reader.
  void Read(const QZBinaryIOHandlerBase& handler) {
    const auto& reader = static_cast<const QZReadFxn<QZBase>&>(*head.reader);
    status = reader(*payload, object, head.length, handler);
  }

  [[nodiscard]] bool IsWhole() const { return item.IsWhole(); }
  [[nodiscard]] unsigned int Status() const { return status != QZBReturn::Success ? status : walk.Status(); }

 private:
  unsigned int Keep();

  Payload item;
  QZBWalk walk;
  QZBEntry entry;
  std::string name;
  QZBase& object;
  std::optional<PayloadStream> payload;
  ItemHead head;
  unsigned int status = QZBReturn::Success;
};

bool Reading::ToHandled() {
  while (status == QZBReturn::Success && walk.Next(entry)) {
    if (entry.form.shape == QZBShape::Handled) return true;
    const AddRead add = adderOf(entry.type);
    if (!add) continue;
    name.assign(entry.name);
    add(object, QZGetTag(name.c_str()), entry);
  }
  return false;
}

bool Reading::Open(const QZBinaryIOHandlerBase& handler) {
  if (!payload) payload.emplace();
  payload->Set(entry.body);
  status = ReadItemHead(*payload, QZGetDataType<QZBase>(), handler, head);
  if (status != QZBReturn::Success) return false;
  if (!head.reader) status = Keep();
  return head.reader != nullptr;
}

// A payload that nobody reads. Its name stands behind the head, and everything is kept.
unsigned int Reading::Keep() {
  switch (ReadValueName(*payload, name)) {
    case NameOutcome::Missing:
      return QZBReturn::IncorrectHandlerType;
    case NameOutcome::Refused:
      return QZBReturn::ReadTagFailed;
    case NameOutcome::Read:
      break;
  }
  QZUnknownQZBData unknown;
  unknown.data.assign(entry.body.begin(), entry.body.end());
  unknown.type = QZGetDataType<QZBase>();
  unknown.tag = head.tag;
  unknown.code = head.code;
  object.AddData<QZUnknownQZBData>(QZGetTag(name), std::move(unknown));
  return QZBReturn::Success;
}

}  // namespace

unsigned int QZBReadQZBase(qzistream& in, QZBase& object, unsigned long length, const QZBinaryIOHandlerBase& handler) {
  const NestingLevel level(ReadingDepth());
  if (!level.IsAllowed()) return QZBReturn::CheckFailed;
  const auto reading = std::make_unique<Reading>(in, object, length);
  if (!reading->IsWhole()) return QZBReturn::IncorrectSize;
  while (reading->ToHandled()) {
    if (reading->Open(handler)) reading->Read(handler);
  }
  return reading->Status();
}

unsigned int QZBReadPOD(qzistream& in, QZBase& object, unsigned long length) {
  return QZBReadQZBase(in, object, length, QZBinaryIOHandler());
}

}  // namespace QZSystem
