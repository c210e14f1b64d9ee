#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace QZSystem {

/// A vector of bits that changes its size, made for fingerprints: counts, set algebra, similarity, a walk over the set
/// bits, and a compact text.
///
///     QZBitVector print(2048);
///     print.SetBit(17);
///     if (QZTanimoto(print, query) > 0.7) hits.push_back(print);
///     for (unsigned int i = print.FirstBit(); i != QZBitVector::NoBit; i = print.NextBit(i)) Use(i);
///
/// Const operations may run in parallel; a change needs exclusive access. Up to 64 bits stand in the object itself.
/// Bits are numbered from 0. Counting uses the processor's own means (AVX2, population count), found at run time.
class QZBitVector {
 public:
  /// What the search for a bit gives if there is none.
  static constexpr unsigned int NoBit = 0xFFFFFFFF;
  /// The largest size, INT_MAX.
  static constexpr unsigned long MaxSize = 2147483647;

  /// 64 bits, none set.
  QZBitVector() = default;
  /// So many bits, none set. Above MaxSize the Error of `SetSize` and a vector as default-made.
  explicit QZBitVector(unsigned long size);
  QZBitVector(const QZBitVector& other);
  /// Leaves `other` as default-made.
  QZBitVector(QZBitVector&& other) noexcept;
  QZBitVector& operator=(const QZBitVector& other);
  QZBitVector& operator=(QZBitVector&& other) noexcept;
  virtual ~QZBitVector();

  [[nodiscard]] unsigned long GetSize() const { return size; }
  /// Keeps the bits below the new size; new ones are not set. Above MaxSize the Error "Max size for an QZBitVector is
  /// INT_MAX", and the size stays. Throws std::bad_alloc, with the vector as it was, if there is no room.
  void SetSize(unsigned long newSize);

  /// Changes of one bit; positions at or above the size are ignored.
  void SetBit(unsigned long i);
  void SetBit(unsigned long i, bool on);
  void ClearBit(unsigned long i);
  void ToggleBit(unsigned long i);
  /// False at or above the size.
  [[nodiscard]] bool IsBitSet(unsigned long i) const;
  /// Clears all bits; the size stays.
  void ClearBits();
  /// Whether no bit is set.
  [[nodiscard]] bool IsEmpty() const { return FirstBit() == NoBit; }

  /// The number of set bits.
  [[nodiscard]] unsigned int CountBits() const;
  /// The number of set bits from `low` to `high`, both included; positions at or above the size count nothing, and so
  /// does a `high` below `low`.
  [[nodiscard]] unsigned int CountRangeBits(unsigned int low, unsigned int high) const;

  /// The lowest and the highest set position, NoBit if there is none.
  [[nodiscard]] unsigned int FirstBit() const;
  [[nodiscard]] unsigned int LastBit() const;
  /// The lowest set position above `i`; NoBit if there is none or `i` is at or above the size.
  [[nodiscard]] unsigned int NextBit(unsigned int i) const;
  /// The highest set position below `i`, NoBit if there is none; `LastBit()` if `i` is at or above the size.
  [[nodiscard]] unsigned int PrevBit(unsigned int i) const;

  /// These grow to the size of `other` if that is larger. Bits that `other` doesn't have count as not set: `&=` clears
  /// what is beyond it. `-=` clears what is set in `other`.
  QZBitVector& operator&=(const QZBitVector& other);
  QZBitVector& operator|=(const QZBitVector& other);
  QZBitVector& operator^=(const QZBitVector& other);
  QZBitVector& operator-=(const QZBitVector& other);

  /// `QZParseHex` into this vector, and `QZMakeHex` of it on one line.
  [[nodiscard]] bool FromHexString(const std::string& text);
  /// REQUIRES: `text` isn't null.
  [[nodiscard]] bool FromHexString(const char* text);
  bool ToHexString(std::string& text) const;

 private:
  friend struct BitVectorStorage;

  union Slot {
    std::uint64_t word;    // up to 64 bits
    std::uint64_t* block;  // above
  };

  [[nodiscard]] bool IsInline() const { return size <= 64; }
  [[nodiscard]] std::uint64_t* Words() { return IsInline() ? &bits.word : bits.block; }
  [[nodiscard]] const std::uint64_t* Words() const { return IsInline() ? &bits.word : bits.block; }
  void Resize(unsigned long newSize);
  void MoveToBlock(unsigned long newSize);
  void MoveInline();
  void ResizeBlock(unsigned long newSize);
  void ClearBeyondSize();

  Slot bits{0};
  std::uint64_t size = 64;
};

/// A vector of the same size with every bit the other way.
[[nodiscard]] QZBitVector operator~(const QZBitVector& vector);
/// A copy of `a` on which the compound operator has worked: the result has the larger of the two sizes.
[[nodiscard]] QZBitVector operator|(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] QZBitVector operator&(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] QZBitVector operator^(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] QZBitVector operator-(const QZBitVector& a, const QZBitVector& b);
/// Whether sizes and bits are equal.
[[nodiscard]] bool operator==(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] inline bool operator!=(const QZBitVector& a, const QZBitVector& b) { return !(a == b); }

/// The operators by name.
[[nodiscard]] QZBitVector QZBitVectorNot(const QZBitVector& vector);
[[nodiscard]] QZBitVector QZBitVectorOr(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] QZBitVector QZBitVectorAnd(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] QZBitVector QZBitVectorXor(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] QZBitVector QZBitVectorSub(const QZBitVector& a, const QZBitVector& b);
[[nodiscard]] bool QZBitVectorEqual(const QZBitVector& a, const QZBitVector& b);

/// The bits set in both divided by the bits set in either (Tanimoto 1958): 1 for two vectors without a set bit. The
/// sizes may differ.
[[nodiscard]] double QZTanimoto(const QZBitVector& a, const QZBitVector& b);

/// Counts the bits that are set in `a` alone, in `b` alone, in both, and in neither. Where the sizes differ, all counts
/// are 0 and the Warning is "QZGetBitCounts: different bit vector size %d != %d". REQUIRES: no pointer is null.
void QZGetBitCounts(const QZBitVector& a, const QZBitVector& b, unsigned int* onlyA, unsigned int* onlyB,
                    unsigned int* both);
void QZGetBitCounts(const QZBitVector& a, const QZBitVector& b, unsigned int* onlyA, unsigned int* onlyB,
                    unsigned int* both, unsigned int* neither);

/// The target takes the source's size and bits. From a source above QZBitVector::MaxSize there comes the Error of
/// `SetSize`, and the target takes what its size holds.
void QZCopyBits(QZBitVector& target, const std::vector<bool>& source);
void QZCopyBits(std::vector<bool>& target, const QZBitVector& source);

/// Writes the bits as hexadecimal digits into `text`, and returns true. Each digit holds four bits, the lowest with the
/// value 1; the first digit holds the lowest bits. The last character tells how many bits of the last digit are none of
/// the vector: "J" for 0, "G" for 1, "H" for 2, "I" for 3. So 5 set bits are "F1I". With a `lineLength` other than 0 no
/// line is longer; lines are parted by line feeds, and none stands at the end.
bool QZMakeHex(std::string& text, const QZBitVector& vector, unsigned int lineLength);
bool QZMakeHex(std::string& text, const std::vector<bool>& vector, unsigned int lineLength);

/// Reads what `QZMakeHex` writes, and the other order of digits: marked by "N", "K", "L", "M" for 0 to 3 bits, or
/// without a marker, the last digit holds the lowest bits. Lower-case digits are as good; any other byte is passed
/// over. An empty text changes nothing. False, with no bit set and four bits of size for each byte before the marker,
/// if the marker takes away more bits than there are.
///
/// The form for `vector<bool>` changes its target only if it returns true; an empty text gives 64 bits there. A text
/// of more bits than QZBitVector::MaxSize sends the Error of `SetSize`, and what fits is read.
[[nodiscard]] bool QZParseHex(QZBitVector& vector, const std::string& text);
[[nodiscard]] bool QZParseHex(std::vector<bool>& vector, const std::string& text);

}  // namespace QZSystem
