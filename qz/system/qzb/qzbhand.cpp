#include "qz/system/qzb/qzbhand.h"

#include <cstring>
#include <utility>

#include "qz/system/frame/error.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbhandimpl.h"

namespace QZSystem {

namespace {

constexpr const char* longReaderTag = "Attempt to register reader function which has a tag length of > 1024 bytes";
constexpr const char* longWriterTag = "Attempt to register writer function which has a tag length of > 1024 bytes";

bool isTagTooLong(const char* tag) { return std::strlen(tag) + 1 > QZBTagBufferSize; }

template <class Fxn>
std::unique_ptr<Fxn> copyOf(const Fxn& function) {
  return std::unique_ptr<Fxn>(function.CreateCopy());
}

// The copy as a default function, which no operation of the base tells from another one.
template <class Default, class Fxn>
bool setDefault(std::unique_ptr<Default>& present, const Fxn& function) {
  std::unique_ptr<Fxn> copy = copyOf(function);
  auto* const asDefault = dynamic_cast<Default*>(copy.get());
  if (!asDefault) return false;
  static_cast<void>(copy.release());
  present.reset(asDefault);
  return true;
}

template <class Fxn>
bool isAlike(const Fxn& a, const Fxn& b, const char* tagOfB) {
  return a.GetType() == b.GetType() && std::strcmp(a.GetTag(), tagOfB) == 0;
}

template <class Fxn>
bool has(const QZFxnList<Fxn>& list, const Fxn& function) {
  for (const Fxn* each : list.All()) {
    if (isAlike(*each, function, function.GetTag())) return true;
  }
  return false;
}

template <class Fxn>
bool replace(QZFxnList<Fxn>& list, const Fxn& function, const std::string& name) {
  const char* const tag = name.empty() ? function.GetTag() : name.c_str();
  for (unsigned long i = 0; i < list.All().size(); ++i) {
    if (!isAlike(*list.All()[i], function, tag)) continue;
    list.Replace(i, copyOf(function));
    return true;
  }
  return false;
}

template <class Fxn>
void copyAll(QZFxnList<Fxn>& to, QZIter<Fxn> from) {
  for (const Fxn& each : from) to.Add(copyOf(each));
}

std::unique_ptr<QZBinaryIOImpl> copyAll(const QZBinaryIOHandlerBase& from) {
  auto copy = std::make_unique<QZBinaryIOImpl>();
  copyAll(copy->readers, QZIter(from.GetReadFxns()));
  copyAll(copy->writers, QZIter(from.GetWriteFxns()));
  copy->defaultReader.reset(from.GetDefaultReadFxn().CreateCopy());
  copy->defaultWriter.reset(from.GetDefaultWriteFxn().CreateCopy());
  copyAll(copy->baseWriters, QZIter(from.GetBaseWriteFxns()));
  return copy;
}

}  // namespace

QZBinaryIOHandler::QZBinaryIOHandler() : impl(std::make_unique<QZBinaryIOImpl>()) {}

QZBinaryIOHandler::QZBinaryIOHandler(const QZBinaryIOHandler& other)
    : QZBinaryIOHandlerBase(other), impl(copyAll(other)) {}

QZBinaryIOHandler::QZBinaryIOHandler(const QZBinaryIOHandlerBase& other)
    : QZBinaryIOHandlerBase(other), impl(copyAll(other)) {}

QZBinaryIOHandler::~QZBinaryIOHandler() = default;

QZBinaryIOHandler& QZBinaryIOHandler::operator=(const QZBinaryIOHandler& other) {
  if (this == &other) return *this;
  std::unique_ptr<QZBinaryIOImpl> copy = copyAll(other);
  QZBinaryIOHandlerBase::operator=(other);
  impl = std::move(copy);
  return *this;
}

void QZBinaryIOHandler::Clear() {
  impl = std::make_unique<QZBinaryIOImpl>();
  QZBinaryIOHandlerBase::Clear();
}

const void* QZBinaryIOHandler::GetDataType() const { return QZGetDataType<QZBinaryIOHandler>(); }

bool QZBinaryIOHandler::IsDataType(const void* type) const {
  return type == QZGetDataType<QZBinaryIOHandler>() || QZBinaryIOHandlerBase::IsDataType(type);
}

QZBinaryIOHandler* QZBinaryIOHandler::CreateCopy() const { return new QZBinaryIOHandler(*this); }

bool QZBinaryIOHandler::SetReadFxn(const QZReadFxnBase& reader, bool isDefault) {
  if (isTagTooLong(reader.GetTag())) {
    QZThrow.Error(longReaderTag);
    return false;
  }
  if (isDefault) return setDefault(impl->defaultReader, reader);
  impl->readers.Add(copyOf(reader));
  return true;
}

bool QZBinaryIOHandler::SetWriteFxn(const QZWriteFxnBase& writer, bool isDefault) {
  if (isTagTooLong(writer.GetTag())) {
    QZThrow.Error(longWriterTag);
    return false;
  }
  if (isDefault) return setDefault(impl->defaultWriter, writer);
  impl->writers.Add(copyOf(writer));
  return true;
}

const QZDefaultReadFxn& QZBinaryIOHandler::GetDefaultReadFxn() const { return *impl->defaultReader; }

const QZDefaultWriteFxn& QZBinaryIOHandler::GetDefaultWriteFxn() const { return *impl->defaultWriter; }

bool QZBinaryIOHandler::ReplaceReadFxn(const QZReadFxnBase& reader, std::string name) {
  return replace(impl->readers, reader, name);
}

bool QZBinaryIOHandler::ReplaceWriteFxn(const QZWriteFxnBase& writer, std::string name) {
  return replace(impl->writers, writer, name);
}

bool QZBinaryIOHandler::HasReadFxn(const QZReadFxnBase& reader) const { return has(impl->readers, reader); }

bool QZBinaryIOHandler::HasWriteFxn(const QZWriteFxnBase& writer) const { return has(impl->writers, writer); }

QZIterBase<QZReadFxnBase>* QZBinaryIOHandler::GetReadFxns() const {
  return new QZVectorPtrIter<QZReadFxnBase>(impl->readers.All());
}

QZIterBase<QZWriteFxnBase>* QZBinaryIOHandler::GetWriteFxns() const {
  return new QZVectorPtrIter<QZWriteFxnBase>(impl->writers.All());
}

bool QZBinaryIOHandler::SetBaseWriteFxn(const QZWriteFxn<QZBaseData>& writer) {
  if (isTagTooLong(writer.GetTag())) {
    QZThrow.Error(longWriterTag);
    return false;
  }
  impl->baseWriters.Add(copyOf(writer));
  return true;
}

QZIterBase<QZWriteFxn<QZBaseData>>* QZBinaryIOHandler::GetBaseWriteFxns() const {
  return new QZVectorPtrIter<QZWriteFxn<QZBaseData>>(impl->baseWriters.All());
}

}  // namespace QZSystem
