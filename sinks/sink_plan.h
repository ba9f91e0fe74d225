#ifndef QZLOG_SINKS_SINK_PLAN_H
#define QZLOG_SINKS_SINK_PLAN_H

#include <cstddef>
#include <string>
#include <vector>

#include "qzlog/file_sink.h"
#include "qzlog/journal_sink.h"
#include "qzlog/limited_sink.h"
#include "qzlog/memory_sink.h"
#include "qzlog/stream_sink.h"
#include "qzlog/syslog_sink.h"
#include "qzlog/text_sink.h"
#include "sinks/sink_file.h"

namespace qzlog {

enum class SinkKind : unsigned { kFile, kStream, kText, kMemory, kJournal, kSyslog, kFiltered, kLimited, kSplit };

/// The sink that a section describes.
struct SinkPlan {
  const SinkSection* section = nullptr;
  SinkKind kind = SinkKind::kFile;
  std::vector<std::size_t> to;  ///< positions of the plans of the sinks that it owns

  unsigned wanted_level = 0;
  unsigned wanted_mask = qz_LOG_Sink::kEveryMask;

  static constexpr int kNoDescriptor = -1;
  int descriptor = kNoDescriptor;
  qz_LOG_FileSinkSettings file;
  qz_LOG_StreamSinkSettings stream;
  qz_LOG_TextSinkSettings text;
  qz_LOG_MemorySinkSettings memory;
  qz_LOG_SyslogSinkSettings syslog;
  qz_LOG_LimitedSinkSettings limited;
  qz_LOG_JournalSinkSettings journal;
  std::string filter_section;
  unsigned lowest_level = 0;
  unsigned highest_level = 9;
  unsigned property_mask = 0xFFFFFFFFU;
};

/// Of each section, in their order. Throws QZX_logging_illegal_argument, naming file, line and setting, for what is
/// unknown, missing or no value of a setting, and unless the sinks make up trees. std::bad_alloc.
std::vector<SinkPlan> plan_sinks(const SinkFile& file);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SINK_PLAN_H
