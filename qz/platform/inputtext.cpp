#include <algorithm>

#include "qz/platform/inputstream.h"
#include "qz/platform/numbertext.h"
#include "qz/platform/outputstream.h"

namespace QZPlatform {

namespace {

bool isWhiteSpace(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

template <class Char>
void takeByte(qzistream& in, Char& value) {
  const int c = in.get();
  value = c < 0 ? Char{0} : static_cast<Char>(c);
}

}  // namespace

void qzistream::skipWhiteSpace() {
  do {
    current = std::find_if_not(current, end, isWhiteSpace);
  } while (current == end && refill());
}

// The number unit says whether more bytes could change what it found. Each time they could, at least twice as many
// are put before it, so that a number of any length is read in linear time.
template <class T>
qzistream& qzistream::extract(T& value) {
  value = T{};
  skipWhiteSpace();
  for (;;) {
    const unsigned long unread = static_cast<unsigned long>(end - current);
    const QZNumberPrefix found = QZReadNumber({reinterpret_cast<const char*>(current), unread}, value);
    if (found.open && extendTo(2 * unread)) continue;
    current += found.length;
    return *this;
  }
}

qzistream& qzistream::operator>>(qzistream& (*manipulator)(qzistream&)) { return manipulator(*this); }

qzistream& qzistream::operator>>(qzstream& (*manipulator)(qzstream&)) {
  manipulator(*this);
  return *this;
}

qzistream& qzistream::operator>>(bool& value) { return extract(value); }

qzistream& qzistream::operator>>(char& value) {
  takeByte(*this, value);
  return *this;
}

qzistream& qzistream::operator>>(unsigned char& value) {
  takeByte(*this, value);
  return *this;
}

qzistream& qzistream::operator>>(signed char& value) {
  takeByte(*this, value);
  return *this;
}

qzistream& qzistream::operator>>(std::string& value) {
  value.clear();
  skipWhiteSpace();
  while (current != end || refill()) {
    const unsigned char* const stop = std::find_if(current, end, isWhiteSpace);
    value.append(reinterpret_cast<const char*>(current), static_cast<unsigned long>(stop - current));
    current += stop - current;
    if (current != end) break;
  }
  return *this;
}

qzistream& qzistream::operator>>(short& value) { return extract(value); }

qzistream& qzistream::operator>>(int& value) { return extract(value); }

qzistream& qzistream::operator>>(long& value) { return extract(value); }

qzistream& qzistream::operator>>(unsigned short& value) { return extract(value); }

qzistream& qzistream::operator>>(unsigned int& value) { return extract(value); }

qzistream& qzistream::operator>>(unsigned long& value) { return extract(value); }

qzistream& qzistream::operator>>(float& value) { return extract(value); }

qzistream& qzistream::operator>>(double& value) { return extract(value); }

qzistream& qzistream::operator>>(qzostream& out) {
  while (current != end || refill()) {
    const unsigned long ready = static_cast<unsigned long>(end - current);
    const unsigned long taken = out.write(current, ready);
    current += taken;
    if (taken != ready) break;
  }
  return *this;
}

qzistream& qzws(qzistream& in) {
  for (int c = in.peek(); c >= 0 && isWhiteSpace(static_cast<unsigned char>(c)); c = in.peek()) in.get();
  return in;
}

}  // namespace QZPlatform
