#include "tools/count/count_batch.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "foundation/sha256.h"
#include "tools/compiler/text/hexadecimal.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kHeading = "qzlog counts 1\n";
constexpr std::string_view kChecksum = "checksum ";

std::string checksum_of(std::string_view text) {
  qzlog::Sha256 sha;
  sha.add(text.data(), text.size());
  std::string digits(qzlog::kShortDigestDigits, ' ');
  qzlog::write_short_digest(sha.digest(), digits.data());
  return digits;
}

// ---- Writing ----

bool is_plain(char character) { return character > ' ' && character < 0x7F && character != '%'; }

void append_writer(std::string_view writer, std::string& text) {
  for (const char character : writer) {
    if (is_plain(character)) {
      text += character;
    } else {
      text += '%' + qzlog_compiler::hexadecimal(static_cast<unsigned char>(character), 2);
    }
  }
}

void append_ranges(const LineRanges& numbers, std::string& text) {
  char separator = ' ';
  for (const auto& [first, last] : numbers.ranges()) {
    text += separator;
    text += std::to_string(first);
    if (last != first) text.append("-").append(std::to_string(last));
    separator = ',';
  }
}

void append_digests(const std::set<LineDigest>& digests, std::string& text) {
  char separator = ' ';
  for (const LineDigest& digest : digests) {
    text += separator;
    for (const unsigned char byte : digest) text += qzlog_compiler::hexadecimal(byte, 2);
    separator = ',';
  }
}

void append_lines(const CoveredLines& lines, const std::string& of_writers, const std::string& of_digests,
                  std::string& text) {
  for (const auto& [writer, numbers] : lines.writers()) {
    append_writer(writer, text.append(of_writers).append(" "));
    append_ranges(numbers, text);
    text += '\n';
  }
  if (lines.digests().empty()) return;
  append_digests(lines.digests(), text += of_digests);
  text += '\n';
}

std::string place_text(const CounterPlace& place) { return day_text(place.day) + ' ' + std::to_string(place.key); }

// ---- Reading ----

/// The words of a line, one after the other.
class Words {
 public:
  explicit Words(std::string_view line) : rest_(line) {}

  /// Up to `end`, which is passed over, or all that is left.
  std::string_view take(char end = ' ') {
    const std::size_t at = std::min(rest_.find(end), rest_.size());
    const std::string_view word = rest_.substr(0, at);
    rest_.remove_prefix(std::min(at + 1, rest_.size()));
    return word;
  }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

template <class Number>
std::optional<Number> number_of(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  const bool is_number = !text.empty() && stopped == end && error == std::errc();
  return is_number && std::to_string(number) == text ? std::optional(number) : std::nullopt;
}

std::optional<int> digit_of(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  return std::nullopt;
}

std::optional<unsigned char> byte_of(std::string_view digits) {
  if (digits.size() < 2) return std::nullopt;
  const std::optional<int> high = digit_of(digits[0]);
  const std::optional<int> low = digit_of(digits[1]);
  if (!high || !low) return std::nullopt;
  return static_cast<unsigned char>(*high * 16 + *low);
}

/// Reads the lines of a batch.
class BatchReader {
 public:
  explicit BatchReader(CountBatch& batch) : batch_(batch) {}

  void read(std::string_view line) {
    ++number_;
    if (line.ends_with(',') || line.ends_with(' ')) refuse("it breaks off");
    Words words(line);
    const std::string_view kind = words.take();
    if (kind == "count") return read_count(words);
    if (kind == "folded") return read_writer(batch_.folded, words);
    if (kind == "folded-digests") return read_digests(batch_.folded, words);
    if (kind == "lines") return read_writer(batch_.lines[read_place(words)], words);
    if (kind == "digests") return read_digests(batch_.lines[read_place(words)], words);
    refuse("it begins with no word that is known");
  }
  [[noreturn]] void refuse(const std::string& reason) const {
    throw BadBatch("line " + std::to_string(number_) + ": " + reason);
  }

 private:
  CounterPlace read_place(Words& words) const {
    const std::optional<CalendarDay> day = parse_day(words.take());
    const std::optional<std::int32_t> key = number_of<std::int32_t>(words.take());
    if (!day || !key) refuse("it has no day and key");
    return {*day, *key};
  }

  void read_count(Words& words) {
    const CounterPlace place = read_place(words);
    const std::optional<std::uint64_t> count = number_of<std::uint64_t>(words.rest());
    if (!count || !batch_.counts.emplace(place, *count).second) refuse("its count is none, or there twice");
  }

  void read_writer(CoveredLines& lines, Words& words) const {
    const std::string writer = read_name(words.take());
    if (lines.writers().contains(writer)) refuse("its writer is there twice");
    Words ranges(words.rest());
    std::optional<std::uint64_t> before;
    do {
      const std::string_view range = ranges.take(',');
      const std::size_t sign = range.find('-');
      const std::optional<std::uint64_t> first = number_of<std::uint64_t>(range.substr(0, sign));
      const std::optional<std::uint64_t> last =
          sign == std::string_view::npos ? first : number_of<std::uint64_t>(range.substr(sign + 1));
      if (!first || !last || *last < *first || (sign != std::string_view::npos && *last == *first)) {
        refuse("it has no ranges of numbers");
      }
      if (before && (*first <= *before || *first - *before == 1)) refuse("its numbers are not in order");
      lines.append(writer, *first, *last);
      before = last;
    } while (!ranges.rest().empty());
  }

  std::string read_name(std::string_view text) const {
    std::string name;
    for (std::size_t at = 0; at < text.size(); ++at) {
      if (text[at] != '%') {
        if (!is_plain(text[at])) refuse("its writer is not written as one");
        name += text[at];
        continue;
      }
      const std::optional<unsigned char> byte = byte_of(text.substr(at + 1));
      if (!byte || is_plain(static_cast<char>(*byte))) refuse("its writer is not written as one");
      name += static_cast<char>(*byte);
      at += 2;
    }
    if (name.empty()) refuse("it has no writer");
    return name;
  }

  void read_digests(CoveredLines& lines, Words& words) const {
    if (!lines.digests().empty()) refuse("there are digests of it before");
    Words digests(words.rest());
    do {
      const std::string_view digits = digests.take(',');
      LineDigest digest = {};
      if (digits.size() != digest.size() * 2) refuse("it has no digests");
      for (std::size_t at = 0; at < digest.size(); ++at) {
        const std::optional<unsigned char> byte = byte_of(digits.substr(at * 2));
        if (!byte) refuse("it has no digests");
        digest[at] = *byte;
      }
      if (!lines.add(digest)) refuse("a digest is there twice");
    } while (!digests.rest().empty());
  }

  CountBatch& batch_;
  std::size_t number_ = 1;  // of the heading
};

std::string_view checked_part(std::string_view text) {
  const std::size_t size = kChecksum.size() + qzlog::kShortDigestDigits + 1;
  if (text.empty()) throw BadBatch("it is empty");
  if (!text.starts_with(kHeading)) throw BadBatch("line 1: it is no batch of counts of this version");
  if (text.size() < kHeading.size() + size || !text.ends_with('\n') ||
      !text.substr(text.size() - size).starts_with(kChecksum) || text[text.size() - size - 1] != '\n') {
    throw BadBatch("it has no checksum at its end: it was cut");
  }
  const std::string_view checked = text.substr(0, text.size() - size);
  if (text.substr(checked.size() + kChecksum.size(), qzlog::kShortDigestDigits) != checksum_of(checked)) {
    throw BadBatch("it does not have its checksum: it was changed, or damaged");
  }
  return checked;
}

}  // namespace

std::string with_batch_checksum(std::string text) {
  const std::string digits = checksum_of(text);
  return text.append(kChecksum).append(digits).append("\n");
}

std::string batch_text(const CountBatch& batch) {
  std::string text(kHeading);
  for (const auto& [place, count] : batch.counts) {
    text.append("count ").append(place_text(place)).append(" ").append(std::to_string(count)).append("\n");
  }
  append_lines(batch.folded, "folded", "folded-digests", text);
  for (const auto& [place, lines] : batch.lines) {
    append_lines(lines, "lines " + place_text(place), "digests " + place_text(place), text);
  }
  return with_batch_checksum(std::move(text));
}

CountBatch parse_batch(std::string_view text) {
  std::string_view lines = checked_part(text);
  lines.remove_prefix(kHeading.size());
  CountBatch batch;
  BatchReader reader(batch);
  while (!lines.empty()) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    reader.read(lines.substr(0, end));
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
  return batch;
}

}  // namespace qzlog_tool
