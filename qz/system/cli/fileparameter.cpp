#include "qz/system/cli/fileparameter.h"

#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

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

struct Contents {
  std::string bytes;
  bool whole = false;
};

// The bytes of a file: as many as its size says, or, where the source has none, all that arrive. None if it doesn't
// open, or if they don't fit into memory.
Contents readFile(const std::string& path) try {
  Contents contents;
  qzifstream in;
  in.open(path);
  if (in.eof()) return contents;
  const unsigned long size = in.size();
  const unsigned long count = in.readclaimed(contents.bytes, size);
  contents.whole = count != 0 && (count == size || size == unknownSize);
  return contents;
} catch (const std::bad_alloc&) {
  return {};
} catch (const std::length_error&) {
  return {};
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

// The stream takes a copy, which may not fit into memory where the contents alone did.
bool QZFileParameter::GetTypedValue(qzisstream& value, const std::string& path) const try {
  const Contents contents = readFile(path);
  if (contents.whole) value.set(contents.bytes);
  return contents.whole;
} catch (const std::bad_alloc&) {
  return false;
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
  Contents contents = readFile(text);
  if (contents.bytes.empty()) return false;
  value = std::move(contents.bytes);
  return true;
}

const void* QZStringExtParameter::FactoryTypeID() const { return QZGetDataType<QZStringExtParameter>(); }

}  // namespace QZSystem
