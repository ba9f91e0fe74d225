#include "message/resource_files.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include <unicode/putil.h>
#include <unicode/udata.h>

#include "message/resource_data.h"

namespace qzlog {

namespace {

using State = WholeFile::State;

constexpr std::string_view kExtension = ".res";
constexpr std::string_view kPackageExtension = ".dat";
constexpr char kTreeSeparator = '-';

bool ends_with(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string_view base_name_of(std::string_view path) { return path.substr(path.rfind('/') + 1); }

/// The folders of ICU's data directory, which may name several.
std::vector<std::string_view> data_folders() {
  std::vector<std::string_view> folders;
  std::string_view rest = u_getDataDirectory();
  while (!rest.empty()) {
    const std::size_t length = rest.find(U_PATH_SEP_CHAR);
    if (length != 0) folders.push_back(rest.substr(0, length));
    rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
  }
  return folders;
}

/// A data folder with the name behind it, which may be that folder's own name. Empty for a package file among them.
std::string within(std::string_view folder, const std::string& package) {
  if (folder.back() == '/') return std::string(folder) + package;
  if (ends_with(folder, kPackageExtension)) return "";
  const std::string stub = "/" + package;
  if (folder.size() > stub.size() && ends_with(folder, stub)) folder.remove_suffix(stub.size());
  return std::string(folder) + stub;
}

struct DataCloser {
  void operator()(UDataMemory* data) const { udata_close(data); }
};

/// A bundle that ICU holds, as a file would have it. Only the bundle itself says how long it is.
std::string copy_of(UDataMemory* data) {
  constexpr std::size_t kBundleEnd = 4;  // in words, as the value there is
  UDataInfo info = {};
  info.size = sizeof(info);
  udata_getInfo(data, &info);
  const char* const bundle = static_cast<const char*>(udata_getMemory(data));
  std::uint32_t words = 0;
  std::memcpy(&words, bundle + kBundleEnd * sizeof(words), sizeof(words));
  const std::uint16_t header_size = ResourceData::kSmallestHeader;
  std::string file(reinterpret_cast<const char*>(&header_size), sizeof(header_size));
  file.append("\xDA\x27").append(reinterpret_cast<const char*>(&info), sizeof(info));
  return file.append(bundle, std::size_t{words} * sizeof(words));
}

UBool is_bundle(void* /*context*/, const char* /*type*/, const char* /*name*/, const UDataInfo* info) {
  constexpr unsigned char kFirstWithSize = 2;  // and those of version 1 that have one are not told from the others
  const bool is_known = std::memcmp(info->dataFormat, "ResB", sizeof(info->dataFormat)) == 0 &&
                        info->formatVersion[0] >= kFirstWithSize &&
                        info->formatVersion[0] <= ResourceData::kLastVersion && info->size >= sizeof(*info) &&
                        info->sizeofUChar == sizeof(UChar);
  return static_cast<UBool>(is_known ? 1 : 0);
}

}  // namespace

ResourceFiles::ResourceFiles(std::string path) : path_(std::move(path)) {
  const std::size_t slash = path_.rfind('/');
  const bool is_folder = slash != std::string::npos && (path_.front() == '/' || slash != path_.find('/'));
  const std::size_t separator = is_folder ? std::string::npos : path_.find(kTreeSeparator);
  if (is_folder) {
    package_ = base_name_of(path_);
  } else if (separator == std::string::npos) {
    package_ = path_;
  } else {
    tree_ = "/" + path_.substr(separator + 1);
    package_ = path_.substr(0, separator);
    if (slash == std::string::npos) path_ = package_;
  }
}

std::vector<std::string> ResourceFiles::single_files(const std::string& name) const {
  std::vector<std::string> files;
  const std::string file = tree_ + "/" + name + std::string(kExtension);
  const std::size_t base = path_.size() - base_name_of(path_).size();
  if (base != 0) files.push_back(path_.substr(0, base) + package_ + file);
  for (const std::string_view folder : data_folders()) {
    const std::string package = within(folder, package_);
    if (!package.empty()) files.push_back(package + file);
  }
  return files;
}

std::vector<std::string> ResourceFiles::package_files() const {
  std::vector<std::string> files;
  const std::string base(base_name_of(path_));
  if (base.empty()) return files;
  const std::string file = base + std::string(kPackageExtension);
  if (base.size() != path_.size()) files.push_back(path_ + std::string(kPackageExtension));
  for (const std::string_view folder : data_folders()) {
    const std::string package = within(folder, base);
    if (base_name_of(folder) == file) {
      files.emplace_back(folder);
    } else if (!package.empty()) {
      files.push_back(package + std::string(kPackageExtension));
    }
  }
  return files;
}

WholeFile ResourceFiles::find(const std::string& name) {
  for (const std::string& file : single_files(name)) {
    WholeFile whole = read_whole_file(file);
    if (whole.state == State::kFailed) return whole;
    if (whole.state == State::kRead && !ResourceData::is_foreign(whole.bytes)) return whole;
  }
  WholeFile whole = find_in_package(name);
  return whole.state == State::kAbsent && package_state_ == State::kAbsent ? find_in_icu(name) : std::move(whole);
}

WholeFile ResourceFiles::find_in_package(const std::string& name) {
  if (!has_read_package_) {
    has_read_package_ = true;
    package_state_ = read_package();
  }
  if (package_state_ == State::kFailed) return {State::kFailed, {}};
  const std::string_view* const found = package_file_.find(package_ + tree_ + "/" + name + std::string(kExtension));
  if (found == nullptr) return {};
  return {State::kRead, std::string(*found)};
}

WholeFile::State ResourceFiles::read_package() {
  for (const std::string& file : package_files()) {
    WholeFile whole = read_whole_file(file);
    if (whole.state == State::kAbsent) continue;
    if (whole.state == State::kFailed) return State::kFailed;
    const ResourcePackage::State state = package_file_.read(std::move(whole.bytes));
    return state == ResourcePackage::State::kDamaged ? State::kFailed : State::kRead;
  }
  return State::kAbsent;
}

WholeFile ResourceFiles::find_in_icu(const std::string& name) const {
  if (path_.find('/') != std::string::npos) return {};
  UErrorCode status = U_ZERO_ERROR;
  const std::string path = path_ + (tree_.empty() ? "" : kTreeSeparator + tree_.substr(1));
  const std::unique_ptr<UDataMemory, DataCloser> data(
      udata_openChoice(path.c_str(), "res", name.c_str(), is_bundle, nullptr, &status));
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  if (U_FAILURE(status)) return {};
  return {State::kRead, copy_of(data.get())};
}

}  // namespace qzlog
