#ifndef QZLOG_TOOLS_TRANSPORT_TRANSPORT_URL_H
#define QZLOG_TOOLS_TRANSPORT_TRANSPORT_URL_H

#include <string>

namespace qzlog_tool {

/// Where lines are sent to or read from: SCHEME://AUTHORITY/PATH. It has no credentials, so that it may be shown.
class TransportUrl {
 public:
  /// Throws CommandError (cannot run) for what is no such URL, and for one with credentials or with options behind a
  /// question mark; the error then shows nothing of them.
  /// `option` is what it was given by.
  explicit TransportUrl(const std::string& text, const char* option = "--to");

  const char* option() const noexcept { return option_; }
  const std::string& text() const noexcept { return text_; }
  /// In small letters.
  const std::string& scheme() const noexcept { return scheme_; }
  /// Of the plug-in: the scheme up to a plus sign.
  std::string plugin() const { return scheme_.substr(0, scheme_.find('+')); }
  /// Hosts and ports as they were written; may be empty.
  const std::string& authority() const noexcept { return authority_; }
  /// Empty, or with its slash.
  const std::string& path() const noexcept { return path_; }

 private:
  const char* option_;
  std::string text_;
  std::string scheme_;
  std::string authority_;
  std::string path_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_TRANSPORT_URL_H
