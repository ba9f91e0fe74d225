#include "tests/support/ldf_file.h"

#include <algorithm>

namespace qz_test {

namespace {

constexpr std::size_t kHeaderSize = 128;

/// Appends records to a file's bytes and notes the numbers that matter.
class Writer {
 public:
  explicit Writer(LdfImage& image) : image_(image) {}

  std::size_t position() const { return image_.bytes.size(); }
  void raw(std::string_view bytes) { image_.bytes += bytes; }
  void number(unsigned value) { raw(int4(value)); }
  void number(std::size_t value, LdfMark::Kind kind) {
    image_.marks.push_back({position(), kind});
    number(static_cast<unsigned>(value));
  }
  void text(std::string_view text) {
    image_.marks.push_back({position(), LdfMark::kLength});
    raw(ldf_string(text));
  }

  void attribute(const LdfAttribute& attribute) {
    text(attribute.name);
    number(attribute.type);
    text(attribute.redirection_name);
  }

  void selector_message(const LdfSelectorMessage& message) {
    number(message.index);
    number(message.value);
    text(message.id);
    text(message.text);
  }

  void entry(const LdfEntry& entry) {
    number(entry.id, LdfMark::kEntryId);
    number(entry.word);
    number(entry.mask);
    text(entry.message_id);
    text(entry.message_text);
    text(entry.selector);
    number(entry.attributes.size(), LdfMark::kCount);
    for (const LdfAttribute& own : entry.attributes) attribute(own);
    number(entry.selector_messages.size(), LdfMark::kCount);
    for (const LdfSelectorMessage& message : entry.selector_messages) selector_message(message);
  }

 private:
  LdfImage& image_;
};

void patch(std::string& bytes, std::size_t position, std::size_t value) {
  bytes.replace(position, 4, int4(static_cast<unsigned>(value)));
}

void write_header(Writer& writer, const LdfFile& file, std::size_t pair_count) {
  writer.number(0x2E4C4446, LdfMark::kMagic);
  writer.raw("\x01\x02\x03\x04");  // format bytes: anything
  writer.number(0xA5A5A5A5);
  writer.number(0xA5A5A5A5);
  std::string tag = file.tag;
  tag.resize(8, '\0');
  writer.raw(tag);
  for (int i = 0; i < 4; ++i) writer.number(0xA5A5A5A5);
  writer.number(file.globals.size(), LdfMark::kCount);
  writer.number(std::size_t{0}, LdfMark::kOffset);
  writer.number(pair_count, LdfMark::kCount);
  writer.number(0xA5A5A5A5);
  writer.number(std::size_t{0}, LdfMark::kOffset);
  while (writer.position() < kHeaderSize) writer.number(0xA5A5A5A5);
}

}  // namespace

std::string int4(unsigned value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>((value >> shift) & 0xFF);
  return bytes;
}

std::string ldf_string(std::string_view text) {
  if (text.empty()) return int4(0);
  return int4(static_cast<unsigned>(text.size()) + 1) + std::string(text) + '\0';
}

LdfImage LdfFile::image() const {
  std::vector<LdfPair> pairs;
  for (std::size_t i = 0; i < entries.size(); ++i) pairs.push_back({entries[i].id, i});
  if (map) pairs = *map;

  LdfImage image = {};
  Writer writer(image);
  write_header(writer, *this, pairs.size());
  for (const char region : region_order) {
    writer.raw(gap);
    if (region == 'g') {
      image.globals_offset = writer.position();
      for (const LdfAttribute& global : globals) writer.attribute(global);
    } else if (region == 'm') {
      image.map_offset = writer.position();
      for (const LdfPair& pair : pairs) {
        writer.number(pair.id, LdfMark::kEntryId);
        writer.number(std::size_t{0}, LdfMark::kOffset);
      }
    } else {
      for (const LdfEntry& entry : entries) {
        image.record_offsets.push_back(writer.position());
        writer.entry(entry);
      }
    }
  }
  patch(image.bytes, 44, image.globals_offset);
  patch(image.bytes, 56, image.map_offset);
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    patch(image.bytes, image.map_offset + 8 * i + 4, image.record_offsets.at(pairs[i].record));
  }
  return image;
}

std::vector<LdfEntry> numbered_entries(unsigned first, unsigned last) {
  std::vector<LdfEntry> entries;
  for (unsigned id = first; id <= last; ++id) {
    const std::string number = std::to_string(id);
    entries.push_back({.id = id,
                       .word = id + 1,
                       .mask = id + 2,
                       .message_id = "MSG_" + number,
                       .message_text = "entry " + number + " of %s%user%",
                       .attributes = {{"user", 9}}});
  }
  return entries;
}

std::string truncated(std::string_view bytes, std::size_t length) { return std::string(bytes.substr(0, length)); }

std::string flipped_bit(std::string_view bytes, std::size_t position, unsigned bit) {
  std::string result(bytes);
  result.at(position) = static_cast<char>(result.at(position) ^ (1 << bit));
  return result;
}

std::string flipped_byte(std::string_view bytes, std::size_t position) {
  std::string result(bytes);
  result.at(position) = static_cast<char>(~result.at(position));
  return result;
}

std::string with_int4(std::string_view bytes, std::size_t position, unsigned value) {
  std::string result(bytes);
  return result.replace(position, 4, int4(value));
}

std::string swapped(std::string_view bytes, std::size_t first, std::size_t second, std::size_t length) {
  std::string result(bytes);
  const auto run = [&](std::size_t position) { return result.begin() + static_cast<std::ptrdiff_t>(position); };
  std::swap_ranges(run(first), run(first + length), run(second));
  return result;
}

std::string repeated(std::string_view bytes, std::size_t position, std::size_t length) {
  return std::string(bytes).insert(position, bytes.substr(position, length));
}

}  // namespace qz_test
