// W12: one JSON object of 30 members: text -> attached data, attached data -> text, our side.
// The parse is QZJSONToBase into a new container: text to a document, and from there to 29 typed values (null is passed
// over, with a warning that is below the threshold here). The write is QZBaseToJSON of that container: the same members
// without the null, with the frame of a document around them. Nothing is kept from one run to the next.
#include "bench.h"
#include "inputs.h"
#include "qz/system/data/container.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/json/json.h"

using namespace QZSystem;

namespace {

const std::string& Text() {
  static const std::string text = inputs::json_object();
  return text;
}

int Count(const QZBase& base) {
  int count = 0;
  for (const QZBaseData& value : QZIter(base.GetDataIter())) count += value.GetSize() == 1 ? 1 : 0;
  return count;
}

}  // namespace

BM("W12/parse/ours") {
  for (auto _ : st) {
    QZContainer base;
    if (!QZJSONToBase(base, Text())) st.SkipWithError("parse");
    benchmark::DoNotOptimize(&base);
  }
  QZContainer base;
  if (!QZJSONToBase(base, Text()) || Count(base) != 29) st.SkipWithError("values");
  ops(st, 1);
  size_of(st, double(Text().size()));
}

BM("W12/write/ours") {
  QZContainer base, back;
  if (!QZJSONToBase(base, Text())) st.SkipWithError("parse");
  for (auto _ : st) {
    const std::string text = QZBaseToJSON(base);
    benchmark::DoNotOptimize(text.data());
  }
  if (!QZJSONToBase(back, QZBaseToJSON(base)) || QZBaseToJSON(back) != QZBaseToJSON(base)) st.SkipWithError("values");
  ops(st, 1);
}

int main(int argc, char** argv) {
  QZThrow.SetLevel(QZErrorLevel::Error);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
