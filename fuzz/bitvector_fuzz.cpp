// The hexadecimal text of bit vectors. What was read is what a reader bit by bit finds, and comes back the same when it
// is written and read again, on lines of any length. Two vectors in one text are compared bit by bit.
#include <vector>

#include "fuzz/fuzzing.h"
#include "qz/system/util/bitvector.h"

using namespace QZSystem;

namespace {

std::vector<bool> readBitByBit(std::string text, bool& good) {
  good = true;
  if (text.empty()) return std::vector<bool>(64);
  std::size_t padding = 0;
  bool lowFirst = false;
  if (text.back() >= 'G' && text.back() <= 'N') {
    const char marker = text.back();
    text.pop_back();
    lowFirst = marker <= 'J';
    padding = static_cast<std::size_t>(marker - (lowFirst ? 'G' : 'K') + 1) % 4;
  }
  std::vector<bool> bits;
  bits.reserve(4 * text.size());
  if (!lowFirst) text.assign(text.rbegin(), text.rend());
  for (const char each : text) {
    const int digit = each >= '0' && each <= '9'   ? each - '0'
                      : each >= 'A' && each <= 'F' ? each - 'A' + 10
                      : each >= 'a' && each <= 'f' ? each - 'a' + 10
                                                   : -1;
    for (int bit = 0; digit >= 0 && bit < 4; ++bit) bits.push_back((digit >> bit & 1) != 0);
  }
  good = padding <= bits.size();
  bits.resize(good ? bits.size() - padding : 0);
  return bits;
}

void requireSame(const QZBitVector& vector, const std::vector<bool>& bits) {
  Require(vector.GetSize() == bits.size());
  unsigned int next = QZBitVector::NoBit;
  for (unsigned long i = bits.size(); i-- > 0;) {
    if (bits[i]) next = static_cast<unsigned int>(i);
  }
  Require(vector.FirstBit() == next);
  for (unsigned long i = 0; i < bits.size(); ++i) Require(vector.IsBitSet(i) == bits[i]);
}

QZBitVector goThroughText(const std::string& text) {
  bool wantGood = false;
  const std::vector<bool> want = readBitByBit(text, wantGood);
  QZBitVector vector;
  const bool good = QZParseHex(vector, text);
  Require(good == wantGood);
  if (!good) {
    Require(vector.IsEmpty());
    return vector;
  }
  requireSame(vector, want);
  std::vector<bool> bits;
  Require(QZParseHex(bits, text) && bits == want);

  std::string plain, parted;
  QZMakeHex(plain, vector, 0);
  const unsigned int length = static_cast<unsigned int>(text.size()) % 20;
  QZMakeHex(parted, bits, length);
  Require(length != 0 || plain == parted);
  QZBitVector again;
  Require(QZParseHex(again, plain) && again == vector);
  Require(QZParseHex(again, parted) && again == vector);
  return vector;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t longest = 320;  // longer texts only take longer
  if (size > longest) return 0;
  SwallowMessages();
  const std::string text = TextOf(data, size);
  const std::size_t half = text.find(';');
  const QZBitVector a = goThroughText(text.substr(0, half));
  if (half == std::string::npos) return 0;
  const QZBitVector b = goThroughText(text.substr(half + 1));
  unsigned long both = 0, either = 0;
  for (unsigned long i = 0; i < a.GetSize() || i < b.GetSize(); ++i) {
    both += a.IsBitSet(i) && b.IsBitSet(i);
    either += a.IsBitSet(i) || b.IsBitSet(i);
  }
  Require((a | b).CountBits() == either && (a & b).CountBits() == both && (a ^ b).CountBits() == either - both);
  Require(QZTanimoto(a, b) == (either == 0 ? 1.0 : static_cast<double>(both) / static_cast<double>(either)));
  return 0;
}
