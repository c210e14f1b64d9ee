#include "qz/system/cli/fileparameter.h"

#include <limits>
#include <new>
#include <stdexcept>

#include "qz/platform/file.h"
#include "qz/platform/filestream.h"
#include "qz/system/cli/parameterbinary_impl.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr char noSuchFile[] = "%s file %s does not exist or is empty.";

using ContentsIter = QZSTLIter<ConstIterGuts<std::deque<qzisstream>>>;

// The size of a source that has none.
constexpr unsigned long unknownSize = std::numeric_limits<unsigned long>::max();

// All bytes of a file: those of its size, or, where the source has none, those that arrive. False if it doesn't open,
// if nothing or less than the size arrives, or if the bytes don't fit into memory.
bool readWhole(const std::string& path, std::string& contents) try {
  qzifstream in;
  in.open(path);
  if (in.eof()) return false;
  const unsigned long size = in.size();
  const unsigned long count = in.readclaimed(contents, size);
  return count != 0 && (count == size || size == unknownSize);
} catch (const std::bad_alloc&) {
  return false;
} catch (const std::length_error&) {
  return false;
}

}  // namespace

std::string QZFileParameter::StaticClassID() { return "file"; }

bool QZFileParameter::AddLegalValue(const std::string&) { return false; }

bool QZFileParameter::AddIllegalValue(const std::string&) { return false; }

bool QZFileParameter::AddLegalRange(const std::string&, const std::string&) { return false; }

bool QZFileParameter::AddIllegalRange(const std::string&, const std::string&) { return false; }

std::string QZFileParameter::ClassID() const { return StaticClassID(); }

unsigned long QZFileParameter::WriteValueAndDefaultBinary(unsigned char* bytes) const {
  const unsigned long used = WriteParameterContents(bytes, TypedValues());
  return used + WriteParameterContents(bytes + used, TypedDefaults());
}

unsigned long QZFileParameter::ReadValueAndDefaultBinary(const unsigned char* bytes) {
  ParameterBytes in(bytes, std::numeric_limits<unsigned long>::max());
  ReadParameterContents(in, TypedValues(), TypedDefaults());
  return in.Used();
}

unsigned long QZFileParameter::ReadValueAndDefaultBinary(const unsigned char* bytes, unsigned long size) {
  ParameterBytes in(bytes, size);
  return ReadParameterContents(in, TypedValues(), TypedDefaults()) ? in.Used() : 0;
}

unsigned long QZFileParameter::ValueAndDefaultBinarySize() const {
  return ParameterContentsSize(TypedValues()) + ParameterContentsSize(TypedDefaults());
}

QZFileParameter* QZFileParameter::CreateCopy() const { return new QZFileParameter(*this); }

bool QZFileParameter::IsValidString(const std::string&) const { return true; }

QZIterBase<const qzisstream>* QZFileParameter::GetValues() const { return new ContentsIter(TypedValues()); }

QZIterBase<const qzisstream>* QZFileParameter::GetDefaults() const { return new ContentsIter(TypedDefaults()); }

bool QZFileParameter::IsLegal(const qzisstream&) const { return true; }

bool QZFileParameter::GetTypedValue(qzisstream& value, const std::string& path) const {
  std::string contents;
  if (!readWhole(path, contents)) return false;
  value.set(contents);
  return true;
}

bool QZFileParameter::GetString(std::string&, const qzisstream&) const { return false; }

const void* QZFileParameter::FactoryTypeID() const { return QZGetDataType<QZFileParameter>(); }

std::string QZParamFileParameter::StaticClassID() { return "param_file"; }

std::string QZParamFileParameter::ClassID() const { return StaticClassID(); }

QZParamFileParameter* QZParamFileParameter::CreateCopy() const { return new QZParamFileParameter(*this); }

const void* QZParamFileParameter::FactoryTypeID() const { return QZGetDataType<QZParamFileParameter>(); }

QZStringExtParameter::QZStringExtParameter(const std::string& newName, const std::string& value)
    : QZStringParameter(newName, value) {}

std::string QZStringExtParameter::StaticClassID() { return "stringEx"; }

std::string QZStringExtParameter::ClassID() const { return StaticClassID(); }

QZStringExtParameter* QZStringExtParameter::CreateCopy() const { return new QZStringExtParameter(*this); }

bool QZStringExtParameter::IsLegal(const std::string& value) const {
  if (QZStringParameter::IsLegal(value)) return true;
  const QZFile file(value);
  if (file.Exists() && file.Size() != 0) return true;
  QZThrow.Warning(noSuchFile, GetName().c_str(), value.c_str());
  return false;
}

bool QZStringExtParameter::GetTypedValue(std::string& value, const std::string& text) const {
  if (QZStringParameter::IsLegal(text)) {
    value = text;
    return true;
  }
  std::string contents;
  if (!readWhole(text, contents)) return false;
  value = std::move(contents);
  return true;
}

const void* QZStringExtParameter::FactoryTypeID() const { return QZGetDataType<QZStringExtParameter>(); }

}  // namespace QZSystem
