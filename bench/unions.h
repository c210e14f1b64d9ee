// The input of W18.
#pragma once
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

constexpr int kElements = 1000000;

inline const std::vector<std::pair<int, int>>& unions() {
  static const std::vector<std::pair<int, int>> pairs = [] {
    std::mt19937_64 engine(18);
    std::vector<std::pair<int, int>> v(kElements);
    for (auto& pair : v) pair = {int(engine() % kElements), int(engine() % kElements)};
    return v;
  }();
  return pairs;
}

// How many groups remain, by a plain search.
inline long groups() {
  static const long count = [] {
    std::vector<std::vector<int>> next(kElements);
    for (auto& [a, b] : unions()) next[a].push_back(b), next[b].push_back(a);
    std::vector<char> seen(kElements);
    std::vector<int> open;
    long n = 0;
    for (int i = 0; i < kElements; ++i) {
      if (seen[i]) continue;
      ++n;
      seen[i] = 1;
      for (open = {i}; !open.empty();) {
        const int at = open.back();
        open.pop_back();
        for (const int to : next[at])
          if (!seen[to]) seen[to] = 1, open.push_back(to);
      }
    }
    return n;
  }();
  return count;
}
