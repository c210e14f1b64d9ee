#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow.h"
#include "qz/system/util/bitvector.h"
#include "tools/common/display.h"
#include "tools/common/fieldwatch.h"

namespace QZTools {

/// The bits of a hexadecimal text that holds nothing but digits, white space and a marker at its end; none for another
/// text, an empty one, or one whose marker takes away more than there is. Safe from any thread.
std::optional<QZSystem::QZBitVector> PrintOfHex(const std::string& text);

/// Adds the groups of three letters of a text to a fingerprint: each group, of the text in lower case with a blank at
/// either end, sets one bit, by its hash. Safe from any thread.
void AddTrigrams(QZSystem::QZBitVector& print, std::string_view text);

/// Which fields a fingerprint comes from: one with its text, or others whose texts it is made of.
struct PrintFields {
  std::string hexField;
  std::vector<std::string> textFields;
};

/// Takes fingerprints out of the records of a stream.
///
///     PrintReader reader({"fingerprint", {}});
///     if (const auto print = reader.Of(record)) ...
///
/// One thread at a time.
class PrintReader {
 public:
  explicit PrintReader(PrintFields printFields) : wanted(std::move(printFields)) {}

  /// The record's fingerprint; none where it has no such field, or nothing in it. Throws std::invalid_argument with the
  /// text where that is no fingerprint.
  std::optional<QZSystem::QZBitVector> Of(const QZDataFlow::QZRecord& record);

  /// The text of a field of the last record, "" where there is none.
  std::string Text(const QZDataFlow::QZRecord& record, const std::string& name);

 private:
  const QZDataFlow::QZFieldBase* find(const std::string& name) const;

  PrintFields wanted;
  FieldWatch watch;
  ValueText texts;
};

}  // namespace QZTools
