#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "qz/platform/stream.h"
#include "qz/system/cli/keytable_impl.h"
#include "qz/system/cli/parameter.h"

namespace QZSystem {

/// What the parsers of command lines and of parameter files share.

constexpr std::string_view kVersionArgument = "--version";

/// Prints the version, "version not set" if it is null, and a line end on qzout, and ends the process with status 0.
/// Returns if it is ending already.
void PrintVersionAndEnd(const char* version);

bool IsBool(const QZParameter& parameter);
bool IsParameterFile(const QZParameter& parameter);

enum class Legal { kAsShown, kAsDeclared };

/// The limits of a parameter for a message, each on a line with a line feed in front; empty if it has none. The legal
/// values come from GetPrettyLegalValues (as shown) or GetLegalValues (as declared).
std::string LimitsText(const QZParameter& parameter, Legal values);

/// Gives texts to a parameter as if each went through IsLegalString, AddStringValue and Load in turn, up to the first
/// that fails, but with one Load for all: a Load converts the whole list. `taken` is the number of texts that are in
/// and loaded; `failure` tells of the next one. A text that failed to load is in the list of texts, as it is when
/// each is loaded by itself.
struct Intake {
  enum Failure { kNone, kRefused, kNotLoaded };
  std::size_t taken = 0;
  Failure failure = kNone;
};
Intake TakeTexts(QZParameter& parameter, const std::vector<std::string>& texts);

/// The same for a caller that goes on behind a text that fails. Hands `tell` the index of each of them, in order.
using TellFailure = std::function<void(std::size_t, Intake::Failure)>;
void TakeAllTexts(QZParameter& parameter, const std::vector<std::string>& texts, const TellFailure& tell);

/// QZParseParameterFile with a table of the keys of the interface.
bool ParseParameterFile(const KeyTable& keys, qzistream& in, bool overwrite, unsigned int level);

}  // namespace QZSystem
