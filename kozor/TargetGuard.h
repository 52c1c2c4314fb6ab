// TargetGuard.h - keeps what comes out of an archive or a backup set inside the destination.
#pragma once

#include <filesystem>
#include <string>
#include <unordered_set>

namespace kozor::program {

class TargetGuard {
 public:
  explicit TargetGuard(const std::filesystem::path& directory);

  // Why a file `name`, in the library's terms, must not be written below the destination; empty
  // when it may.  Refused are names that begin at a root, that climb with "..", or that pass
  // through a link that stands in the destination and leads out of it.
  std::string Refusal(const std::string& name);

 private:
  bool LeadsOutside(const std::filesystem::path& path) const;

  const std::filesystem::path destination;
  std::unordered_set<std::string> goodDirectories;  // checked already
};

}  // namespace kozor::program
