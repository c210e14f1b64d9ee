#include "qz/system/qzb/nesting_impl.h"

namespace QZSystem {

namespace {

struct Depths {
  unsigned int reading = 0;
  unsigned int writing = 0;
  unsigned int groups = 0;
  bool writingIsTooDeep = false;
};

thread_local Depths depths;

}  // namespace

unsigned int& ReadingDepth() { return depths.reading; }

unsigned int& WritingDepth() { return depths.writing; }

unsigned int& GroupDepth() { return depths.groups; }

bool& WritingIsTooDeep() { return depths.writingIsTooDeep; }

}  // namespace QZSystem
