#include "qzlog/text_sink.h"

#include <utility>

#include "foundation/allocate.h"
#include "qzlog/qz_exception.h"
#include "sinks/descriptor_lines.h"
#include "sinks/file_lines.h"
#include "sinks/held_lines.h"
#include "sinks/line_colour.h"
#include "sinks/line_sink.h"

using namespace qzlog;

namespace {

using Colour = LineSink::Colour;

std::unique_ptr<LineSink> make_lines(std::unique_ptr<LineDestination> destination, std::unique_ptr<TextForm> form,
                                     Colour colour) {
  return std::unique_ptr<LineSink>(new_object<LineSink>(std::move(destination), std::move(form), colour));
}

}  // namespace

/// The descriptor is owned last, so that it stays the caller's when this throws.
qz_LOG_TextSink::qz_LOG_TextSink(int descriptor, bool owned, const qz_LOG_TextSinkSettings& settings)
    : closing_wait_(0) {
  std::unique_ptr<TextForm> form(new_object<TextForm>(settings.format));
  form_ = form.get();
  auto* const lines = new_object<DescriptorLines>(descriptor, DescriptorLines::kUsualWaitMilliseconds);
  std::unique_ptr<LineDestination> destination(lines);
  const Colour colour = shows_colour(descriptor) ? Colour::kByLevel : Colour::kNo;
  lines_ = make_lines(std::move(destination), std::move(form), colour);
  if (owned) lines->own();
}

qz_LOG_TextSink::qz_LOG_TextSink(const qz_LOG_FileSinkSettings& file, const qz_LOG_TextSinkSettings& settings)
    : closing_wait_(file.longest_wait_milliseconds) {
  if (file.lost_event_id != 0) {
    throw QZX_logging_illegal_argument("lost_event_id: lines of text tell of losses by texts of their own", 0);
  }
  std::unique_ptr<TextForm> form(new_object<TextForm>(settings.format));
  form_ = form.get();
  lines_ = make_lines(open_file_lines(file), std::move(form), Colour::kNo);
}

qz_LOG_TextSink::~qz_LOG_TextSink() { Close(closing_wait_); }

unsigned long long qz_LOG_TextSink::GetRenderFailures() const noexcept { return form_->failures(); }

qz_LOG_Sink::Outcome qz_LOG_TextSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                 unsigned selector_index, unsigned long long& bytes) {
  bytes = lines_->write(entry, use_default, selector_index);
  return bytes != 0 ? kWritten : kFailed;
}

bool qz_LOG_TextSink::FlushEntries(unsigned milliseconds) { return lines_->flush(milliseconds); }

unsigned long long qz_LOG_TextSink::CloseEntries(unsigned milliseconds) { return lines_->close(milliseconds); }

bool qz_LOG_TextSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  return count == 0 || lines_->tell_held(rows_of(held, count));
}
