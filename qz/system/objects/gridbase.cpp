#include "qz/system/objects/gridbase.h"

#include <limits>
#include <utility>

#include "qz/platform/number.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* DimensionsTooLarge = "Grid dimensions too large for memory size: %lu x %lu";
constexpr const char* XMidNaN = "SetXMid unable to handle NaN: %f";
constexpr const char* YMidNaN = "SetYMid unable to handle NaN: %f";
constexpr const char* ZMidNaN = "SetZMid unable to handle NaN: %f";
constexpr const char* SpacingNaN = "SetSpacing unable to handle NaN: %f";

// Multiplies into a product that must fit 32 bits; false, after the warning, where it doesn't.
bool multiply(unsigned long& product, unsigned long factor) {
  if (product * factor > std::numeric_limits<unsigned int>::max()) {
    QZThrow.Warning(DimensionsTooLarge, product, factor);
    return false;
  }
  product *= factor;
  return true;
}

// Whether a grid may have these dimensions. One of them may be 0 only because a constructor took it unchecked.
bool isShape(unsigned int x, unsigned int y, unsigned int z) {
  unsigned long points = x;
  return multiply(points, y) && multiply(points, z) && points != 0;
}

}  // namespace

bool QZGridAbstractBase::IsDataType(const void* type) const {
  return type == QZGetDataType<QZGridAbstractBase>() || QZBase::IsDataType(type);
}

QZGridBase::QZGridBase(unsigned int xPoints, unsigned int yPoints, unsigned int zPoints, float xCenter, float yCenter,
                       float zCenter, float pointSpacing, std::string text)
    : title(std::move(text)),
      xMid(xCenter),
      yMid(yCenter),
      zMid(zCenter),
      spacing(pointSpacing),
      inverseSpacing(1.0F / pointSpacing),
      xMidSet(true),
      yMidSet(true),
      zMidSet(true),
      spacingSet(true) {
  storeDim(xPoints, yPoints, zPoints);
}

QZGridBase& QZGridBase::operator=(const QZGridBase& other) {
  if (this == &other) return *this;
  const unsigned int x = other.xDim, y = other.yDim, z = other.zDim;
  copyAllButDim(other);
  if (hasDim(x, y, z)) {
    storeDim(x, y, z);
  } else {
    changeDim(x, y, z);
  }
  return *this;
}

void QZGridBase::CopyGeometry(const QZGridBase& other) {
  const unsigned int x = other.xDim, y = other.yDim, z = other.zDim;
  copyAllButDim(other);
  storeDim(x, y, z);
}

// The attached data come last: `other` may be one of them.
void QZGridBase::copyAllButDim(const QZGridBase& other) {
  title = other.title;
  xMid = other.xMid;
  yMid = other.yMid;
  zMid = other.zMid;
  spacing = other.spacing;
  inverseSpacing = other.inverseSpacing;
  xMidSet = other.xMidSet;
  yMidSet = other.yMidSet;
  zMidSet = other.zMidSet;
  spacingSet = other.spacingSet;
  QZBase::operator=(other);
}

void QZGridBase::Clear() {
  title.clear();
  QZBase::Clear();
  Realloc();
}

const void* QZGridBase::GetDataType() const { return QZGetDataType<QZGridBase>(); }

bool QZGridBase::IsDataType(const void* type) const {
  return type == QZGetDataType<QZGridBase>() || QZGridAbstractBase::IsDataType(type);
}

QZGridBase* QZGridBase::CreateCopy() const { return new QZGridBase(*this); }

bool QZGridBase::SetTitle(const std::string& text) {
  title = text;
  return true;
}

bool QZGridBase::GetDim(unsigned int& x, unsigned int& y, unsigned int& z) const {
  x = xDim;
  y = yDim;
  z = zDim;
  return true;
}

bool QZGridBase::GetMid(float& x, float& y, float& z) const {
  x = xMid;
  y = yMid;
  z = zMid;
  return xMidSet && yMidSet && zMidSet;
}

bool QZGridBase::SetSpacing(float distance) {
  if (QZIsNaN(distance)) {
    QZThrow.Warning(SpacingNaN, static_cast<double>(distance));
    return false;
  }
  if (distance <= 0.0F) return false;
  spacing = distance;
  inverseSpacing = 1.0F / distance;
  spacingSet = true;
  SetXRange();
  SetYRange();
  SetZRange();
  return true;
}

bool QZGridBase::SetMid(float x, float y, float z) {
  const bool xTaken = SetXMid(x);
  const bool yTaken = SetYMid(y);
  const bool zTaken = SetZMid(z);
  return xTaken && yTaken && zTaken;
}

bool QZGridBase::SetXMid(float x) {
  if (QZIsNaN(x)) {
    QZThrow.Warning(XMidNaN, static_cast<double>(x));
    return false;
  }
  xMid = x;
  xMidSet = true;
  SetXRange();
  return true;
}

bool QZGridBase::SetYMid(float y) {
  if (QZIsNaN(y)) {
    QZThrow.Warning(YMidNaN, static_cast<double>(y));
    return false;
  }
  yMid = y;
  yMidSet = true;
  SetYRange();
  return true;
}

bool QZGridBase::SetZMid(float z) {
  if (QZIsNaN(z)) {
    QZThrow.Warning(ZMidNaN, static_cast<double>(z));
    return false;
  }
  zMid = z;
  zMidSet = true;
  SetZRange();
  return true;
}

bool QZGridBase::SetDim(unsigned int x, unsigned int y, unsigned int z) {
  if (x == 0 || y == 0 || z == 0) return false;
  if (hasDim(x, y, z)) return true;
  if (!isShape(x, y, z)) return false;
  changeDim(x, y, z);
  return true;
}

bool QZGridBase::SetXDim(unsigned int x) {
  if (x == 0) return false;
  if (x == xDim) return true;
  if (!isShape(x, yDim, zDim)) return false;
  changeDim(x, yDim, zDim);
  return true;
}

bool QZGridBase::SetYDim(unsigned int y) {
  if (y == 0) return false;
  if (y == yDim) return true;
  if (!isShape(xDim, y, zDim)) return false;
  changeDim(xDim, y, zDim);
  return true;
}

bool QZGridBase::SetZDim(unsigned int z) {
  if (z == 0) return false;
  if (z == zDim) return true;
  if (!isShape(xDim, yDim, z)) return false;
  changeDim(xDim, yDim, z);
  return true;
}

// A class whose memory can't follow throws out of Realloc, and the shape stays that of the values that are there.
void QZGridBase::changeDim(unsigned int x, unsigned int y, unsigned int z) {
  const unsigned int oldX = xDim, oldY = yDim, oldZ = zDim;
  storeDim(x, y, z);
  try {
    Realloc();
  } catch (...) {
    storeDim(oldX, oldY, oldZ);
    throw;
  }
}

void QZGridBase::storeDim(unsigned int x, unsigned int y, unsigned int z) {
  xDim = x;
  yDim = y;
  zDim = z;
  SetXRange();
  SetYRange();
  SetZRange();
}

void QZGridBase::SetXRange() {
  const float half = static_cast<float>(xDim) * 0.5F * spacing;
  xMax = xMid + half;
  xMin = xMid - half;
  size = xDim * yDim * zDim;
}

void QZGridBase::SetYRange() {
  const float half = static_cast<float>(yDim) * 0.5F * spacing;
  yMax = yMid + half;
  yMin = yMid - half;
  size = xDim * yDim * zDim;
}

void QZGridBase::SetZRange() {
  const float half = static_cast<float>(zDim) * 0.5F * spacing;
  zMax = zMid + half;
  zMin = zMid - half;
  size = xDim * yDim * zDim;
}

}  // namespace QZSystem
