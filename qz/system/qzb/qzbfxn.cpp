#include "qz/system/qzb/qzbfxn.h"

#include "qz/system/qzb/qzb.h"

namespace QZSystem {

const char* QZDefaultReader::GetTag() const { return ""; }

const void* QZDefaultReader::GetType() const { return nullptr; }

QZDefaultReader* QZDefaultReader::CreateCopy() const { return new QZDefaultReader(*this); }

unsigned int QZDefaultReader::operator()(qzistream& in, unsigned long length, const char*,
                                         const QZBinaryIOHandlerBase&) const {
  // What no `long` can hold is more than any stream has.
  constexpr unsigned long most = ~0UL >> 1;
  in.skip(static_cast<long>(length < most ? length : most));
  return QZBReturn::Success;
}

const char* QZDefaultWriter::GetTag() const { return ""; }

const void* QZDefaultWriter::GetType() const { return nullptr; }

QZDefaultWriter* QZDefaultWriter::CreateCopy() const { return new QZDefaultWriter(*this); }

bool QZDefaultWriter::operator()(qzostream&, const QZBinaryIOHandlerBase&) const { return true; }

}  // namespace QZSystem
