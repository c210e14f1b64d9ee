#pragma once

#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "qz/dataflow/names.h"

/// The types that the typed access to values gives and takes, and the conversions between them.
namespace QZDataFlow::RecordValue {

template <typename T>
inline constexpr bool IsOptional = false;
template <typename T>
inline constexpr bool IsOptional<std::optional<T>> = true;

template <typename T>
inline constexpr bool IsVector = false;
template <typename T>
inline constexpr bool IsVector<std::vector<T>> = true;

/// What GetValue gives for a scalar field: the stored type unless another is wanted.
template <typename Wanted, typename Stored>
using Scalar = std::conditional_t<std::is_void_v<Wanted>, Stored, Wanted>;

template <typename Wanted, typename Stored>
struct VectorOf {
  using type = std::vector<std::optional<Wanted>>;
};
template <typename Stored>
struct VectorOf<void, Stored> {
  using type = std::vector<std::optional<Stored>>;
};
// A blob is an element, and a vector of bytes no other.
template <typename Stored>
struct VectorOf<Stored, Stored> {
  using type = std::vector<std::optional<Stored>>;
};
template <typename T, typename Stored>
struct VectorOf<std::vector<T>, Stored> {
  using type = std::vector<T>;
};
template <typename T>
struct VectorOf<std::vector<T>, std::vector<T>> {
  using type = std::vector<std::optional<std::vector<T>>>;
};
template <typename T, typename Stored>
struct VectorOf<std::optional<T>, Stored> {
  using type = std::optional<typename VectorOf<T, Stored>::type>;
};

/// What GetValue gives for a vector field.
template <typename Wanted, typename Stored>
using Vector = typename VectorOf<Wanted, Stored>::type;

/// The element that a given one is converted to on its way to a field of `Stored`.
template <typename Stored, typename Given>
using Element = std::conditional_t<IsOptional<Given>, std::optional<Stored>, Stored>;

template <typename To, typename From>
To ConvertElement(const From& from) {
  if constexpr (std::is_same_v<To, From>) {
    return from;
  } else if constexpr (IsOptional<To> && IsOptional<From>) {
    return from ? To(static_cast<typename To::value_type>(*from)) : To();
  } else if constexpr (IsOptional<From>) {
    return from ? static_cast<To>(*from) : To{};
  } else {
    return static_cast<To>(from);
  }
}

/// The same elements in another type. Absent ones stay absent, or become the default value in a type that knows none.
template <typename To, typename From>
std::vector<To> Convert(const std::vector<From>& from) {
  std::vector<To> to;
  to.reserve(from.size());
  for (const From& element : from) to.push_back(ConvertElement<To>(element));
  return to;
}

/// The same for a whole vector type, without a copy when there is nothing to convert.
template <typename Result, typename From>
Result To(std::vector<From>&& from) {
  if constexpr (std::is_same_v<Result, std::vector<From>>) {
    return std::move(from);
  } else {
    return Convert<typename Result::value_type>(from);
  }
}

}  // namespace QZDataFlow::RecordValue
