// W14: split a string of 10 comma-separated tokens, our side: the public tokenizer, its container used again from one
// string to the next, as the peers' is.
#include <string>
#include <string_view>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/system/text/tokenize.h"

namespace {

template <class Token>
void split(const std::string& name, const std::string& delims) {
  add(name, [=](benchmark::State& st) {
    const auto texts = inputs::lists();
    std::vector<Token> tokens;
    for (const std::string& text : texts) {
      QZSystem::QZStringTokenize(tokens, text, delims, false);
      if (tokens.size() != 10) st.SkipWithError("wrong count");
    }
    for (auto _ : st) {
      for (const std::string& text : texts) {
        QZSystem::QZStringTokenize(tokens, text, delims, false);
        benchmark::DoNotOptimize(tokens.data());
        benchmark::ClobberMemory();
      }
    }
    ops(st, static_cast<double>(texts.size()));
  });
}

}  // namespace

int main(int argc, char** argv) {
  split<std::string>("W14/to-strings/ours", ",");
  split<std::string_view>("W14/to-views/ours", ",");
  split<std::string_view>("W14/to-views/ours_two_delimiters", ",;");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
