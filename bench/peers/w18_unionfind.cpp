// W18: a million random unions of a million elements, then a find of each, from fresh sets.
#include <boost/pending/disjoint_sets.hpp>
#include <vector>

#include "bench.h"
#include "unions.h"

template <class Sets>
static void unite(benchmark::State& st) {
  auto& pairs = unions();
  long roots = 0;
  for (auto _ : st) {
    Sets sets(kElements);
    for (auto& [a, b] : pairs) sets.union_set(std::size_t(a), std::size_t(b));
    roots = 0;
    for (int i = 0; i < kElements; ++i) roots += sets.find_set(std::size_t(i)) == std::size_t(i);
  }
  if (roots != groups()) st.SkipWithError("wrong number of groups");
  ops(st, 2.0 * kElements);
}
BM("W18/union+find/boost_disjoint_sets_halving") { unite<boost::disjoint_sets_with_storage<boost::identity_property_map, boost::identity_property_map, boost::find_with_path_halving>>(st); }
BM("W18/union+find/boost_disjoint_sets_full") { unite<boost::disjoint_sets_with_storage<>>(st); }
BENCHMARK_MAIN();
