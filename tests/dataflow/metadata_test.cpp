#include "qz/dataflow/metadata.h"

#include <gtest/gtest.h>

#include "qz/dataflow/field.h"
#include "tests/dataflow/bytes.h"

namespace QZDataFlow {
namespace {

constexpr unsigned int kLower = 0x09000001;
constexpr unsigned int kPriority = 0x06020001;
constexpr unsigned int kAuthor = 0x02000002;
constexpr unsigned int kErrorsFor = 0x07000002;
constexpr unsigned int kSmiles = 0x05010002;
constexpr unsigned int kSecond = 0x08040001;
constexpr unsigned int kJoule = 0x08020004;

/// The options, then each pair with its bytes.
std::string Show(const QZMeta& meta) {
  std::string text;
  char room[16];
  const auto key = [&](unsigned int number) {
    std::snprintf(room, sizeof room, "%08X ", number);
    return std::string(room);
  };
  for (const unsigned int option : meta.GetOptions()) text += key(option);
  for (const auto& [number, bytes] : meta.GetAttributes()) text += key(number) + "<" + Hex(bytes) + "> ";
  return text;
}

TEST(MetadataKeys, HaveTheirNames) {
  EXPECT_EQ(QZMetadata::GetMetaConstants().size(), 199U);
  // The last names of groups, and names behind gaps.
  const struct {
    unsigned int key;
    const char* name;
  } cases[] = {
      {0x02000003, "Annotation.Comments"},
      {0x03000005, "Source.Query"},
      {0x04000011, "Flags.Predicted"},
      {0x0500000A, "Hints.ShardID"},
      {0x0501001A, "Hints.Chem.CXSMILES"},
      {0x06000013, "Display.HiddenByDefault"},
      {0x06020002, "Display.Values.Precision"},
      {0x07000007, "Relations.MeanFor"},
      {0x07000010, "Relations.SplitFrom"},
      {0x07010007, "Relations.Chem.QueryFor"},
      {0x08010008, "Units.Concentration.ppb"},
      {0x08050006, "Units.Mass.Da"},
      {0x080F000A, "Units.Force.kCal_per_mol_A"},
      {0x08150002, "Units.DipoleMoment.statCm"},
      {0x09000002, "Limits.Upper"},
      {0x0A000002, "Constraints.Limits"},
  };
  for (const auto& [key, name] : cases) {
    EXPECT_EQ(QZFieldMeta::GetName(key), name);
    EXPECT_EQ(QZMeta::GetValue(name), key) << name;
  }
  for (const unsigned int key : {0U, 0x01000001U, 0x07000001U, 0x07000006U, 0x0700000BU, 0x09000003U}) {
    EXPECT_EQ(QZFieldMeta::GetName(key), "") << key;
  }
  std::string ofRecords;
  for (const unsigned int key : {0x01000001U, 0x01000002U, 0x01000003U, 0x04000001U})
    ofRecords += QZRecordMeta::GetName(key) + ' ';
  EXPECT_EQ(ofRecords, "Flags.ID Flags.Annotation Flags.IsSchema  ");
  EXPECT_EQ(QZMeta::GetValue("Units::Mass::Da"), 0x08050006U);
  EXPECT_EQ(QZMeta::GetValue("Units::Mass.Da"), 0x08050006U);
  for (const char* name : {"", "Units.Mass", "units.mass.da", "Units:Mass:Da"}) EXPECT_EQ(QZMeta::GetValue(name), 0U);
}

TEST(MetadataKeys, TakeTheValuesOfTheirGroup) {
  const auto takes = [](unsigned int key) {
    return QZMetadata::IsOption(key)                      ? "option"
           : QZMetadata::TakesAttribute<std::string>(key) ? "string"
           : QZMetadata::TakesAttribute<double>(key)      ? "double"
           : QZMetadata::TakesAttribute<int>(key)         ? "int"
                                                          : "?";
  };
  for (const unsigned int key : {0x01000001U, kAuthor, 0x03000009U, kErrorsFor, 0x07010001U})
    EXPECT_STREQ(takes(key), "string") << key;
  for (const unsigned int key : {0U, 0x07020001U, 0x09010001U, 0x06000001U, 0x06010001U, kSmiles, kSecond, 0x0A000001U})
    EXPECT_STREQ(takes(key), "option") << key;
  EXPECT_STREQ(takes(kLower), "double");
  EXPECT_STREQ(takes(kPriority), "int");
}

TEST(MetadataKeys, MasksTellWhatMayOccurOnce) {
  for (const unsigned int id : {0x05010001U, 0x04000001U}) EXPECT_EQ(QZMetadata::QZGetMetaPerRecordMask(id), ~0U);
  EXPECT_EQ(QZMetadata::QZGetMetaPerRecordMask(kSmiles), 0U);
  EXPECT_EQ(QZMetadata::QZGetMetaPerFieldMask(0x08000000), ~0U);
  EXPECT_EQ(QZMetadata::QZGetMetaPerFieldMask(kSecond), 0xFF000000);
  EXPECT_EQ(QZMetadata::QZGetMetaPerFieldMask(kLower), 0U);
}

TEST(Metadata, OptionsAreSortedAndUniqueAndUnitsReplaceEachOther) {
  QZFieldMeta meta;
  meta.SetOption(kSecond).SetOption(kSmiles).SetOption(kSmiles);
  EXPECT_EQ(Show(meta), "05010002 08040001 ");
  meta.SetOption(kJoule);
  EXPECT_EQ(Show(meta), "05010002 08020004 ");
  meta.SetOptions({0x04000002, kSmiles, kSecond, 0x04000001, kJoule});
  EXPECT_EQ(Show(meta), "04000001 04000002 05010002 08020004 ") << "the last unit of the list";
  meta.SetOption(0x08000000);
  EXPECT_EQ(Show(meta), "04000001 04000002 05010002 08000000 08020004 ");
  meta.SetOption(kSecond).SetOptions(meta.GetOptions());
  EXPECT_EQ(Show(meta), "04000001 04000002 05010002 08040001 ");
  meta.RemoveOption(kSmiles).RemoveOption(0x1234).SetOption(kLower);
  EXPECT_EQ(Show(meta), "04000001 04000002 08040001 09000001 ") << "any key can be set";
}

TEST(Metadata, AttributesAreSortedByKeyAndBytes) {
  QZFieldMeta meta;
  meta.AddAttribute(kErrorsFor, "b").AddAttribute(kErrorsFor, "a").AddAttribute(kErrorsFor, "a");
  meta.AddAttribute(kPriority, 300).SetAttribute(kLower, 0.5);
  EXPECT_EQ(Show(meta),
            "06020001 <82 2C 01> 07000002 <01 61> 07000002 <01 61> 07000002 <01 62> "
            "09000001 <00 00 00 00 00 00 E0 3F> ");
  meta.SetAttribute(kErrorsFor, "c").AddAttribute(kPriority, -1);
  EXPECT_EQ(Show(meta), "06020001 <81 FF> 06020001 <82 2C 01> 07000002 <01 63> 09000001 <00 00 00 00 00 00 E0 3F> ");
  meta.RemoveAttribute(kPriority, 300).RemoveAttribute(kErrorsFor, "x").RemoveAttribute(kLower);
  EXPECT_EQ(Show(meta), "06020001 <81 FF> 07000002 <01 63> ");
  meta.RemoveAttribute(kPriority, -1).RemoveAttribute(kErrorsFor, "c").RemoveAttribute(kLower, 0.5);
  EXPECT_TRUE(meta.IsEmpty());
}

TEST(Metadata, ValuesOfAnotherTypeAreDropped) {
  QZRecordMeta meta;
  meta.AddAttribute(kLower, "x").AddAttribute(kLower, 1).AddAttribute(kAuthor, 1.0).SetAttribute(kPriority, 1.0);
  meta.SetAttribute(kSmiles, "x").SetAttribute(kSmiles, 1).AddAttribute(kSmiles, 1.0);
  EXPECT_TRUE(meta.IsEmpty());
}

TEST(Metadata, ValuesAreFoundByPlaceAndByContent) {
  QZFieldMeta meta;
  meta.AddAttribute(kAuthor, "x").AddAttribute(kAuthor, "yy").AddAttribute(kLower, -1.5).AddAttribute(kPriority, 7);
  EXPECT_EQ(meta.GetAttribute<std::string>(kAuthor), "x");
  EXPECT_EQ(meta.GetStrAttribute(kAuthor, 1) + meta.GetStrAttribute(kAuthor, 2), "yy");
  EXPECT_EQ(meta.GetFloatAttribute(kLower), -1.5);
  EXPECT_EQ(meta.GetIntAttribute(kPriority), 7);
  EXPECT_EQ(meta.GetAttribute<int>(kPriority, 1) + meta.GetAttribute<int>(kLower), 0);
  EXPECT_EQ(meta.GetAttribute<double>(kAuthor), 0.0);
  EXPECT_TRUE(meta.HasAttribute(kAuthor) && meta.HasAttribute(kAuthor, "yy") && meta.HasAttribute(kPriority, 7));
  EXPECT_FALSE(meta.HasAttribute(kErrorsFor) || meta.HasAttribute(kAuthor, "z") || meta.HasAttribute(kLower, 1.5));
  EXPECT_EQ(meta.GetAttributeBytes(kAuthor), (std::vector<std::vector<unsigned char>>{{1, 'x'}, {2, 'y', 'y'}}));
  EXPECT_EQ(meta.GetAttributes(kPriority), (std::vector<QZMeta::Attribute>{{kPriority, {7}}}));
}

TEST(Metadata, EncodedValuesNeedNotBeSound) {
  QZFieldMeta meta;
  meta.SetAttributes({{kPriority, {0x84, 1}}, {kAuthor, {9, 'x'}}, {kLower, {1, 2}}, {kErrorsFor, {0x81, 0xFF}}});
  EXPECT_EQ(Show(meta), "06020001 <84 01> 02000002 <09 78> 09000001 <01 02> 07000002 <81 FF> ") << "as given";
  EXPECT_EQ(meta.GetStrAttribute(kAuthor), "");
  EXPECT_EQ(meta.GetFloatAttribute(kLower), 0.0);
  EXPECT_EQ(meta.GetIntAttribute(kPriority), 0);
  EXPECT_EQ(meta.GetRelatedFields(), std::vector<std::string>{""});
  meta.AddAttributeBytes(kAuthor, {});
  EXPECT_EQ(Show(meta), "02000002 <> 02000002 <09 78> 06020001 <84 01> 07000002 <81 FF> 09000001 <01 02> ");
  meta.SetAttributeBytes(kAuthor, meta.GetAllAttributes()[1].second);
  EXPECT_EQ(Show(meta), "02000002 <09 78> 06020001 <84 01> 07000002 <81 FF> 09000001 <01 02> ") << "from itself";
  meta.SetAttributeBytes(kAuthor, {1, 'a'});
  meta.RemoveAttributeBytes(kLower, {1, 2});
  EXPECT_EQ(Show(meta), "02000002 <01 61> 06020001 <84 01> 07000002 <81 FF> ");
  meta.SetAttributeBytes(kAuthor, meta.GetAllAttributes().front().second);
  EXPECT_EQ(Show(meta), "02000002 <01 61> 06020001 <84 01> 07000002 <81 FF> ") << "bytes of its own";
  EXPECT_TRUE(meta.HasAttributeBytes(kPriority, {0x84, 1}));
  EXPECT_FALSE(meta.HasAttributeBytes(kPriority, {0x84}));
}

TEST(Metadata, MergeReplacesKeysAndUnits) {
  QZFieldMeta meta, other;
  meta.SetOptions({kSecond, kSmiles}).AddAttribute(kAuthor, "a").AddAttribute(kAuthor, "b").SetAttribute(kPriority, 1);
  other.SetOption(kJoule).AddAttribute(kAuthor, "y").AddAttribute(kAuthor, "x");
  meta.Merge(other);
  EXPECT_EQ(Show(meta), "05010002 08020004 02000002 <01 79> 06020001 <01> ");
  other.Merge(other);
  EXPECT_EQ(Show(other), "08020004 02000002 <01 79> ");
}

TEST(Metadata, SubsetsAreOfOptionsAndOfPairs) {
  QZFieldMeta empty, meta, more;
  meta.SetOption(kSmiles).SetAttribute(kPriority, 1);
  more.SetOptions({kSmiles, kSecond}).AddAttribute(kPriority, 1).AddAttribute(kPriority, 2);
  EXPECT_TRUE(empty.IsSubsetOf(meta) && meta.IsSubsetOf(more) && more.IsSubsetOf(more));
  EXPECT_FALSE(more.IsSubsetOf(meta) || meta.IsSubsetOf(empty));
  meta.SetAttribute(kPriority, 3);
  EXPECT_FALSE(meta.IsSubsetOf(more)) << "the same key with another value";
}

TEST(Metadata, RelationsNameOtherFields) {
  QZFieldMeta meta;
  const QZFieldBase mass("mass");
  meta.AddRelation(kErrorsFor, mass).AddRelation(0x07010005, mass).AddRelation(kErrorsFor, QZFieldBase("charge"));
  meta.AddRelation(kLower, mass).AddRelation(kSmiles, mass).AddRelation(0x08000000, mass);
  meta.SetAttribute(kLower, 0.5).SetAttribute(kPriority, 4);
  EXPECT_EQ(meta.GetFieldRelations("mass"), (std::vector<unsigned int>{kErrorsFor, 0x07010005}));
  EXPECT_EQ(meta.GetFieldRelations("other"), std::vector<unsigned int>{});
  EXPECT_EQ(meta.GetRelatedFields(), (std::vector<std::string>{"charge", "mass"}));
  meta.AddAttribute(kAuthor, "mass");
  EXPECT_EQ(meta.GetFieldRelations("mass"), (std::vector<unsigned int>{kAuthor, kErrorsFor, 0x07010005}));
}

}  // namespace
}  // namespace QZDataFlow
