#include "ship/file/group_reader.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr std::size_t kBlock = std::size_t{256} << 10;
constexpr int kLookMilliseconds = 50;

qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }

}  // namespace

GroupReader::GroupReader(RecordFileName file, int descriptor, const std::string& group, std::uint64_t end,
                         const std::function<GroupState()>& begin)
    : file_(std::move(file)), descriptor_(descriptor), end_(end), group_(file_.path, group, begin) {}

bool GroupReader::read(qzlog_received* records, std::size_t most, std::uint32_t timeout_ms, std::size_t& count) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  for (count = 0;;) {
    const Found found = take(most);
    if (found == Found::kRecords) count = give_out(records);
    if (found != Found::kNothing) return found == Found::kRecords;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now()).count();
    if (left <= 0) return true;
    ::poll(nullptr, 0, static_cast<int>(std::min<long long>(left, kLookMilliseconds)));
  }
}

GroupReader::Found GroupReader::take(std::size_t most) {
  Found found = Found::kNothing;
  group_.change([&](GroupState& state) {
    refuse_shorter_file(state);
    if (take_left(state, most) || take_next(state, most)) {
      found = Found::kRecords;
      return;
    }
    const bool others_have_some = std::any_of(state.claims.begin(), state.claims.end(), [&](const GroupClaim& claim) {
      return claim.reader != group_.reader() && claim.begin < end_;
    });
    if (state.next >= end_ && !others_have_some) found = Found::kEnd;
  });
  return found;
}

bool GroupReader::take_left(GroupState& state, std::size_t most) {
  const auto left = std::find_if(state.claims.begin(), state.claims.end(), [this](const GroupClaim& claim) {
    return claim.begin < end_ && !group_.is_there(claim.reader);
  });
  if (left == state.claims.end()) return false;
  const GroupClaim claim = *left;
  cut(claim.begin, claim.end, most);
  if (part_.ends.empty()) fail_for_good("what the group has read does not fit '" + file_.path + "'");
  part_.first = claim.first;
  part_.again = true;
  state.claims.erase(left);
  const std::uint64_t end = part_.ends.back();
  if (end < claim.end) state.claims.push_back({0, end, claim.end, claim.first + part_.ends.size()});
  state.claims.push_back({group_.reader(), claim.begin, end, claim.first});
  return true;
}

bool GroupReader::take_next(GroupState& state, std::size_t most) {
  if (state.next >= end_) return false;
  cut(state.next, end_, most);
  if (part_.ends.empty()) return false;
  part_.first = state.first;
  part_.again = false;
  state.claims.push_back({group_.reader(), state.next, part_.ends.back(), state.first});
  state.next = part_.ends.back();
  state.first += part_.ends.size();
  return true;
}

/// Whole lines alone.
void GroupReader::cut(std::uint64_t begin, std::uint64_t end, std::size_t most) {
  bytes_.clear();
  part_ = {};
  part_.begin = begin;
  std::size_t at = 0;
  while (part_.ends.size() < most) {
    const std::size_t line_feed = bytes_.find('\n', at);
    if (line_feed != std::string::npos) {
      at = line_feed + 1;
      part_.ends.push_back(begin + at);
    } else if (!part_.ends.empty() || !read_block(begin + bytes_.size(), end)) {
      return;
    }
  }
}

bool GroupReader::read_block(std::uint64_t begin, std::uint64_t end) {
  const std::size_t before = bytes_.size();
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, end > begin ? end - begin : 0));
  bytes_.resize(before + wanted);
  ssize_t count = 0;
  do {
    count = ::pread(descriptor_, bytes_.data() + before, wanted, static_cast<off_t>(begin));
  } while (count < 0 && errno == EINTR);
  bytes_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0) fail_for_now("cannot read '" + file_.path + "': " + std::strerror(errno));
  return count > 0;
}

void GroupReader::refuse_shorter_file(const GroupState& state) const {
  struct stat status = {};
  if (::fstat(descriptor_, &status) != 0) fail_for_now(std::strerror(errno));
  if (static_cast<std::uint64_t>(status.st_size) >= state.next) return;
  fail_for_good("'" + file_.path + "' is shorter than what the group has read of it: it is another file now; remove '" +
                group_.path() + "', and the group begins anew");
}

std::size_t GroupReader::give_out(qzlog_received* records) {
  std::uint64_t begin = part_.begin;
  for (std::size_t index = 0; index < part_.ends.size(); ++index) {
    const std::uint64_t end = part_.ends[index];
    const std::string_view line = std::string_view(bytes_).substr(static_cast<std::size_t>(begin - part_.begin),
                                                                  static_cast<std::size_t>(end - begin - 1));
    const RecordText text = read_record(line, file_.form);
    records[index] = {};
    records[index].line = text_of(text.line);
    records[index].identity = text_of(text.identity);
    records[index].sequence = records[index].token = part_.first + index;
    records[index].again = part_.again ? 1 : 0;
    unsettled_[part_.first + index] = {begin, end};
    begin = end;
  }
  return part_.ends.size();
}

void GroupReader::settle(std::span<const std::uint64_t> tokens) {
  for (const std::uint64_t token : tokens) unsettled_.erase(token);
  group_.change([this](GroupState& state) { keep_claims(state); });
}

/// Claims what is not settled, and nothing else.
void GroupReader::keep_claims(GroupState& state) const {
  std::erase_if(state.claims, [this](const GroupClaim& claim) { return claim.reader == group_.reader(); });
  std::uint64_t next = 0;
  for (const auto& [number, bytes] : unsettled_) {
    if (number == next) {
      state.claims.back().end = bytes.second;
    } else {
      state.claims.push_back({group_.reader(), bytes.first, bytes.second, number});
    }
    next = number + 1;
  }
}

}  // namespace qzlog_ship
