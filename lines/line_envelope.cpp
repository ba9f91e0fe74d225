#include "lines/line_envelope.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <new>

#include "definitions/ldf_load.h"
#include "foundation/itoa.h"
#include "lines/json_escape.h"
#include "lines/json_text.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

constexpr std::string_view kBeginning = "{\"writer\":\"";
constexpr std::string_view kSeq = "\",\"seq\":";
constexpr std::string_view kWritten = ",\"written\":\"";
constexpr std::string_view kDefinitions = ",\"definitions\":\"";
constexpr std::size_t kMaxSeq = std::numeric_limits<unsigned long long>::digits10 + 1;
constexpr std::size_t kFraction = 10;  // the point and nine digits
constexpr std::size_t kMaxDigest = 33;
static_assert(kBeginning.size() + LineEnvelope::kMaxWriter + kSeq.size() + kMaxSeq + kWritten.size() + kMomentText +
                  kFraction + 2 + kDefinitions.size() + kMaxDigest + 2 <=
              LineEnvelope::kMaxHead);

char* write_text(char* target, std::string_view text) {
  std::memcpy(target, text.data(), text.size());
  return target + text.size();
}

char* write_fraction(char* target, unsigned nanoseconds) {
  *target++ = '.';
  *target++ = static_cast<char>('0' + nanoseconds / 100'000'000);
  target = write_four_digits(target, nanoseconds / 10'000 % 10'000);
  return write_four_digits(target, nanoseconds % 10'000);
}

/// As much of a text as fits, in whole characters.
std::string cut_json_text(std::string_view text) {
  std::string json;
  while (!text.empty()) {
    char written[kMaxJsonPiece];
    const JsonPiece piece = write_json_piece(text.data(), text.size(), written);
    if (json.size() + piece.written > LineEnvelope::kMaxWriter) break;
    json.append(written, piece.written);
    text.remove_prefix(piece.taken);
  }
  return json;
}

}  // namespace

LineEnvelope::LineEnvelope(std::string_view writer) try {
  beginning_ += kBeginning;
  beginning_ += cut_json_text(writer);
  beginning_ += kSeq;
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

char* LineEnvelope::write_head(char* target, unsigned long long seq, const std::timespec& written) noexcept {
  if (!has_second_ || written.tv_sec != second_) {
    has_second_ = true;
    second_ = written.tv_sec;
    write_moment(second_text_, second_);
  }
  target = write_text(target, beginning_);
  target = std::to_chars(target, target + kMaxSeq, seq).ptr;
  target = write_text(target, kWritten);
  target = write_text(target, {second_text_, kMomentText});
  target = write_fraction(target, static_cast<unsigned>(written.tv_nsec));
  target = write_text(target, "Z\"");
  const char* const digest = qz_LOG_LogConfig::GetDefinitionTable()->find_definitions_digest();
  if (digest != nullptr && digest[0] != '\0') {
    target = write_text(target, kDefinitions);
    target = write_text(target, digest);
    *target++ = '"';
  }
  *target++ = ',';
  return target;
}

void LineEnvelope::append_head(std::string& out, unsigned long long seq, const std::timespec& written) {
  char head[kMaxHead];
  out.append(head, write_head(head, seq, written));
}

}  // namespace qzlog
