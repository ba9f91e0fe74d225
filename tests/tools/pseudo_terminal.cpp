#include "tests/tools/pseudo_terminal.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace qzlog_test {
namespace {

struct Terminal {
  int controller = -1;
  int side = -1;
};

// What is written arrives as it is: the terminal's own "\r\n" would hide those of the command.
Terminal open_terminal(unsigned short columns) {
  Terminal terminal;
  const winsize size = {24, columns, 0, 0};
  if (::openpty(&terminal.controller, &terminal.side, nullptr, nullptr, &size) != 0) std::abort();
  termios settings = {};
  if (::tcgetattr(terminal.side, &settings) != 0) std::abort();
  settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  if (::tcsetattr(terminal.side, TCSANOW, &settings) != 0) std::abort();
  return terminal;
}

[[noreturn]] void run(const Terminal& terminal, const std::string& folder, const std::string& shell_line) {
  const int null = ::open("/dev/null", O_RDONLY);
  ::dup2(null, STDIN_FILENO);
  ::dup2(terminal.side, STDOUT_FILENO);
  ::dup2(terminal.side, STDERR_FILENO);
  ::close(terminal.side);
  ::close(terminal.controller);
  ::unsetenv("COLUMNS");
  if (::chdir(folder.c_str()) == 0) ::execl("/bin/sh", "sh", "-c", shell_line.c_str(), nullptr);
  ::_exit(127);
}

/// Until nobody has the terminal any more, which reads as EIO.
std::string read_all(int controller) {
  std::string text;
  char buffer[4096];
  for (;;) {
    const ssize_t count = ::read(controller, buffer, sizeof buffer);
    if (count > 0) text.append(buffer, static_cast<std::size_t>(count));
    if (count == 0 || (count < 0 && errno != EINTR)) return text;
  }
}

}  // namespace

TerminalRun run_on_terminal(const std::string& folder, const std::string& shell_line, unsigned short columns) {
  const Terminal terminal = open_terminal(columns);
  const pid_t process = ::fork();
  if (process == 0) run(terminal, folder, shell_line);
  ::close(terminal.side);
  TerminalRun result;
  result.shown = read_all(terminal.controller);
  ::close(terminal.controller);
  int status = 0;
  ::waitpid(process, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

std::string first_unsafe_place(const std::string& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool is_line_end = text.compare(at, 2, "\r\n") == 0;
    const bool is_control = (byte < 0x20 && byte != '\n' && byte != '\t' && !is_line_end) || byte == 0x7F;
    const bool is_c1 = byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    const bool turns = text.compare(at, 3, "\u202E") == 0 || text.compare(at, 3, "\u2066") == 0;
    if (is_control || is_c1 || turns) return text.substr(at, 16);
  }
  return "";
}

}  // namespace qzlog_test
