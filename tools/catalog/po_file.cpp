#include "tools/catalog/po_file.h"

#include <fcntl.h>
#include <gettext-po.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "tools/catalog/po_comparison.h"
#include "tools/catalog/po_lines.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/system/child_process.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/memory_file.h"

#if defined(__has_feature)  // clang, and g++ from version 14 on
#if __has_feature(address_sanitizer)
#define QZLOG_LEAK_CHECKER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define QZLOG_LEAK_CHECKER
#endif

#ifdef QZLOG_LEAK_CHECKER
// libgettextpo keeps parts of what it has read. The leak checker asks these functions, whose names are its own, what to
// overlook without a word.
// NOLINTBEGIN
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_options();
const char* __lsan_default_suppressions() { return "leak:libgettextpo\n"; }
const char* __lsan_default_options() { return "print_suppressions=0"; }
// NOLINTEND
#endif

namespace qzlog_catalog {
namespace {

using qzlog_compiler::quoted;
using qzlog_tool::CommandError;
using qzlog_tool::MemoryFile;

/// A file that is no PO file at all has as many mistakes as lines; these show it.
constexpr std::size_t kMaximumErrors = 20;
constexpr auto kNoLine = static_cast<std::size_t>(-1);

struct FreePoFile {
  void operator()(po_file_t file) const { po_file_free(file); }
};
struct FreeIterator {
  void operator()(po_message_iterator_t iterator) const { po_message_iterator_free(iterator); }
};
struct FreeText {
  void operator()(char* text) const { std::free(text); }
};

using PoFilePointer = std::unique_ptr<struct po_file, FreePoFile>;
using IteratorPointer = std::unique_ptr<struct po_message_iterator, FreeIterator>;
using TextPointer = std::unique_ptr<char, FreeText>;

/// Ends a call of libgettextpo that its error handler must not return to.
struct GivenUp {};

/// Takes libgettextpo's errors while it lives. Handlers get no data of their own, so the taker stands in a variable.
class ErrorTaker {
 public:
  ErrorTaker(const std::string& file_name, Findings& findings) : file_name_(file_name), findings_(findings) {
    current_ = this;
  }
  ErrorTaker(const ErrorTaker&) = delete;
  ErrorTaker& operator=(const ErrorTaker&) = delete;
  ~ErrorTaker() { current_ = nullptr; }

  po_xerror_handler_t handler() const { return &kHandler; }
  bool has_errors() const { return errors_ != 0; }

 private:
  static void take(int severity, po_message_t, const char* file, std::size_t line, std::size_t, int, const char* text) {
    current_->add(severity, file == nullptr || line == kNoLine ? 0 : line, text);
  }
  /// The second place is that of a message which libgettextpo does not tell the line of.
  static void take_two(int severity, po_message_t message, const char* file, std::size_t line, std::size_t column,
                       int lines, const char* text, po_message_t, const char*, std::size_t, std::size_t, int,
                       const char*) {
    take(severity, message, file, line, column, lines, text);
  }

  /// Warnings are about what other programs make of the file.
  void add(int severity, std::size_t line, std::string text) {
    if (severity == PO_SEVERITY_WARNING) return;
    while (text.ends_with('\n')) text.pop_back();
    if (++errors_ <= kMaximumErrors) {
      findings_.error(file_name_, line, CatalogRule::kPoSyntax, std::move(text));
    }
    if (severity == PO_SEVERITY_FATAL_ERROR) throw GivenUp();
  }

  static constexpr po_xerror_handler kHandler = {take, take_two};
  static thread_local ErrorTaker* current_;

  const std::string& file_name_;
  Findings& findings_;
  std::size_t errors_ = 0;
};

thread_local ErrorTaker* ErrorTaker::current_ = nullptr;

std::string text_or_empty(const char* text) { return text == nullptr ? "" : text; }
std::optional<std::string> optional_text(const char* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}
const char* pointer(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

std::vector<PoReference> read_references(po_message_t message) {
  std::vector<PoReference> references;
  for (int i = 0;; ++i) {
    const po_filepos_t place = po_message_filepos(message, i);
    if (place == nullptr) return references;
    const std::size_t line = po_filepos_start_line(place);
    references.push_back({po_filepos_file(place), line == kNoLine ? std::nullopt : std::optional(line)});
  }
}

std::vector<std::string> read_formats(po_message_t message) {
  std::vector<std::string> formats;
  for (const char* const* format = po_format_list(); *format != nullptr; ++format) {
    if (po_message_is_format(message, *format) != 0) formats.emplace_back(*format);
  }
  return formats;
}

PoMessage read_message(po_message_t message) {
  PoMessage result;
  result.context = optional_text(po_message_msgctxt(message));
  result.source = text_or_empty(po_message_msgid(message));
  result.translation = text_or_empty(po_message_msgstr(message));
  result.comments = text_or_empty(po_message_comments(message));
  result.extracted_comments = text_or_empty(po_message_extracted_comments(message));
  result.references = read_references(message);
  result.previous_context = optional_text(po_message_prev_msgctxt(message));
  result.previous_source = optional_text(po_message_prev_msgid(message));
  result.formats = read_formats(message);
  // Some programs mark what is not translated, too. That means nothing, and libgettextpo does not write it.
  result.fuzzy = po_message_is_fuzzy(message) != 0 && !result.translation.empty();
  result.obsolete = po_message_is_obsolete(message) != 0;
  return result;
}

/// The message becomes the file's at once, so that nothing is lost when memory runs out.
void write_message(const PoMessage& message, po_message_iterator_t iterator) {
  const po_message_t result = po_message_create();
  po_message_set_msgid(result, message.source.c_str());
  po_message_set_msgstr(result, message.translation.c_str());
  po_message_insert(iterator, result);
  po_message_set_msgctxt(result, pointer(message.context));
  po_message_set_comments(result, message.comments.c_str());
  po_message_set_extracted_comments(result, message.extracted_comments.c_str());
  for (const PoReference& reference : message.references) {
    po_message_add_filepos(result, reference.file.c_str(), reference.line.value_or(kNoLine));
  }
  po_message_set_prev_msgctxt(result, pointer(message.previous_context));
  po_message_set_prev_msgid(result, pointer(message.previous_source));
  for (const std::string& format : message.formats) po_message_set_format(result, format.c_str(), 1);
  po_message_set_fuzzy(result, message.fuzzy ? 1 : 0);
  po_message_set_obsolete(result, message.obsolete ? 1 : 0);
}

/// libgettextpo takes texts up to a NUL, and bytes of other character sets as they are.
bool check_bytes(std::string_view content, const std::string& file_name, Findings& findings) {
  std::size_t line = 1;
  for (std::size_t at = 0; at < content.size();) {
    const qzlog_compiler::Utf8Character character = qzlog_compiler::decode_utf8(content, at);
    if (character.size == 0) {
      findings.error(file_name, line, CatalogRule::kPoCharset, "the file is not UTF-8");
      return false;
    }
    if (character.code == 0) {
      findings.error(file_name, line, CatalogRule::kPoSyntax, "the file holds a NUL character");
      return false;
    }
    if (character.code == '\n') ++line;
    at += character.size;
  }
  return true;
}

/// What editors on Windows put into files means nothing, but libgettextpo refuses the one and keeps the other.
std::string without_windows_marks(std::string_view content) {
  constexpr std::string_view kByteOrderMark = "\uFEFF";
  if (content.starts_with(kByteOrderMark)) content.remove_prefix(kByteOrderMark.size());
  std::string result;
  result.reserve(content.size());
  for (std::size_t at = 0; at < content.size(); ++at) {
    if (content.substr(at, 2) != "\r\n") result += content[at];
  }
  return result;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if ((a[i] | 0x20) != (b[i] | 0x20)) return false;
  }
  return true;
}

void check_charset(const PoFile& file, const std::string& file_name, Findings& findings) {
  const PoMessage* const header = file.header();
  if (header == nullptr) {
    findings.error(file_name, 0, CatalogRule::kPoCharset,
                   "the file has no header; it needs one with 'Content-Type: text/plain; charset=UTF-8'");
    return;
  }
  constexpr std::string_view kKey = "charset=";
  const std::string type = header_field(header->translation, "Content-Type");
  const std::size_t key = type.find(kKey);
  const std::string charset = key == std::string::npos ? "" : type.substr(key + kKey.size());
  if (equal_ignoring_case(charset, "UTF-8") || equal_ignoring_case(charset, "UTF8")) return;
  findings.error(file_name, file.line_of(static_cast<std::size_t>(header - file.messages.data())),
                 CatalogRule::kPoCharset,
                 "the header gives the charset as " + quoted(charset) +
                     "; convert the file to UTF-8 and write 'Content-Type: text/plain; charset=UTF-8'");
}

void check_messages(po_file_t po, const PoFile& file, const std::string& file_name, Findings& findings) {
  const char* const* const domains = po_file_domains(po);
  const bool several = domains[0] != nullptr && domains[1] != nullptr;
  if (several || (domains[0] != nullptr && std::string_view(domains[0]) != "messages")) {
    findings.error(file_name, 0, CatalogRule::kPoDomain,
                   "the file names a domain; a catalog has only one, without a name");
  }
  const IteratorPointer iterator(po_message_iterator(po, nullptr));
  for (std::size_t i = 0; const po_message_t message = po_next_message(iterator.get()); ++i) {
    if (po_message_msgid_plural(message) == nullptr) continue;
    findings.error(file_name, file.line_of(i), CatalogRule::kPoPlural,
                   "a message with plural forms; the messages of a catalog have none");
  }
}

bool has_utf8_only(const PoMessage& message) {
  using qzlog_compiler::is_utf8;
  return is_utf8(message.context.value_or("")) && is_utf8(message.source) && is_utf8(message.translation) &&
         is_utf8(message.previous_context.value_or("")) && is_utf8(message.previous_source.value_or(""));
}

/// Escapes can put any byte into a text.
void check_texts(const PoFile& file, std::string_view content, const std::string& file_name, Findings& findings) {
  if (const std::size_t line = find_nul_escape(content)) {
    findings.error(file_name, line, CatalogRule::kPoSyntax, "an escape for a NUL character, which no text can hold");
  }
  for (std::size_t i = 0; i < file.messages.size(); ++i) {
    if (has_utf8_only(file.messages[i])) continue;
    findings.error(file_name, file.line_of(i), CatalogRule::kPoCharset,
                   "the escapes of this message make a text that is not UTF-8");
  }
}

PoFile read_messages(po_file_t po, std::string_view content) {
  PoFile file;
  const IteratorPointer iterator(po_message_iterator(po, nullptr));
  while (const po_message_t message = po_next_message(iterator.get())) file.messages.push_back(read_message(message));
  file.lines = find_message_lines(content);
  if (file.lines.size() != file.messages.size()) file.lines.clear();
  return file;
}

std::string last_reason() { return errno != 0 ? std::string(": ") + std::strerror(errno) : ""; }

/// Null after errors. A file that it cannot open libgettextpo does not report.
PoFilePointer read_po(const std::string& path, const std::string& file_name, const ErrorTaker& errors) {
  try {
    errno = 0;
    PoFilePointer po(po_file_read(path.c_str(), errors.handler()));
    if (po != nullptr || errors.has_errors()) return po;
    throw CommandError(qzlog_tool::kExitCannotRun, "cannot read '" + file_name + "'" + last_reason());
  } catch (const GivenUp&) {
    return nullptr;
  }
}

/// libgettextpo opens a file that it writes, makes a copy of the descriptor and does not look whether there is one.
bool has_two_descriptors() {
  const auto copy = [] {
    return qzlog_tool::FileDescriptor(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  };
  const qzlog_tool::FileDescriptor first = copy();
  const qzlog_tool::FileDescriptor second = copy();
  return second.get() >= 0;
}

struct WriteFailure {
  int status;
  std::string reason;
};

std::optional<WriteFailure> write_messages(const PoFile& file, const std::string& path) {
  const PoFilePointer po(po_file_create());
  const IteratorPointer iterator(po_message_iterator(po.get(), nullptr));
  for (const PoMessage& message : file.messages) {
    if (!message.is_left_over()) write_message(message, iterator.get());
  }
  Findings findings;
  const ErrorTaker errors(path, findings);
  if (!has_two_descriptors()) return WriteFailure{qzlog_tool::kExitCannotRun, last_reason()};
  try {
    errno = 0;
    if (po_file_write(po.get(), path.c_str(), errors.handler()) != nullptr && !errors.has_errors()) return std::nullopt;
  } catch (const GivenUp&) {
    errno = 0;
  }
  return WriteFailure{qzlog_tool::kExitFindings, errors.has_errors() ? ": " + findings.all()[0].text : last_reason()};
}

constexpr int kOutOfMemory = 3;  // no exit status of a command

/// The reason of a failure becomes the content of `reason`.
int write_messages_or_tell(const PoFile& file, const std::string& path, MemoryFile& reason) {
  try {
    const std::optional<WriteFailure> failure = write_messages(file, path);
    if (!failure) return qzlog_tool::kExitSuccess;
    reason.overwrite_beginning(failure->reason);
    return failure->status;
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
}

/// Without memory libgettextpo ends its process, or crashes: it gets one of its own.
void write_messages_apart(const PoFile& file, const std::string& path) {
  MemoryFile reason;
  const int status = qzlog_tool::run_apart("libgettextpo", [&] { return write_messages_or_tell(file, path, reason); });
  if (status == qzlog_tool::kExitSuccess) return;
  if (status == kOutOfMemory) throw std::bad_alloc();
  const std::string text = reason.content();
  throw CommandError(
      text.empty() ? qzlog_tool::kExitCannotRun : status,
      "cannot make a PO file" + (text.empty() ? ": libgettextpo has ended (memory may be used up)" : text));
}

/// libgettextpo does not report a write that fails.
bool holds(const std::string& text, PoFile file) {
  std::erase_if(file.messages, [](const PoMessage& message) { return message.is_left_over(); });
  Findings findings;
  const std::optional<PoFile> written = parse_po(text, "", findings);
  return text.ends_with('\n') && written && say_the_same(*written, file);
}

}  // namespace

const PoMessage* PoFile::header() const {
  for (const PoMessage& message : messages) {
    if (message.is_header()) return &message;
  }
  return nullptr;
}

std::string header_field(const std::string& header, const char* field) {
  const TextPointer value(po_header_field(header.c_str(), field));
  return text_or_empty(value.get());
}

std::string with_header_field(const std::string& header, const char* field, const std::string& value) {
  const TextPointer result(po_header_set_field(header.c_str(), field, value.c_str()));
  return text_or_empty(result.get());
}

std::optional<PoFile> parse_po(std::string_view content, const std::string& file_name, Findings& findings) {
  if (!check_bytes(content, file_name, findings)) return std::nullopt;
  const std::size_t errors_before = findings.error_count();
  const std::string text = without_windows_marks(content);
  const MemoryFile copy(text);  // libgettextpo reads files only
  const ErrorTaker errors(file_name, findings);
  const PoFilePointer po = read_po(copy.path(), file_name, errors);
  if (po == nullptr || errors.has_errors()) return std::nullopt;
  PoFile file = read_messages(po.get(), text);
  check_charset(file, file_name, findings);
  check_messages(po.get(), file, file_name, findings);
  check_texts(file, text, file_name, findings);
  return findings.error_count() == errors_before ? std::optional(std::move(file)) : std::nullopt;
}

std::string write_po(const PoFile& file) {
  const MemoryFile out;
  write_messages_apart(file, out.path());
  std::string text = out.content();
  if (holds(text, file)) return text;
  throw CommandError(qzlog_tool::kExitFindings,
                     "cannot make a PO file: libgettextpo has not written all of it, and does not say why (memory, or "
                     "the limit of file sizes, may be used up)");
}

}  // namespace qzlog_catalog
