#include "qz/system/objects/grid.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* WrongCount = "Attempting to set grid data with wrong size array";
constexpr const char* NoValues = "Attempting to set grid data with zero pointer";

// Room for so many values that they are to be overwritten, at the start at least.
template <class T>
std::unique_ptr<T[]> makeRoom(std::size_t count) {
  return std::unique_ptr<T[]>(new T[count]);
}

}  // namespace

template <class T>
const void* QZFixedGrid<T>::GetDataType() const {
  return QZGetDataType<QZFixedGrid<T>>();
}

template <class T>
bool QZFixedGrid<T>::IsDataType(const void* type) const {
  return type == QZGetDataType<QZFixedGrid<T>>() || QZGridBase::IsDataType(type);
}

template <class T>
QZFixedGrid<T>* QZFixedGrid<T>::CreateCopy() const {
  return new QZFixedGrid(*this);
}

template <class T>
bool QZFixedGrid<T>::SetValues(const T* source, unsigned int count) {
  if (count != GetSize()) {
    QZThrow.Warning(WrongCount);
    return false;
  }
  if (!source) {
    QZThrow.Warning(NoValues);
    return false;
  }
  std::memmove(values, source, sizeof(T) * count);
  return true;
}

template <class T>
const void* QZFixedRefGrid<T>::GetDataType() const {
  return QZGetDataType<QZFixedRefGrid<T>>();
}

template <class T>
bool QZFixedRefGrid<T>::IsDataType(const void* type) const {
  return type == QZGetDataType<QZFixedRefGrid<T>>() || QZFixedGrid<T>::IsDataType(type);
}

template <class T>
QZFixedRefGrid<T>* QZFixedRefGrid<T>::CreateCopy() const {
  return new QZFixedRefGrid(*this);
}

template <class T>
QZFixedMultiGrid<T>::QZFixedMultiGrid(const QZGridBase& geometry, unsigned int number) : QZGridBase(geometry) {
  assert(number != 0);
  numGrids = number;
  RenewBlock();
}

template <class T>
QZFixedMultiGrid<T>::QZFixedMultiGrid(const QZFixedMultiGrid& other)
    : QZGridBase(other), numGrids(other.numGrids), block(makeRoom<T>(other.blockSize())) {
  std::copy_n(other.block.get(), other.blockSize(), block.get());
  ResetGrids();
}

// All that may throw is done before anything of the old grids goes.
template <class T>
QZFixedMultiGrid<T>& QZFixedMultiGrid<T>::operator=(const QZFixedMultiGrid& other) {
  if (this == &other) return *this;
  Block newBlock = makeRoom<T>(other.blockSize());
  std::copy_n(other.block.get(), other.blockSize(), newBlock.get());
  const unsigned int number = other.numGrids;
  Grids newGrids = makeGrids(other, newBlock.get(), number);
  CopyGeometry(other);
  take(newBlock, newGrids, number);
  return *this;
}

template <class T>
const void* QZFixedMultiGrid<T>::GetDataType() const {
  return QZGetDataType<QZFixedMultiGrid<T>>();
}

template <class T>
bool QZFixedMultiGrid<T>::IsDataType(const void* type) const {
  return type == QZGetDataType<QZFixedMultiGrid<T>>() || QZGridBase::IsDataType(type);
}

template <class T>
bool QZFixedMultiGrid<T>::SetNumGrids(unsigned int number) {
  if (number == 0) return false;
  if (number == numGrids) return true;
  constexpr std::size_t most = std::numeric_limits<unsigned int>::max();
  const std::size_t oldCount = blockSize();
  const std::size_t newCount = std::size_t{GetSize()} * number;
  if (oldCount == 0 || oldCount > most || newCount > most) return false;

  const std::size_t kept = std::min(oldCount, newCount);
  Block newBlock = makeRoom<T>(newCount);
  std::copy_n(block.get(), kept, newBlock.get());
  std::fill(newBlock.get() + kept, newBlock.get() + newCount, T());
  Grids newGrids = makeGrids(*this, newBlock.get(), number);
  take(newBlock, newGrids, number);
  return true;
}

template <class T>
void QZFixedMultiGrid<T>::ResetGrids() {
  grids = makeGrids(*this, block.get(), numGrids);
}

template <class T>
void QZFixedMultiGrid<T>::RenewBlock() {
  Block newBlock = std::make_unique<T[]>(blockSize());
  Grids newGrids = makeGrids(*this, newBlock.get(), numGrids);
  take(newBlock, newGrids, numGrids);
}

template <class T>
typename QZFixedMultiGrid<T>::Grids QZFixedMultiGrid<T>::makeGrids(const QZGridBase& geometry, T* values,
                                                                   unsigned int number) {
  Grids made;
  made.reserve(number);
  const std::size_t each = geometry.GetSize();
  for (std::size_t n = 0; n < number; ++n) {
    made.push_back(std::make_unique<QZFixedRefGrid<T>>(geometry, values + n * each));
  }
  return made;
}

template <class T>
void QZFixedMultiGrid<T>::take(Block& newBlock, Grids& newGrids, unsigned int number) noexcept {
  grids.swap(newGrids);
  block.swap(newBlock);
  numGrids = number;
}

template <class T>
const void* QZMultiGrid<T>::GetDataType() const {
  return QZGetDataType<QZMultiGrid<T>>();
}

template <class T>
bool QZMultiGrid<T>::IsDataType(const void* type) const {
  return type == QZGetDataType<QZMultiGrid<T>>() || QZFixedMultiGrid<T>::IsDataType(type);
}

template <class T>
QZMultiGrid<T>* QZMultiGrid<T>::CreateCopy() const {
  return new QZMultiGrid(*this);
}

template <class T>
bool QZMultiGrid<T>::SetSpacing(float distance) {
  if (!QZGridBase::SetSpacing(distance)) return false;
  this->ResetGrids();
  return true;
}

template <class T>
void QZMultiGrid<T>::Realloc() {
  this->RenewBlock();
}

template class QZFixedGrid<float>;
template class QZFixedRefGrid<float>;
template class QZFixedMultiGrid<float>;
template class QZMultiGrid<float>;

}  // namespace QZSystem
