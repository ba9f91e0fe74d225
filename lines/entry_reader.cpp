#include <memory>
#include <new>
#include <string>
#include <utility>

#include "lines/byte_source.h"
#include "lines/entry_line.h"
#include "lines/json_walk.h"
#include "lines/library_text.h"
#include "lines/line_cutter.h"
#include "lines/line_fault.h"
#include "qzlog/entry_lines.h"
#include "qzlog/qz_exception.h"

using namespace qzlog;

namespace {

constexpr const char* kNoMemory = "no memory for this line";

/// True for a line of nothing but blanks, tabs and a carriage return.
bool is_blank(std::string_view line) {
  return line.empty() || (line.front() <= ' ' && line.find_first_not_of(" \t\r") == std::string_view::npos);
}

}  // namespace

qz_LOG_LineErrorHandler::~qz_LOG_LineErrorHandler() = default;
qz_LOG_LineChoice::~qz_LOG_LineChoice() = default;
bool qz_LOG_LineChoice::TakesLastLine(const char* /*line*/, std::size_t /*length*/) { return true; }
qz_LOG_ByteSource::~qz_LOG_ByteSource() = default;

class QZLOG_NO_EXPORT qz_LOG_EntryReader::Implementation {
 public:
  Implementation(qz_LOG_ByteSource& source, const char* file, qz_LOG_LineErrorHandler* handler)
      : cutter_(source), file_(shared_name(file)), handler_(handler) {}
  Implementation(std::unique_ptr<qz_LOG_ByteSource> source, const char* file, qz_LOG_LineErrorHandler* handler)
      : own_source_(std::move(source)), cutter_(*own_source_), file_(shared_name(file)), handler_(handler) {}
  Implementation(std::string_view bytes, qz_LOG_LineErrorHandler* handler)
      : cutter_(bytes), file_(shared_name("")), handler_(handler) {}

  bool next(qz_LOG_EntryLine::Implementation& line) {
    LineCutter::Line raw;
    for (;;) {
      if (!cutter_.next(raw)) {
        line.clear();  // while it is waited for, and at the end
        if (cutter_.at_end()) return false;
        cutter_.fill();
      } else if ((raw.too_long || !is_blank(raw.text)) && !is_refused(raw) && read(raw, line)) {
        return true;
      }
    }
  }
  void set_choice(qz_LOG_LineChoice* choice) { choice_ = choice; }
  unsigned long long refused_count() const { return refused_count_; }
  unsigned long long error_count() const { return error_count_; }

 private:
  static qz_LOG_EntryLine::Implementation::FileName shared_name(const char* file) {
    return std::make_shared<const std::string>(file != nullptr ? file : "");
  }

  bool is_refused(const LineCutter::Line& raw) {
    if (choice_ == nullptr || raw.too_long || is_taken(raw)) return false;
    ++refused_count_;
    return true;
  }

  bool is_taken(const LineCutter::Line& raw) {
    return raw.has_end ? choice_->TakesLine(raw.text.data(), raw.text.size())
                       : choice_->TakesLastLine(raw.text.data(), raw.text.size());
  }

  /// False for a line that is an error.
  bool read(const LineCutter::Line& raw, qz_LOG_EntryLine::Implementation& line) {
    try {
      if (raw.too_long) throw LineFault{LineRule::kLongLine, "the line is longer than 16 MiB"};
      line.read(raw, file_);
      return true;
    } catch (const LineFault& fault) {
      report(raw, line, fault);
    } catch (const QZX_memory_alloc&) {
      report(raw, line, LineRule::kOutOfMemory, kNoMemory, LineFault::kWholeLine);
    } catch (const std::bad_alloc&) {
      report(raw, line, LineRule::kOutOfMemory, kNoMemory, LineFault::kWholeLine);
    } catch (const qz_EXCEPTION_base& failure) {
      report(raw, line, LineFault{LineRule::kRefusedValue, library_text(failure)});
    }
    return false;
  }

  void report(const LineCutter::Line& raw, qz_LOG_EntryLine::Implementation& line, const LineFault& fault) {
    if (fault.ends_early && !raw.has_end) {
      return report(raw, line, LineRule::kTornLine, "the last line breaks off: it is not written whole", fault.place);
    }
    const std::size_t place = fault.is_of_key ? place_of_key(raw.text, fault.place) : fault.place;
    report(raw, line, fault.rule, fault.text.c_str(), place);
  }

  void report(const LineCutter::Line& raw, qz_LOG_EntryLine::Implementation& line, LineRule rule, const char* text,
              std::size_t place) {
    line.clear();
    ++error_count_;
    if (handler_ == nullptr) return;
    handler_->TakeLineError(
        {file_->c_str(), raw.number, place + 1, rule_name(rule), text, raw.text.data(), raw.text.size()});
  }

  std::unique_ptr<qz_LOG_ByteSource> own_source_;
  LineCutter cutter_;
  qz_LOG_EntryLine::Implementation::FileName file_;
  qz_LOG_LineErrorHandler* handler_;
  qz_LOG_LineChoice* choice_ = nullptr;
  unsigned long long error_count_ = 0;
  unsigned long long refused_count_ = 0;
};

qz_LOG_EntryReader::qz_LOG_EntryReader(Implementation* implementation) : implementation_(implementation) {}

qz_LOG_EntryReader qz_LOG_EntryReader::FromPath(const char* path, qz_LOG_LineErrorHandler* handler) try {
  if (path == nullptr) throw QZX_logging_illegal_argument("invalid argument", 0);
  return qz_LOG_EntryReader(new Implementation(std::make_unique<DescriptorSource>(path), path, handler));
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

qz_LOG_EntryReader qz_LOG_EntryReader::FromDescriptor(int descriptor, const char* file_name,
                                                      qz_LOG_LineErrorHandler* handler) try {
  const char* const name = file_name != nullptr ? file_name : "";
  return qz_LOG_EntryReader(new Implementation(std::make_unique<DescriptorSource>(descriptor, name), name, handler));
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

qz_LOG_EntryReader qz_LOG_EntryReader::FromMemory(const void* bytes, unsigned long size,
                                                  qz_LOG_LineErrorHandler* handler) try {
  const std::string_view text(size != 0 ? static_cast<const char*>(bytes) : "", size);
  return qz_LOG_EntryReader(new Implementation(text, handler));
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

qz_LOG_EntryReader qz_LOG_EntryReader::FromSource(qz_LOG_ByteSource& source, const char* file_name,
                                                  qz_LOG_LineErrorHandler* handler) try {
  return qz_LOG_EntryReader(new Implementation(source, file_name, handler));
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

qz_LOG_EntryReader::~qz_LOG_EntryReader() { delete implementation_; }

qz_LOG_EntryReader::qz_LOG_EntryReader(qz_LOG_EntryReader&& other) noexcept
    : implementation_(std::exchange(other.implementation_, nullptr)) {}

qz_LOG_EntryReader& qz_LOG_EntryReader::operator=(qz_LOG_EntryReader&& other) noexcept {
  std::swap(implementation_, other.implementation_);
  return *this;
}

bool qz_LOG_EntryReader::Next(qz_LOG_EntryLine& line) { return implementation_->next(*line.implementation_); }

void qz_LOG_EntryReader::SetLineChoice(qz_LOG_LineChoice* choice) { implementation_->set_choice(choice); }

unsigned long long qz_LOG_EntryReader::GetRefusedCount() const { return implementation_->refused_count(); }

unsigned long long qz_LOG_EntryReader::GetErrorCount() const { return implementation_->error_count(); }
