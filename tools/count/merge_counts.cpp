#include "tools/count/merge_counts.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/count/batch_folder.h"
#include "tools/count/count_merge.h"
#include "tools/count/counter_file.h"
#include "tools/options/option_checks.h"
#include "tools/report/command_message.h"
#include "tools/system/command_error.h"
#include "tools/system/output_file.h"

namespace qzlog_tool {

namespace {

struct MergeOptions {
  std::vector<std::string> folders;
  std::string counter;
  bool fold = false;
};

constexpr const char* kMergeFooter =
    R"(Reads the batches that 'qzlog count collect' has written to the folders, and makes the counter of them: a line that is in
several of them counts once, and is told on standard error. The file DIR/NAME.cnt is replaced as a whole, so that it holds what
the batches say and nothing else; the same batches give the same file.

--fold then puts all batches of all folders into one file, folded.counts in the first folder, and removes them. It has the
counts, and which lines they cover. Batches of one group are folded together: two folded files that cover the same lines are an
error. Collectors may go on meanwhile.

Examples:
  qzlog count merge /var/lib/shop/counts --counter /var/lib/shop/events
  qzlog count merge --fold host1/counts host2/counts --counter events
)";

struct FolderBatches {
  BatchFolder& folder;
  std::vector<std::string> names;
};

/// Where a folder was named by mistake, a counter without its counts would take the place of one that has them.
bool tell_empty_folders(const MergeOptions& options, const std::vector<FolderBatches>& batches) {
  bool has_any = false;
  for (std::size_t index = 0; index < batches.size(); ++index) {
    has_any = has_any || !batches[index].names.empty();
    if (!batches[index].names.empty()) continue;
    print_command_message(qzlog_compiler::Severity::kWarning,
                          "there are no batches of 'qzlog count collect' in '" + options.folders[index] + "'");
  }
  return has_any;
}

bool is_folded(const std::string& name) { return name == BatchFolder::kFolded; }

/// The larger of two folded batches may have taken the other one in.
void add_folded(const std::vector<FolderBatches>& batches, CountMerge& merge) {
  std::vector<std::pair<CountBatch, std::string>> folded;
  for (const FolderBatches& own : batches) {
    for (const std::string& name : own.names) {
      if (is_folded(name)) folded.emplace_back(own.folder.read(name), own.folder.path_of(name));
    }
  }
  std::stable_sort(folded.begin(), folded.end(), [](const auto& one, const auto& other) {
    return one.first.folded.size() > other.first.folded.size();
  });
  for (const auto& [batch, name] : folded) merge.add(batch, name);
}

void add_others(const std::vector<FolderBatches>& batches, CountMerge& merge) {
  for (const FolderBatches& own : batches) {
    for (const std::string& name : own.names) {
      if (!is_folded(name)) merge.add(own.folder.read(name), own.folder.path_of(name));
    }
  }
}

// What is folded is on the disk before what it was made of goes; where the command ends between, it is counted once all
// the same.
void fold(const std::vector<FolderBatches>& batches, const CountMerge& merge) {
  const BatchFolder& first = batches.front().folder;
  first.write_folded(merge.folded());
  for (const FolderBatches& own : batches) {
    for (const std::string& name : own.names) {
      if (&own.folder != &first || !is_folded(name)) own.folder.remove(name);
    }
  }
}

void refuse_same_folders(const std::vector<std::string>& folders) {
  for (auto one = folders.begin(); one != folders.end(); ++one) {
    const auto same =
        std::find_if(one + 1, folders.end(), [&](const std::string& other) { return same_file(*one, other); });
    if (same != folders.end()) throw CommandError(kExitCannotRun, "'" + *same + "' is given twice");
  }
}

int merge(const MergeOptions& options) {
  const CounterPath counter = parse_counter_path(options.counter);
  refuse_same_folders(options.folders);
  std::list<BatchFolder> folders;
  std::list<FileLock> locks;
  for (const std::string& path : options.folders) locks.emplace_back(folders.emplace_back(path, false).descriptor());
  std::vector<FolderBatches> batches;
  for (BatchFolder& folder : folders) batches.push_back({folder, folder.names()});
  if (!tell_empty_folders(options, batches)) {
    throw CommandError(kExitCannotRun, "there is nothing to merge: '" + counter.file + "' is not written");
  }
  CountMerge merge;
  add_folded(batches, merge);
  add_others(batches, merge);
  write_file(counter.file, merge.counter_bytes());
  if (options.fold) fold(batches, merge);
  if (merge.doubles() != 0) {
    std::cerr << "lines counted: " << merge.size() << "; that came again and count once: " << merge.doubles() << '\n';
  }
  return kExitSuccess;
}

}  // namespace

void add_merge_counts(CLI::App& count_command, int& exit_status) {
  const auto options = std::make_shared<MergeOptions>();
  CLI::App* const command = count_command.add_subcommand("merge", "Make a counter of the batches of collectors");
  command->footer(kMergeFooter);
  command->add_option("DIR", options->folders, "Folders with batches")->type_name("DIR")->required();
  command->add_option("--counter", options->counter, "The counter that is written; the suffix .cnt may be given")
      ->type_name("DIR/NAME")
      ->check(check_not_empty)
      ->required();
  command->add_flag("--fold", options->fold, "Put all batches into one file, and remove them");
  command->callback([options, &exit_status] { exit_status = merge(*options); });
}

}  // namespace qzlog_tool
