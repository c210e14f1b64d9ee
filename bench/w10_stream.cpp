// W10, our side: byte streams over a 64 MiB file in the page cache. Every stream takes its buffer from the pool inside
// the timed loop and gives it back there.
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "bench.h"
#include "inputs.h"
#include "qz/platform/filestream.h"
#include "qz/platform/memorystream.h"

using namespace inputs;
using namespace QZPlatform;

namespace {

std::string folder() {
  const char* const name = std::getenv("BENCH_DATA");
  return name ? name : "out/data";
}

const std::string& bytesFile() {
  static const std::string file = make_bytes_file(folder() + "/bytes.bin");
  return file;
}

const std::string& textFile() {
  static const std::string file = make_text_file(folder() + "/lines.txt");
  return file;
}

// In a place of its own: the loop of a few bytes runs at half the speed where it happens to straddle two cache lines.
[[gnu::noinline, gnu::aligned(64)]] std::uint64_t sumOf(const std::string& file) {
  qzifstream in;
  in.open(file);
  std::uint64_t sum = 0;
  for (int c = in.get(); c >= 0; c = in.get()) sum += static_cast<unsigned>(c);
  return sum;
}

void readBytes(benchmark::State& st) {
  static const std::uint64_t want = [] {
    std::string bytes;
    qzifstream in;
    in.open(bytesFile());
    in.read(bytes);
    std::uint64_t sum = 0;
    for (const char c : bytes) sum += static_cast<unsigned char>(c);
    return sum;
  }();
  std::uint64_t got = want;
  for (auto _ : st) {
    got = sumOf(bytesFile());
    benchmark::DoNotOptimize(got);
  }
  if (got != want) st.SkipWithError("wrong sum");
  gb(st, double(kFileBytes));
}

void write8(benchmark::State& st, const std::string& name, bool regular) {
  bool whole = true;
  for (auto _ : st) {
    qzofstream out;
    out.open(name);
    for (std::uint64_t i = 0; i < kFileBytes / 8; ++i) out.write(reinterpret_cast<const char*>(&i), 8);
    whole = out.close() && whole;
  }
  struct stat s;
  if (!whole || (regular && (stat(name.c_str(), &s) || std::size_t(s.st_size) != kFileBytes)))
    st.SkipWithError("wrong size");
  gb(st, double(kFileBytes));
}

std::size_t lineCount() {
  static const std::size_t count = [] {
    qzifstream in;
    in.open(textFile());
    std::size_t lines = 0;
    while (in.skipline()) ++lines;
    return lines;
  }();
  return count;
}

}  // namespace

BM("W10/read-bytes/ours") { readBytes(st); }
BM("W10/write-8-bytes-file/ours") { write8(st, folder() + "/written.bin", true); }
BM("W10/write-8-bytes-dev-null/ours") { write8(st, "/dev/null", false); }

BM("W10/read-lines/ours") {
  const std::size_t want = lineCount();
  std::size_t lines = want;
  std::size_t bytes = 0;
  for (auto _ : st) {
    qzifstream in;
    in.open(textFile());
    std::string line;
    lines = bytes = 0;
    for (; in.getline(line); ++lines) bytes += line.size() + std::size_t(line[0] == 'a');
    benchmark::DoNotOptimize(bytes);
  }
  if (lines != want) st.SkipWithError("wrong count");
  struct stat s;
  stat(textFile().c_str(), &s);
  gb(st, double(s.st_size));
}

BM("W10/open-close-memory-100/ours") {
  static const std::string hundred(100, 'x');
  for (auto _ : st) {
    qzisstream in;
    in.set(hundred.data(), hundred.size(), false);
    int c = in.get();
    benchmark::DoNotOptimize(c);
  }
  ops(st, 1);
}

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
