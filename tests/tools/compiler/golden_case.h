#ifndef QZLOG_TESTS_TOOLS_COMPILER_GOLDEN_CASE_H
#define QZLOG_TESTS_TOOLS_COMPILER_GOLDEN_CASE_H

#include <filesystem>
#include <string>
#include <vector>

/// One golden case: a file with a command line, the files it runs on, and everything it must give. Sections begin with
/// a line of "===== " and a title:
///
///     What the case shows.
///     ===== command
///     compile storage.yaml -o out.ldf
///     ===== file storage.yaml
///     ...
///     ===== file odd.yaml (escaped)        backslash escapes; "@repeat 3 item #" writes item 1, item 2, item 3
///     ===== stdin
///     ===== result
///     exit status, standard error, standard output and the files that the command wrote or changed
namespace golden {

struct InputFile {
  std::string name;
  std::string content;
};

struct Case {
  std::string input;  ///< everything before the result, as it stands
  std::vector<std::string> arguments;
  std::vector<InputFile> files;
  std::string standard_input;
  std::string result;
};

/// Reads a case. Throws `std::runtime_error` for a malformed one.
Case read_case(const std::filesystem::path& path);

/// Runs the case's command in an empty folder that holds its files, and gives the text of its result section.
std::string run_case(const Case& golden_case, const std::filesystem::path& folder);

/// Replaces the result section of the file.
void rewrite_case(const std::filesystem::path& path, const Case& golden_case, const std::string& result);

}  // namespace golden

#endif  // QZLOG_TESTS_TOOLS_COMPILER_GOLDEN_CASE_H
