#include "qz/dataflow/metadatakeys.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <vector>

namespace QZMetadata {

namespace {

constexpr unsigned int kGroupMask = 0xFFFF0000;
constexpr unsigned int kFamilyMask = 0xFF000000;
constexpr unsigned int kRelationBits = 0x07000000;

/// Keys that share their upper 16 bits. The names are numbered from 1; an empty one leaves its number unused.
struct Group {
  unsigned int upper;
  const char* prefix;
  std::vector<const char*> names;
};

std::vector<Group> MakeGroups() {
  return {
      {0x0200, "Annotation.", {"Description", "Author", "Comments"}},
      {0x0300, "Source.", {"ID", "JobID", "ServiceID", "Version", "Query"}},
      {0x0400,
       "Flags.",
       {"ID", "Deprecated", "Range", "Categorical", "Ordinal", "Invalid", "Readonly", "DoNotSave", "Independent",
        "Experimental", "Calculated", "SDData", "GenericData", "PDBData", "UserCreated", "Optional", "Predicted"}},
      {0x0500,
       "Hints.",
       {"Image", "Image_SVG", "Image_PNG", "Image_JPG", "Date", "URL", "ImageURL", "LargerValuesBetter",
        "SmallerValuesBetter", "ShardID"}},
      {0x0501, "Hints.Chem.", {"PrimaryMol",      "SMILES",
                               "SMARTS",          "Protein",
                               "Receptor",        "Conformer",
                               "Reaction",        "Markush",
                               "FingerPrint",     "SelectivityTarget",
                               "PrimaryTarget",   "Ligand",
                               "Query",           "MolReference",
                               "ProteinSequence", "DNASequence",
                               "RNASequence",     "InChi",
                               "InChiKey",        "VantaMolURL",
                               "ChemicalName",    "RotorOffsetCompression",
                               "GraphMol",        "Virtual",
                               "VirtualID",       "CXSMILES"}},
      {0x0600,
       "Display.",
       {"Hidden", "AsMean", "AsRange", "Precision1", "Precision2", "Precision3", "Precision4", "PreferLog", "ColorBy",
        "MarkerBy", "SizeBy", "XAxis", "YAxis", "Rating", "HiddenFrom3D", "HiddenFromSpreadsheet", "HiddenFromPlot",
        "HiddenFromTileView", "HiddenByDefault"}},
      {0x0601, "Display.Chem.", {"AsDepiction"}},
      {0x0602, "Display.Values.", {"Priority", "Precision"}},
      {0x0700,
       "Relations.",
       {"", "ErrorsFor", "ChildOf", "UnitsFor", "DetailsFor", "", "MeanFor", "GroupID", "ReplacedBy", "AppliesTo", "",
        "CommentFor", "MeasurementUpperLimitFor", "MeasurementLowerLimitFor", "QualifierFor", "SplitFrom"}},
      {0x0701,
       "Relations.Chem.",
       {"MolDataFor", "ConfDataFor", "AtomDataFor", "BondDataFor", "LigandFor", "ReceptorFor", "QueryFor"}},
      {0x0801, "Units.Concentration.", {"M", "mM", "uM", "nM", "mg_per_kg", "ng_per_ml", "ppm", "ppb"}},
      {0x0802, "Units.Energy.", {"Cal", "kCal", "J", "kJ", "Hartree", "eV", "kCal_per_mol", "kJ_per_mol", "kT", "RT"}},
      {0x0803, "Units.Length.", {"m", "mm", "um", "nm", "Ang", "Bohr"}},
      {0x0804, "Units.Time.", {"s", "ms", "us", "ns", "ps", "fs", "days", "min", "hours"}},
      {0x0805, "Units.Mass.", {"kg", "g", "mg", "ug", "ng", "Da"}},
      {0x0806, "Units.Volume.", {"l", "ml", "ul", "nl", "A3"}},
      {0x0807, "Units.Frequency.", {"Hz", "kHz", "MHz", "GHz", "THz", "Recip_cm"}},
      {0x0808, "Units.Temp.", {"C", "F", "K"}},
      {0x0809, "Units.Entropy.", {"kCal_per_mol_K", "kJ_per_mol_K"}},
      {0x080A, "Units.Velocity.", {"m_per_s", "A_per_ps"}},
      {0x080B, "Units.Density.", {"e_per_A3", "n_per_A3", "item_per_m3", "item_per_cm3"}},
      {0x080C, "Units.Amount.", {"Mol", "Item"}},
      {0x080D, "Units.Charge.", {"Coulomb", "PlanckCharge"}},
      {0x080E, "Units.Angle.", {"rad", "deg"}},
      {0x080F,
       "Units.Force.",
       {"N", "dyn", "H_per_Bohr", "eV_per_A", "kJ_per_mol_rad", "kJ_per_mol_nm", "kJ_per_mol_A", "kCal_per_mol_rad",
        "kCal_per_mol_nm", "kCal_per_mol_A"}},
      {0x0810, "Units.Power.", {"W"}},
      {0x0811, "Units.Current.", {"A", "mA", "uA"}},
      {0x0812, "Units.ElectricalPotential.", {"V"}},
      {0x0813, "Units.MagneticField.", {"T", "G"}},
      {0x0814, "Units.Pressure.", {"Pa", "kPa", "bar", "atm", "mmHg", "tor"}},
      {0x0815, "Units.DipoleMoment.", {"D", "statCm"}},
      {0x0900, "Limits.", {"Lower", "Upper"}},
      {0x0A00, "Constraints.", {"AllowedValues", "Limits"}},
  };
}

std::map<unsigned int, std::string> MakeConstants() {
  std::map<unsigned int, std::string> constants;
  for (const Group& group : MakeGroups()) {
    unsigned int key = group.upper << 16;
    for (const char* name : group.names) {
      ++key;
      if (*name != '\0') constants.emplace(key, std::string(group.prefix) + name);
    }
  }
  return constants;
}

template <class Keys>
bool HasKey(const Keys& keys, unsigned int key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

}  // namespace

template <>
bool TakesAttribute<std::string>(unsigned int key) {
  return HasKey(StringAtts, key & kGroupMask);
}

template <>
bool TakesAttribute<double>(unsigned int key) {
  return HasKey(FloatAtts, key & kGroupMask);
}

template <>
bool TakesAttribute<int>(unsigned int key) {
  return HasKey(IntAtts, key & kGroupMask);
}

bool IsOption(unsigned int key) {
  return !TakesAttribute<std::string>(key) && !TakesAttribute<double>(key) && !TakesAttribute<int>(key);
}

bool IsRelation(unsigned int key) { return (key & kRelationBits) != 0 && TakesAttribute<std::string>(key); }

// Both tables outlive every static object, so that records work in the last destructor too.
const std::map<unsigned int, std::string>& GetMetaConstants() {
  static const auto& constants = *new std::map<unsigned int, std::string>(MakeConstants());
  return constants;
}

unsigned int GetMetaConstant(const std::string& name) {
  static const auto& keys = *[] {
    auto made = std::make_unique<std::unordered_map<std::string, unsigned int>>();
    for (const auto& [key, constant] : GetMetaConstants()) made->emplace(constant, key);
    return made.release();
  }();
  std::string dotted = name;
  for (std::size_t at = 0; (at = dotted.find("::", at)) != std::string::npos; ++at) {
    dotted.erase(at, 1);
    dotted[at] = '.';
  }
  const auto found = keys.find(dotted);
  return found == keys.end() ? 0 : found->second;
}

unsigned int QZGetMetaPerRecordMask(unsigned int key) { return HasKey(onePerRecord, key) ? ~0U : 0; }

unsigned int QZGetMetaPerFieldMask(unsigned int key) {
  if (HasKey(onePerField, key)) return ~0U;
  return HasKey(onePerField, key & kFamilyMask) ? kFamilyMask : 0;
}

}  // namespace QZMetadata
