#pragma once

#include <list>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// Texts split into tokens and tokens joined into a text.
///
///     std::vector<std::string> tokens;
///     QZStringTokenize(tokens, "a, b,,c", " ,");           // "a" "b" "c"
///     QZStringCSVTokenize(tokens, "a,\"b,c\",d");          // "a" "b,c" "d"
///     std::string line = QZStringCSVJoin(tokens);          // a,"b,c",d
///
/// Bytes are compared as bytes, whatever the encoding. Every tokenizer replaces what its container held and reuses
/// its storage; one pass over the text. The text and the delimiters may be elements of that container. Safe from any
/// thread on distinct data.
namespace QZSystem {

/// Splits `text` at every byte of `delims`. With `skipEmpty`, empty tokens are left out, so a text of delimiters has
/// none; without, n delimiters make n + 1 tokens, and "" is one empty token. Empty `delims` split nothing. Always
/// true.
bool QZStringTokenize(std::vector<std::string>& tokens, const std::string& text, const std::string& delims,
                      bool skipEmpty = true);
bool QZStringTokenize(std::list<std::string>& tokens, const std::string& text, const std::string& delims,
                      bool skipEmpty = true);

/// The same without a copy: the tokens are views into `text` and live as long as it stays unchanged.
bool QZStringTokenize(std::vector<std::string_view>& tokens, std::string_view text, std::string_view delims,
                      bool skipEmpty = true);

/// A temporary string would be gone before its tokens are looked at.
template <class Text, std::enable_if_t<std::is_same_v<Text, std::string>, int> = 0>
bool QZStringTokenize(std::vector<std::string_view>& tokens, Text&& text, std::string_view delims,
                      bool skipEmpty = true) = delete;

/// As `QZStringTokenize`, but a token that begins with a byte of `quotes` goes on to the first delimiter behind the
/// quote that closes it, a doubled quote being part of the token; without a closing quote it takes the rest. Quotes
/// stay in the token, and have no meaning elsewhere. "" has no tokens. False, without tokens, for empty `delims` with
/// a text that isn't empty; the list then keeps what it held.
bool QZStringTokenizeQuoted(std::vector<std::string>& tokens, const std::string& text, const std::string& delims,
                            const std::string& quotes, bool skipEmpty = true);
bool QZStringTokenizeQuoted(std::list<std::string>& tokens, const std::string& text, const std::string& delims,
                            const std::string& quotes, bool skipEmpty = true);

/// Splits a line of comma-separated values and takes the quoting off each token. Empty tokens count; "" has none.
/// Always true.
bool QZStringCSVTokenize(std::vector<std::string>& tokens, const std::string& text, char delim = ',', char quote = '"');

/// Splits `text`, up to its first NUL, into runs of bytes other than white space (9, 10, 13, 32). With `keepEmpty`, a
/// leading or trailing run of white space and an inner one of two bytes or more give one empty token each. From
/// `maxTokens` tokens on, 0 for no limit and empty ones counted, no further word is taken. `endPosition`, when given,
/// receives the place of the first word not taken, or of the end. Always true.
bool QZStringTokenizeWhitespace(std::vector<std::string>& tokens, const std::string& text, bool keepEmpty = false,
                                unsigned long maxTokens = 0, unsigned long* endPosition = nullptr);

/// The items with `separator` between them and, with `trailing`, behind the last. No items give "".
[[nodiscard]] std::string QZStringJoin(const std::vector<std::string>& items, const std::string& separator,
                                       bool trailing = false);
[[nodiscard]] std::string QZStringJoin(const std::list<std::string>& items, const std::string& separator,
                                       bool trailing = false);

/// `text` in quotes, inner quotes doubled, if it holds the delimiter or begins with a quote; else as it is.
[[nodiscard]] std::string QZStringCSVQuote(const std::string& text, char delim = ',', char quote = '"');

/// Each item through `QZStringCSVQuote`, delimiters between them: the inverse of `QZStringCSVTokenize` for two items
/// or more, and for one that isn't empty.
[[nodiscard]] std::string QZStringCSVJoin(const std::vector<std::string>& items, char delim = ',', char quote = '"');

/// `text` without its first and last byte if those are the same byte of `quotes`; else as it is.
[[nodiscard]] std::string QZStringStripQuotes(const std::string& text, const std::string& quotes = "\"'");

/// `text` with each pair of quotes inside its outer quotes made one, the outer ones staying; as it is if it has fewer
/// than four bytes or doesn't begin and end with the same byte of `quotes`. The quotes inside are that byte.
[[nodiscard]] std::string QZStringCollapseQuotes(const std::string& text, const std::string& quotes = "\"'");

}  // namespace QZSystem
