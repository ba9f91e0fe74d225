#ifndef QZLOG_TOOLS_CHOICE_ENTRY_CHOICE_H
#define QZLOG_TOOLS_CHOICE_ENTRY_CHOICE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/choice/choice_options.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/number_ranges.h"
#include "tools/choice/raw_line.h"
#include "tools/choice/reader_moment.h"
#include "tools/choice/seen_numbers.h"
#include "tools/choice/where.h"
#include "tools/choice/wildcard.h"

namespace qzlog_tool {

/// Decides which lines of entries are wanted.
///
///   EntryChoice choice(options, definitions, process_clock(std::time(nullptr)));
///   reader.SetLineChoice(choice.line_choice());
///   while (!choice.is_complete() && reader.Next(line)) {
///     if (choice.takes(line)) show(line);
///   }
///
/// A line that tells of entries that were lost or held back has no ID, level or attributes of its own: it is wanted
/// where an entry that it counts may have been. Of its `lost` rows one has to have a wanted ID, name, mask and level,
/// and no `since` behind --until; its `writer` has to be wanted, and `written`, which says when the loss was told, must
/// not be before --since. --where is not asked.
class EntryChoice : private qz_LOG_LineChoice {
 public:
  /// Throws CommandError (cannot run) for what the definitions do not know; what is wrong with --where is shown on
  /// stderr. `known` has to outlive this object. Times are read on `clock`, texts in the code page
  /// of the library's settings.
  EntryChoice(const ChoiceOptions& options, const KnownDefinitions& known, const ReaderClock& clock);

  /// Whether the line is wanted. Counts: each line is asked about once.
  bool takes(const qz_LOG_EntryLine& line) {
    if (!wants(line)) return false;
    count();
    return true;
  }
  /// The same in two steps, for callers that may leave out a wanted line, which --head is then not to count.
  bool wants(const qz_LOG_EntryLine& line);
  void count() { ++taken_; }
  /// Of entries that a line tells of as lost or held back: whether they may be wanted, whoever wrote the line.
  bool takes_lost(const qz_LOG_LostEntries& lost) const;
  /// Decides on lines before they are read, as `takes` would; null where bytes tell nothing. Lives as long as this.
  qz_LOG_LineChoice* line_choice() { return decides_on_bytes_ ? this : nullptr; }
  /// The lines that --head asks for are there: no other will be taken.
  bool is_complete() const { return head_ != 0 && taken_ == head_; }

  /// Entries that were left out for having no time, and would have been taken with one.
  std::uint64_t without_time() const { return without_time_; }
  /// Adds what another one, of the same options, counted of other lines.
  void add_count(const EntryChoice& other) { without_time_ += other.without_time_; }
  /// Ranges of numbers that --unique had to forget.
  std::uint64_t forgotten() const { return seen_ ? seen_->forgotten() : 0; }

 private:
  bool TakesLine(const char* line, std::size_t length) override;

  void read_ids(const std::vector<std::string>& ids);
  void read_names(const std::vector<std::string>& names);
  void read_where(const std::string& where, const ReaderClock& clock);
  void find_refused_events();

  bool takes_entry(const qz_LOG_EntryLine& line);
  bool takes_loss(const qz_LOG_EntryLine& line) const;
  bool takes_id(std::uint32_t id) const { return !ids_ || ids_->holds(id); }
  bool takes_name(const qz_LOG_EntryLine& line) const;
  bool takes_writer(std::string_view writer) const;
  bool takes_moment(long long moment) const { return (!since_ || moment >= *since_) && (!until_ || moment <= *until_); }
  bool is_new(const qz_LOG_EntryLine& line);

  const KnownDefinitions& known_;
  std::optional<long long> since_;
  std::optional<long long> until_;
  std::string since_text_;  // as lines have it; empty: none
  std::string until_text_;
  std::optional<NumberSet> ids_;
  NumberSet refused_events_;  // IDs whose names or masks are not wanted, whatever the line says
  std::optional<LossBounds> losses_;
  NumberSet refused_losses_;  // IDs whose masks are not wanted of what was lost
  NumberRange levels_{0, 9};
  std::optional<std::uint32_t> mask_;
  std::vector<Wildcard> names_;    // empty: all
  std::vector<Wildcard> writers_;  // empty: all
  std::optional<Where> where_;
  std::optional<SeenNumbers> seen_;
  std::size_t head_;
  std::size_t taken_ = 0;
  std::uint64_t without_time_ = 0;
  bool decides_on_bytes_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_ENTRY_CHOICE_H
