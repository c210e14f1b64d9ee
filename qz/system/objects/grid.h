#pragma once

#include <cassert>
#include <cstddef>
#include <memory>
#include <vector>

#include "qz/system/objects/gridbase.h"

namespace QZSystem {

/// A grid over values that are kept elsewhere: a geometry and a pointer. `float` is the one element type.
///
///     std::vector<float> values(64 * 64 * 32);
///     QZFixedGrid<float> grid(QZGridBase(64, 64, 32, 0.0F, 0.0F, 10.0F, 0.5F, "density"), values.data());
///     grid.SetValue(63, 0, 31, 1.5F);
///     float there = QZFloatGridLinearInterpolate(grid, 0.25F, 0.0F, 9.5F, 0.0F);  // grid_util.h
///
/// The values lie in one array with x running fastest: point (i, j, k), counted from 0, is at i + j `GetXDim()` +
/// k `GetXDim()` `GetYDim()`. The array must outlive the grid and all its copies, and have `GetSize()` elements at any
/// time: a change of the dimensions moves none. A copy is a second grid over the same array; for the same reason there
/// is no assignment.
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZFixedGrid : public QZGridBase {
 public:
  /// Copies the geometry, with its attached data. REQUIRES: `array` has `geometry.GetSize()` elements, and the product
  /// of the dimensions fits 32 bits.
  QZFixedGrid(const QZGridBase& geometry, T* array) : QZGridBase(geometry), values(array) {}
  QZFixedGrid(const QZFixedGrid& other) = default;
  QZFixedGrid& operator=(const QZFixedGrid& other) = delete;

  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  /// A new grid over the same array; the caller deletes it.
  [[nodiscard]] QZFixedGrid* CreateCopy() const override;

  /// Copies `count` values into the array. False, with nothing copied, after the Warning "Attempting to set grid data
  /// with wrong size array" unless `count` is `GetSize()`, or "Attempting to set grid data with zero pointer".
  virtual bool SetValues(const T* source, unsigned int count);

  /// The array.
  [[nodiscard]] T* GetValues() { return values; }
  [[nodiscard]] const T* GetValues() const { return values; }

  /// One value. REQUIRES: i, j and k are below the dimensions.
  [[nodiscard]] T GetValue(unsigned int i, unsigned int j, unsigned int k) const { return values[place(i, j, k)]; }
  void SetValue(unsigned int i, unsigned int j, unsigned int k, T value) { values[place(i, j, k)] = value; }

 private:
  [[nodiscard]] std::size_t place(unsigned int i, unsigned int j, unsigned int k) const {
    assert(i < QZGridBase::GetXDim() && j < QZGridBase::GetYDim() && k < QZGridBase::GetZDim());
    return i + QZGridBase::GetXDim() * (j + std::size_t{QZGridBase::GetYDim()} * k);
  }

  T* values;
};

/// A grid whose values are part of a larger block: each grid of a multi-grid is one.
///
///     std::vector<float> block(2 * geometry.GetSize());
///     QZFixedRefGrid<float> first(geometry, block.data());
///     QZFixedRefGrid<float> second(geometry, block.data() + geometry.GetSize());
///
/// It adds nothing but its type. Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZFixedRefGrid : public QZFixedGrid<T> {
 public:
  using QZFixedGrid<T>::QZFixedGrid;

  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  [[nodiscard]] QZFixedRefGrid* CreateCopy() const override;
};

/// Several grids of one shape in one block of memory, grid after grid; what `QZMultiGrid` is to a function that takes
/// the grids as they are.
///
///     float sumAt(const QZFixedMultiGrid<float>& grids, unsigned int i, unsigned int j, unsigned int k) {
///       float sum = 0.0F;
///       for (unsigned int n = 0; n < grids.GetNumGrids(); ++n) sum += grids.GetGrid(n).GetValue(i, j, k);
///       return sum;
///     }
///
/// Each grid has a copy of the geometry, title and attached data as they were when the grids were last made; setters
/// that don't make them anew say so. A grid taken by `GetGrid` is good until they are. Its values may be set; its
/// dimensions mustn't.
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZFixedMultiGrid : public QZGridBase {
 public:
  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  [[nodiscard]] QZFixedMultiGrid* CreateCopy() const override = 0;
  /// Brings the block to `GetSize()` times `GetNumGrids()` values and makes the grids anew.
  void Realloc() override = 0;

  /// Changes the number of grids and makes them anew. Values keep their place from the start of the block, so those of
  /// the grids that remain are kept; new grids are of zeroes. False, with nothing changed, for 0 and if all the values,
  /// before or after, would be 2^32 or more. True without effect if the number is the same. Throws std::bad_alloc, with
  /// nothing changed.
  bool SetNumGrids(unsigned int number);
  [[nodiscard]] unsigned int GetNumGrids() const { return numGrids; }

  /// Makes the grids anew, with the present geometry, title and attached data, over the values that are there.
  void ResetGrids();

  /// One grid. REQUIRES: `n` is below `GetNumGrids()`.
  [[nodiscard]] QZFixedGrid<T>& GetGrid(unsigned int n) { return *grids[checked(n)]; }
  [[nodiscard]] const QZFixedGrid<T>& GetGrid(unsigned int n) const { return *grids[checked(n)]; }

 protected:
  /// REQUIRES: `number` isn't 0, and the product of the dimensions fits 32 bits.
  QZFixedMultiGrid(const QZGridBase& geometry, unsigned int number);
  QZFixedMultiGrid(const QZFixedMultiGrid& other);
  QZFixedMultiGrid& operator=(const QZFixedMultiGrid& other);

  /// Replaces the block by one of zeroes for the present size. Throws std::bad_alloc, with nothing changed.
  void RenewBlock();

 private:
  using Block = std::unique_ptr<T[]>;
  using Grids = std::vector<std::unique_ptr<QZFixedGrid<T>>>;

  static Grids makeGrids(const QZGridBase& geometry, T* values, unsigned int number);
  void take(Block& newBlock, Grids& newGrids, unsigned int number) noexcept;
  [[nodiscard]] std::size_t blockSize() const { return std::size_t{QZGridBase::GetSize()} * numGrids; }
  [[nodiscard]] unsigned int checked(unsigned int n) const {
    assert(n < numGrids);
    return n;
  }

  unsigned int numGrids = 0;
  Block block;
  Grids grids;
};

/// Several grids of one shape that can change it, their number and their values.
///
///     QZMultiGrid<float> grids(QZGridBase(64, 64, 32, 0.0F, 0.0F, 0.0F, 0.5F, "fields"), 3);
///     grids.GetGrid(2).SetValue(0, 0, 0, 1.5F);
///     QZMultiGrid<float> copy = grids;
///
/// A new one is of zeroes. A copy has values of its own. When the dimensions change all values become 0, since no value
/// has a place in another shape; so they do on `Clear`. `SetSpacing` and whatever sets dimensions or their number make
/// the grids anew; after `SetMid`, `SetTitle` or a change of attached data `ResetGrids` does.
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZMultiGrid : public QZFixedMultiGrid<T> {
 public:
  /// REQUIRES: `number` isn't 0, and the product of the dimensions fits 32 bits.
  explicit QZMultiGrid(const QZGridBase& geometry = QZGridBase(), unsigned int number = 1)
      : QZFixedMultiGrid<T>(geometry, number) {}

  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  [[nodiscard]] QZMultiGrid* CreateCopy() const override;
  bool SetSpacing(float distance) override;
  void Realloc() override;
};

extern template class QZFixedGrid<float>;
extern template class QZFixedRefGrid<float>;
extern template class QZFixedMultiGrid<float>;
extern template class QZMultiGrid<float>;

}  // namespace QZSystem
