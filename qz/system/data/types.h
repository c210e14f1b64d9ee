#pragma once

#include <cstdint>
#include <typeinfo>

namespace QZSystem {

/// The identity that belongs to the name of a type, as the compiler writes it: its 64-bit FNV-1a hash (Fowler, Noll and
/// Vo 1991), without a leading '*', which some compilers put before names that only one library knows.
[[nodiscard]] inline const void* QZTypeIdentity(const char* name) {
  if (*name == '*') ++name;
  std::uint64_t hash = 0xCBF29CE484222325;
  for (; *name != '\0'; ++name) hash = (hash ^ static_cast<unsigned char>(*name)) * 0x100000001B3;
  return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(hash));
}

/// The identity of a type: the same for one type in every shared library, different for different types. It is no
/// address; compare it and nothing else, and don't store it in files.
///
///     if (holder.GetDataType() == QZGetDataType<double>()) ...
///
/// Found once for each type. A const type has the identity of the type without const. Safe from any thread.
template <class T>
[[nodiscard]] const void* QZGetDataType() {
  static const void* const identity = QZTypeIdentity(typeid(T).name());
  return identity;
}

}  // namespace QZSystem
