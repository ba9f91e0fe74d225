// What qzlog render is measured against: the loop that a program of a few lines makes of the library. Each line is read
// as an entry, its message goes to standard output.
//
// Usage: qzlog_message_loop DEFINITIONS.ldf icu|narrow ENTRIES.jsonl
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include <qzlog.h>

namespace {

constexpr std::size_t kBufferBytes = std::size_t{64} << 10;

bool write_messages(const char* path) {
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath(path);
  qz_LOG_EntryLine line;
  std::string message;
  while (reader.Next(line)) {
    line.GetEntry().FormatMessage(message, line.GetUseDefault(), line.GetSelectorIndex());
    message += '\n';
    if (std::fwrite(message.data(), 1, message.size(), stdout) != message.size()) return false;
  }
  return reader.GetErrorCount() == 0 && std::fflush(stdout) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: qzlog_message_loop DEFINITIONS.ldf icu|narrow ENTRIES.jsonl\n", stderr);
    return 2;
  }
  try {
    std::setvbuf(stdout, nullptr, _IOFBF, kBufferBytes);
    qz_LOG_LogConfig::SetICUEnabled(std::strcmp(argv[2], "icu") == 0);
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    qz_LOG_LogConfig::SetDefinitionPath(argv[1]);
    return write_messages(argv[3]) ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const qz_EXCEPTION_base& failure) {
    const char* const reason = failure.get_message();
    std::fprintf(stderr, "qzlog_message_loop: %s\n", reason != nullptr ? reason : "no memory");
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "qzlog_message_loop: %s\n", failure.what());
  }
  return EXIT_FAILURE;
}
