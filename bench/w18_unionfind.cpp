// W18: a million random unions of a million elements, then a find of each, from fresh sets.
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/system/util/unionfind.h"
#include "unions.h"

BM("W18/union+find/ours") {
  auto& pairs = unions();
  long roots = 0;
  for (auto _ : st) {
    QZSystem::QZUnionFind sets(kElements);
    for (auto& [a, b] : pairs) sets.Union(a, b);
    roots = 0;
    for (int i = 0; i < kElements; ++i) roots += sets.FindID(i) == i;
  }
  if (roots != groups()) st.SkipWithError("wrong number of groups");
  ops(st, 2.0 * kElements);
}
BENCHMARK_MAIN();
