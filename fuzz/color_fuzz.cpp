// Texts and bytes of colours. What is read is written and read again; a gradient between colours that were read gives
// one for every number.
#include <cstring>

#include "fuzz/fuzzing.h"
#include "qz/platform/binaryvalue.h"
#include "qz/system/util/color.h"
#include "qz/system/util/colorgradient.h"

using namespace QZSystem;

namespace {

QZColor goThroughText(const std::string& text) {
  QZColor color, again;
  if (!color.SetText(text)) return color;
  Require(again.SetText(color.GetText(true)) && again == color);
  Require(text.size() == 9 || color.GetA() == 255);
  return color;
}

QZColor goThroughBytes(const std::uint8_t* data, std::size_t size) {
  QZColor color, again;
  BytesStream in(data, size);
  Require(QZ_io_read_binary(in, color) <= size);
  unsigned char bytes[8];
  Require(QZ_io_write_binary(bytes, color) == sizeof bytes && QZ_io_read_binary(bytes, again) == sizeof bytes);
  Require(again == color);
  qzosstream out;
  QZ_io_write_binary(out, color);
  Require(out.str() == std::string(bytes, bytes + sizeof bytes));
  return color;
}

/// The numbers that the bytes are, as places of stops and as values.
void goThroughGradient(QZColorGradientBase& gradient, const std::uint8_t* data, std::size_t size, QZColor color) {
  for (std::size_t i = 0; i + sizeof(double) <= size && i < 512; i += sizeof(double)) {
    double value;
    std::memcpy(&value, data + i, sizeof value);
    const unsigned int before = gradient.NumStops();
    color.SetPackedColor(color.GetPackedColor() * 2654435761U + 1);
    const bool added = gradient.AddStop(QZColorStop(value, color));
    Require(gradient.NumStops() == before + (added ? 1 : 0));
    if (added) Require(gradient.GetColorAt(value) == color || gradient.NumStops() > 1);
    static_cast<void>(gradient.GetColorAt(-value));
    static_cast<void>(gradient.GetColorAt(value / 3));
    Require(!(gradient.GetMinValue() > gradient.GetMaxValue()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  QZThrow.SetStrict(false);
  goThroughText(TextOf(data, size));
  goThroughText(TextOf(data, size < 9 ? size : 9));
  const QZColor color = goThroughBytes(data, size);
  QZLinearColorGradient linear;
  QZExponentialColorGradient exponential;
  QZLogarithmicColorGradient logarithmic;
  QZExponentColorGradient power(size % 11);
  goThroughGradient(linear, data, size, color);
  goThroughGradient(exponential, data, size, color);
  goThroughGradient(logarithmic, data, size, color);
  goThroughGradient(power, data, size, color);
  return 0;
}
