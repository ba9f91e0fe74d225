#include "tools/report/json_stream.h"

#include <ostream>
#include <string>

#include "lines/json_text.h"

namespace qzlog_compiler {
namespace {

void write_text(std::string_view text, std::ostream& out) {
  std::string json;
  qzlog::append_json_text(text, json);
  out << json;
}

}  // namespace

JsonObjectStream::JsonObjectStream(std::ostream& out, const JsonLayout& layout) : out_(out), layout_(layout) {
  out_ << '{';
}

void JsonObjectStream::number(std::string_view key, std::uint64_t value) { member(key) << value; }

void JsonObjectStream::signed_number(std::string_view key, std::int64_t value) { member(key) << value; }

void JsonObjectStream::boolean(std::string_view key, bool value) { member(key) << (value ? "true" : "false"); }

void JsonObjectStream::null(std::string_view key) { member(key) << "null"; }

void JsonObjectStream::text(std::string_view key, std::string_view text) { write_text(text, member(key)); }

std::ostream& JsonObjectStream::member(std::string_view key) {
  out_ << (empty_ ? "" : layout_.between) << layout_.before_each;
  empty_ = false;
  write_text(key, out_);
  return out_ << ':' << layout_.after_colon;
}

void JsonObjectStream::end() { out_ << (empty_ ? "" : layout_.before_end) << '}'; }

JsonListStream::JsonListStream(std::ostream& out, const JsonLayout& layout) : out_(out), layout_(layout) {
  out_ << '[';
}

std::ostream& JsonListStream::item() {
  out_ << (empty_ ? "" : layout_.between) << layout_.before_each;
  empty_ = false;
  return out_;
}

void JsonListStream::end() { out_ << (empty_ ? "" : layout_.before_end) << ']'; }

}  // namespace qzlog_compiler
