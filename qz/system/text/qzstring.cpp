#include "qz/system/text/qzstring.h"

#include <algorithm>
#include <string_view>

#include "qz/platform/file.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

namespace {

constexpr char tooManyWildcards[] = "QZStringMatch doesn't support more than two wildcards, *'s, in a pattern";

constexpr char blanks[] = " \t";

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// The name of a file in lower case, without its directories.
std::string lowerName(const std::string& filename) { return QZFileDetermineName(QZStringLower(filename)); }

bool beginsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

std::string QZStringLower(const std::string& text) {
  std::string result = text;
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

std::string QZStringUpper(const std::string& text) {
  std::string result = text;
  std::transform(result.begin(), result.end(), result.begin(), upper);
  return result;
}

bool QZStringEquals(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::string QZStringStripWhiteSpace(const std::string& text) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

std::string QZStringSimplifyWhiteSpace(const std::string& text) {
  std::string result;
  bool blank = false;
  for (const char c : text) {
    if (c == ' ' || c == '\t') {
      blank = true;
      continue;
    }
    if (blank) result += ' ';
    blank = false;
    result += c;
  }
  return result;
}

std::string QZStringTabsToSpaces(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\t') {
      result += "    ";
    } else {
      result += c;
    }
  }
  return result;
}

std::string QZStringTranslate(const std::string& text) { return text; }

bool QZStringMatch(const std::string& text, const std::string& pattern) {
  if (text == pattern) return true;
  const std::size_t first = pattern.find('*');
  if (first == std::string::npos) return false;
  const std::size_t last = pattern.rfind('*');
  const std::string_view whole = pattern;
  const std::string_view suffix = whole.substr(last + 1);
  if (!beginsWith(text, whole.substr(0, first)) || !endsWith(text, suffix)) return false;
  if (first == last) return true;
  const std::string_view middle = whole.substr(first + 1, last - first - 1);
  if (middle.find('*') != std::string_view::npos) {
    QZThrow.Warning(std::string(tooManyWildcards));
    return false;
  }
  if (middle.empty()) return true;
  const std::size_t behind = text.size() - suffix.size();
  return first < behind && std::string_view(text).substr(first, behind - first).find(middle) != std::string_view::npos;
}

std::string QZFileExtension(const std::string& filename, const std::string& ignore) {
  const std::string name = lowerName(filename);
  if (ignore.empty()) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? "" : name.substr(dot + 1);
  }
  std::vector<std::string_view> parts;
  std::vector<std::string_view> ignored;
  const std::string lowerIgnore = QZStringLower(ignore);
  QZStringTokenize(parts, name, ".", true);
  QZStringTokenize(ignored, lowerIgnore, ",", true);
  for (std::size_t i = parts.size(); i-- > 1;) {
    if (std::find(ignored.begin(), ignored.end(), parts[i]) == ignored.end()) return std::string(parts[i]);
  }
  return {};
}

std::vector<std::string> QZFileExtensions(const std::string& filename) {
  const std::string name = lowerName(filename);
  std::vector<std::string> extensions;
  const std::size_t dot = name.find('.');
  if (dot != std::string::npos) QZStringTokenize(extensions, name.substr(dot + 1), ".", true);
  return extensions;
}

}  // namespace QZSystem
