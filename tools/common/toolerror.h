#pragma once

#include <stdexcept>
#include <string>

namespace QZTools {

/// Ends a tool with one message and exit status 1.
///
///     throw ToolError("isotopes.csv: line 12, column half_life: '3 years' is no Float; see -types");
///
/// The text names the file, then the line or record, then the column, then what is wrong and what to do. Safe from any
/// thread.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Ends a tool without a message: the reader of its output went away (status 0), or the user stopped it (130).
class ToolEnd {
 public:
  explicit ToolEnd(int status) : exitStatus(status) {}
  int Status() const { return exitStatus; }

 private:
  int exitStatus;
};

}  // namespace QZTools
