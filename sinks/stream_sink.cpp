#include "qzlog/stream_sink.h"

#include "foundation/allocate.h"
#include "qzlog/qz_exception.h"
#include "sinks/descriptor_lines.h"
#include "sinks/held_lines.h"
#include "sinks/line_colour.h"
#include "sinks/line_sink.h"

using namespace qzlog;

namespace {

std::unique_ptr<LineForm> make_form(const qz_LOG_StreamSinkSettings& settings) {
  switch (settings.form) {
    case qz_LOG_StreamSinkSettings::kJson:
      return std::unique_ptr<LineForm>(new_object<JsonForm>());
    case qz_LOG_StreamSinkSettings::kText:
      return std::unique_ptr<LineForm>(new_object<TextForm>(settings.format));
  }
  throw QZX_logging_illegal_argument("form: it is neither kJson nor kText", 0);
}

/// The descriptor is owned last, so that it stays the caller's when this throws.
std::unique_ptr<LineSink> make_lines(int descriptor, bool owned, const qz_LOG_StreamSinkSettings& settings) {
  std::unique_ptr<LineForm> form = make_form(settings);
  auto* const lines = new_object<DescriptorLines>(descriptor, settings.longest_wait_milliseconds);
  std::unique_ptr<LineDestination> destination(lines);
  const auto colour = settings.colour && shows_colour(descriptor) ? LineSink::Colour::kByLevel : LineSink::Colour::kNo;
  std::unique_ptr<LineSink> sink(new_object<LineSink>(std::move(destination), std::move(form), colour));
  if (owned) lines->own();
  return sink;
}

}  // namespace

qz_LOG_StreamSink::qz_LOG_StreamSink(int descriptor, bool owned, const qz_LOG_StreamSinkSettings& settings)
    : lines_(make_lines(descriptor, owned, settings)) {}

qz_LOG_StreamSink::~qz_LOG_StreamSink() { Close(0); }

qz_LOG_Sink::Outcome qz_LOG_StreamSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                   unsigned selector_index, unsigned long long& bytes) {
  bytes = lines_->write(entry, use_default, selector_index);
  return bytes != 0 ? kWritten : kFailed;
}

bool qz_LOG_StreamSink::FlushEntries(unsigned milliseconds) { return lines_->flush(milliseconds); }

unsigned long long qz_LOG_StreamSink::CloseEntries(unsigned milliseconds) { return lines_->close(milliseconds); }

bool qz_LOG_StreamSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  return count == 0 || lines_->tell_held(rows_of(held, count));
}
