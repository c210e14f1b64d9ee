// W9: named values attached to an object, as the peers do it: 4 double, 3 int, 3 string. The names are tags already,
// which is how a program that reads a value often asks for it; ours_names looks the name up each time.
#include <string>

#include "bench.h"
#include "inputs.h"
#include "qz/system/data/container.h"

using namespace inputs;
using QZSystem::QZContainer;
using QZSystem::QZGetTag;

static unsigned int numbers[10];

struct ByTag {
  static unsigned int Name(int k) { return numbers[k]; }
};
struct ByName {
  static const char* Name(int k) { return tags()[std::size_t(k)].c_str(); }
};

template <class By>
static void fill(QZContainer& h) {
  for (int k = 0; k < 4; ++k) h.SetData(By::Name(k), 0.5 * k);
  for (int k = 4; k < 7; ++k) h.SetData(By::Name(k), k);
  for (int k = 7; k < 10; ++k) h.SetData(By::Name(k), tag_strings()[std::size_t(k - 7)]);
}
template <class By>
static double read(const QZContainer& h) {
  double s = 0;
  for (int k = 0; k < 4; ++k) s += h.GetData<double>(By::Name(k));
  for (int k = 4; k < 7; ++k) s += h.GetData<int>(By::Name(k));
  for (int k = 7; k < 10; ++k) s += double(h.GetData<std::string>(By::Name(k)).size());
  return s;
}

template <class By>
static void holder(const std::string& name) {
  add("W9/set/" + name, [](benchmark::State& st) {
    for (auto _ : st) {
      QZContainer h;
      fill<By>(h);
      benchmark::DoNotOptimize(&h);
      benchmark::ClobberMemory();
    }
    ops(st, 10);
  });
  add("W9/get/" + name, [](benchmark::State& st) {
    QZContainer h;
    fill<By>(h);
    if (read<By>(h) != 3 + 15 + 5 + 19 + 17) st.SkipWithError("wrong sum");
    for (auto _ : st) {
      double s = 0;
      for (int r = 0; r < 10; ++r) {
        benchmark::ClobberMemory();
        s += read<By>(h);
      }
      benchmark::DoNotOptimize(s);
    }
    ops(st, 100);
  });
}

int main(int argc, char** argv) {
  for (std::size_t k = 0; k < 10; ++k) numbers[k] = QZGetTag(tags()[k]);
  holder<ByTag>("ours");
  holder<ByName>("ours_names");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
