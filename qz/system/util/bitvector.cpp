#include "qz/system/util/bitvector.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "qz/system/frame/error.h"
#include "qz/system/util/bitcount_impl.h"
#include "qz/system/util/bitvector_impl.h"

namespace QZSystem {

namespace {

constexpr const char* TooLarge = "Max size for an QZBitVector is INT_MAX";
constexpr const char* SizesDiffer = "QZGetBitCounts: different bit vector size %d != %d";

using Storage = BitVectorStorage;
constexpr unsigned long WordBits = Storage::WordBits;

// Object storage that a union member points to; the bytes are the caller's to fill.
std::uint64_t* Allocate(std::size_t words) {
  void* const block = std::malloc(words * sizeof(std::uint64_t));
  if (block == nullptr) throw std::bad_alloc();
  return static_cast<std::uint64_t*>(block);
}

std::uint64_t BitOf(unsigned long i) { return std::uint64_t{1} << (i % WordBits); }

// The bits below position `i` of a word, and those at and above it.
std::uint64_t Below(unsigned long i) { return BitOf(i) - 1; }
std::uint64_t From(unsigned long i) { return ~Below(i); }

unsigned int LowestOf(std::size_t index, std::uint64_t word) {
  return static_cast<unsigned int>(index * WordBits) + static_cast<unsigned int>(__builtin_ctzll(word));
}

unsigned int HighestOf(std::size_t index, std::uint64_t word) {
  return static_cast<unsigned int>(index * WordBits) + 63 - static_cast<unsigned int>(__builtin_clzll(word));
}

}  // namespace

QZBitVector::QZBitVector(unsigned long initialSize) : QZBitVector() { SetSize(initialSize); }

QZBitVector::QZBitVector(const QZBitVector& other) : bits(other.bits), size(other.size) {
  if (IsInline()) return;
  const std::size_t words = Storage::WordCount(size);
  bits.block = Allocate(words);
  std::copy_n(other.bits.block, words, bits.block);
}

QZBitVector::QZBitVector(QZBitVector&& other) noexcept
    : bits(std::exchange(other.bits, Slot{0})), size(std::exchange(other.size, WordBits)) {}

QZBitVector& QZBitVector::operator=(const QZBitVector& other) {
  if (this == &other) return *this;
  if (IsInline() || Storage::WordCount(size) != Storage::WordCount(other.size)) return *this = QZBitVector(other);
  std::copy_n(other.Words(), Storage::WordCount(size), bits.block);
  size = other.size;
  return *this;
}

QZBitVector& QZBitVector::operator=(QZBitVector&& other) noexcept {
  QZBitVector taken(std::move(other));
  std::swap(bits, taken.bits);
  std::swap(size, taken.size);
  return *this;
}

QZBitVector::~QZBitVector() {
  if (!IsInline()) std::free(bits.block);
}

void QZBitVector::SetSize(unsigned long newSize) {
  if (newSize > MaxSize) {
    QZThrow.Error(TooLarge);
    return;
  }
  Resize(newSize);
}

void QZBitVector::Resize(unsigned long newSize) {
  if (newSize > WordBits) {
    IsInline() ? MoveToBlock(newSize) : ResizeBlock(newSize);
  } else if (!IsInline()) {
    MoveInline();
  }
  size = newSize;
  ClearBeyondSize();
}

void QZBitVector::MoveToBlock(unsigned long newSize) {
  const std::size_t words = Storage::WordCount(newSize);
  std::uint64_t* const block = Allocate(words);
  block[0] = bits.word;
  std::fill(block + 1, block + words, 0);
  bits.block = block;
}

void QZBitVector::MoveInline() {
  std::uint64_t* const block = bits.block;
  bits.word = block[0];
  std::free(block);
}

void QZBitVector::ResizeBlock(unsigned long newSize) {
  const std::size_t had = Storage::WordCount(size), needs = Storage::WordCount(newSize);
  if (had == needs) return;
  void* const block = std::realloc(bits.block, needs * sizeof(std::uint64_t));
  if (block != nullptr) {
    bits.block = static_cast<std::uint64_t*>(block);
  } else if (needs > had) {
    throw std::bad_alloc();
  }
  if (needs > had) std::fill(bits.block + had, bits.block + needs, 0);
}

void QZBitVector::ClearBeyondSize() {
  if (size % WordBits != 0) {
    Words()[size / WordBits] &= Below(size);
  } else if (size == 0) {
    bits.word = 0;
  }
}

void QZBitVector::SetBit(unsigned long i) {
  if (i < size) Words()[i / WordBits] |= BitOf(i);
}

void QZBitVector::SetBit(unsigned long i, bool on) { on ? SetBit(i) : ClearBit(i); }

void QZBitVector::ClearBit(unsigned long i) {
  if (i < size) Words()[i / WordBits] &= ~BitOf(i);
}

void QZBitVector::ToggleBit(unsigned long i) {
  if (i < size) Words()[i / WordBits] ^= BitOf(i);
}

bool QZBitVector::IsBitSet(unsigned long i) const { return i < size && (Words()[i / WordBits] & BitOf(i)) != 0; }

void QZBitVector::ClearBits() { std::fill_n(Words(), Storage::WordCount(size), 0); }

unsigned int QZBitVector::CountBits() const {
  return static_cast<unsigned int>(BestBitCounter().count(Words(), Storage::WordCount(size)));
}

unsigned int QZBitVector::CountRangeBits(unsigned int low, unsigned int high) const {
  if (high < low || low >= size) return 0;
  const unsigned long last = std::min<unsigned long>(high, size - 1);
  const std::size_t lowWord = low / WordBits, lastWord = last / WordBits;
  const std::uint64_t inLow = From(low), inLast = Below(last) | BitOf(last);
  const BitCounter& counter = BestBitCounter();
  const std::uint64_t* const words = Words();
  if (lowWord == lastWord) {
    const std::uint64_t only = words[lowWord] & inLow & inLast;
    return static_cast<unsigned int>(counter.count(&only, 1));
  }
  const std::uint64_t ends[] = {words[lowWord] & inLow, words[lastWord] & inLast};
  return static_cast<unsigned int>(counter.count(ends, 2) + counter.count(words + lowWord + 1, lastWord - lowWord - 1));
}

unsigned int QZBitVector::FirstBit() const {
  const std::uint64_t* const words = Words();
  const std::size_t count = Storage::WordCount(size);
  for (std::size_t index = 0; index < count; ++index) {
    if (words[index] != 0) return LowestOf(index, words[index]);
  }
  return NoBit;
}

unsigned int QZBitVector::LastBit() const {
  const std::uint64_t* const words = Words();
  for (std::size_t index = Storage::WordCount(size); index-- > 0;) {
    if (words[index] != 0) return HighestOf(index, words[index]);
  }
  return NoBit;
}

unsigned int QZBitVector::NextBit(unsigned int i) const {
  if (i >= size) return NoBit;
  const std::uint64_t* const words = Words();
  const std::size_t count = Storage::WordCount(size);
  std::size_t index = i / WordBits;
  std::uint64_t word = words[index] & ~(Below(i) | BitOf(i));
  while (word == 0) {
    if (++index == count) return NoBit;
    word = words[index];
  }
  return LowestOf(index, word);
}

unsigned int QZBitVector::PrevBit(unsigned int i) const {
  if (i >= size) return LastBit();
  const std::uint64_t* const words = Words();
  std::size_t index = i / WordBits;
  std::uint64_t word = words[index] & Below(i);
  while (word == 0) {
    if (index-- == 0) return NoBit;
    word = words[index];
  }
  return HighestOf(index, word);
}

QZBitVector& QZBitVector::operator&=(const QZBitVector& other) {
  if (other.size > size) Resize(other.size);
  const std::size_t count = Storage::WordCount(size), common = Storage::WordCount(other.size);
  std::uint64_t* const words = Words();
  for (std::size_t index = 0; index < common; ++index) words[index] &= other.Words()[index];
  std::fill(words + common, words + count, 0);
  return *this;
}

QZBitVector& QZBitVector::operator|=(const QZBitVector& other) {
  if (other.size > size) Resize(other.size);
  const std::size_t common = Storage::WordCount(other.size);
  for (std::size_t index = 0; index < common; ++index) Words()[index] |= other.Words()[index];
  return *this;
}

QZBitVector& QZBitVector::operator^=(const QZBitVector& other) {
  if (other.size > size) Resize(other.size);
  const std::size_t common = Storage::WordCount(other.size);
  for (std::size_t index = 0; index < common; ++index) Words()[index] ^= other.Words()[index];
  return *this;
}

QZBitVector& QZBitVector::operator-=(const QZBitVector& other) {
  if (other.size > size) Resize(other.size);
  const std::size_t common = Storage::WordCount(other.size);
  for (std::size_t index = 0; index < common; ++index) Words()[index] &= ~other.Words()[index];
  return *this;
}

bool QZBitVector::FromHexString(const std::string& text) { return QZParseHex(*this, text); }

bool QZBitVector::FromHexString(const char* text) {
  assert(text != nullptr);
  return QZParseHex(*this, text);
}

bool QZBitVector::ToHexString(std::string& text) const { return QZMakeHex(text, *this, 0); }

QZBitVector operator~(const QZBitVector& vector) {
  QZBitVector result(vector);
  std::uint64_t* const words = Storage::Words(result);
  const std::size_t count = Storage::WordCount(result);
  for (std::size_t index = 0; index < count; ++index) words[index] = ~words[index];
  Storage::ClearBeyondSize(result);
  return result;
}

QZBitVector operator|(const QZBitVector& a, const QZBitVector& b) { return QZBitVector(a) |= b; }
QZBitVector operator&(const QZBitVector& a, const QZBitVector& b) { return QZBitVector(a) &= b; }
QZBitVector operator^(const QZBitVector& a, const QZBitVector& b) { return QZBitVector(a) ^= b; }
QZBitVector operator-(const QZBitVector& a, const QZBitVector& b) { return QZBitVector(a) -= b; }

bool operator==(const QZBitVector& a, const QZBitVector& b) {
  return a.GetSize() == b.GetSize() &&
         std::equal(Storage::Words(a), Storage::Words(a) + Storage::WordCount(a), Storage::Words(b));
}

QZBitVector QZBitVectorNot(const QZBitVector& vector) { return ~vector; }
QZBitVector QZBitVectorOr(const QZBitVector& a, const QZBitVector& b) { return a | b; }
QZBitVector QZBitVectorAnd(const QZBitVector& a, const QZBitVector& b) { return a & b; }
QZBitVector QZBitVectorXor(const QZBitVector& a, const QZBitVector& b) { return a ^ b; }
QZBitVector QZBitVectorSub(const QZBitVector& a, const QZBitVector& b) { return a - b; }
bool QZBitVectorEqual(const QZBitVector& a, const QZBitVector& b) { return a == b; }

double QZTanimoto(const QZBitVector& a, const QZBitVector& b) {
  const BitCounter& counter = BestBitCounter();
  const std::size_t inA = Storage::WordCount(a), inB = Storage::WordCount(b);
  const std::size_t common = std::min(inA, inB);
  PairCounts counts = counter.countPair(Storage::Words(a), Storage::Words(b), common);
  if (inA != inB) {
    const QZBitVector& longer = inA < inB ? b : a;
    counts.either += counter.count(Storage::Words(longer) + common, std::max(inA, inB) - common);
  }
  if (counts.either == 0) return 1.0;
  // Signed numbers are converted in one step.
  return static_cast<double>(static_cast<std::int64_t>(counts.both)) /
         static_cast<double>(static_cast<std::int64_t>(counts.either));
}

void QZGetBitCounts(const QZBitVector& a, const QZBitVector& b, unsigned int* onlyA, unsigned int* onlyB,
                    unsigned int* both, unsigned int* neither) {
  assert(onlyA != nullptr && onlyB != nullptr && both != nullptr && neither != nullptr);
  *onlyA = *onlyB = *both = *neither = 0;
  if (a.GetSize() != b.GetSize()) {
    QZThrow.Warning(SizesDiffer, static_cast<int>(a.GetSize()), static_cast<int>(b.GetSize()));
    return;
  }
  const PairCounts counts = BestBitCounter().countPair(Storage::Words(a), Storage::Words(b), Storage::WordCount(a));
  const auto either = static_cast<unsigned int>(counts.either);
  const unsigned int inA = a.CountBits();
  *both = static_cast<unsigned int>(counts.both);
  *onlyA = inA - *both;
  *onlyB = either - inA;
  *neither = static_cast<unsigned int>(a.GetSize()) - either;
}

void QZGetBitCounts(const QZBitVector& a, const QZBitVector& b, unsigned int* onlyA, unsigned int* onlyB,
                    unsigned int* both) {
  unsigned int neither = 0;
  QZGetBitCounts(a, b, onlyA, onlyB, both, &neither);
}

void QZCopyBits(QZBitVector& target, const std::vector<bool>& source) {
  target.SetSize(source.size());
  target.ClearBits();
  const unsigned long size = std::min(target.GetSize(), source.size());
  for (unsigned long i = 0; i < size; ++i) {
    if (source[i]) target.SetBit(i);
  }
}

void QZCopyBits(std::vector<bool>& target, const QZBitVector& source) {
  target.assign(source.GetSize(), false);
  for (unsigned int i = source.FirstBit(); i != QZBitVector::NoBit; i = source.NextBit(i)) target[i] = true;
}

}  // namespace QZSystem
