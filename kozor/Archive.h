// Archive.h - archive objects with the manners of this program: progress, an end when a signal
// comes, and failures in words.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "Console.h"
#include "Contents.h"
#include "ZorArchive.h"

namespace kozor::program {

// For what changes archives.
class Archive : public ZorArchive {
 public:
  // `totalBytes` of all files that will be added.
  explicit Archive(std::uint64_t totalBytes = 0) : progress(totalBytes) {}

  // Passes on a success.  Otherwise throws Interrupted after a signal, and else Failure with the
  // cause; `name` is the archive as the user gave it.
  void Require(int succeeded, const std::string& name) const;
  // Complains unless so many files have been added.
  void RequireAll(std::size_t selected) const { progress.RequireAll(selected); }

 protected:
  int OnAbort(const ONABORTPARAM& param) override;

 private:
  std::string currentName;  // the file that the run came to last
  Progress progress;
};

// For what brings members out, one by one.
class MemberReader : public ZorArchive {
 public:
  // `path` is the library's, `shownName` the user's.
  MemberReader(std::string path, std::string shownName, std::uint64_t totalBytes);
  ~MemberReader() override;
  MemberReader(const MemberReader&) = delete;
  MemberReader& operator=(const MemberReader&) = delete;

  // Unpacks a member into as many bytes as it has.  Throws FileFailure when that member alone can't
  // be had; Failure or Interrupted when it's no use to go on.
  void Unpack(const Member& member, std::span<unsigned char> target);

 protected:
  int OnAbort(const ONABORTPARAM& param) override;

 private:
  const std::string archive;
  const std::string name;
  Progress progress;
  class KeptOpen;
  // The archive stays open between members, and the archiver loaded.
  std::unique_ptr<KeptOpen> keptOpen;
};

// A member's name as the library wants it, with '\' in place of '/'.
std::string MemberName(std::string name);

// Throws Failure unless `archive`, a library path, is an archive.
void RequireArchive(const std::string& archive, const std::string& name);

}  // namespace kozor::program
