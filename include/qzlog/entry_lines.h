#ifndef QZLOG_ENTRY_LINES_H
#define QZLOG_ENTRY_LINES_H

#include <cstddef>

#include "qzlog/export.h"
#include "qzlog/logentry.h"

/// Entries as JSON Lines: one entry per line, UTF-8.
///
///   {"id":1001,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"Name":"vol1","Free":0}}
///
/// Reading them against the definitions that are loaded:
///
///   struct Complaints : qz_LOG_LineErrorHandler {
///     void TakeLineError(const qz_LOG_LineError& error) override {
///       std::fprintf(stderr, "%s:%llu: %s [%s]\n", error.file, error.line, error.text, error.rule);
///     }
///   } complaints;
///   qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath("/var/log/shop.jsonl", &complaints);
///   qz_LOG_EntryLine line;
///   while (reader.Next(line)) {
///     if (line.IsLoss() || line.IsHeld()) continue;  // no entry, but how many were not written
///     std::puts(line.GetEntry().FormatMessage(line.GetUseDefault(), line.GetSelectorIndex()).c_str());
///   }

/// Where and why a line is no entry. All texts are zero-terminated and valid during the call that hands it over.
struct qz_LOG_LineError {
  const char* file;           ///< as named to the reader; "" for memory
  unsigned long long line;    ///< from 1
  unsigned long long column;  ///< of the byte, from 1; 0 where the line as a whole is meant
  const char* rule;           ///< a stable name, such as "unknown-attribute"
  const char* text;           ///< what is wrong, in one line that is safe to show on a terminal
  const char* source;  ///< the line as it was read, without its line feed and not zero-terminated; may hold anything
  std::size_t source_length;  ///< in bytes; 0 for a line that was too long to be read
};

/// Told of every line that is no entry, in the order of the lines.
class QZLOG_EXPORT qz_LOG_LineErrorHandler {
 public:
  virtual ~qz_LOG_LineErrorHandler();
  /// Called by qz_LOG_EntryReader::Next, in its thread. What it throws ends Next and reaches its caller; the line
  /// counts as read.
  virtual void TakeLineError(const qz_LOG_LineError& error) = 0;
};

/// Decides on lines by their bytes, before anything is read from them: for callers that want few lines of many.
class QZLOG_EXPORT qz_LOG_LineChoice {
 public:
  virtual ~qz_LOG_LineChoice();
  /// Asked by qz_LOG_EntryReader::Next, in its thread, for each line that ends with a line feed, is not blank and is
  /// not too long: `line` has `length` bytes without the line feed, is not zero-terminated, valid during the call and
  /// may hold anything. False leaves the line out: it is not looked at further, right or wrong, and counts as refused.
  /// What it throws ends Next and reaches its caller; the line counts as read.
  virtual bool TakesLine(const char* line, std::size_t length) = 0;
  /// Asked likewise for a last line without a line feed, which may be a whole one or the beginning of one. Takes it
  /// unless it is overridden: what breaks off is told.
  virtual bool TakesLastLine(const char* line, std::size_t length);
};

/// Where a reader takes its bytes from. One thread at a time.
class QZLOG_EXPORT qz_LOG_ByteSource {
 public:
  virtual ~qz_LOG_ByteSource();
  /// Puts up to `size` bytes (1 or more) into `buffer` and returns how many: as many as are there, at least one. Waits
  /// for the first one if it has to; 0 is the end. What it throws reaches the caller of qz_LOG_EntryReader::Next, which
  /// may be called again.
  virtual std::size_t Read(char* buffer, std::size_t size) = 0;
};

/// So many entries of one ID and level that were not written: a writer could not, or held them back.
struct qz_LOG_LostEntries {
  unsigned int id;
  unsigned int level;
  unsigned long long count;
  const char* since;  ///< when the first of them was due, RFC 3339; "" when the line does not say. Valid as the line is
};

/// A line that was read: an entry, what a writer lost (IsLoss) or held back (IsHeld). Entry and texts are valid until
/// the line is read into again or destroyed, whatever becomes of the reader. Reading a million lines into one object
/// takes no memory beyond that of the first ones; copy GetEntry() to keep an entry. One thread at a time.
///
/// Texts are zero-terminated UTF-8, and "" where the line does not have them.
class QZLOG_EXPORT qz_LOG_EntryLine {
 public:
  /// QZX_memory_alloc without memory.
  qz_LOG_EntryLine();
  ~qz_LOG_EntryLine();
  qz_LOG_EntryLine(const qz_LOG_EntryLine&) = delete;
  qz_LOG_EntryLine& operator=(const qz_LOG_EntryLine&) = delete;

  /// Of a line that is no entry (IsLoss, IsHeld), and before the first line, some entry that means nothing.
  const qz_LOG_LogEntry& GetEntry() const;
  /// False: the line gave no "time", and the entry's is zero.
  bool HasTime() const;
  /// What to render the entry's message with: "default", and "selector", 0 where there is none.
  bool GetUseDefault() const;
  unsigned int GetSelectorIndex() const;

  /// The running number that its writer gave to the line.
  bool HasSeq() const;
  unsigned long long GetSeq() const;  ///< 0 without one
  const char* GetWriter() const;      ///< HOST/PID/START
  const char* GetWritten() const;     ///< when it was written, RFC 3339
  /// Of the definition files that the writer had: 16 hexadecimal digits, "STD+AUX" with two.
  const char* GetDefinitions() const;
  const char* GetName() const;  ///< the event's name

  /// Whether the line tells of entries that were lost ("lost"), and has none itself.
  bool IsLoss() const;
  /// Whether the line tells of entries that its writer held back because there were more of them than it was to write
  /// ("held"), and has none itself.
  bool IsHeld() const;
  /// How many kinds of entries such a line tells of: 0 for an entry.
  std::size_t GetLostCount() const;
  /// From 0 to GetLostCount() - 1, else QZX_logging_illegal_argument.
  qz_LOG_LostEntries GetLost(unsigned long index) const;

  const char* GetFile() const;           ///< as named to the reader; "" for memory
  unsigned long long GetLine() const;    ///< from 1; 0 before the first line
  unsigned long long GetOffset() const;  ///< of the line's first byte in the file
  /// The line as it was read, without its line feed and not zero-terminated: valid until the reader that read it is
  /// asked for the next line, or destroyed.
  const char* GetSource() const;
  std::size_t GetSourceLength() const;

 private:
  friend class qz_LOG_EntryReader;
  class QZLOG_NO_EXPORT Implementation;
  Implementation* implementation_;
};

/// Reads lines, each as an entry of the definitions that are loaded (qz_LOG_LogConfig). Lines end with a line feed,
/// with or without a carriage return before it; the last one may lack it. Blank lines are passed over, and so is a byte
/// order mark at the beginning. A line may have 16 MiB. Where lines are long, reader and line together take up to four
/// times as much as the longest; where they are short, about 300 KiB.
///
/// A line that is no entry is told to the handler and counted, and reading goes on with the next one. A last line
/// without a line feed that breaks off in the middle has the rule "torn-line": its writer is still writing it, or was
/// ended.
///
/// Texts are put into the entry as stored texts, in the code page of qz_LOG_LogConfig where ICU is enabled and in UTF-8
/// where it is not; line breaks that are escaped already ("\n", two characters) count as one against the type's limit.
/// "bytes" holds stored texts as they are, in base64, and wins over the text of the same name. A value that does not
/// fit its attribute is refused, never cut or wrapped (texts only where SetActionAttrLenExceed says so); so are
/// attributes that the ID and the globals do not define, and keys that a line does not have. A Float takes "NaN",
/// "Infinity" and
/// "-Infinity" too.
///
/// One thread uses one reader at a time; different threads may use different ones at once.
class QZLOG_EXPORT qz_LOG_EntryReader {
 public:
  /// From a file, a FIFO or a device, which are waited for. Throws QZX_logging_illegal_argument for a null path and
  /// QZX_logging_file_operation_failed, with the path and the reason, when it cannot be opened. `handler` may
  /// be null and has to outlive the reader, here and below; without memory all of these throw QZX_memory_alloc.
  static qz_LOG_EntryReader FromPath(const char* path, qz_LOG_LineErrorHandler* handler = nullptr);
  /// From a descriptor, at its position, which has to stay open and is not closed; one that does not block is waited
  /// for. `file_name` (null: "") is what errors call it.
  static qz_LOG_EntryReader FromDescriptor(int descriptor, const char* file_name,
                                           qz_LOG_LineErrorHandler* handler = nullptr);
  /// From `size` bytes at `bytes`, which are read where they are and have to stay. Null is allowed with a size of 0.
  static qz_LOG_EntryReader FromMemory(const void* bytes, unsigned long size,
                                       qz_LOG_LineErrorHandler* handler = nullptr);
  /// From a source of the caller's, which has to outlive the reader.
  static qz_LOG_EntryReader FromSource(qz_LOG_ByteSource& source, const char* file_name,
                                       qz_LOG_LineErrorHandler* handler = nullptr);
  ~qz_LOG_EntryReader();
  /// What was moved from can only be destroyed or assigned to.
  qz_LOG_EntryReader(qz_LOG_EntryReader&& other) noexcept;
  qz_LOG_EntryReader& operator=(qz_LOG_EntryReader&& other) noexcept;

  /// Reads the next line that is an entry or tells of some that were not written. False at the end, and then ever
  /// after; `line` then is as new. Throws QZX_logging_file_operation_failed, with the file's name and the reason, when
  /// reading fails, QZX_memory_alloc without memory for the bytes, and what handler and source throw; it may be called
  /// again. A line for whose entry there is no memory is an error of that line ("out-of-memory").
  bool Next(qz_LOG_EntryLine& line);
  /// From the next line on `choice` is asked for each; null, as at first, takes them all. It has to outlive the reader,
  /// or the next call.
  void SetLineChoice(qz_LOG_LineChoice* choice);
  /// How many lines it refused so far. Numbers and offsets of the others count them too.
  unsigned long long GetRefusedCount() const;
  /// How many lines were errors so far.
  unsigned long long GetErrorCount() const;

 private:
  class QZLOG_NO_EXPORT Implementation;
  QZLOG_NO_EXPORT explicit qz_LOG_EntryReader(Implementation* implementation);

  Implementation* implementation_;
};

#endif  // QZLOG_ENTRY_LINES_H
