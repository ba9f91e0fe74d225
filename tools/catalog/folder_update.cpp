#include "tools/catalog/folder_update.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/catalog/po_language.h"
#include "tools/system/command_error.h"
#include "tools/system/content_digest.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/output_file.h"

namespace qzlog_catalog {
namespace {

namespace fs = std::filesystem;

using Digests = CatalogManifest::Digests;

constexpr const char* kNoDigest = "";  ///< of what is there, but no file

[[noreturn]] void fail(const char* what, const std::string& path, const std::error_code& error) {
  throw qzlog_tool::CommandError(qzlog_tool::kExitCannotRun, std::string(what) + " '" + path + "': " + error.message());
}

using AskStatus = fs::file_status (*)(const fs::path&, std::error_code&);

/// A link in a circle is a link. What cannot be known is not taken for something else.
fs::file_type type_of(const std::string& path, AskStatus ask) {
  std::error_code error;
  const fs::file_type type = ask(path, error).type();
  if (error == std::errc::too_many_symbolic_link_levels) return fs::file_type::symlink;
  if (type == fs::file_type::none) fail("cannot read", path, error);
  return type;
}

bool is_there(const std::string& path) { return type_of(path, fs::symlink_status) != fs::file_type::not_found; }

bool is_file(const std::string& path) { return type_of(path, fs::status) == fs::file_type::regular; }

/// None when nothing of this name is there.
std::optional<std::string> digest_of(const std::string& path) {
  if (!is_there(path)) return std::nullopt;
  return is_file(path) ? qzlog_tool::content_digest(qzlog_tool::read_file(path)) : kNoDigest;
}

void remove_file(const std::string& path) {
  std::error_code error;
  fs::remove(path, error);
  if (error) fail("cannot remove", path, error);
}

/// The languages whose bundles are in a folder, sorted; none when it does not exist.
std::vector<std::string> languages_in(const std::string& folder) {
  std::vector<std::string> languages;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const std::string language = entry->path().stem().string();
    if (entry->path().extension() == ".res" && bundle_name(language) == language) languages.push_back(language);
  }
  if (error && is_there(folder)) fail("cannot read", folder, error);
  std::sort(languages.begin(), languages.end());
  return languages;
}

}  // namespace

FolderUpdate::FolderUpdate(std::string folder, const std::vector<NamedBundle>& bundles) : folder_(std::move(folder)) {
  for (const NamedBundle& bundle : bundles) {
    const std::string name = bundle.name + ".res";
    contents_[name] = &bundle.content;
    wanted_[name] = qzlog_tool::content_digest(bundle.content);
  }
}

bool FolderUpdate::prepare(bool adopt, Findings& findings) {
  if (!read_own_manifest(findings)) return false;
  bool ok = true;
  for (const auto& [name, digest] : wanted_) ok = take_target(name, adopt, findings) && ok;
  for (const Digests* const list : {&manifest_.bundles, &manifest_.unfinished}) {
    for (const auto& [name, digest] : *list) take_listed(name);
  }
  report_strangers(findings);
  return ok;
}

bool FolderUpdate::read_own_manifest(Findings& findings) {
  const std::string path = path_of(kManifestName);
  if (!is_there(path)) return true;
  std::string failure = "it is no file";
  if (is_file(path)) {
    failure.clear();
    manifest_ = read_manifest(qzlog_tool::read_file(path), failure);
  }
  if (failure.empty()) return true;
  findings
      .error(path, 0, CatalogRule::kBadManifest,
             "the list of what 'qzlog catalog build' has made here is damaged: " + failure)
      .with_hint("restore it, or remove it and build with --adopt");
  return false;
}

bool FolderUpdate::take_target(const std::string& name, bool adopt, Findings& findings) {
  const std::optional<std::string> digest = digest_of(path_of(name));
  if (!digest) return true;
  const bool adopted = adopt && *digest != kNoDigest;
  if (adopted || *digest == wanted_.at(name) || manifest_.lists(name, *digest)) {
    ours_[name] = *digest;
    return true;
  }
  findings
      .error(path_of(name), 0, CatalogRule::kForeignBundle,
             "'qzlog catalog build' did not make this file and does not replace it")
      .with_hint("move it away, or let --adopt replace it");
  return false;
}

/// What was put into the place of a file of ours is not ours.
void FolderUpdate::take_listed(const std::string& name) {
  if (wanted_.contains(name)) return;
  const std::optional<std::string> digest = digest_of(path_of(name));
  if (!digest || !manifest_.lists(name, *digest)) return;
  ours_[name] = *digest;
  stale_.insert(name);
}

void FolderUpdate::report_strangers(Findings& findings) const {
  for (const std::string& language : languages_in(folder_)) {
    const std::string name = language + ".res";
    if (wanted_.contains(name) || stale_.contains(name)) continue;
    findings
        .warning(path_of(name), 0, CatalogRule::kForeignBundle,
                 "'qzlog catalog build' did not make this bundle as it is now and leaves it; readers of " + language +
                     " get its messages")
        .with_hint("take it away unless it is meant to be there");
  }
}

std::vector<std::string> FolderUpdate::carry_out() const {
  const std::string manifest_path = path_of(kManifestName);
  if (ours_ != wanted_) qzlog_tool::write_file(manifest_path, write_manifest({ours_, wanted_}));
  std::vector<qzlog_tool::OutputFile> outputs;
  for (const auto& [name, content] : contents_) outputs.push_back({path_of(name), *content});
  qzlog_tool::write_files(outputs);
  std::vector<std::string> removed;
  for (const std::string& name : stale_) {
    removed.push_back(path_of(name));
    remove_file(removed.back());
  }
  qzlog_tool::write_file(manifest_path, write_manifest({wanted_, {}}));
  return removed;
}

}  // namespace qzlog_catalog
