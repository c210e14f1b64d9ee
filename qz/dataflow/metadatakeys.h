#pragma once

#include <array>
#include <map>
#include <string>

/// The fixed vocabulary of metadata: 32-bit keys, whose numbers are stored in files.
///
/// The top byte of a key is its family, the second byte a sub-family, the low 16 bits the number within it. A key takes
/// values of one type, by its upper 16 bits, or none at all; then it is an option, which a field has or hasn't.
///
///     const unsigned int key = QZDataFlow::QZMeta::GetValue("Units.Time.s");
///     if (QZMetadata::IsOption(key)) meta.SetOption(key);
///
/// Safe from any thread.
namespace QZMetadata {

/// The groups of keys that take a string, a double and an int.
inline constexpr std::array<unsigned int, 5> StringAtts{0x01000000, 0x02000000, 0x03000000, 0x07000000, 0x07010000};
inline constexpr std::array<unsigned int, 1> FloatAtts{0x09000000};
inline constexpr std::array<unsigned int, 1> IntAtts{0x06020000};

/// The options that only one field of a record may have: the primary molecule and the identifier.
inline constexpr std::array<unsigned int, 2> onePerRecord{0x05010001, 0x04000001};
/// The families of which a field may have one option only: all units.
inline constexpr std::array<unsigned int, 1> onePerField{0x08000000};

/// Whether `key` takes values of type T, which is `std::string`, `double` or `int`.
template <class T>
bool TakesAttribute(unsigned int key) = delete;
template <>
bool TakesAttribute<std::string>(unsigned int key);
template <>
bool TakesAttribute<double>(unsigned int key);
template <>
bool TakesAttribute<int>(unsigned int key);

/// Whether `key` takes no value at all, known or not.
bool IsOption(unsigned int key);
/// Whether a value of `key` can be the name of another field: a key that takes a string and shares a bit with those of
/// "Relations."; the texts of "Annotation." and "Source." pass with them.
bool IsRelation(unsigned int key);

/// The names of all keys that a field can have, such as "Hints.Chem.SMILES". Made at the first call, never destroyed.
const std::map<unsigned int, std::string>& GetMetaConstants();
/// The key of a name in that table, or 0; every "::" in the name counts as a dot.
unsigned int GetMetaConstant(const std::string& name);

/// The bits under which a new option displaces options of all fields of its record: all ones for a key of
/// onePerRecord, otherwise 0.
unsigned int QZGetMetaPerRecordMask(unsigned int key);
/// The bits under which a new option displaces options of its own field: 0xFF000000 for a unit, all ones for
/// 0x08000000 itself, otherwise 0.
unsigned int QZGetMetaPerFieldMask(unsigned int key);

}  // namespace QZMetadata
