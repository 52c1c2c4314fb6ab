// TargetGuard.cpp - see TargetGuard.h.
#include "TargetGuard.h"

#include <algorithm>

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

std::string RefusalOfText(const std::string& name) {
  if (name.empty()) return "it has no name";
  if (name.front() == '\\') return "its name begins at the root";
  if (name.find(':') != std::string::npos) return "its name holds a colon, as of a drive";
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find('\\', start), name.size());
    const std::string part = name.substr(start, end - start);
    if (part == "." || part == "..") return "its name climbs out of folders";
    start = end + 1;
  }
  const bool control = std::any_of(name.begin(), name.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  if (control || name.find_first_of("\"*/<>?|") != std::string::npos) {
    return "no file can have this name (kozor print shows the contents)";
  }
  return "";
}

}  // namespace

TargetGuard::TargetGuard(const fs::path& directory)
    : destination(fs::weakly_canonical(directory)) {}

std::string TargetGuard::Refusal(const std::string& name) {
  std::string refusal = RefusalOfText(name);
  if (!refusal.empty()) return refusal;
  std::string hostName = name;
  std::replace(hostName.begin(), hostName.end(), '\\', '/');
  fs::path path = destination;
  std::error_code ignored;
  for (const fs::path& part : fs::path(hostName)) {
    path /= part;
    if (goodDirectories.contains(path.string())) continue;
    if (LeadsOutside(path)) return "the link " + path.string() + " leads out of the destination";
    if (fs::is_directory(path, ignored)) goodDirectories.insert(path.string());
  }
  return "";
}

// A link that leads nowhere counts: a file made through it would stand where the link points.
bool TargetGuard::LeadsOutside(const fs::path& path) const {
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(path, error))) return false;
  const fs::path real = fs::canonical(path, error);
  if (error) return true;
  const auto [end, ignored] =
      std::mismatch(destination.begin(), destination.end(), real.begin(), real.end());
  return end != destination.end();
}

}  // namespace kozor::program
