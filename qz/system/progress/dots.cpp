#include "qz/system/progress/dots.h"

#include <cstdint>

#include "qz/platform/standardstream.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

QZDots::QZDots(unsigned int itemsPerLine, unsigned int itemsPerDot, const char* items, const char* done)
    : bigstep(itemsPerLine), smallstep(itemsPerDot), name(items), verb(done), silent(bigstep == 0 || smallstep == 0) {}

// The sums of two 32-bit numbers need one bit more on their way.
void QZDots::Update(char mark, unsigned int step) {
  total += step;
  if (silent) return;
  std::uint64_t waiting = std::uint64_t{pending} + step;
  for (; waiting >= smallstep; waiting -= smallstep) {
    qzerr << mark;
    qzerr.flush();
    const std::uint64_t shown = std::uint64_t{sinceLine} + smallstep;
    if (shown >= bigstep) {
      PrintLine();
    } else {
      sinceLine = static_cast<unsigned int>(shown);
    }
  }
  pending = static_cast<unsigned int>(waiting);
}

void QZDots::PrintLine() {
  reported += bigstep;
  sinceLine = 0;
  qzerr << ' ' << reported << ' ' << name << ' ' << verb << '.' << qzendl;
}

void QZDots::Total() { qzerr << "\nTotal: " << total << ' ' << name << ' ' << verb << '.' << qzendl; }

}  // namespace QZSystem
