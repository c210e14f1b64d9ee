#pragma once

#include <cstddef>
#include <memory>

namespace QZSystem {

/// Disjoint sets over the integers 0 to size - 1.
///
///     QZUnionFind groups(atoms);
///     groups.Union(3, 7);
///     if (groups.Related(3, 7)) ...
///
/// A group is known by one of its members, its root. A find shortens paths on its way (path halving; Tarjan and van
/// Leeuwen 1984), and groups are joined by size, so that a find takes nearly constant time. One thread at a time, const
/// operations included.
class QZUnionFind {
 public:
  /// Every element is a group of its own.
  explicit QZUnionFind(unsigned int size);
  QZUnionFind(const QZUnionFind& other);
  QZUnionFind& operator=(const QZUnionFind& other);
  ~QZUnionFind() = default;

  /// The root of the element's group. Out of range the Error "QZUnionFind::FindID(%d) - parameter not in range
  /// [0..%d]" and -1.
  int FindID(int element) { return InRange(element) ? Root(element) : ReportNotInRange(element); }
  /// The size of the element's group; 0 for an element out of range.
  [[nodiscard]] unsigned int Count(int element);
  /// Whether both are in range and in the same group.
  [[nodiscard]] bool Related(int a, int b);

  /// Joins two groups. The root of the larger one stays root, that of `a` if they are equal in size. Elements out of
  /// range get the Error of `FindID` and join nothing; an element with itself does nothing at all.
  void Union(int a, int b);

  /// Whether the element is in range and alone in its group.
  [[nodiscard]] bool IsSingleton(int element) const;
  /// Whether the element is in range and a root.
  [[nodiscard]] bool IsID(int element) const;
  /// The number of groups; without `singletons` those of two or more.
  [[nodiscard]] unsigned int NumGroups(bool singletons) const;

  /// The groups of two or more, with rising roots, as g + 1 arrays: the first holds g and then the g roots; each of the
  /// others the size of a group and then its members. To be freed with `QZDeleteSubsets`.
  [[nodiscard]] int** Subsets();

 private:
  [[nodiscard]] bool InRange(int element) const { return element >= 0 && static_cast<unsigned int>(element) < size; }
  [[nodiscard]] int& Parent(int element) { return parent[static_cast<unsigned int>(element)]; }
  [[nodiscard]] int Parent(int element) const { return parent[static_cast<unsigned int>(element)]; }
  [[nodiscard]] unsigned int MemberCount(int root) const { return 0U - static_cast<unsigned int>(Parent(root)); }
  [[nodiscard]] int Root(int element);
  int ReportNotInRange(int element) const;
  void Siftdown(int* items, std::size_t k, std::size_t n);
  void Hsort(int* items, std::size_t n);

  unsigned int size;
  std::unique_ptr<int[]> parent;  // of a root the negated size of its group
};

// Every second element of the path is hung on its grandparent.
inline int QZUnionFind::Root(int element) {
  for (;;) {
    const int above = Parent(element);
    if (above < 0) return element;
    const int grandparent = Parent(above);
    if (grandparent < 0) return above;
    Parent(element) = grandparent;
    element = grandparent;
  }
}

/// Frees what `QZUnionFind::Subsets` gave; null is fine.
void QZDeleteSubsets(int** subsets);

}  // namespace QZSystem
