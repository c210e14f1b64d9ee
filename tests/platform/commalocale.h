#pragma once

#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace QZPlatform {

/// While one stands, the process prints and reads numbers with a decimal comma, as far as the C library's own functions
/// go. It takes a locale that the system has, or makes one of the numbers of the C.utf8 locale.
///
///     CommaLocale comma;
///     if (!comma.Works()) GTEST_SKIP() << "no locale with a decimal comma";
///
/// One thread at a time.
class CommaLocale {
 public:
  CommaLocale() {
    if (!Use("de_DE.UTF-8") && !Use("fr_FR.UTF-8") && Make()) Use("comma");
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    if (directory.empty()) return;
    std::filesystem::remove_all(directory);
    unsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  bool Works() const { return !name.empty(); }

  /// Goes to the decimal point or back to the comma.
  void SetComma(bool comma) const { std::setlocale(LC_NUMERIC, comma ? name.c_str() : "C"); }

 private:
  bool Use(const char* candidate) {
    if (std::setlocale(LC_NUMERIC, candidate) == nullptr || *std::localeconv()->decimal_point != ',') return false;
    name = candidate;
    return true;
  }

  // A compiled locale is a magic number, the count of its texts, their offsets and the texts, the first of them the
  // decimal point.
  bool Make() {
    std::ifstream in("/usr/lib/locale/C.utf8/LC_NUMERIC", std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    std::uint32_t first = 0;
    if (bytes.size() < 12) return false;
    std::memcpy(&first, bytes.data() + 8, sizeof first);
    if (first >= bytes.size()) return false;
    std::replace(bytes.begin() + first, bytes.end(), '.', ',');
    char pattern[] = "/tmp/commalocaleXXXXXX";
    if (mkdtemp(pattern) == nullptr) return false;
    directory = pattern;
    std::filesystem::create_directory(directory + "/comma");
    std::ofstream(directory + "/comma/LC_NUMERIC", std::ios::binary) << bytes;
    return setenv("LOCPATH", directory.c_str(), 1) == 0;
  }

  std::string name;
  std::string directory;
};

}  // namespace QZPlatform
