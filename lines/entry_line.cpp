#include "lines/entry_line.h"

#include <new>

#include "qzlog/qz_exception.h"

using namespace qzlog;

namespace {

/// Texts of lines have a zero byte behind them.
const char* text_or_empty(std::string_view text) { return text.empty() ? "" : text.data(); }

}  // namespace

void qz_LOG_EntryLine::Implementation::clear() {
  fields_ = LineFields();
  entry_ = &builder_.spare_entry();
  lost_.clear();
  file_.reset();
  number_ = 0;
  offset_ = 0;
  source_ = {};
}

void qz_LOG_EntryLine::Implementation::read(const LineCutter::Line& line, const FileName& file) {
  parser_.parse(line.text, fields_);
  if (!lost_.empty()) lost_.clear();
  if (fields_.lost) {
    read_lost_entries(fields_.lost, line.text.data(), fields_.is_held ? "held" : "lost", lost_);
    entry_ = &builder_.spare_entry();
  } else {
    entry_ = &builder_.build(fields_);
  }
  if (file_ != file) file_ = file;
  number_ = line.number;
  offset_ = line.offset;
  source_ = line.text;
}

qz_LOG_EntryLine::qz_LOG_EntryLine() try : implementation_(new Implementation) {
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

qz_LOG_EntryLine::~qz_LOG_EntryLine() { delete implementation_; }

const qz_LOG_LogEntry& qz_LOG_EntryLine::GetEntry() const { return implementation_->entry(); }

bool qz_LOG_EntryLine::HasTime() const { return implementation_->fields().time != nullptr; }

bool qz_LOG_EntryLine::GetUseDefault() const { return implementation_->fields().use_default; }

unsigned int qz_LOG_EntryLine::GetSelectorIndex() const { return implementation_->fields().selector; }

bool qz_LOG_EntryLine::HasSeq() const { return implementation_->fields().has_seq; }

unsigned long long qz_LOG_EntryLine::GetSeq() const { return implementation_->fields().seq; }

const char* qz_LOG_EntryLine::GetWriter() const { return text_or_empty(implementation_->fields().writer); }

const char* qz_LOG_EntryLine::GetWritten() const { return text_or_empty(implementation_->fields().written); }

const char* qz_LOG_EntryLine::GetDefinitions() const { return text_or_empty(implementation_->fields().definitions); }

const char* qz_LOG_EntryLine::GetName() const { return text_or_empty(implementation_->fields().name); }

bool qz_LOG_EntryLine::IsLoss() const {
  return static_cast<bool>(implementation_->fields().lost) && !implementation_->fields().is_held;
}

bool qz_LOG_EntryLine::IsHeld() const { return implementation_->fields().is_held; }

std::size_t qz_LOG_EntryLine::GetLostCount() const { return implementation_->lost().size(); }

qz_LOG_LostEntries qz_LOG_EntryLine::GetLost(unsigned long index) const {
  if (index >= GetLostCount()) throw QZX_logging_illegal_argument("invalid argument: no such lost entries", 0);
  const LostEntries& row = implementation_->lost()[index];
  return {row.id, row.level, row.count, row.since.c_str()};
}

const char* qz_LOG_EntryLine::GetFile() const { return implementation_->file(); }

unsigned long long qz_LOG_EntryLine::GetLine() const { return implementation_->number(); }

unsigned long long qz_LOG_EntryLine::GetOffset() const { return implementation_->offset(); }

const char* qz_LOG_EntryLine::GetSource() const { return implementation_->source().data(); }

std::size_t qz_LOG_EntryLine::GetSourceLength() const { return implementation_->source().size(); }
