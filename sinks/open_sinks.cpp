#include "qzlog/open_sinks.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/allocate.h"
#include "qzlog/filtered_sink.h"
#include "qzlog/journal_sink.h"
#include "qzlog/qz_exception.h"
#include "qzlog/split_sink.h"
#include "sinks/setting_checks.h"
#include "sinks/sink_plan.h"

using namespace qzlog;

namespace {

using SinkPtr = std::unique_ptr<qz_LOG_Sink>;

template <typename Sink, typename... Arguments>
SinkPtr make(Arguments&&... arguments) {
  return SinkPtr(new_object<Sink>(std::forward<Arguments>(arguments)...));
}

/// Opens planned sinks, the inner ones first.
class SinkOpener {
 public:
  SinkOpener(const SinkFile& file, const std::vector<SinkPlan>& plans) : file_(file), plans_(plans) {}

  SinkPtr open(const SinkPlan& plan) const {
    std::vector<SinkPtr> inner;
    for (const std::size_t index : plan.to) inner.push_back(open(plans_[index]));
    SinkPtr sink = open_at_place(plan, inner);
    sink->SetWanted(plan.wanted_level, plan.wanted_mask);
    return sink;
  }

 private:
  /// What the sink throws gets the place of what it speaks of.
  SinkPtr open_at_place(const SinkPlan& plan, std::vector<SinkPtr>& inner) const {
    try {
      return open_alone(plan, inner);
    } catch (const QZX_logging_illegal_argument& thrown) {
      file_.refuse(line_of(plan, thrown.get_message()), text_of(thrown));
    } catch (const QZX_logging_file_operation_failed& thrown) {
      const std::string text = file_.place(plan.section->line) + text_of(thrown);
      throw QZX_logging_file_operation_failed(text.c_str(), 0);
    }
  }

  static std::string text_of(const qz_EXCEPTION_base& thrown) {
    const char* const text = thrown.get_message();
    return text != nullptr ? text : "no memory";
  }

  /// Texts of sinks begin with the name of the setting.
  static unsigned line_of(const SinkPlan& plan, const char* text) {
    const std::string_view whole = text != nullptr ? text : "";
    const SinkSetting* const setting = plan.section->find(whole.substr(0, whole.find(':')));
    return setting != nullptr ? setting->line : plan.section->line;
  }

  static SinkPtr open_alone(const SinkPlan& plan, std::vector<SinkPtr>& inner) {
    switch (plan.kind) {
      case SinkKind::kFile:
        return make<qz_LOG_FileSink>(plan.file);
      case SinkKind::kStream:
        return make<qz_LOG_StreamSink>(plan.descriptor, false, plan.stream);
      case SinkKind::kText:
        if (plan.descriptor != SinkPlan::kNoDescriptor) {
          return make<qz_LOG_TextSink>(plan.descriptor, false, plan.text);
        }
        return make<qz_LOG_TextSink>(plan.file, plan.text);
      case SinkKind::kMemory:
        return make<qz_LOG_MemorySink>(plan.memory);
      case SinkKind::kJournal:
        return make<qz_LOG_JournalSink>(plan.journal);
      case SinkKind::kSyslog:
        return make<qz_LOG_SyslogSink>(plan.syslog);
      case SinkKind::kFiltered:
        return open_filtered(plan, inner);
      case SinkKind::kLimited:
        return make<qz_LOG_LimitedSink>(std::move(inner.front()), plan.limited);
      case SinkKind::kSplit:
        break;
    }
    return make<qz_LOG_SplitSink>(std::move(inner));
  }

  static SinkPtr open_filtered(const SinkPlan& plan, std::vector<SinkPtr>& inner) {
    const char* const section = plan.filter_section.c_str();
    const _qz_LOG_entry_filter filter = {
        nullptr, nullptr, plan.property_mask, plan.lowest_level, plan.highest_level, section, false, false};
    return make<qz_LOG_FilteredSink>(std::move(inner.front()), filter);
  }

  const SinkFile& file_;
  const std::vector<SinkPlan>& plans_;
};

SinkPtr open_section(const std::string& path, std::string_view section) {
  const SinkFile file = SinkFile::read(path);
  const std::vector<SinkPlan> plans = plan_sinks(file);
  const auto plan = std::find_if(plans.begin(), plans.end(),
                                 [section](const SinkPlan& each) { return each.section->name == section; });
  if (plan == plans.end()) {
    const std::string text = path + ": there is no section [" + std::string(section) + "]";
    throw QZX_logging_illegal_argument(text.c_str(), 0);
  }
  return SinkOpener(file, plans).open(*plan);
}

}  // namespace

std::unique_ptr<qz_LOG_Sink> qz_LOG_OpenSinks(const char* path, const char* section) {
  if (path == nullptr || section == nullptr) throw QZX_logging_illegal_argument("invalid argument", 0);
  return with_memory([&] { return open_section(path, section); });
}
