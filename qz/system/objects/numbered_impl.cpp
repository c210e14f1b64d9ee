#include "qz/system/objects/numbered_impl.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace QZSystem {

namespace {

// Objects are missing where a program without a reader for them has passed them over. A count from a damaged file can
// be any number, and nobody has a history of thousands of runs that are all missing.
constexpr unsigned int mostMissing = 1024;

}  // namespace

unsigned int NumberedCount(const QZBase& object, const char* countName) {
  const int count = object.GetData<int>(countName);
  if (count <= 0) return 0;
  unsigned int most = mostMissing;
  for (QZIter values(object.GetDataIter()); values; ++values) ++most;
  return std::min(static_cast<unsigned int>(count), most);
}

bool IsNumberBelow(unsigned int count, const char* name, unsigned int& number) {
  const char* const end = name + std::strlen(name);
  const auto [rest, error] = std::from_chars(name, end, number);
  const bool padded = name[0] == '0' && name[1] != '\0';
  return error == std::errc() && rest == end && !padded && number < count;
}

}  // namespace QZSystem
