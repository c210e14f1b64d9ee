// W4: numbers from and to text, our side. The numbers are read in place by the public conversions, which also test
// the whole text, its blanks and the range; they are printed into one string that is used again and copied out.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/platform/numbertext.h"
#include "qz/system/text/stringnumber.h"

namespace {

template <class T, class Want, class Read>
void parse(const std::string& name, inputs::Texts (*make)(), Want want, Read read) {
  add(name, [=](benchmark::State& st) {
    const inputs::Texts texts = make();
    T expected = 0;
    for (std::size_t i = 0; i < texts.size(); ++i) expected += want(texts.begin(i));
    T sum = 0;
    for (auto _ : st) {
      sum = 0;
      for (std::size_t i = 0; i < texts.size(); ++i) {
        sum += read(std::string_view(texts.begin(i), static_cast<std::size_t>(texts.end(i) - texts.begin(i))));
      }
      benchmark::DoNotOptimize(sum);
    }
    if (sum != expected) st.SkipWithError("wrong sum");
    ops(st, inputs::kNumbers);
  });
}

template <class Print>
void print(const std::string& name, const char* format, Print put) {
  add(name, [=](benchmark::State& st) mutable {
    const auto values = inputs::six_doubles();
    std::string expected;
    char one[64];
    for (double value : values) {
      if (format != nullptr) {
        std::snprintf(one, sizeof one, format, value);
        expected += one;
      } else {
        expected.append(one, std::to_chars(one, one + sizeof one, value).ptr);
      }
    }
    std::vector<char> buffer(64 * values.size());
    std::size_t length = 0;
    for (auto _ : st) {
      char* p = buffer.data();
      for (double value : values) p = put(p, value);
      length = static_cast<std::size_t>(p - buffer.data());
      benchmark::DoNotOptimize(buffer.data());
      benchmark::ClobberMemory();
    }
    if (std::string_view(buffer.data(), length) != expected) st.SkipWithError("wrong text");
    ops(st, inputs::kNumbers);
  });
}

double readDouble(std::string_view text) {
  double value = 0;
  QZSystem::QZStringToNumber(text, value);
  return value;
}

double wantDouble(const char* text) { return std::strtod(text, nullptr); }

}  // namespace

int main(int argc, char** argv) {
  parse<long>(
      "W4/parse-int/ours", inputs::int_texts, [](const char* text) { return std::strtol(text, nullptr, 10); },
      [](std::string_view text) {
        long value = 0;
        QZSystem::QZStringToNumber(text, value, 10);
        return value;
      });
  parse<double>("W4/parse-double-6dec/ours", inputs::double_texts_short, wantDouble, readDouble);
  parse<double>("W4/parse-double-17dig/ours", inputs::double_texts_full, wantDouble, readDouble);
  std::string text;
  print("W4/print-6dec/ours", "%.6f", [text](char* p, double value) mutable {
    QZSystem::QZNumberToString(value, text, 'f', 6);
    std::memcpy(p, text.data(), text.size());
    return p + text.size();
  });
  print("W4/print-shortest/ours", nullptr, [](char* p, double value) {
    auto& room = reinterpret_cast<char(&)[QZPlatform::QZShortestRoom]>(*p);
    return p + QZPlatform::QZPrintShortest(value, room).size();
  });
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
