#ifndef QZLOG_TOOLS_SHIP_SHIPPING_H
#define QZLOG_TOOLS_SHIP_SHIPPING_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ship/transport.h"
#include "tools/choice/known_definitions.h"
#include "tools/ship/batch_sender.h"
#include "tools/ship/dead_letters.h"
#include "tools/ship/line_judge.h"
#include "tools/ship/line_parts.h"
#include "tools/ship/line_source.h"
#include "tools/ship/line_taker.h"
#include "tools/ship/record_batch.h"
#include "tools/ship/record_identity.h"
#include "tools/ship/ship_metrics.h"
#include "tools/ship/state_file.h"
#include "tools/transport/back_off.h"

namespace qzlog_tool {

/// Sends lines from where they come to where they go: in batches, each until everything of it is settled. A line is
/// settled when the receiver has acknowledged it, when it stands with the dead letters, or when it is not wanted; the
/// state moves after that and never before.
class Shipping : public LineTaker {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Settings {
    std::string to;       ///< the URL, as it is shown
    std::string product;  ///< may be empty
    RecordBatch::Limits batch;
    Milliseconds batch_wait{100};      ///< for a batch that is not full
    Milliseconds send_timeout{30000};  ///< of one attempt
    Milliseconds end_wait{10000};      ///< for the last batch, when the command is to end
    BackOff::Limits back_off;
    bool once = false;  ///< it ends when what is there was delivered
  };
  /// All have to outlive the shipping.
  struct Parts {
    LineSource& source;
    BatchSender& sender;
    StateFile& state;
    DeadLetters& dead_letters;
    ShipMetrics& metrics;
    const RecordIdentity& identities;
    const KnownDefinitions& known;             ///< for names of events that lines do not tell; may be empty
    LineJudge* judge = nullptr;                ///< null: all lines are wanted
    std::function<void(bool is_last)> report;  ///< called often, and at the end: for metrics
    std::function<int()> stop_signal;          ///< 0: none came
  };

  Shipping(Settings settings, const Parts& parts);

  /// Why it ended.
  struct End {
    bool all_settled = true;      ///< of what was read
    int signal = 0;               ///< that asked for the end
    bool has_complained = false;  ///< of lines, or of files that could not be read
  };
  /// Until a signal comes, or everything was delivered once. Throws CommandError (cannot run) where the receiver will
  /// not take anything, or what is ours cannot be written; the state has what was settled before.
  End run();

  std::vector<LineVerdict> judge(std::string_view block) override;
  bool take(std::string_view line, const LineVerdict& verdict, const ReadLine& at) override;
  bool take_long_line(const ReadLine& at) override;
  void warn(const std::string& text) override;
  void complain(const std::string& text) override;
  void miss(const std::string& text) override;

 private:
  using Clock = std::chrono::steady_clock;

  bool is_ending() const { return parts_.stop_signal() != 0; }
  bool must_pause();
  void name_event();
  void add_dead_letter(std::string_view reason, std::string_view line, const ReadLine& at);
  void gather();
  bool deliver();
  bool send_waiting();
  bool take_results();
  void settle_record(std::size_t index);
  void tell_failure(const std::string& reason);
  void tell_success();
  void settle();
  bool must_give_up(bool is_away);
  bool has_time_left();
  Milliseconds time_for_attempt();
  void rest(Milliseconds time);

  Settings settings_;
  Parts parts_;
  RecordBatch batch_;
  BackOff back_off_;
  LinePartsFinder finder_;
  LineParts line_parts_;
  std::string identity_;
  std::vector<qzlog_record> records_;
  std::vector<std::size_t> numbers_;
  std::vector<qzlog_result> results_;
  std::vector<SeriesState> written_;         // what the state file has
  std::optional<Clock::time_point> begun_;   // when the batch got its first record
  std::optional<Clock::time_point> end_by_;  // when the command has to end
  std::uint64_t passed_bytes_ = 0;           // since anything else was done than reading
  std::string told_failure_;
  std::set<std::string> complaints_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIPPING_H
