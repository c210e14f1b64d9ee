#include "qz/system/util/unionfind.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* NotInRange = "QZUnionFind::FindID(%d) - parameter not in range [0..%d]";

}  // namespace

QZUnionFind::QZUnionFind(unsigned int elements) : size(elements), parent(new int[elements]) {
  std::fill_n(parent.get(), size, -1);
}

QZUnionFind::QZUnionFind(const QZUnionFind& other) : size(other.size), parent(new int[other.size]) {
  std::copy_n(other.parent.get(), size, parent.get());
}

QZUnionFind& QZUnionFind::operator=(const QZUnionFind& other) {
  if (this == &other) return *this;
  if (size != other.size) {
    parent.reset(new int[other.size]);
    size = other.size;
  }
  std::copy_n(other.parent.get(), size, parent.get());
  return *this;
}

int QZUnionFind::ReportNotInRange(int element) const {
  QZThrow.Error(NotInRange, element, static_cast<int>(size - 1));
  return -1;
}

unsigned int QZUnionFind::Count(int element) { return InRange(element) ? MemberCount(Root(element)) : 0; }

bool QZUnionFind::Related(int a, int b) { return InRange(a) && InRange(b) && Root(a) == Root(b); }

void QZUnionFind::Union(int a, int b) {
  if (a == b) return;
  int larger = FindID(a), smaller = FindID(b);
  if (larger < 0 || smaller < 0 || larger == smaller) return;
  if (MemberCount(larger) < MemberCount(smaller)) std::swap(larger, smaller);
  Parent(larger) += Parent(smaller);
  Parent(smaller) = larger;
}

bool QZUnionFind::IsSingleton(int element) const { return InRange(element) && Parent(element) == -1; }

bool QZUnionFind::IsID(int element) const { return InRange(element) && Parent(element) < 0; }

unsigned int QZUnionFind::NumGroups(bool singletons) const {
  const int* const begin = parent.get();
  const int most = singletons ? -1 : -2;
  return static_cast<unsigned int>(std::count_if(begin, begin + size, [most](int entry) { return entry <= most; }));
}

// Which order the members of a group come in is what this heap sort leaves: it sorts by roots alone, and callers have
// come to know the order. Positions count from 1.

void QZUnionFind::Siftdown(int* items, std::size_t k, std::size_t n) {
  const auto item = [items](std::size_t position) -> int& { return items[position - 1]; };
  for (std::size_t j = 2 * k; j <= n; j = 2 * k) {
    const std::size_t child = j < n && Root(item(j)) < Root(item(j + 1)) ? j + 1 : j;
    if (Root(item(k)) >= Root(item(child))) return;
    std::swap(item(k), item(child));
    k = child;
  }
}

void QZUnionFind::Hsort(int* items, std::size_t n) {
  for (std::size_t i = n / 2; i >= 1; --i) Siftdown(items, i, n);
  for (std::size_t m = n; m > 1; --m) {
    std::swap(items[0], items[m - 1]);
    Siftdown(items, 1, m - 1);
  }
}

int** QZUnionFind::Subsets() {
  std::vector<int> members;
  for (unsigned int i = 0; i < size; ++i) {
    const auto element = static_cast<int>(i);
    if (Count(element) > 1) members.push_back(element);
  }
  Hsort(members.data(), members.size());

  const unsigned int groups = NumGroups(false);
  std::vector<std::unique_ptr<int[]>> arrays;
  arrays.reserve(groups + 1UL);
  arrays.emplace_back(new int[groups + 1UL]);
  arrays[0][0] = static_cast<int>(groups);
  for (auto from = members.begin(); from != members.end();) {
    const int root = Root(*from);
    const unsigned int count = MemberCount(root);
    arrays[0][arrays.size()] = root;
    arrays.emplace_back(new int[count + 1UL]);
    arrays.back()[0] = static_cast<int>(count);
    std::copy_n(from, count, arrays.back().get() + 1);
    from += count;
  }
  int** const table = new int*[arrays.size()];
  std::transform(arrays.begin(), arrays.end(), table, [](std::unique_ptr<int[]>& array) { return array.release(); });
  return table;
}

void QZDeleteSubsets(int** subsets) {
  if (subsets == nullptr) return;
  for (int k = subsets[0][0]; k >= 0; --k) delete[] subsets[k];
  delete[] subsets;
}

}  // namespace QZSystem
