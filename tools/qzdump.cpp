// Shows any file of the tag-length format as a tree, without knowing who wrote it or what for.

#include <cmath>
#include <string>
#include <string_view>

#include "qz/system/json/textwriter.h"
#include "qz/system/text/utf8.h"
#include "tools/common/files.h"
#include "tools/common/qzbtree.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

constexpr const char* configuration = R"(
!BRIEF Show what a file of items in the tag-length format holds
!PARAMETER -in 1
  !TYPE string
  !INPUT 1
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The file to read, - for standard input
!END
!PARAMETER -full 2
  !TYPE bool
  !DEFAULT false
  !SIMPLE true
  !BRIEF Show arrays, texts and unknown payloads to their ends
!END
!PARAMETER -json 3
  !TYPE bool
  !DEFAULT false
  !SIMPLE true
  !BRIEF Write one JSON document instead
  !DETAIL
    An object with the array "items" and, for a file that can't be read to its end, the
    object "damage" with its offset, code and text. An item or value has "offset", "tag",
    "code", "type" and "length", and then "value", "bytes" (hexadecimal) or "parts".
!END
)";

constexpr unsigned long shownElements = 8;
constexpr unsigned long shownCharacters = 64;
constexpr unsigned long bytesPerLine = 16;
constexpr unsigned long shownLines = 4;

// IEEE 754 binary16.
double halfToDouble(QZHalfFloat half) {
  const int exponent = half.bits >> 10 & 0x1F;
  const int mantissa = half.bits & 0x3FF;
  const double sign = half.bits & 0x8000 ? -1 : 1;
  if (exponent == 0x1F) return mantissa == 0 ? sign * HUGE_VAL : std::nan("");
  return exponent == 0 ? sign * std::ldexp(mantissa, -24) : sign * std::ldexp(mantissa + 0x400, exponent - 25);
}

// Calls a function with each of the first elements of a value, of any type that has elements.
template <class Use>
void forEachElement(const QZBEntry& entry, unsigned long most, Use use) {
  const auto each = [&](auto example) {
    const unsigned long count = std::min(most, entry.Count());
    for (unsigned long i = 0; i < count; ++i) use(entry.Get<decltype(example)>(i));
  };
  switch (entry.type) {
    case QZBType::Bool:
    case QZBType::BoolArray:
    case QZBType::BoolVector:
      for (unsigned long i = 0; i < std::min(most, entry.Count()); ++i) use(entry.body[i] != 0);
      return;
    case QZBType::CharArray:
    case QZBType::CharVector:
      return each(static_cast<signed char>(0));
    case QZBType::UCharArray:
    case QZBType::UCharVector:
      return each(static_cast<unsigned char>(0));
    case QZBType::ShortVector:
      return each(static_cast<short>(0));
    case QZBType::UShortVector:
      return each(static_cast<unsigned short>(0));
    case QZBType::UIntArray:
    case QZBType::UIntVector:
      return each(0U);
    case QZBType::Float:
    case QZBType::FloatArray:
    case QZBType::FloatVector:
      return each(0.0F);
    case QZBType::Double:
    case QZBType::DoubleArray:
    case QZBType::DoubleVector:
      return each(0.0);
    case QZBType::HalfFloatArray:
    case QZBType::HalfFloatVector:
      return each(QZHalfFloat());
    default:
      return each(0);
  }
}

// Text as UTF-8, zeros included.
std::string readable(std::string_view bytes) {
  std::string text;
  for (;;) {
    const std::size_t zero = bytes.find('\0');
    text += QZBytesToUTF8(std::string(bytes.substr(0, zero)).c_str());
    if (zero == std::string_view::npos) return text;
    text += '\0';
    bytes.remove_prefix(zero + 1);
  }
}

void putHex(qzostream& out, unsigned long number, int digits) {
  while (digits-- > 0) out << "0123456789abcdef"[number >> (4 * digits) & 0xF];
}

std::string typeName(const QZBEntry& entry) {
  if (entry.form.shape != QZBShape::Unknown) return QZGetQZBTypeName(entry.type);
  qzosstream out;
  out << "unknown type 0x";
  putHex(out, entry.type, 2);
  return out.str();
}

const char* kindName(QzbNode::Kind kind) {
  return kind == QzbNode::Kind::Object ? "object" : kind == QzbNode::Kind::Group ? "group" : "payload";
}

/// Prints nodes as indented lines.
class TextPrinter {
 public:
  TextPrinter(qzostream& stream, bool showAll) : out(stream), full(showAll) {}

  void Print(const QzbNode& node, unsigned int depth) {
    CheckInterrupt();
    BeginLine(node.offset, depth);
    switch (node.kind) {
      case QzbNode::Kind::Object:
      case QzbNode::Kind::Group:
      case QzbNode::Kind::Payload:
        PutName(node);
        out << kindName(node.kind) << " of " << node.length << " bytes\n";
        if (node.kind == QzbNode::Kind::Payload) PrintBytes(node, depth + 1);
        break;
      case QzbNode::Kind::Handled:
        PutName(node);
        out << "handled value of " << node.length << " bytes, written by " << node.writer << '\n';
        break;
      case QzbNode::Kind::Unknown:
        PutName(node);
        out << typeName(node.entry) << '\n';
        break;
      case QzbNode::Kind::Value:
        PutName(node);
        PrintValue(node.entry);
        break;
    }
    for (const QzbNode& part : node.parts) Print(part, depth + 1);
  }

  void BeginLine(unsigned long offset, unsigned int depth) {
    putHex(out, offset, 8);
    out << "  ";
    while (depth-- > 0) out << "  ";
  }

 private:
  void PutName(const QzbNode& node) {
    if (!node.tag.empty()) PutText(node.tag);
    if (node.code != 0) out << (node.tag.empty() ? "(code " : " (code ") << static_cast<int>(node.code) << ')';
    if (!node.tag.empty() || node.code != 0) out << "  ";
  }

  void PutText(std::string_view text) {
    for (const char c : readable(text)) {
      const auto byte = static_cast<unsigned char>(c);
      if (c == '\n') {
        out << "\\n";
      } else if (c == '\t') {
        out << "\\t";
      } else if (c == '"' || c == '\\') {
        out << '\\' << c;
      } else if (byte < ' ' || byte == 0x7F) {
        out << "\\x";
        putHex(out, byte, 2);
      } else {
        out << c;
      }
    }
  }

  void PrintValue(const QZBEntry& entry) {
    out << typeName(entry);
    if (entry.form.shape != QZBShape::Scalar) out << " of " << entry.body.size() << " bytes";
    if (entry.swapped) out << ", swapped";
    out << ' ';
    const unsigned long most = full ? ~0UL : entry.form.shape == QZBShape::String ? shownCharacters : shownElements;
    if (entry.form.shape == QZBShape::String) {
      out << " \"";
      PutText(entry.body.substr(0, most));
      out << '"';
    } else {
      forEachElement(entry, most, [this](auto element) { PutElement(element); });
    }
    out << (entry.Count() > most ? " ...\n" : "\n");
  }

  template <class T>
  void PutElement(T element) {
    out << ' ';
    if constexpr (std::is_same_v<T, bool>) {
      out << (element ? "true" : "false");
    } else if constexpr (std::is_same_v<T, QZHalfFloat>) {
      out << halfToDouble(element);
    } else if constexpr (sizeof(T) == 1) {
      out << static_cast<int>(element);
    } else {
      out << element;
    }
  }

  void PrintBytes(const QzbNode& node, unsigned int depth) {
    const std::string_view bytes = node.entry.body;
    const unsigned long shown = full ? bytes.size() : std::min(bytes.size(), shownLines * bytesPerLine);
    for (unsigned long at = 0; at < shown; at += bytesPerLine) {
      const std::string_view line = bytes.substr(at, std::min(bytesPerLine, shown - at));
      BeginLine(node.bodyOffset + at, depth);
      for (unsigned long i = 0; i < bytesPerLine; ++i) {
        if (i < line.size()) putHex(out, static_cast<unsigned char>(line[i]), 2);
        out << (i < line.size() ? " " : "   ");
      }
      out << ' ';
      for (const char c : line) out << (c >= ' ' && c <= '~' ? c : '.');
      out << '\n';
    }
    if (shown == bytes.size()) return;
    BeginLine(node.bodyOffset + shown, depth);
    out << "and " << bytes.size() - shown << " more bytes; see -full\n";
  }

  qzostream& out;
  bool full;
};

/// Makes the JSON document.
class DocumentPrinter {
 public:
  DocumentPrinter(QZJSONTextWriter& document, bool showAll) : out(document), full(showAll) {}

  void Print(const QzbNode& node) {
    out.Open("{\"offset\":");
    out.Int(static_cast<long>(node.offset));
    out.Raw(",\"tag\":");
    out.String(readable(node.tag));
    out.Raw(",\"code\":");
    out.Int(node.code);
    out.Raw(",\"type\":");
    const bool isEntry =
        node.kind == QzbNode::Kind::Value || node.kind == QzbNode::Kind::Handled || node.kind == QzbNode::Kind::Unknown;
    out.String(isEntry ? typeName(node.entry) : kindName(node.kind));
    out.Raw(",\"length\":");
    out.Int(static_cast<long>(node.length));
    if (node.kind == QzbNode::Kind::Handled) {
      out.Raw(",\"writer\":");
      out.String(readable(node.writer));
    }
    if (node.kind == QzbNode::Kind::Value) {
      PrintValue(node.entry);
    } else if (node.kind == QzbNode::Kind::Payload) {
      PrintBytes(node.entry.body);
    } else if (node.kind != QzbNode::Kind::Unknown) {
      PrintParts(node);
    }
    out.Close("}");
  }

 private:
  void PrintParts(const QzbNode& node) {
    out.Open(",\"parts\":[");
    const char* comma = "";
    for (const QzbNode& part : node.parts) {
      out.Raw(comma);
      Print(part);
      comma = ",";
    }
    out.Close("]");
  }

  void PrintValue(const QZBEntry& entry) {
    if (entry.form.shape == QZBShape::Array || entry.form.shape == QZBShape::Vector) {
      out.Raw(",\"count\":");
      out.Int(static_cast<long>(entry.Count()));
    }
    out.Raw(",\"value\":");
    if (entry.form.shape == QZBShape::String) {
      out.String(readable(full ? entry.body : entry.body.substr(0, shownCharacters)));
    } else if (entry.form.shape == QZBShape::Scalar) {
      forEachElement(entry, 1, [this](auto element) { PutElement(element); });
    } else {
      out.Open("[");
      const char* comma = "";
      forEachElement(entry, full ? ~0UL : shownElements, [this, &comma](auto element) {
        out.Raw(comma);
        PutElement(element);
        comma = ",";
      });
      out.Close("]");
    }
  }

  template <class T>
  void PutElement(T element) {
    if constexpr (std::is_same_v<T, bool>) {
      out.Bool(element);
    } else if constexpr (std::is_same_v<T, QZHalfFloat>) {
      out.Double(halfToDouble(element));
    } else if constexpr (std::is_floating_point_v<T>) {
      out.Double(static_cast<double>(element));
    } else {
      out.Int(static_cast<long>(element));
    }
  }

  void PrintBytes(std::string_view bytes) {
    qzosstream hex;
    for (const char c : full ? bytes : bytes.substr(0, shownLines * bytesPerLine))
      putHex(hex, static_cast<unsigned char>(c), 2);
    out.Raw(",\"bytes\":");
    out.String(hex.str());
  }

  QZJSONTextWriter& out;
  bool full;
};

std::optional<QzbDamage> printTree(qzistream& in, bool full) {
  TextPrinter printer(qzout, full);
  const std::optional<QzbDamage> damage = ReadQzbItems(in, [&printer](const QzbNode& item) { printer.Print(item, 0); });
  if (damage) {
    printer.BeginLine(damage->offset, 0);
    qzout << "damage: " << QZGetQZBReturnString(damage->code) << '\n';
  }
  return damage;
}

std::optional<QzbDamage> printDocument(qzistream& in, bool full) {
  QZJSONTextWriter document;
  DocumentPrinter printer(document, full);
  const char* comma = "";
  document.Open("{\"items\":[", 2);
  const std::optional<QzbDamage> damage = ReadQzbItems(in, [&](const QzbNode& item) {
    CheckInterrupt();
    document.Raw(comma);
    printer.Print(item);
    comma = ",\n";
    qzout << document.View();
    document.Rewind({0, 2});  // the two brackets stay open
  });
  document.Close("]");
  if (damage) {
    document.Raw(",\"damage\":{\"offset\":");
    document.Int(static_cast<long>(damage->offset));
    document.Raw(",\"code\":");
    document.Int(static_cast<long>(damage->code));
    document.Raw(",\"text\":");
    document.String(QZGetQZBReturnString(damage->code));
    document.Raw("}");
  }
  document.Close("}\n");
  qzout << document.View();
  return damage;
}

void dump(QZInterface& settings) {
  Input input(TextSetting(settings, "-in"), TextSetting(settings, "-progress"), "Reading");
  const bool full = FlagSetting(settings, "-full");
  const std::optional<QzbDamage> damage =
      FlagSetting(settings, "-json") ? printDocument(input.Stream(), full) : printTree(input.Stream(), full);
  if (damage) {
    CheckStandardOutput();
    throw ToolError(input.Name() + ": offset " + std::to_string(damage->offset) + ": " +
                    QZGetQZBReturnString(damage->code));
  }
  input.Finish();
}

}  // namespace

int main(int argc, char** argv) { return RunTool(argc, argv, configuration, dump); }
