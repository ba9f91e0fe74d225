#ifndef QZLOG_TESTS_SINKS_JOURNAL_STAND_IN_H
#define QZLOG_TESTS_SINKS_JOURNAL_STAND_IN_H

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qz_test {

/// What journald was sent.
struct JournalMessage {
  std::string bytes;
  bool was_file = false;
  int seals = 0;

  /// The fields by their names, those of one name in their order. Throws std::runtime_error where the message is not
  /// what journald takes.
  std::map<std::string, std::vector<std::string>> fields() const {
    std::map<std::string, std::vector<std::string>> fields;
    for (std::size_t at = 0; at < bytes.size();) {
      const std::size_t end = bytes.find('\n', at);
      if (end == std::string::npos) throw std::runtime_error("a field without an end");
      const std::string text = bytes.substr(at, end - at);
      at = end + 1;
      const std::size_t equals = text.find('=');
      if (equals != std::string::npos) {
        fields[text.substr(0, equals)].push_back(text.substr(equals + 1));
        continue;
      }
      std::uint64_t length = 0;
      if (bytes.size() - at < 8) throw std::runtime_error("a field without a length");
      for (std::size_t i = 8; i-- > 0;) length = length << 8 | static_cast<unsigned char>(bytes[at + i]);
      at += 8;
      if (length >= bytes.size() - at || bytes[at + length] != '\n') throw std::runtime_error("a wrong length");
      fields[text].push_back(bytes.substr(at, length));
      at += length + 1;
    }
    return fields;
  }
  /// The only one of its name; "(none)" and "(several)".
  std::string field(const std::string& name) const {
    const auto all = fields();
    const auto found = all.find(name);
    if (found == all.end()) return "(none)";
    return found->second.size() == 1 ? found->second.front() : "(several)";
  }
};

/// A socket in the place of journald's.
class JournalStandIn {
 public:
  explicit JournalStandIn(std::string path) : path_(std::move(path)) { start(); }
  ~JournalStandIn() { stop(); }
  JournalStandIn(const JournalStandIn&) = delete;
  JournalStandIn& operator=(const JournalStandIn&) = delete;

  const std::string& path() const { return path_; }
  void start() {
    socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path_.c_str(), sizeof(address.sun_path) - 1);
    ::unlink(path_.c_str());
    if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
      throw std::runtime_error("there is no socket at " + path_);
    }
  }
  /// The name stays, as that of a service that was killed.
  void stop() {
    if (socket_ >= 0) ::close(std::exchange(socket_, -1));
  }

  bool has_message(int milliseconds = 0) const {
    pollfd waited = {socket_, POLLIN, 0};
    return ::poll(&waited, 1, milliseconds) > 0;
  }
  /// The next message, which is waited for; an empty one when none comes.
  JournalMessage receive() const {
    JournalMessage message;
    if (!has_message(10'000)) return message;
    std::vector<char> bytes(1 << 20);
    alignas(cmsghdr) char control[256];
    iovec part = {bytes.data(), bytes.size()};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof(control);
    const ssize_t size = ::recvmsg(socket_, &header, MSG_CMSG_CLOEXEC);
    if (size > 0) message.bytes.assign(bytes.data(), static_cast<std::size_t>(size));
    for (cmsghdr* each = CMSG_FIRSTHDR(&header); each != nullptr; each = CMSG_NXTHDR(&header, each)) {
      if (each->cmsg_type != SCM_RIGHTS) continue;
      int file = -1;
      std::memcpy(&file, CMSG_DATA(each), sizeof(file));
      read_file(file, message);
      ::close(file);
    }
    return message;
  }
  std::vector<JournalMessage> receive_all() const {
    std::vector<JournalMessage> messages;
    while (has_message()) messages.push_back(receive());
    return messages;
  }

 private:
  static void read_file(int file, JournalMessage& message) {
    message.was_file = true;
    message.seals = ::fcntl(file, F_GET_SEALS);
    struct stat status = {};
    if (::fstat(file, &status) != 0) return;
    message.bytes.resize(static_cast<std::size_t>(status.st_size));
    if (::pread(file, message.bytes.data(), message.bytes.size(), 0) != status.st_size) message.bytes.clear();
  }

  const std::string path_;
  int socket_ = -1;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SINKS_JOURNAL_STAND_IN_H
