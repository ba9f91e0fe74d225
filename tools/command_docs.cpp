/// Writes the manual pages and the completions of the qzlog command into a folder, from the command's own table.
#include <exception>
#include <filesystem>
#include <iostream>

#include "tools/command_line.h"
#include "tools/manual/bash_completion.h"
#include "tools/manual/fish_completion.h"
#include "tools/manual/manual_page.h"
#include "tools/manual/zsh_completion.h"
#include "tools/system/output_file.h"
#include "tools/system/process_start.h"

namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& content) {
  fs::create_directories(path.parent_path());
  qzlog_tool::write_file(path.string(), content);
}

void write_all(const fs::path& folder) {
  const qzlog_tool::CommandNode root = qzlog_tool::command_line_tree();
  for (const qzlog_tool::CommandNode* const command : qzlog_tool::all_commands(root)) {
    write(folder / "man1" / qzlog_tool::manual_page_file_name(*command),
          qzlog_tool::manual_page(root, *command, qzlog_tool::kVersionNumber));
  }
  write(folder / "bash" / "qzlog", qzlog_tool::bash_completion(root));
  write(folder / "zsh" / "_qzlog", qzlog_tool::zsh_completion(root));
  write(folder / "fish" / "qzlog.fish", qzlog_tool::fish_completion(root));
}

}  // namespace

int main(int argc, char** argv) {
  qzlog_tool::prepare_process();
  if (argc != 2) {
    std::cerr << "Usage: qzlog_command_docs FOLDER\n";
    return 2;
  }
  try {
    write_all(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "qzlog_command_docs: " << error.what() << '\n';
    return 2;
  }
  return 0;
}
