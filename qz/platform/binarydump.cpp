#include "qz/platform/binarydump.h"

#include <cstring>

namespace QZPlatform::QZBinaryDump {

bool TakeNumber(const unsigned char*& bytes, bool swapped, unsigned long& remaining, std::uint32_t& number) {
  if (remaining < sizeof number) return false;
  std::memcpy(&number, bytes, sizeof number);
  if (swapped) number = __builtin_bswap32(number);
  bytes += sizeof number;
  remaining -= sizeof number;
  return true;
}

}  // namespace QZPlatform::QZBinaryDump
