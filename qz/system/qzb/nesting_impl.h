#pragma once

namespace QZSystem {

/// How deep the calling thread is in objects that it reads, in objects that it writes, and in groups of items that it
/// reads.
unsigned int& ReadingDepth();
unsigned int& WritingDepth();
unsigned int& GroupDepth();

/// Whether an object was met that stands too deep, since the calling thread began to write the outermost one. Nothing
/// of that is written then, whatever the functions in between make of it.
bool& WritingIsTooDeep();

/// Goes one level deeper, for the time of a call.
///
///     const NestingLevel level(ReadingDepth());
///     if (!level.IsAllowed()) return QZBReturn::CheckFailed;
///
/// What is allowed fits on a stack of 256 KiB. One thread at a time.
class NestingLevel {
 public:
  explicit NestingLevel(unsigned int& threadDepth) : depth(threadDepth) { ++depth; }
  ~NestingLevel() { --depth; }
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

  [[nodiscard]] bool IsAllowed() const { return depth <= deepest; }
  [[nodiscard]] bool IsOutermost() const { return depth == 1; }

 private:
  static constexpr unsigned int deepest = 256;

  unsigned int& depth;
};

}  // namespace QZSystem
