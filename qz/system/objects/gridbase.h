#pragma once

#include <string>

#include "qz/system/data/base.h"

namespace QZSystem {

/// What every grid tells of its shape and place, whatever keeps them: the root of the grid classes.
///
///     void describe(const QZGridAbstractBase& grid) {
///       unsigned int x = 0, y = 0, z = 0;
///       grid.GetDim(x, y, z);
///       qzout << grid.GetTitle() << ": " << x << " by " << y << " by " << z << " points\n";
///     }
///
/// The operations are those of `QZGridBase`, which has them all. Const operations may run in parallel; a change needs
/// exclusive access.
class QZGridAbstractBase : public QZBase {
 public:
  [[nodiscard]] bool IsDataType(const void* type) const override;

  // The virtual operations, in slot order.

  /// A new grid of the same class; the caller deletes it.
  [[nodiscard]] QZGridAbstractBase* CreateCopy() const override = 0;
  [[nodiscard]] virtual std::string GetTitle() const = 0;
  virtual bool SetTitle(const std::string& text) = 0;
  [[nodiscard]] virtual float GetSpacing() const = 0;
  [[nodiscard]] virtual bool IsSpacingSet() const = 0;
  [[nodiscard]] virtual unsigned int GetSize() const = 0;
  virtual bool GetDim(unsigned int& x, unsigned int& y, unsigned int& z) const = 0;
  [[nodiscard]] virtual unsigned int GetXDim() const = 0;
  [[nodiscard]] virtual unsigned int GetYDim() const = 0;
  [[nodiscard]] virtual unsigned int GetZDim() const = 0;
  virtual bool GetMid(float& x, float& y, float& z) const = 0;
  [[nodiscard]] virtual float GetXMid() const = 0;
  [[nodiscard]] virtual float GetYMid() const = 0;
  [[nodiscard]] virtual float GetZMid() const = 0;
};

/// The geometry of a regular lattice in space: points along each axis, the centre, and one spacing for all axes. As a
/// `QZBase` it can carry attached data.
///
///     QZGridBase grid(64, 64, 32, 0.0F, 0.0F, 10.0F, 0.5F, "density");
///     if (!grid.SetDim(128, 128, 64)) return false;
///     grid.SetSpacing(0.25F);
///
/// Point i of the x axis, counted from 0, lies at `GetXMid()` + (i - (`GetXDim()` - 1) / 2) `GetSpacing()`; so for y
/// and z. The box of a grid reaches half a spacing beyond its outermost points. A new grid has one point at the origin,
/// a spacing of 0.5, no title, and nothing that counts as set.
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZGridBase : public QZGridAbstractBase {
 public:
  QZGridBase() = default;

  /// Takes centre and spacing as set. Nothing is checked: dimensions of 0, or with a product beyond 32 bits, make a
  /// geometry that no grid of values may have.
  QZGridBase(unsigned int xPoints, unsigned int yPoints, unsigned int zPoints, float xCenter, float yCenter,
             float zCenter, float pointSpacing, std::string text);

  QZGridBase(const QZGridBase& other) = default;

  /// Takes over everything, attached data too. Where the dimensions change it calls `Realloc`; if that throws, the grid
  /// keeps its own dimensions.
  QZGridBase& operator=(const QZGridBase& other);

  /// Removes title and attached data and calls `Realloc`. Dimensions, centre, spacing and what counts as set stay. In a
  /// grid that keeps values in a block of its own they become 0.
  void Clear() override;

  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;

  // The virtual operations, in slot order.

  [[nodiscard]] QZGridBase* CreateCopy() const override;

  [[nodiscard]] std::string GetTitle() const override { return title; }
  /// Always true.
  bool SetTitle(const std::string& text) override;

  /// The distance of neighbouring points, the same on all axes.
  [[nodiscard]] float GetSpacing() const override { return spacing; }
  [[nodiscard]] bool IsSpacingSet() const override { return spacingSet; }

  /// The number of points: the product of the dimensions.
  [[nodiscard]] unsigned int GetSize() const override { return size; }

  /// The number of points along each axis. Always true.
  bool GetDim(unsigned int& x, unsigned int& y, unsigned int& z) const override;
  [[nodiscard]] unsigned int GetXDim() const override { return xDim; }
  [[nodiscard]] unsigned int GetYDim() const override { return yDim; }
  [[nodiscard]] unsigned int GetZDim() const override { return zDim; }

  /// The centre, always delivered; true if all three coordinates have been set.
  bool GetMid(float& x, float& y, float& z) const override;
  [[nodiscard]] float GetXMid() const override { return xMid; }
  [[nodiscard]] float GetYMid() const override { return yMid; }
  [[nodiscard]] float GetZMid() const override { return zMid; }

  /// Whether there is a title; an empty one is none.
  [[nodiscard]] virtual bool IsTitleSet() const { return !title.empty(); }
  [[nodiscard]] virtual bool IsXMidSet() const { return xMidSet; }
  [[nodiscard]] virtual bool IsYMidSet() const { return yMidSet; }
  [[nodiscard]] virtual bool IsZMidSet() const { return zMidSet; }

  /// False, with the spacing as it was, for 0 and below, and for a not-a-number, which also sends the Warning
  /// "SetSpacing unable to handle NaN: %f".
  virtual bool SetSpacing(float distance);

  /// Sets the coordinates of the centre one after the other; false if one of them was refused, and then the others are
  /// set still. A not-a-number is refused with the Warning "SetXMid unable to handle NaN: %f", and so for the other
  /// axes.
  virtual bool SetMid(float x, float y, float z);
  virtual bool SetXMid(float x);
  virtual bool SetYMid(float y);
  virtual bool SetZMid(float z);

  /// Set the number of points along the axes and call `Realloc`. Where nothing changes they are true and do nothing.
  /// False, with the dimensions as they were, if one is 0, or if a product is beyond 32 bits, which sends the Warning
  /// "Grid dimensions too large for memory size: %lu x %lu". What `Realloc` throws, std::bad_alloc, leaves the
  /// dimensions as they were, too.
  virtual bool SetDim(unsigned int x, unsigned int y, unsigned int z);
  virtual bool SetXDim(unsigned int x);
  virtual bool SetYDim(unsigned int y);
  virtual bool SetZDim(unsigned int z);

  /// Called when the dimensions have changed and when the grid is cleared. An override brings the memory of the values
  /// to `GetSize()`, or throws with nothing changed. The base form does nothing.
  virtual void Realloc() {}

  /// 1 / `GetSpacing()`.
  [[nodiscard]] float GetInverseSpacing() const { return inverseSpacing; }

  // The corners of the box.

  [[nodiscard]] float GetXMin() const { return xMin; }
  [[nodiscard]] float GetYMin() const { return yMin; }
  [[nodiscard]] float GetZMin() const { return zMin; }
  [[nodiscard]] float GetXMax() const { return xMax; }
  [[nodiscard]] float GetYMax() const { return yMax; }
  [[nodiscard]] float GetZMax() const { return zMax; }

 protected:
  /// Takes over everything and calls nothing: for a class that brings its values along. If it throws, the dimensions
  /// haven't changed.
  void CopyGeometry(const QZGridBase& other);

 private:
  void SetXRange();
  void SetYRange();
  void SetZRange();
  void copyAllButDim(const QZGridBase& other);
  void storeDim(unsigned int x, unsigned int y, unsigned int z);
  void changeDim(unsigned int x, unsigned int y, unsigned int z);
  [[nodiscard]] bool hasDim(unsigned int x, unsigned int y, unsigned int z) const {
    return x == xDim && y == yDim && z == zDim;
  }

  std::string title;
  unsigned int xDim = 1;
  unsigned int yDim = 1;
  unsigned int zDim = 1;
  float xMid = 0.0F;
  float yMid = 0.0F;
  float zMid = 0.0F;
  float spacing = 0.5F;
  float inverseSpacing = 2.0F;
  bool xMidSet = false;
  bool yMidSet = false;
  bool zMidSet = false;
  bool spacingSet = false;
  float xMax = 0.25F;
  float yMax = 0.25F;
  float zMax = 0.25F;
  float xMin = -0.25F;
  float yMin = -0.25F;
  float zMin = -0.25F;
  unsigned int size = 1;
};

}  // namespace QZSystem
