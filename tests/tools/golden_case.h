#ifndef QZLOG_TESTS_TOOLS_GOLDEN_CASE_H
#define QZLOG_TESTS_TOOLS_GOLDEN_CASE_H

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
///     ===== definitions std.ldf            escaped as well: a source, compiled even with mistakes that the compiler
///     refuses, without names
///     ===== definitions std.ldf (names)    the same with a names section
///     ===== altered bad.ldf                changes to another of the files: "from std.ldf", "replace A B", "truncate
///     300"
///     ===== bundle messages/de.txt         built with genrb into messages/de.res
///     ===== stdin
///     ===== result
///     exit status, standard error, standard output and the files that the command wrote or changed
namespace golden {

struct InputFile {
  enum class Kind { kPlain, kDefinitions, kNamedDefinitions, kAltered, kBundle };

  std::string name;
  std::string content;
  Kind kind = Kind::kPlain;
};

struct Case {
  std::string input;  ///< everything before the result, as it stands
  std::vector<std::string> arguments;
  std::vector<InputFile> files;
  std::string standard_input;
  std::string result;
};

/// The case files of a folder, sorted.
std::vector<std::filesystem::path> cases_in(const std::filesystem::path& folder);

/// A case file's name as tests are named.
std::string test_name(const std::filesystem::path& path);

/// Reads a case. Throws `std::runtime_error` for a malformed one.
Case read_case(const std::filesystem::path& path);

/// Runs the case's command in an empty folder that holds its files, and gives the text of its result section.
std::string run_case(const Case& golden_case, const std::filesystem::path& folder);

/// Replaces the result section of the file.
void rewrite_case(const std::filesystem::path& path, const Case& golden_case, const std::string& result);

}  // namespace golden

#endif  // QZLOG_TESTS_TOOLS_GOLDEN_CASE_H
