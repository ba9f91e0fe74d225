#include "tools/transport/reader_host.h"

#include <cstdint>
#include <exception>
#include <utility>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kMostWarnings = 1000;

ReaderHost& self(void* context) { return *static_cast<ReaderHost*>(context); }

qzlog_value find_nothing(void* /*context*/, const qzlog_record* /*record*/, const char* /*name*/) { return {}; }

const qzlog_attribute* no_attributes(void* /*context*/, const qzlog_record* /*record*/, std::size_t* count) {
  *count = 0;
  return nullptr;
}

int no_moment(void* /*context*/, const qzlog_record* /*record*/, std::int64_t* /*nanoseconds*/) { return 0; }

int no_body(void* /*context*/, const qzlog_record* /*record*/, qzlog_text* /*body*/) { return 0; }

}  // namespace

ReaderHost::ReaderHost(std::function<void(const std::string&)> warn, std::function<bool()> is_ending)
    : warn_(std::move(warn)), is_ending_(std::move(is_ending)), host_() {
  host_.size = sizeof host_;
  host_.context = this;
  host_.warn = [](void* context, const char* text) { self(context).warn(text); };
  host_.is_ending = [](void* context) { return self(context).is_ending_() ? 1 : 0; };
  host_.find_member = find_nothing;
  host_.find_attribute = find_nothing;
  host_.attributes = no_attributes;
  host_.moment = no_moment;
  host_.body = no_body;
}

// Called by a plug-in, which no exception may reach: without memory for it there is no warning.
void ReaderHost::warn(const char* text) {
  try {
    const std::string shown = qzlog_compiler::printable(text);
    if (warned_.size() < kMostWarnings && warned_.insert(shown).second) warn_(shown);
  } catch (const std::exception&) {
  }
}

}  // namespace qzlog_tool
