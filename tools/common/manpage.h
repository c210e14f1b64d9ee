#pragma once

#include <string>

#include "tools/common/programtext.h"

namespace QZTools {

/// The man page of a program, in the man macros of roff.
///
///     ManPage page;
///     page.name = "qzfilter";
///     out << page.Text(AskProgram("qzfilter"));
///
/// Hidden parameters are left out, and so is the date: the same description gives the same page. Const operations may
/// run in parallel; a change needs exclusive access.
struct ManPage {
  /// What users call the program by.
  std::string name;
  /// For the foot of the page: what the program belongs to, and its version.
  std::string source;
  /// For the head of the page.
  std::string manual;

  std::string Text(const CategoryText& program) const;
};

}  // namespace QZTools
