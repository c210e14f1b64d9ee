#pragma once

#include "qz/platform/memorystream.h"
#include "qz/system/data/container.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/qzbhandimpl.h"
#include "qz/system/qzb/qzbrfxn.h"
#include "qz/system/qzb/qzbwfxn.h"

namespace QZSystem {

/// Writes an object of a class as an item of its attached data.
template <class T>
class WritePOD : public QZWriteFxn<T> {
 public:
  const char* GetTag() const override { return "QZBasePOD"; }
  const void* GetType() const override { return QZGetDataType<T>(); }
  WritePOD* CreateCopy() const override { return new WritePOD(*this); }
  bool operator()(qzostream& out, const T& object, const QZBinaryIOHandlerBase& handler) const override {
    return QZBWriteQZBase(out, object, GetTag(), handler);
  }
};

/// A handler that reads and writes objects of a class, also attached to one another under that tag.
template <class T = QZContainer>
QZBinaryIOHandler PODHandler(const char* tag = "Box") {
  QZBinaryIOHandler handler;
  handler.SetReadFxn(QZBasePODReadFxn<T>(), false);
  handler.SetWriteFxn(WritePOD<T>(), false);
  QZInstallGenericDataHandler<T>(handler, tag);
  return handler;
}

}  // namespace QZSystem
