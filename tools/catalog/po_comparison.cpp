#include "tools/catalog/po_comparison.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

namespace qzlog_catalog {
namespace {

constexpr std::string_view kBlanks = " \t\n\r\v\f";

std::string without_blanks(std::string_view text) {
  std::string result;
  for (const char character : text) {
    if (kBlanks.find(character) == std::string_view::npos) result += character;
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// The words that references consist of: file names lose the folder "." and blanks around them, one with a blank inside
/// is read as two, and of two that are the same one is left.
std::set<std::string> reference_words(const PoMessage& message) {
  std::set<std::string> words;
  for (const PoReference& reference : message.references) {
    std::string_view file = reference.file;
    while (file.starts_with("./")) file.remove_prefix(2);
    std::istringstream text(std::string(trimmed(file)) + (reference.line ? ':' + std::to_string(*reference.line) : ""));
    text.exceptions(std::ios::badbit);  // without memory for a word too
    for (std::string word; text >> word;) words.insert(word);
  }
  return words;
}

bool messages_say_the_same(PoMessage a, PoMessage b) {
  if (reference_words(a) != reference_words(b)) return false;
  for (PoMessage* const message : {&a, &b}) {
    message->references.clear();
    message->comments = without_blanks(message->comments);
    message->extracted_comments = without_blanks(message->extracted_comments);
  }
  return a == b;
}

}  // namespace

bool say_the_same(const PoFile& a, const PoFile& b) {
  return std::equal(a.messages.begin(), a.messages.end(), b.messages.begin(), b.messages.end(), messages_say_the_same);
}

}  // namespace qzlog_catalog
