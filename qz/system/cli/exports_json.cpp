#include "qz/system/cli/exports.h"

namespace QZSystem {

namespace {

std::string Quote(const std::string& text) {
  std::string quoted = "\"";
  for (char byte : text) {
    if (byte == '"' || byte == '\\') quoted += '\\';
    quoted += byte;
  }
  return quoted + '"';
}

template <class T, class Form>
std::string listOf(QZIter<const T> items, Form form) {
  std::string text = "[";
  bool first = true;
  for (const T& item : items) {
    if (!first) text += ',';
    first = false;
    text += form(item);
  }
  return text + "]";
}

std::string QuoteList(QZIterBase<const std::string>* items) { return listOf(QZIter(items), Quote); }

std::string QuotePair(const QZParameter::Range& range) {
  return "[" + Quote(range.first) + "," + Quote(range.second) + "]";
}

std::string QuotePairs(QZIterBase<const QZParameter::Range>* items) { return listOf(QZIter(items), QuotePair); }

const char* word(bool yes) { return yes ? "true" : "false"; }

const char* visibilityWord(unsigned int visibility) {
  static constexpr const char* words[] = {"\"simple\"", "\"normal\"", "\"hidden\""};
  return visibility < 3 ? words[visibility] : "null";
}

void writeParameter(const QZParameter& p, qzostream& out) {
  out << "{\n"
      << "\"name\" : " << Quote(p.GetName()) << ",\n"
      << "\"order\" : " << p.GetOrderPriority() << ",\n"
      << "\"type\" : " << Quote(p.ClassID()) << ",\n"
      << "\"list\" : " << word(p.GetIsList()) << ",\n"
      << "\"alias\" : " << QuoteList(p.GetAliases()) << ",\n"
      << "\"default\" : " << QuoteList(p.GetStringDefaults()) << ",\n"
      << "\"required\" : " << word(p.GetRequired()) << ",\n"
      << "\"input\" : " << p.GetInput() << ",\n"
      << "\"output\" : " << word(p.GetOutput()) << ",\n"
      << "\"visibility\" : " << visibilityWord(p.GetVisibility()) << ",\n"
      << "\"keyless\" : " << p.GetKeyless() << ",\n"
      << "\"legal_value\" : " << QuoteList(p.GetLegalValues()) << ",\n"
      << "\"illegal_value\" : " << QuoteList(p.GetIllegalValues()) << ",\n"
      << "\"legal_range\" : " << QuotePairs(p.GetLegalRanges()) << ",\n"
      << "\"illegal_range\" : " << QuotePairs(p.GetIllegalRanges()) << ",\n"
      << "\"element\" : " << Quote(p.GetElement()) << ",\n"
      << "\"command\" : " << Quote(p.GetCommand()) << ",\n"
      << "\"brief\" : " << Quote(p.GetBrief()) << ",\n"
      << "\"detail\" : " << QuoteList(p.GetDetail()) << "\n}";
}

}  // namespace

bool QZWriteJSON(const QZInterface& itf, qzostream& out) {
  out << "{\n"
      << "\"name\" : " << Quote(itf.GetName()) << ",\n"
      << "\"order\" : " << itf.GetOrderPriority() << ",\n"
      << "\"brief\" : " << Quote(itf.GetBrief()) << ",\n"
      << "\"detail\" : " << QuoteList(itf.GetDetail()) << ",\n"
      << "\"params\" : [\n";
  bool first = true;
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    if (!first) out << ",\n";
    first = false;
    writeParameter(parameter, out);
  }
  out << "]";

  first = true;
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) {
    out << (first ? ",\n\"interfaces\" : [\n" : ",\n");
    first = false;
    QZWriteJSON(category, out);
  }
  if (!first) out << "]\n";
  out << "}\n";
  return true;
}

}  // namespace QZSystem
