/// Writes what the documentation takes from the qzlog command's own tables: the manual pages (some of them made of the
/// documentation's own pages) and the completions into a folder, the rules as JSON to standard output.
#include <exception>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "qzlog/qz_exception.h"
#include "tools/command_line.h"
#include "tools/diff/diff_rules.h"
#include "tools/known_rules.h"
#include "tools/manual/bash_completion.h"
#include "tools/manual/document_page.h"
#include "tools/manual/environment_rows.h"
#include "tools/manual/fish_completion.h"
#include "tools/manual/manual_page.h"
#include "tools/manual/markdown.h"
#include "tools/manual/zsh_completion.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/out_of_memory.h"
#include "tools/system/output_file.h"
#include "tools/system/process_start.h"

namespace {

namespace fs = std::filesystem;

using nlohmann::ordered_json;
using qzlog_compiler::DiffRuleInfo;
using qzlog_compiler::KnownRule;
using qzlog_compiler::RuleInfo;

void write(const fs::path& path, const std::string& content) {
  fs::create_directories(path.parent_path());
  qzlog_tool::write_file(path.string(), content);
}

std::string read_document(const fs::path& docs, std::string_view name) {
  return qzlog_tool::read_file((docs / name).string());
}

void write_manual_pages(const fs::path& folder, const fs::path& docs, const qzlog_tool::CommandNode& root) {
  const auto environment =
      qzlog_tool::read_environment(qzlog_tool::parse_markdown(read_document(docs, "environment.md")));
  for (const qzlog_tool::CommandNode* const command : qzlog_tool::all_commands(root)) {
    write(folder / "man1" / qzlog_tool::manual_page_file_name(*command),
          qzlog_tool::manual_page(root, *command, environment, qzlog_tool::kVersionNumber));
  }
  for (const qzlog_tool::DocumentPage& page : qzlog_tool::all_document_pages()) {
    write(folder / ("man" + std::to_string(page.section)) / page.file_name(),
          qzlog_tool::document_page(page, read_document(docs, page.document), environment, root,
                                    qzlog_tool::kVersionNumber));
  }
}

void write_all(const fs::path& folder, const fs::path& docs) {
  const qzlog_tool::CommandNode root = qzlog_tool::command_line_tree();
  write_manual_pages(folder, docs, root);
  write(folder / "bash" / "qzlog", qzlog_tool::bash_completion(root));
  write(folder / "zsh" / "_qzlog", qzlog_tool::zsh_completion(root));
  write(folder / "fish" / "qzlog.fish", qzlog_tool::fish_completion(root));
}

ordered_json rule_json(const RuleInfo& rule) {
  ordered_json json = {{"name", rule.name}, {"meaning", rule.meaning}, {"acceptable", rule.acceptable}};
  if (!rule.former_names.empty()) json["former_names"] = rule.former_names;
  return json;
}

ordered_json rule_json(const DiffRuleInfo& rule) {
  ordered_json json = rule_json(static_cast<const RuleInfo&>(rule));
  json["breaks"] = qzlog_compiler::verdict_names(rule.verdicts);
  json["version_step"] = qzlog_compiler::step_name(rule.step);
  json["may_collide"] = rule.collision == qzlog_compiler::Collision::kMay;
  json["before"] = rule.before;
  json["after"] = rule.after;
  return json;
}

/// Every table, under the name of what has it.
void print_rules() {
  ordered_json tables;
  for (const KnownRule& rule : qzlog_tool::all_known_rules()) {
    const bool of_changes = rule.table == "diff";
    tables[std::string(rule.table)].push_back(of_changes ? rule_json(static_cast<const DiffRuleInfo&>(*rule.info))
                                                         : rule_json(*rule.info));
  }
  std::cout << tables.dump(2) << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  qzlog_tool::prepare_process();
  qzlog_tool::end_where_memory_runs_out();
  const bool of_rules = argc == 2 && std::string_view(argv[1]) == "--rules";
  if (!of_rules && argc != 3) {
    std::cerr << "Usage: qzlog_command_docs FOLDER DOCS | --rules\n";
    return 2;
  }
  try {
    of_rules ? print_rules() : write_all(argv[1], argv[2]);
    if (!std::cout) throw std::runtime_error("cannot write to standard output");
  } catch (const std::exception& error) {
    std::cerr << "qzlog_command_docs: " << error.what() << '\n';
    return 2;
  } catch (const QZX_memory_alloc&) {
    qzlog_tool::print_out_of_memory();
    return 2;
  }
  return 0;
}
