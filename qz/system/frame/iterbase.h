#pragma once

#include <memory>
#include <vector>

namespace QZSystem {

/// A position in a sequence of `T`, wherever the sequence comes from: what every function returns that hands out
/// several things. The receiver owns the iterator and best gives it to a `QZIter`, which deletes it.
///
///     QZIterBase<QZParameter>* params = itf.GetParameters(true);
///     for (params->ToFirst(); *params; ++*params) Show(**params);
///     delete params;
///
/// A position that isn't on an element tests false and must not be dereferenced. An iterator that refers to a
/// container is good until that container changes; one that holds a copy has no such limit.
///
/// One thread at a time. Two threads may walk one unchanged container through an iterator each.
template <class T>
class QZIterBase {
 public:
  virtual ~QZIterBase() = default;

  /// A new iterator on the same sequence at the same position; the caller deletes it.
  [[nodiscard]] virtual QZIterBase* Copy() const = 0;

  /// Appends the sequence of `more`, which it takes over. Returns the iterator to go on with: the base form a new
  /// `QZConcatIter` that owns this iterator and `more`, so the old pointer must not be used or deleted any more. If
  /// this iterator is not on an element, the new one steps forward once.
  [[nodiscard]] virtual QZIterBase* Push(QZIterBase* more);

  /// Steps by one or by `n` elements, forward or back, and returns the iterator itself. A negative `n` goes the other
  /// way. Past either end the position is on no element.
  virtual QZIterBase& operator++() = 0;
  virtual QZIterBase& operator--() = 0;
  virtual QZIterBase& operator+=(unsigned int n) = 0;
  virtual QZIterBase& operator-=(unsigned int n) = 0;
  virtual QZIterBase& operator+=(int n) = 0;
  virtual QZIterBase& operator-=(int n) = 0;

  /// Moves to the first or to the last element and returns the iterator itself; on no element if there is none.
  virtual QZIterBase& ToFirst() = 0;
  virtual QZIterBase& ToLast() = 0;

  /// The present element. REQUIRES: the position is on an element.
  virtual T& operator*() const = 0;
  virtual T* operator->() const = 0;

  /// Whether the position is on an element. The base form is never.
  virtual operator bool() const { return false; }

  /// The same as `operator->`.
  virtual operator T*() const { return operator->(); }

 protected:
  QZIterBase() = default;
  QZIterBase(const QZIterBase&) = default;
  QZIterBase& operator=(const QZIterBase&) = default;
};

/// Several iterators one behind the other, as one sequence.
///
///     auto* all = new QZConcatIter<QZParameter>;
///     for (QZInterface& sub : QZIter(itf.GetInterfaces())) all->Push(sub.GetParameters(false));
///     for (QZParameter& p : QZIter<QZParameter>(all)) Show(p);
///
/// A null member is an empty sequence. One thread at a time.
template <class T>
class QZConcatIter : public QZIterBase<T> {
 public:
  using Base = QZIterBase<T>;

  /// An empty sequence, to which `Push` adds.
  QZConcatIter() = default;

  /// The sequence of `first`, then that of `second`, standing where `first` stands; if that is on no element, one step
  /// further. Takes over both.
  QZConcatIter(std::unique_ptr<Base> first, std::unique_ptr<Base> second);

  QZConcatIter(const QZConcatIter&) = delete;
  QZConcatIter& operator=(const QZConcatIter&) = delete;

  /// A concatenation of copies of all members, at the same position.
  [[nodiscard]] QZConcatIter* Copy() const override;

  /// Appends `more`, which it takes over, and returns this iterator. If it is on no element, it steps forward once.
  QZConcatIter* Push(Base* more) override;

  /// Steps the present member; where that runs out, goes on at the near end of the next member that has an element,
  /// and otherwise stays on no element in the last member that it came to.
  QZConcatIter& operator++() override;
  QZConcatIter& operator--() override;

  /// Repeats a single step `n` times.
  QZConcatIter& operator+=(unsigned int n) override;
  QZConcatIter& operator-=(unsigned int n) override;
  QZConcatIter& operator+=(int n) override;
  QZConcatIter& operator-=(int n) override;

  QZConcatIter& ToFirst() override;
  QZConcatIter& ToLast() override;

  T& operator*() const override { return **members[index]; }
  T* operator->() const override { return members[index]->operator->(); }
  operator bool() const override { return index < members.size() && members[index] && bool(*members[index]); }

 private:
  friend class QZIterBase<T>;

  [[nodiscard]] unsigned int Count() const { return static_cast<unsigned int>(members.size()); }
  void AdvanceIfOnNothing();

  std::vector<std::unique_ptr<Base>> members;
  unsigned int index = 0;
};

template <class T>
QZIterBase<T>* QZIterBase<T>::Push(QZIterBase* more) {
  std::unique_ptr<QZIterBase> second(more);
  auto all = std::make_unique<QZConcatIter<T>>();
  all->members.reserve(2);  // from here on nothing fails, so this iterator changes hands only on success
  all->members.emplace_back(this);
  all->members.push_back(std::move(second));
  all->AdvanceIfOnNothing();
  return all.release();
}

template <class T>
QZConcatIter<T>::QZConcatIter(std::unique_ptr<Base> first, std::unique_ptr<Base> second) {
  members.reserve(2);
  members.push_back(std::move(first));
  members.push_back(std::move(second));
  AdvanceIfOnNothing();
}

template <class T>
QZConcatIter<T>* QZConcatIter<T>::Copy() const {
  auto copy = std::make_unique<QZConcatIter>();
  copy->members.reserve(members.size());
  for (const auto& member : members) copy->members.emplace_back(member ? member->Copy() : nullptr);
  copy->index = index;
  return copy.release();
}

template <class T>
QZConcatIter<T>* QZConcatIter<T>::Push(Base* more) {
  std::unique_ptr<Base> member(more);
  members.push_back(std::move(member));
  AdvanceIfOnNothing();
  return this;
}

template <class T>
void QZConcatIter<T>::AdvanceIfOnNothing() {
  if (!*this) ++*this;
}

// The index of an empty sequence after ToLast is the largest number; one more is 0, the first member to come.
template <class T>
QZConcatIter<T>& QZConcatIter<T>::operator++() {
  if (members.empty()) return *this;
  if (index < Count() && members[index]) ++*members[index];
  while (!*this && index + 1U < Count()) {
    ++index;
    if (members[index]) members[index]->ToFirst();
  }
  return *this;
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::operator--() {
  if (members.empty()) return *this;
  if (index > Count()) index = Count();
  if (index < Count() && members[index]) --*members[index];
  while (!*this && index > 0) {
    --index;
    if (members[index]) members[index]->ToLast();
  }
  return *this;
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::operator+=(unsigned int n) {
  for (; n > 0; --n) ++*this;
  return *this;
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::operator-=(unsigned int n) {
  for (; n > 0; --n) --*this;
  return *this;
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::operator+=(int n) {
  return n < 0 ? *this -= 0U - static_cast<unsigned int>(n) : *this += static_cast<unsigned int>(n);
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::operator-=(int n) {
  return n < 0 ? *this += 0U - static_cast<unsigned int>(n) : *this -= static_cast<unsigned int>(n);
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::ToFirst() {
  for (index = 0; index < Count(); ++index) {
    if (members[index]) members[index]->ToFirst();
    if (*this) return *this;
  }
  index = 0;
  return *this;
}

template <class T>
QZConcatIter<T>& QZConcatIter<T>::ToLast() {
  for (index = Count(); index-- > 0;) {
    if (members[index]) members[index]->ToLast();
    if (*this) return *this;
  }
  index = Count() - 1U;
  return *this;
}

}  // namespace QZSystem
