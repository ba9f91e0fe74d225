#include "tests/tools/golden_case.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/support/temp_dir.h"
#include "tests/tools/compiler/model_text.h"
#include "tools/command_line.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/source/compiler.h"
#include "tools/compiler/text/utf8_text.h"

namespace golden {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMark = "===== ";
constexpr const char* kManifestBegin = "{\n  \"made by\": \"qzlog catalog build\"";

void write_all(const fs::path& path, const std::string& content) { std::ofstream(path, std::ios::binary) << content; }

std::vector<std::string> words(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

/// \n, \r, \t, \\ and \xHH.
std::string unescaped(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    const char kind = text.at(++i);
    if (kind == 'x') {
      out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      out += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : kind;
    }
  }
  return out;
}

std::string numbered(const std::string& item, int number) {
  std::string out;
  for (const char character : item) out += character == '#' ? std::to_string(number) : std::string(1, character);
  return out;
}

std::string expanded_line(const std::string& line) {
  if (line.rfind("@repeat ", 0) != 0) return unescaped(line);
  const std::size_t blank = line.find(' ', 8);
  const int count = std::stoi(line.substr(8, blank - 8));
  std::string out;
  for (int i = 1; i <= count; ++i) out += (i == 1 ? "" : "\n") + numbered(line.substr(blank + 1), i);
  return out;
}

/// Lines end where the case file ends them, the last one included, unless it ends in a backslash and "c".
std::string expanded(const std::string& content) {
  std::istringstream in(content);
  std::string out;
  for (std::string line; std::getline(in, line);) {
    const bool joined = line.size() >= 2 && line.compare(line.size() - 2, 2, "\\c") == 0;
    out += expanded_line(joined ? line.substr(0, line.size() - 2) : line) + (joined ? "" : "\n");
  }
  return out;
}

void take_section(Case& result, const std::string& title, const std::string& content) {
  const std::vector<std::string> parts = words(title);
  if (title == "command") {
    result.arguments = words(content);
  } else if (title == "stdin") {
    result.standard_input = content;
  } else if (parts.size() >= 2 && parts[0] == "file") {
    const bool escaped = parts.size() == 3 && parts[2] == "(escaped)";
    result.files.push_back({parts[1], escaped ? expanded(content) : content});
  } else if (parts.size() == 2 && parts[0] == "definitions") {
    result.files.push_back({parts[1], expanded(content), InputFile::Kind::kDefinitions});
  } else if (parts.size() == 3 && parts[0] == "definitions" && parts[2] == "(names)") {
    result.files.push_back({parts[1], expanded(content), InputFile::Kind::kNamedDefinitions});
  } else if (parts.size() == 2 && parts[0] == "altered") {
    result.files.push_back({parts[1], content, InputFile::Kind::kAltered});
  } else if (parts.size() == 2 && parts[0] == "bundle") {
    result.files.push_back({parts[1], content, InputFile::Kind::kBundle});
  } else if (title == "result") {
    result.result = content;
  } else {
    throw std::runtime_error("unknown section '" + title + "'");
  }
}

/// Runs in a child of its own: the working folder and the standard streams are the command's.
[[noreturn]] void run_in_child(const Case& golden_case, const fs::path& folder) {
  fs::current_path(folder);
  const int in = ::open("../stdin", O_RDONLY);
  const int out = ::open("../stdout", O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int err = ::open("../stderr", O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (::dup2(in, 0) < 0 || ::dup2(out, 1) < 0 || ::dup2(err, 2) < 0) ::_exit(99);
  const int status = qzlog_tool::run_command_line(golden_case.arguments);
  std::cerr.flush();
  ::_exit(status);
}

int run_command(const Case& golden_case, const fs::path& folder) {
  std::cout.flush();
  std::cerr.flush();
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) run_in_child(golden_case, folder);
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFEXITED(status)) throw std::runtime_error("the command crashed");
  return WEXITSTATUS(status);
}

/// Very long lines are cut, so that the cases stay readable.
std::string shortened(const std::string& text) {
  constexpr std::size_t kLongestLine = 2000;
  constexpr std::size_t kShown = 100;
  std::istringstream in(text);
  std::string out;
  for (std::string line; std::getline(in, line);) {
    const std::size_t size = line.size();
    if (size > kLongestLine) line = line.substr(0, kShown) + "... (" + std::to_string(size) + " bytes)";
    out += line + '\n';
  }
  return out;
}

/// Bundles depend on the version of ICU, and so do their digests in a catalog's manifest.
std::string without_digests(const std::string& manifest) {
  static const std::regex digest("\"[0-9a-f]{16}\"");
  return std::regex_replace(manifest, digest, "\"(digest)\"");
}

std::string describe(const std::string& bytes) {
  std::ostringstream out;
  if (bytes.size() > 16 && bytes.substr(12, 4) == "ResB") return "(a resource bundle)\n";
  if (bytes.rfind(kManifestBegin, 0) == 0) return without_digests(bytes);
  if (!qzlog_compiler::looks_like_ldf(bytes)) return bytes;
  const qzlog_compiler::LdfFile file = qzlog_compiler::read_ldf(bytes);
  out << model_text(file.model);
  if (!file.model.has_names) out << "no names\n";
  if (file.damage) out << "damaged: " << file.damage->reason << '\n';
  return shortened(out.str());
}

/// The files below a folder by their paths in it.
std::map<std::string, std::string> files_in(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files[entry.path().lexically_relative(folder)] = qz_test::read_file(entry.path());
  }
  return files;
}

/// What the compiler makes of a source, mistakes included: a file that it would not write.
std::string compiled_all_the_same(const std::string& source, bool names) {
  const qzlog_compiler::DefinitionModel model = qzlog_compiler::compile_source(source, "", {}).model;
  std::string bytes = qzlog_compiler::write_ldf(model);
  if (names) qzlog_compiler::append_names(model, bytes);
  return bytes;
}

void build_bundle(const fs::path& source) {
  const std::string folder = "'" + source.parent_path().string() + "'";
  const std::string line =
      "genrb --quiet --encoding UTF-8 --destdir " + folder + " '" + source.string() + "' >/dev/null";
  if (std::system(line.c_str()) != 0) throw std::runtime_error("cannot build " + source.string());
}

/// Applies the lines of an altered file: "from FILE" first, then "replace A B" (the first A), "replace-last A B",
/// "append A" and "truncate SIZE"; A and B are escaped.
std::string altered(const fs::path& folder, const std::string& lines) {
  std::istringstream in(lines);
  std::string bytes;
  for (std::string line; std::getline(in, line);) {
    const std::vector<std::string> parts = words(line);
    if (parts.at(0) == "from") bytes = qz_test::read_file(folder / parts.at(1));
    if (parts.at(0) == "append") bytes += unescaped(parts.at(1));
    if (parts.at(0) == "truncate") bytes.resize(std::stoul(parts.at(1)));
    if (parts.at(0).rfind("replace", 0) != 0) continue;
    const std::string wanted = unescaped(parts.at(1));
    const std::size_t at = parts[0] == "replace" ? bytes.find(wanted) : bytes.rfind(wanted);
    if (at == std::string::npos) throw std::runtime_error("nothing to replace: " + line);
    bytes.replace(at, wanted.size(), unescaped(parts.at(2)));
  }
  return bytes;
}

std::string content_of(const InputFile& file, const fs::path& folder) {
  if (file.kind == InputFile::Kind::kDefinitions) return compiled_all_the_same(file.content, false);
  if (file.kind == InputFile::Kind::kNamedDefinitions) return compiled_all_the_same(file.content, true);
  return file.kind == InputFile::Kind::kAltered ? altered(folder, file.content) : file.content;
}

void write_input(const fs::path& folder, const InputFile& file) {
  const fs::path path = folder / file.name;
  fs::create_directories(path.parent_path());
  write_all(path, content_of(file, folder));
  if (file.kind == InputFile::Kind::kBundle) build_bundle(path);
}

}  // namespace

std::vector<fs::path> cases_in(const fs::path& folder) {
  std::vector<fs::path> paths;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".case") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::string test_name(const fs::path& path) {
  std::string name = path.stem().string();
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

Case read_case(const fs::path& path) {
  Case result;
  std::istringstream in(qz_test::read_file(path));
  std::string title;
  std::string content;
  for (std::string line; std::getline(in, line);) {
    const bool begins_section = line.rfind(kMark, 0) == 0;
    if (begins_section) {
      if (!title.empty()) take_section(result, title, content);
      title = line.substr(kMark.size());
      content.clear();
    } else {
      content += line + '\n';
    }
    if (title != "result") result.input += line + '\n';
  }
  if (!title.empty()) take_section(result, title, content);
  if (result.arguments.empty()) throw std::runtime_error("no command in " + path.string());
  return result;
}

std::string run_case(const Case& golden_case, const fs::path& folder) {
  const fs::path inside = folder / "run";
  fs::create_directories(inside);
  write_all(folder / "stdin", golden_case.standard_input);
  for (const InputFile& file : golden_case.files) write_input(inside, file);
  const std::map<std::string, std::string> before = files_in(inside);
  std::ostringstream out;
  out << "exit status " << run_command(golden_case, inside) << '\n';
  out << "--- standard error\n" << qz_test::read_file(folder / "stderr");
  const std::string standard_output = qz_test::read_file(folder / "stdout");
  if (!standard_output.empty()) out << "--- standard output\n" << describe(standard_output);
  for (const auto& [name, content] : files_in(inside)) {
    const auto old = before.find(name);
    if (old == before.end() || old->second != content) out << "--- file " << name << '\n' << describe(content);
  }
  return out.str();
}

void rewrite_case(const fs::path& path, const Case& golden_case, const std::string& result) {
  write_all(path, golden_case.input + std::string(kMark) + "result\n" + result);
}

}  // namespace golden
