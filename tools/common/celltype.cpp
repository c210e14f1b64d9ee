#include "tools/common/celltype.h"

#include <algorithm>

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

constexpr const char* typeNames[] = {"Int", "Float", "Bool", "String"};

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool readInt(std::string_view text, long& value) {
  return QZReadNumber(text, value).length == text.size() && !text.empty();
}

// A number in decimal form, or one of the words for infinities and NaN; no blanks, no hexadecimal form.
bool readFloat(std::string_view text, double& value) {
  if (text.empty() || text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r')) return false;
  if (text.find_first_of("xX(") != std::string_view::npos) return false;
  return QZReadNumber(text, value).length == text.size();
}

bool readBool(std::string_view text, bool& value) {
  if (text.size() != 4 && text.size() != 5) return false;
  return QZReadNumber(text, value).length == text.size();
}

std::string_view withoutSign(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  return text;
}

bool isWhole(std::string_view text) {
  const std::string_view digits = withoutSign(text);
  return !digits.empty() && std::all_of(digits.begin(), digits.end(), isDigit);
}

bool hasLeadingZero(std::string_view text) {
  const std::string_view digits = withoutSign(text);
  return digits.size() > 1 && digits[0] == '0' && isDigit(digits[1]);
}

}  // namespace

std::string CellTypeName(CellType type) { return typeNames[static_cast<int>(type)]; }

bool CellTypeOf(const std::string& name, CellType& type) {
  for (CellType each : {CellType::Int, CellType::Float, CellType::Bool, CellType::String}) {
    if (!QZStringEquals(name, CellTypeName(each))) continue;
    type = each;
    return true;
  }
  return false;
}

bool IsCell(std::string_view text, CellType type) {
  std::vector<unsigned char> bytes;
  return CellToBytes(text, type, bytes);
}

bool CellToBytes(std::string_view text, CellType type, std::vector<unsigned char>& bytes) {
  bytes.clear();
  switch (type) {
    case CellType::Int: {
      long value = 0;
      if (!readInt(text, value)) return false;
      QZFieldType<long>::AppendBytes(bytes, value);
      return true;
    }
    case CellType::Float: {
      double value = 0;
      if (!readFloat(text, value)) return false;
      QZFieldType<double>::AppendBytes(bytes, value);
      return true;
    }
    case CellType::Bool: {
      bool value = false;
      if (!readBool(text, value)) return false;
      QZFieldType<bool>::AppendBytes(bytes, value);
      return true;
    }
    case CellType::String:
      bytes.assign(text.begin(), text.end());
      return true;
  }
  return false;
}

void TypeGuess::See(std::string_view text) {
  seen = true;
  long whole = 0;
  double number = 0;
  bool truth = false;
  canBeInt = canBeInt && readInt(text, whole) && !hasLeadingZero(text);
  canBeFloat =
      canBeFloat && readFloat(text, number) && !hasLeadingZero(text) && (!isWhole(text) || readInt(text, whole));
  canBeBool = canBeBool && readBool(text, truth);
}

CellType TypeGuess::Type() const {
  if (!seen) return CellType::String;
  if (canBeInt) return CellType::Int;
  if (canBeFloat) return CellType::Float;
  return canBeBool ? CellType::Bool : CellType::String;
}

}  // namespace QZTools
