// Shapes as items and attached to another object. Whatever comes in, its children can be walked, and as many come back
// from a stream; a shape that came back once comes back the same.
#include <vector>

#include "fuzz/fuzzing.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/objects/qzannotate.h"
#include "qz/system/qzb/qzbrfxn.h"
#include "qz/system/qzb/qzbwfxn.h"

using namespace QZSystem;

namespace {

QZBinaryIOHandler shapeHandler() {
  QZBinaryIOHandler handler;
  QZInitAnnotationHandlers(handler);
  return handler;
}

// The content that a program sees, without what hangs on a shape besides. Each copy of a child is a copy of the tree
// below it, so it goes down a few levels.
QZAnnotation known(const QZAnnotation& shape, int levels) {
  QZAnnotation kept(shape.GetType(), shape.GetTitle());
  kept.SetRenderHint(shape.GetRenderHint());
  kept.SetColor(shape.GetColor());
  if (levels == 0) return kept;
  int few = 20;
  for (const QZAnnotation& child : QZIter(shape.GetChildren())) {
    if (few-- == 0) break;
    kept.AddChild(known(child, levels - 1));
  }
  return kept;
}

bool same(const QZAnnotation& a, const QZAnnotation& b) {
  if (a.GetType() != b.GetType() || std::string(a.GetTitle()) != b.GetTitle() || a.GetColor() != b.GetColor() ||
      a.GetRenderHint() != b.GetRenderHint()) {
    return false;
  }
  QZIter others(b.GetChildren());
  for (const QZAnnotation& child : QZIter(a.GetChildren())) {
    if (!others || !same(child, *others)) return false;
    ++others;
  }
  return !others;
}

std::string written(const QZAnnotation& shape, const QZBinaryIOHandler& handler) {
  qzosstream out;
  Require(QZBinaryWrite(out, shape, handler));
  return out.str();
}

void goThrough(const QZAnnotation& shape, const QZBinaryIOHandler& handler) {
  const QZAnnotation kept = known(shape, 3);
  const std::string bytes = written(kept, handler);
  BytesStream in(bytes);
  QZAnnotation again;
  Require(QZBinaryRead(in, again, handler) == QZBReturn::Success);
  Require(same(kept, again));
  Require(written(again, handler) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  static const QZBinaryIOHandler handler = shapeHandler();
  BytesStream items(data, size);
  QZAnnotation shape;
  while (QZBinaryRead(items, shape, handler) == QZBReturn::Success) {
  }
  goThrough(shape, handler);
  BytesStream body(data, size);
  QZAnnotation carrier;
  static_cast<void>(QZBReadQZBase(body, carrier, size, handler));
  goThrough(carrier, handler);
  carrier.AddChild(shape);
  carrier.AddChild(carrier);
  return 0;
}
