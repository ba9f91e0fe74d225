#ifndef QZLOG_TESTS_SUPPORT_TEMP_DIR_H
#define QZLOG_TESTS_SUPPORT_TEMP_DIR_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace qz_test {

/// The file's contents, "" when there is no such file.
inline std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/// A new empty folder, removed with everything in it at the end.
class TempDir {
 public:
  TempDir() : path_(testing::TempDir() + "qzlog-test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder at " + path_);
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }

  /// Replaces the file's contents and returns its path.
  std::string write(std::string_view name, std::string_view bytes) const {
    std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) ADD_FAILURE() << "cannot write " << path(name);
    return path(name);
  }

  /// The file's contents, "" when there is no such file.
  std::string read(std::string_view name) const { return read_file(path(name)); }

  bool has(std::string_view name) const { return std::filesystem::exists(path(name)); }

 private:
  std::string path_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_TEMP_DIR_H
