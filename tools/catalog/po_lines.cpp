#include "tools/catalog/po_lines.h"

#include <algorithm>

namespace qzlog_catalog {
namespace {

bool is_keyword_character(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') || character == '_';
}

std::string_view leading(std::string_view text, std::string_view characters) {
  return text.substr(0, text.find_first_not_of(characters));
}

/// Whether what stands behind a backslash is a number of which the low eight bits, which alone count, are 0.
bool gives_nul(std::string_view escape) {
  if (escape.starts_with('x')) {
    const std::string_view digits = leading(escape.substr(1), "0123456789abcdefABCDEF");
    return digits == "0" || digits.ends_with("00");
  }
  const std::string_view digits = leading(escape.substr(0, 3), "01234567");
  return digits == "0" || digits == "00" || digits == "000" || digits == "400";
}

/// Walks over keywords, texts in quotes and comments; what else there is means nothing here.
class LineFinder {
 public:
  explicit LineFinder(std::string_view po) : po_(po) {}

  void find() {
    while (at_ < po_.size()) step();
  }

  std::vector<std::size_t> take_lines() { return std::move(lines_); }
  std::size_t nul_line() const { return nul_line_; }

 private:
  void step() {
    const char first = po_[at_];
    if (first == '"') {
      skip_text();
    } else if (first == '#') {
      skip_comment();
    } else if (is_keyword_character(first)) {
      take_keyword();
    } else {
      if (first == '\n') ++line_;
      ++at_;
    }
  }

  /// A text ends on its own line.
  void skip_text() {
    for (++at_; at_ < po_.size() && po_[at_] != '"' && po_[at_] != '\n'; ++at_) {
      if (po_[at_] != '\\') continue;
      if (nul_line_ == 0 && gives_nul(po_.substr(at_ + 1))) nul_line_ = line_;
      if (at_ + 1 < po_.size() && po_[at_ + 1] != '\n') ++at_;
    }
    if (at_ < po_.size() && po_[at_] == '"') ++at_;
  }

  /// What follows "#~" is an obsolete message, what follows "#|" or "#~|" tells what a source text once was.
  void skip_comment() {
    const std::string_view comment = po_.substr(at_);
    if (comment.starts_with("#|") || comment.starts_with("#~|")) {
      skip_previous_text();
    } else if (comment.starts_with("#~")) {
      at_ += 2;
    } else {
      at_ = std::min(po_.find('\n', at_), po_.size());
    }
  }

  void skip_previous_text() {
    while (at_ < po_.size() && po_[at_] != '\n') {
      if (po_[at_] == '"') {
        skip_text();
      } else {
        ++at_;
      }
    }
  }

  void take_keyword() {
    const std::size_t begin = at_;
    while (at_ < po_.size() && is_keyword_character(po_[at_])) ++at_;
    const std::string_view keyword = po_.substr(begin, at_ - begin);
    if (keyword == "msgctxt") {
      context_line_ = line_;
    } else if (keyword == "msgid") {
      lines_.push_back(context_line_ != 0 ? context_line_ : line_);
      context_line_ = 0;
    }
  }

  std::string_view po_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  std::size_t context_line_ = 0;  ///< of a context whose text has not come yet
  std::size_t nul_line_ = 0;
  std::vector<std::size_t> lines_;
};

}  // namespace

std::vector<std::size_t> find_message_lines(std::string_view po) {
  LineFinder finder(po);
  finder.find();
  return finder.take_lines();
}

std::size_t find_nul_escape(std::string_view po) {
  LineFinder finder(po);
  finder.find();
  return finder.nul_line();
}

}  // namespace qzlog_catalog
