#include "qz/platform/compress.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace QZPlatform {

namespace {

constexpr int GzipWindow = 15 + 16;  // the largest window, and a gzip header and trailer
constexpr int MemoryLevel = 8;       // zlib's own default
constexpr unsigned long Step = 65536;

// Frees the compressor's state also when the output can't grow.
class Deflater {
 public:
  Deflater()
      : ready(deflateInit2(&state, Z_DEFAULT_COMPRESSION, Z_DEFLATED, GzipWindow, MemoryLevel, Z_DEFAULT_STRATEGY) ==
              Z_OK) {}
  ~Deflater() {
    if (ready) deflateEnd(&state);
  }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  [[nodiscard]] bool Ready() const { return ready; }
  z_stream& State() { return state; }

 private:
  z_stream state{};
  bool ready;
};

// zlib counts its input in 32 bits, so a long one is handed over in parts; the output grows with what comes out.
bool Gzip(std::string& out, const char* data, unsigned long size) {
  Deflater deflater;
  if (!deflater.Ready()) return false;
  z_stream& state = deflater.State();
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
  for (int result = Z_OK; result != Z_STREAM_END;) {
    const auto part =
        static_cast<uInt>(std::min<unsigned long>(size, std::numeric_limits<uInt>::max() - state.avail_in));
    state.avail_in += part;
    size -= part;
    const std::size_t used = out.size();
    out.resize(used + Step);
    state.next_out = reinterpret_cast<Bytef*>(&out[used]);
    state.avail_out = Step;
    result = deflate(&state, size == 0 ? Z_FINISH : Z_NO_FLUSH);
    out.resize(used + Step - state.avail_out);
    if (result != Z_OK && result != Z_STREAM_END) return false;
  }
  return true;
}

}  // namespace

bool QZCompress(std::string& out, const char* data, unsigned long size, const char* format) {
  std::string packed;
  const bool done = format != nullptr && std::strcmp(format, "gz") == 0 && Gzip(packed, data, size);
  if (!done) packed.clear();
  out = std::move(packed);
  return done;
}

}  // namespace QZPlatform
