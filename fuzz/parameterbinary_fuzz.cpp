// The binary form of what parameters hold. The first byte chooses the kind, and the rest is read, written and read
// again.
#include <iterator>
#include <memory>

#include "fuzz/fuzzing.h"

using namespace QZSystem;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes written(const QZParameter& parameter) {
  Bytes bytes(parameter.ValueAndDefaultBinarySize());
  Require(parameter.WriteValueAndDefaultBinary(bytes.data()) == bytes.size());
  return bytes;
}

template <class Parameter>
void goThrough(const std::uint8_t* data, std::size_t size) {
  Parameter parameter("-p");
  const unsigned long used = parameter.ReadValueAndDefaultBinary(data, size);
  Require(used <= size);
  const Bytes bytes = written(parameter);
  // Memory follows what is there, and what is there takes at least a byte.
  Require(bytes.size() <= 8 * size + 10);
  if (used != 0) {
    // Where the bytes are whole, the read without bounds takes as many, and the same values.
    const Bytes whole(data, data + used);
    Parameter unbounded("-p");
    Require(unbounded.ReadValueAndDefaultBinary(whole.data()) == used && written(unbounded) == bytes);
  }
  Parameter again("-p");
  Require(again.ReadValueAndDefaultBinary(bytes.data(), bytes.size()) == bytes.size());
  Require(written(again) == bytes);
  const std::unique_ptr<QZParameter> copy(again.CreateCopy());
  Require(written(*copy) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr void (*kinds[])(const std::uint8_t*, std::size_t) = {
      goThrough<QZIntParameter>,    goThrough<QZUIntParameter>, goThrough<QZFloatParameter>,
      goThrough<QZDoubleParameter>, goThrough<QZBoolParameter>, goThrough<QZStringParameter>,
      goThrough<QZConstParameter>,  goThrough<QZFileParameter>, goThrough<QZStringExtParameter>};
  SwallowMessages();
  if (size == 0) return 0;
  kinds[data[0] % std::size(kinds)](data + 1, size - 1);
  return 0;
}
