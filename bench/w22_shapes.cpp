// W22: a tree of 1000 shapes, one with 111 children of eight each, to bytes and back. There is no peer.
#include "bench.h"
#include "qz/system.h"

using namespace QZSystem;

namespace {

constexpr unsigned int kShapes = 1000;

QZAnnotation sample() {
  const float centre[] = {1.0F, 2.0F, 3.0F};
  QZAnnotation site = QZAnnotateSphere("site", centre, 4.0F, nullptr);
  for (int i = 0; i < 111; ++i) {
    QZAnnotation residue = QZAnnotateText("residue", centre, "His 57");
    for (int j = 0; j < 8; ++j) residue.AddChild(QZAnnotateLine("bond", centre, centre));
    site.AddChild(residue);
  }
  return site;
}

struct Handler : QZBinaryIOHandler {
  Handler() { QZInitAnnotationHandlers(*this); }
};

std::string written(const QZAnnotation& shape, const QZBinaryIOHandlerBase& handler) {
  qzosstream out;
  QZBinaryWrite(out, shape, handler);
  return out.str();
}

unsigned int countOf(const QZAnnotation& shape) {
  unsigned int count = 1;
  for (const QZAnnotation& child : QZIter(shape.GetChildren())) count += countOf(child);
  return count;
}

}  // namespace

BM("W22/write-1000-shapes/ours") {
  const Handler handler;
  const QZAnnotation shape = sample();
  if (countOf(shape) != kShapes) st.SkipWithError("wrong number of shapes");
  for (auto _ : st) benchmark::DoNotOptimize(written(shape, handler));
  ops(st, kShapes);
}

BM("W22/read-1000-shapes/ours") {
  const Handler handler;
  const std::string bytes = written(sample(), handler);
  for (auto _ : st) {
    qzisstream in;
    in.set(bytes.data(), bytes.size(), false);
    QZAnnotation shape;
    if (QZBinaryRead(in, shape, handler) != QZBReturn::Success) st.SkipWithError("not read");
    benchmark::DoNotOptimize(shape);
  }
  QZAnnotation back;
  qzisstream in;
  in.set(bytes.data(), bytes.size(), false);
  if (QZBinaryRead(in, back, handler) != QZBReturn::Success || countOf(back) != kShapes)
    st.SkipWithError("wrong shapes");
  ops(st, kShapes);
}

BENCHMARK_MAIN();
