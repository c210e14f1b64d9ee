#include "qz/system/text/tokenize.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>

namespace QZSystem {

namespace {

// A set of bytes as 256 bits.
class ByteSet {
 public:
  explicit ByteSet(std::string_view bytes) {
    for (const char c : bytes) word(c) |= bit(c);
  }
  bool Has(char c) const { return (words[index(c)] & bit(c)) != 0; }

 private:
  static std::size_t index(char c) { return static_cast<unsigned char>(c) >> 6; }
  static std::uint64_t bit(char c) { return std::uint64_t{1} << (static_cast<unsigned char>(c) & 63); }
  std::uint64_t& word(char c) { return words[index(c)]; }

  std::array<std::uint64_t, 4> words{};
};

// The first delimiter from a place on, or the end: of one byte and of several.
struct OneDelimiter {
  char delim;

  const char* operator()(const char* p, const char* end) const {
    if (p == end) return end;
    const void* found = std::memchr(p, delim, static_cast<std::size_t>(end - p));
    return found == nullptr ? end : static_cast<const char*>(found);
  }
};

struct SeveralDelimiters {
  ByteSet delims;

  const char* operator()(const char* p, const char* end) const {
    while (p != end && !delims.Has(*p)) ++p;
    return p;
  }
};

// Hands out the tokens of a text as its delimiters are found, from the first to the last.
template <class Take>
class Cutter {
 public:
  Cutter(std::string_view text, bool skip, Take& sink) : start(text.data()), skipEmpty(skip), take(sink) {}
  void operator()(const char* delimiter) {
    TakeUpTo(delimiter);
    start = delimiter + 1;
  }
  void TakeUpTo(const char* end) {
    if (end != start || !skipEmpty) take(start, static_cast<std::size_t>(end - start));
  }

 private:
  const char* start;
  bool skipEmpty;
  Take& take;
};

// Up to four delimiters, looked for in 16 bytes at once.
class FewDelimiters {
 public:
  static constexpr std::size_t most = 4;
  static constexpr std::size_t block = 16;

  // REQUIRES: one to four bytes.
  explicit FewDelimiters(std::string_view bytes) {
    for (std::size_t i = 0; i < most; ++i) delims[i] = _mm_set1_epi8(bytes[std::min(i, bytes.size() - 1)]);
  }

  // A bit for each of the 16 bytes from `p` on that is a delimiter.
  unsigned operator()(const char* p) const {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i first = _mm_or_si128(_mm_cmpeq_epi8(bytes, delims[0]), _mm_cmpeq_epi8(bytes, delims[1]));
    const __m128i second = _mm_or_si128(_mm_cmpeq_epi8(bytes, delims[2]), _mm_cmpeq_epi8(bytes, delims[3]));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(first, second)));
  }

 private:
  __m128i delims[most];
};

template <class Cut>
void cutAtFew(std::string_view text, const FewDelimiters& delims, Cut& cut) {
  constexpr std::size_t block = FewDelimiters::block;
  constexpr std::size_t atOnce = 4 * block;
  const char* p = text.data();
  for (std::size_t left = text.size(); left != 0;) {
    const std::size_t count = std::min(left, atOnce);
    std::uint64_t mask = 0;
    std::size_t i = 0;
    for (; count - i >= block; i += block) mask |= std::uint64_t{delims(p + i)} << i;
    if (i < count) {
      char last[block] = {};
      std::memcpy(last, p + i, count - i);
      mask |= (std::uint64_t{delims(last)} & ((1U << (count - i)) - 1)) << i;
    }
    for (; mask != 0; mask &= mask - 1) cut(p + __builtin_ctzll(mask));
    p += count;
    left -= count;
  }
}

template <class Take>
void split(std::string_view text, std::string_view delims, bool skipEmpty, Take& take) {
  Cutter<Take> cut(text, skipEmpty, take);
  const char* const end = text.data() + text.size();
  if (!delims.empty() && delims.size() <= FewDelimiters::most) {
    cutAtFew(text, FewDelimiters(delims), cut);
  } else {
    const SeveralDelimiters find{ByteSet(delims)};
    for (const char* p = find(text.data(), end); p != end; p = find(p + 1, end)) cut(p);
  }
  cut.TakeUpTo(end);
}

// Puts tokens into the elements that a vector already holds, and keeps their storage.
template <class Token>
class Reuse {
 public:
  explicit Reuse(std::vector<Token>& target) : tokens(target) {}
  void operator()(const char* token, std::size_t length) {
    if (count < tokens.size()) {
      tokens[count] = std::string_view(token, length);
    } else {
      tokens.emplace_back(token, length);
    }
    ++count;
  }
  void Finish() { tokens.resize(count); }

 private:
  std::vector<Token>& tokens;
  std::size_t count = 0;
};

// Whether a string is one of the vector's, so that writing tokens would change it while it is read.
bool isElement(const std::vector<std::string>& tokens, const std::string& text) {
  const std::less<const std::string*> before;
  return !before(&text, tokens.data()) && before(&text, tokens.data() + tokens.size());
}

// From the opening quote at `p`, the quote that closes the token: the first that isn't doubled; the end without one.
const char* closingQuote(const char* p, const char* end) {
  const OneDelimiter findQuote{*p};
  for (p = findQuote(p + 1, end); p != end; p = findQuote(p + 2, end)) {
    if (p + 1 == end || p[1] != *p) return p;
  }
  return end;
}

// A delimiter search that passes over a quoted start of the token.
struct QuotedDelimiters {
  ByteSet delims;
  ByteSet quotes;

  const char* operator()(const char* p, const char* end) const {
    if (p != end && quotes.Has(*p) && !delims.Has(*p) && p + 1 != end) p = closingQuote(p, end);
    return SeveralDelimiters{delims}(p, end);
  }
};

// Takes the quoting off a token.
void unquote(std::string& token, char quote) {
  if (token.empty() || token.front() != quote) return;
  const std::string quotes(1, quote);
  token = QZStringStripQuotes(QZStringCollapseQuotes(token, quotes), quotes);
}

template <class Items>
std::string join(const Items& items, const std::string& separator, bool trailing) {
  std::string text;
  std::size_t left = items.size();
  for (const std::string& item : items) {
    text += item;
    if (--left != 0 || trailing) text += separator;
  }
  return text;
}

bool isWhiteSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

bool QZStringTokenize(std::vector<std::string>& tokens, const std::string& text, const std::string& delims,
                      bool skipEmpty) {
  if (isElement(tokens, text)) return QZStringTokenize(tokens, std::string(text), delims, skipEmpty);
  Reuse<std::string> take(tokens);
  split(text, delims, skipEmpty, take);
  take.Finish();
  return true;
}

bool QZStringTokenize(std::list<std::string>& tokens, const std::string& text, const std::string& delims,
                      bool skipEmpty) {
  std::list<std::string> found;
  const auto take = [&found](const char* token, std::size_t length) { found.emplace_back(token, length); };
  split(text, delims, skipEmpty, take);
  tokens = std::move(found);
  return true;
}

bool QZStringTokenize(std::vector<std::string_view>& tokens, std::string_view text, std::string_view delims,
                      bool skipEmpty) {
  Reuse<std::string_view> take(tokens);
  split(text, delims, skipEmpty, take);
  take.Finish();
  return true;
}

bool QZStringTokenizeQuoted(std::vector<std::string>& tokens, const std::string& text, const std::string& delims,
                            const std::string& quotes, bool skipEmpty) {
  if (text.empty() || delims.empty()) {
    const bool success = text.empty();
    tokens.clear();
    return success;
  }
  if (isElement(tokens, text)) return QZStringTokenizeQuoted(tokens, std::string(text), delims, quotes, skipEmpty);
  Reuse<std::string> take(tokens);
  Cutter<Reuse<std::string>> cut(text, skipEmpty, take);
  const QuotedDelimiters find{ByteSet(delims), ByteSet(quotes)};
  const char* const end = text.data() + text.size();
  for (const char* p = find(text.data(), end); p != end; p = find(p + 1, end)) cut(p);
  cut.TakeUpTo(end);
  take.Finish();
  return true;
}

bool QZStringTokenizeQuoted(std::list<std::string>& tokens, const std::string& text, const std::string& delims,
                            const std::string& quotes, bool skipEmpty) {
  std::vector<std::string> found;
  if (!QZStringTokenizeQuoted(found, text, delims, quotes, skipEmpty)) return false;
  tokens.assign(std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
  return true;
}

bool QZStringCSVTokenize(std::vector<std::string>& tokens, const std::string& text, char delim, char quote) {
  if (!QZStringTokenizeQuoted(tokens, text, std::string(1, delim), std::string(1, quote), false)) return false;
  for (std::string& token : tokens) unquote(token, quote);
  return true;
}

bool QZStringTokenizeWhitespace(std::vector<std::string>& tokens, const std::string& text, bool keepEmpty,
                                unsigned long maxTokens, unsigned long* endPosition) {
  if (isElement(tokens, text)) {
    return QZStringTokenizeWhitespace(tokens, std::string(text), keepEmpty, maxTokens, endPosition);
  }
  tokens.clear();
  const char* const begin = text.c_str();
  const char* const end = begin + std::strlen(begin);
  const char* p = begin;
  for (;;) {
    const char* const word = std::find_if_not(p, end, isWhiteSpace);
    const bool outer = p == begin || word == end;
    if (keepEmpty && word - p >= (outer ? 1 : 2)) tokens.emplace_back();
    p = word;
    if (p == end || (maxTokens != 0 && tokens.size() >= maxTokens)) break;
    p = std::find_if(word, end, isWhiteSpace);
    tokens.emplace_back(word, p);
  }
  if (endPosition != nullptr) *endPosition = static_cast<unsigned long>(p - begin);
  return true;
}

std::string QZStringJoin(const std::vector<std::string>& items, const std::string& separator, bool trailing) {
  return join(items, separator, trailing);
}

std::string QZStringJoin(const std::list<std::string>& items, const std::string& separator, bool trailing) {
  return join(items, separator, trailing);
}

std::string QZStringCSVQuote(const std::string& text, char delim, char quote) {
  if (text.empty() || (text.front() != quote && text.find(delim) == std::string::npos)) return text;
  std::string quoted(1, quote);
  for (const char c : text) quoted.append(c == quote ? 2 : 1, c);
  quoted += quote;
  return quoted;
}

std::string QZStringCSVJoin(const std::vector<std::string>& items, char delim, char quote) {
  std::string text;
  for (const std::string& item : items) {
    if (&item != items.data()) text += delim;
    text += QZStringCSVQuote(item, delim, quote);
  }
  return text;
}

std::string QZStringStripQuotes(const std::string& text, const std::string& quotes) {
  if (text.size() < 2 || text.back() != text.front() || quotes.find(text.front()) == std::string::npos) return text;
  return text.substr(1, text.size() - 2);
}

std::string QZStringCollapseQuotes(const std::string& text, const std::string& quotes) {
  if (text.size() < 4 || text.back() != text.front() || quotes.find(text.front()) == std::string::npos) return text;
  const char quote = text.front();
  std::string collapsed(1, quote);
  for (std::size_t i = 1; i + 1 < text.size(); ++i) {
    collapsed += text[i];
    if (text[i] == quote && i + 2 < text.size() && text[i + 1] == quote) ++i;
  }
  collapsed += quote;
  return collapsed;
}

}  // namespace QZSystem
