#ifndef QZLOG_MESSAGE_RESOURCE_BUNDLE_H
#define QZLOG_MESSAGE_RESOURCE_BUNDLE_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "message/resource_alias.h"
#include "message/resource_chain.h"

namespace qzlog {

/// The bundle of a locale and those that it falls back to, read into memory and checked as a whole: nothing that
/// happens to the files afterwards reaches it. Only what aliases lead to is read when it is needed. Never changes; any
/// thread.
///
/// Which files these are, and what is found where in them, is as ICU has it. A damaged file is another matter: ICU
/// believes what is in it, here it makes the opening fail, even when another language would be at hand.
class MessageBundle {
 public:
  enum class State : unsigned char {
    kOpened,
    kMissing,  ///< neither for the locale, nor for ICU's default one, nor a root
    kFailed,   ///< a file is damaged or cannot be read, or the locale's name is too long
  };

  /// Opens a catalog for a locale, which falls back to ICU's default locale and the root. Throws std::bad_alloc; the
  /// bundle then is what it was, as after a failure.
  State open(const std::string& path, const char* locale);
  /// After a failure: what is wrong, in words, and with which locale's bundle.
  const std::string& problem() const { return problem_; }
  const std::string& failed_bundle() const { return failed_bundle_; }

  /// The locale whose file was found first: "de" for de_AT when there is no file for Austria.
  const std::string& name() const { return chain_.front().name; }

  struct Text {
    enum class State : unsigned char { kFound, kNoTable, kNoText };
    State state = State::kNoTable;
    std::u16string text;
  };
  /// A text in a table of the first bundle that has a table (or anything else) of that name. A table does not get
  /// texts from those of the bundles behind. Throws std::bad_alloc.
  Text find_text(std::string_view table, std::string_view key) const;

  struct Table {
    bool is_found = false;
    bool is_of_first_bundle = false;
    std::map<std::string, std::u16string> texts;
  };
  /// All texts of a table; what is no text is left out. Throws std::bad_alloc.
  Table read_table(std::string_view table) const;

 private:
  ResourcePlace find_table(std::string_view table, std::size_t& position) const;
  Text text_of(const ResourcePlace& item, std::string_view table, std::string_view key) const;

  std::string path_;
  std::string problem_;
  std::string failed_bundle_;
  ResourceChain chain_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_BUNDLE_H
