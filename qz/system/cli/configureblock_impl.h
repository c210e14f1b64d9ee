#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "qz/system/cli/configureline_impl.h"
#include "qz/system/cli/parameter.h"

namespace QZSystem {

/// The lines between "!PARAMETER" and its "!END", that one included, and what must be known of them before the others
/// can be taken. One is used for all blocks of a text: the lines keep their storage.
struct ConfigureBlock {
  std::deque<ConfigureLine> lines;
  std::size_t size = 0;                 ///< of the lines, those of this block
  const ConfigureLine* type = nullptr;  ///< the first "!TYPE" of two words
  bool isList = false;                  ///< by the last "!LIST" of two words
  bool listIsBad = false;               ///< one of these has a word that is no bool

  /// Reads the lines of the next block; false if the text ends before its "!END".
  bool Read(ConfigureSource& source);
};

/// Fills a parameter, which has its name and its list flag, from its block. Lines that can't be taken, and defaults
/// that aren't legal, are told, and the others taken.
void FillParameter(QZParameter& parameter, ConfigureBlock& block);

}  // namespace QZSystem
