#ifndef QZLOG_H
#define QZLOG_H

/// Everything a caller of the library needs.
#include "qzlog/debug_log.h"
#include "qzlog/definition_cache.h"
#include "qzlog/entry_filt.h"
#include "qzlog/entry_lines.h"
#include "qzlog/export.h"
#include "qzlog/file_io.h"
#include "qzlog/file_sink.h"
#include "qzlog/filtered_sink.h"
#include "qzlog/journal_sink.h"
#include "qzlog/limited_sink.h"
#include "qzlog/log_util.h"
#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "qzlog/logentrycounter.h"
#include "qzlog/memory_sink.h"
#include "qzlog/open_sinks.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_locale.h"
#include "qzlog/qz_string.h"
#include "qzlog/qz_time.h"
#include "qzlog/shared_counter.h"
#include "qzlog/sink.h"
#include "qzlog/split_sink.h"
#include "qzlog/stream_sink.h"
#include "qzlog/syslog_sink.h"
#include "qzlog/text_sink.h"
#include "qzlog/version.h"

#endif  // QZLOG_H
