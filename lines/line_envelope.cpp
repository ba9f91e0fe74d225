#include "lines/line_envelope.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <new>

#include "definitions/ldf_load.h"
#include "foundation/itoa.h"
#include "lines/json_escape.h"
#include "lines/json_text.h"
#include "lines/moment_text.h"
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

void LineEnvelope::make_head(unsigned long long seq, std::time_t second, const char* digest) noexcept {
  char text[kMaxHead];
  char* end = write_text(text, beginning_);
  end = std::to_chars(end, end + kMaxSeq, seq).ptr;
  const char* const seq_end = end;
  end = write_moment(write_text(end, kWritten), second);
  const char* const fraction = end;
  end = write_text(write_fraction(end, 0), "Z\"");
  if (digest[0] != '\0') {
    end = write_text(write_text(end, kDefinitions), digest);
    *end++ = '"';
  }
  *end++ = ',';
  head_bytes_ = static_cast<std::size_t>(end - text);
  seq_place_ = static_cast<std::size_t>(end - seq_end);
  fraction_place_ = static_cast<std::size_t>(end - fraction);
  std::memcpy(end_of_head() - head_bytes_, text, head_bytes_);
  seq_ = seq;
  second_ = second;
  digest_ = digest;
}

/// The head is right then, but for the fraction.
void LineEnvelope::renew(unsigned long long seq, const std::timespec& written) noexcept {
  const char* digest = qz_LOG_LogConfig::GetDefinitionTable()->find_definitions_digest();
  if (digest == nullptr) digest = "";
  if (head_bytes_ == 0 || seq != seq_ || digest != digest_) [[unlikely]] {
    make_head(seq, written.tv_sec, digest);
  } else if (written.tv_sec != second_) [[unlikely]] {
    second_ = written.tv_sec;
    write_moment(end_of_head() - fraction_place_ - kMomentText, second_);
  }
}

/// Numbers mostly follow each other. What was just written is not copied soon: the processor would have to wait for it.
void LineEnvelope::count_up() noexcept {
  char* digit = end_of_head() - seq_place_ - 1;
  for (; *digit == '9'; --digit) *digit = '0';
  ++seq_;
  if (*digit == ':' || seq_ == 0) {
    head_bytes_ = 0;  // there is room for as many digits as there were
  } else {
    ++*digit;
  }
}

char* LineEnvelope::write_head(char* target, unsigned long long seq, const std::timespec& written) noexcept {
  renew(seq, written);
  char* const end = target + head_bytes_;
  const char* head = end_of_head() - head_bytes_;
  for (; target < end; target += kBlock, head += kBlock) std::memcpy(target, head, kBlock);
  write_fraction(end - fraction_place_, static_cast<unsigned>(written.tv_nsec));
  count_up();
  return end;
}

char* LineEnvelope::write_head_before(char* end, unsigned long long seq, const std::timespec& written) noexcept {
  renew(seq, written);
  char* const begin = end - head_bytes_;
  const char* head = end_of_head();
  for (char* target = end; target > begin;) std::memcpy(target -= kBlock, head -= kBlock, kBlock);
  write_fraction(end - fraction_place_, static_cast<unsigned>(written.tv_nsec));
  count_up();
  return begin;
}

void LineEnvelope::append_head(std::string& out, unsigned long long seq, const std::timespec& written) {
  char head[kMaxHead];
  out.append(head, write_head(head, seq, written));
}

}  // namespace qzlog
