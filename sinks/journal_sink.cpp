#include "qzlog/journal_sink.h"

#include <algorithm>
#include <utility>

#include "foundation/allocate.h"
#include "sinks/held_lines.h"
#include "sinks/journal_destination.h"
#include "sinks/journal_form.h"
#include "sinks/journal_names.h"
#include "sinks/journal_socket.h"
#include "sinks/line_sink.h"
#include "sinks/setting_checks.h"

using namespace qzlog;

namespace {

bool is_control(char character) { return static_cast<unsigned char>(character) < ' ' || character == '\x7F'; }

void check_namespace(const std::string& name) {
  if (name.empty() || is_journal_namespace(name)) return;
  refuse_setting("journal_namespace", "it is not made of up to 64 letters, digits and : - _ . @");
}

void check_path(const std::string& path) {
  if (path.size() > JournalSocket::kLongestPath) refuse_setting("socket_path", "it is longer than 107 bytes");
  if (path.find('\0') != std::string::npos) refuse_setting("socket_path", "it has a zero byte");
}

std::string path_of(const qz_LOG_JournalSinkSettings& settings) {
  const std::string& name = settings.journal_namespace;
  check_namespace(name);
  check_path(settings.socket_path);
  if (settings.socket_path.empty()) return "/run/systemd/journal" + (name.empty() ? "" : '.' + name) + "/socket";
  if (!name.empty()) refuse_setting("socket_path", "there is a journal_namespace, which has a path of its own");
  return settings.socket_path;
}

void check_product(const std::string& product) {
  if (std::any_of(product.begin(), product.end(), is_control)) refuse_setting("product", "it has a control character");
}

}  // namespace

qz_LOG_JournalSink::qz_LOG_JournalSink(const qz_LOG_JournalSinkSettings& settings) {
  with_memory([&] {
    check_product(settings.product);
    std::unique_ptr<JournalForm> form(new_object<JournalForm>(settings.product));
    form_ = form.get();
    std::unique_ptr<LineDestination> destination(
        new_object<JournalDestination>(path_of(settings), settings.longest_wait_milliseconds));
    lines_.reset(new_object<LineSink>(std::move(destination), std::move(form), LineSink::Colour::kNo));
  });
}

qz_LOG_JournalSink::~qz_LOG_JournalSink() { Close(0); }

unsigned long long qz_LOG_JournalSink::GetRenderFailures() const noexcept { return form_->failures(); }

qz_LOG_Sink::Outcome qz_LOG_JournalSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                    unsigned selector_index, unsigned long long& bytes) {
  bytes = lines_->write(entry, use_default, selector_index);
  return bytes != 0 ? kWritten : kFailed;
}

bool qz_LOG_JournalSink::FlushEntries(unsigned milliseconds) { return lines_->flush(milliseconds); }

unsigned long long qz_LOG_JournalSink::CloseEntries(unsigned milliseconds) { return lines_->close(milliseconds); }

bool qz_LOG_JournalSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  return count == 0 || lines_->tell_held(rows_of(held, count));
}
