#ifndef QZLOG_TESTS_SUPPORT_WORKING_FOLDER_H
#define QZLOG_TESTS_SUPPORT_WORKING_FOLDER_H

#include <filesystem>
#include <system_error>

namespace qz_test {

/// Brings the process's working directory back to what it was; until then it is `folder`, when one is given.
class WorkingFolder {
 public:
  WorkingFolder() : before_(std::filesystem::current_path()) {}
  explicit WorkingFolder(const std::filesystem::path& folder) : WorkingFolder() {
    std::filesystem::current_path(folder);
  }
  ~WorkingFolder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  std::filesystem::path before_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_WORKING_FOLDER_H
