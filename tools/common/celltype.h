#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow.h"

namespace QZTools {

/// The type of a table's column.
enum class CellType { Int, Float, Bool, String };

/// "Int", "Float", "Bool", "String".
std::string CellTypeName(CellType type);

/// The type that a name of CellTypeName means; false for another text. Letters count in either case.
bool CellTypeOf(const std::string& name, CellType& type);

/// Whether the text is a value of the type. An Int has 64 bits; a Float is decimal, or one of inf, infinity and nan; a
/// Bool is true or false, in either case of the letters.
bool IsCell(std::string_view text, CellType type);

/// Replaces `bytes` by the stored form of a cell; false where the text is no value of the type.
bool CellToBytes(std::string_view text, CellType type, std::vector<unsigned char>& bytes);

/// Narrows the types that a column can have, cell by cell.
///
///     TypeGuess guess;
///     for (cell : column) guess.See(cell);
///     CellType type = guess.Type();
///
/// An Int whose digits would change on the way, 007 say, and a whole number beyond 64 bits make the column a String, so
/// that nothing is lost. One thread at a time.
class TypeGuess {
 public:
  /// Takes a cell that isn't empty into account.
  void See(std::string_view text);

  /// The narrowest type that fits all cells seen; String where there was none.
  CellType Type() const;

 private:
  bool seen = false;
  bool canBeInt = true;
  bool canBeFloat = true;
  bool canBeBool = true;
};

}  // namespace QZTools
