// W1: object codec, our side.
// encode, decode: inputs::Object <-> the body of an object item, value by value, as the peers without a schema do it.
// The writer and the string it fills are kept from one operation to the next; arrays go as vectors, and a bool as an
// array of one, since an item has no entry for a single bool that is false. encode-native: a QZContainer with the same
// values -> bytes, with QZBWritePOD. decode-native: a walk over the bytes that visits every value once and adds up the
// numbers; ours_object reads the bytes into a QZContainer instead.
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/platform/memorystream.h"
#include "qz/system/data/container.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbentrywriter.h"
#include "qz/system/qzb/qzbwalk.h"

using inputs::Object;
using namespace QZSystem;

namespace {

using Doubles = std::vector<double>;
using Ints = std::vector<std::int32_t>;

const Object& Input(bool full) {
  static const Object f = inputs::make_object(true), s = inputs::make_object(false);
  return full ? f : s;
}

bool Same(const Object& a, const Object& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].name != b[i].name || a[i].value != b[i].value) return false;
  }
  return true;
}

/// Fills a string that has its size already.
class StringOutput : public qzostream {
 public:
  explicit StringOutput(std::string& text) : qzostream(reinterpret_cast<unsigned char*>(text.data())) {
    end = start + text.size();
    atEnd = false;
  }
};

struct Codec {
  QZBEntryWriter item;

  void Encode(const Object& object, std::string& out) {
    item.Clear();
    for (const auto& [name, value] : object) {
      switch (value.index()) {
        case 0:
          item.Add(name, int(std::get<0>(value)));
          break;
        case 1:
          item.Add(name, std::get<1>(value));
          break;
        case 2:
          item.Add(name, std::get<2>(value));
          break;
        case 3:
          item.AddArray(name, &std::get<3>(value), 1);
          break;
        case 4:
          item.Add(name, std::get<4>(value));
          break;
        case 5:
          item.Add(name, std::get<5>(value));
          break;
      }
    }
    out.resize(item.Size());
    StringOutput stream(out);
    item.Write(stream, "");
  }

  static Object Decode(const std::string& in) {
    Object object;
    object.reserve(20);
    QZBWalk walk(in.data(), in.size());
    for (QZBEntry entry; walk.Next(entry);) {
      inputs::Named& named = object.emplace_back();
      named.name.assign(entry.name);
      switch (entry.type) {
        case QZBType::Int:
          named.value = std::int64_t(entry.Get<int>());
          break;
        case QZBType::Double:
          named.value = entry.Get<double>();
          break;
        case QZBType::String:
          named.value.emplace<2>(entry.body);
          break;
        case QZBType::BoolArray:
          named.value = entry.body[0] != 0;
          break;
        case QZBType::DoubleVector:
          entry.CopyTo(named.value.emplace<4>(entry.Count()).data());
          break;
        case QZBType::IntVector:
          entry.CopyTo(named.value.emplace<5>(entry.Count()).data());
          break;
        default:
          break;
      }
    }
    return object;
  }
};

QZContainer Container(const Object& object) {
  QZContainer result;
  for (const auto& [name, value] : object) {
    const char* const tag = name.c_str();
    switch (value.index()) {
      case 0:
        result.AddData(tag, int(std::get<0>(value)));
        break;
      case 1:
        result.AddData(tag, std::get<1>(value));
        break;
      case 2:
        result.AddData(tag, std::get<2>(value));
        break;
      case 3:
        result.AddData<bool*>(tag, &std::get<3>(value), 1);
        break;
      case 4:
        result.AddData(tag, std::get<4>(value));
        break;
      case 5:
        result.AddData(tag, std::get<5>(value));
        break;
    }
  }
  return result;
}

// Sixteen sums side by side, as vectors of four numbers, which the processor adds at once.
using Four = double __attribute__((vector_size(32)));
using FourInts = std::int32_t __attribute__((vector_size(16)));

[[gnu::always_inline]] inline void Add(Four& sum, const double* at) {
  Four four;
  std::memcpy(&four, at, sizeof four);
  sum += four;
}
[[gnu::always_inline]] inline void Add(Four& sum, const std::int32_t* at) {
  FourInts four;
  std::memcpy(&four, at, sizeof four);
  sum += __builtin_convertvector(four, Four);
}

template <class T>
[[gnu::always_inline]] inline double Total(const char* bytes, unsigned long count) {
  const T* at = reinterpret_cast<const T*>(bytes);
  Four a{}, b{}, c{}, d{};
  unsigned long i = 0;
  for (; i + 16 <= count; i += 16) {
    Add(a, at + i);
    Add(b, at + i + 4);
    Add(c, at + i + 8);
    Add(d, at + i + 12);
  }
  a += b + c + d;
  double sum = a[0] + a[1] + a[2] + a[3];
  for (; i < count; ++i) {
    T value;
    std::memcpy(&value, at + i, sizeof value);
    sum += value;
  }
  return sum;
}

// The code for the processor at hand is chosen when the program starts.
[[gnu::target_clones("avx2", "default")]] double TotalOfDoubles(const char* bytes, unsigned long count) {
  return Total<double>(bytes, count);
}
[[gnu::target_clones("avx2", "default")]] double TotalOfInts(const char* bytes, unsigned long count) {
  return Total<std::int32_t>(bytes, count);
}

double Visit(const std::string& in) {
  double sum = 0;
  QZBWalk walk(in.data(), in.size());
  for (QZBEntry entry; walk.Next(entry);) {
    switch (entry.type) {
      case QZBType::Int:
        sum += entry.Get<int>();
        break;
      case QZBType::Double:
        sum += entry.Get<double>();
        break;
      case QZBType::String:
        sum += double(entry.body.size());
        break;
      case QZBType::BoolArray:
        sum += entry.body[0];
        break;
      case QZBType::DoubleVector:
        sum += TotalOfDoubles(entry.body.data(), entry.Count());
        break;
      case QZBType::IntVector:
        sum += TotalOfInts(entry.body.data(), entry.Count());
        break;
      default:
        break;
    }
  }
  return sum;
}

double ExpectedSum(const Object& object) {
  double sum = 0;
  for (const auto& each : object) {
    switch (each.value.index()) {
      case 0:
        sum += double(std::get<0>(each.value));
        break;
      case 1:
        sum += std::get<1>(each.value);
        break;
      case 2:
        sum += double(std::get<2>(each.value).size());
        break;
      case 3:
        sum += std::get<3>(each.value);
        break;
      case 4:
        for (double x : std::get<4>(each.value)) sum += x;
        break;
      case 5:
        for (int x : std::get<5>(each.value)) sum += x;
        break;
    }
  }
  return sum;
}

void Register(bool full) {
  const std::string job = std::string("W1/") + (full ? "full" : "small");
  add(job + "-encode/ours", [full](benchmark::State& st) {
    Codec codec;
    std::string out;
    for (auto _ : st) {
      codec.Encode(Input(full), out);
      benchmark::DoNotOptimize(out.data());
      benchmark::ClobberMemory();
    }
    if (!Same(Codec::Decode(out), Input(full))) st.SkipWithError("round trip");
    ops(st, 1);
    size_of(st, double(out.size()));
  });
  add(job + "-decode/ours", [full](benchmark::State& st) {
    std::string in;
    Codec().Encode(Input(full), in);
    if (!Same(Codec::Decode(in), Input(full))) st.SkipWithError("round trip");
    for (auto _ : st) {
      Object object = Codec::Decode(in);
      benchmark::DoNotOptimize(object.data());
      benchmark::ClobberMemory();
    }
    ops(st, 1);
  });
  add(job + "-encode-native/ours", [full](benchmark::State& st) {
    const QZContainer object = Container(Input(full));
    std::string expected;
    Codec().Encode(Input(full), expected);
    std::string out(expected.size(), '\0');
    for (auto _ : st) {
      StringOutput stream(out);
      QZBWritePOD(stream, object, "");
      benchmark::DoNotOptimize(out.data());
      benchmark::ClobberMemory();
    }
    if (out != expected) st.SkipWithError("wrong bytes");
    ops(st, 1);
    size_of(st, double(out.size()));
  });
  add(job + "-decode-native/ours", [full](benchmark::State& st) {
    std::string in;
    Codec().Encode(Input(full), in);
    const double expected = ExpectedSum(Input(full));
    if (std::abs(Visit(in) - expected) > 1e-9 * std::abs(expected)) st.SkipWithError("wrong sum");
    for (auto _ : st) {
      double sum = Visit(in);
      benchmark::DoNotOptimize(sum);
    }
    ops(st, 1);
  });
  add(job + "-decode-native/ours_object", [full](benchmark::State& st) {
    std::string in;
    Codec().Encode(Input(full), in);
    for (auto _ : st) {
      qzisstream stream;
      stream.set(in.data(), in.size(), false);
      QZContainer object;
      if (QZBReadPOD(stream, object, in.size()) != QZBReturn::Success) st.SkipWithError("round trip");
      benchmark::DoNotOptimize(&object);
    }
    ops(st, 1);
  });
}

}  // namespace

int main(int argc, char** argv) {
  for (bool full : {true, false}) Register(full);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
