// Items that are passed over without knowing them. A stream in memory and one that gives a few bytes at a time have the
// same items, and what was counted can be read one by one.
#include <algorithm>

#include "fuzz/fuzzing.h"
#include "qz/system/qzb/qzb.h"

using namespace QZSystem;

namespace {

// Like a pipe: without a size, and the end isn't known before it is met.
class Drip : public qzistream {
 public:
  Drip(const std::uint8_t* data, std::size_t size) : bytes(data), count(size) { atEnd = false; }

  bool _qzfill() override {
    offset += static_cast<unsigned long>(end - start);
    const unsigned long step = std::min(3UL, count - offset);
    std::copy_n(bytes + offset, step, buffer);
    start = current = buffer;
    end = buffer + step;
    atEnd = step == 0;
    return step != 0;
  }
  unsigned long _qzsize() override { return ~0UL; }

 private:
  const std::uint8_t* bytes;
  std::size_t count;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  BytesStream in(data, size);
  Drip drip(data, size);
  unsigned int items = 0, dripped = 0;
  const unsigned int code = QZBinaryCount(in, items);
  static_cast<void>(QZBinaryCount(drip, dripped));
  Require(items == dripped && items <= size / 2);
  BytesStream again(data, size);
  for (unsigned int i = 0; i < items; ++i) Require(QZBinarySkip(again) == QZBReturn::Success);
  Require(QZBinarySkip(again) != QZBReturn::Success);
  Require(*QZGetQZBReturnString(code) != '\0');
  return 0;
}
