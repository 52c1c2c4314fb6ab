// Archive.h - archive objects for this program: they show progress, stop on signals and throw
// failures with text.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "Console.h"
#include "Contents.h"
#include "ZorArchive.h"

namespace kozor::program {

// For operations that change archives.
class Archive : public ZorArchive {
 public:
  // `totalBytes` is the size of all files to add.
  explicit Archive(std::uint64_t totalBytes = 0) : progress(totalBytes) {}

  // Returns if `succeeded`.  Otherwise throws Interrupted after a signal, else Failure with the
  // cause; `name` is the archive as the user named it.
  void Require(int succeeded, const std::string& name) const;
  // Complains and returns false if fewer files than selected have been added.
  bool RequireAll(std::size_t selected) const { return progress.RequireAll(selected); }

 protected:
  int OnAbort(const ONABORTPARAM& param) override;

 private:
  std::string currentName;  // the current or last file
  Progress progress;
};

// For unpacking members one by one.
class MemberReader : public ZorArchive {
 public:
  // `path` is a library path, `shownName` the name that the user gave.
  MemberReader(std::string path, std::string shownName, std::uint64_t totalBytes);
  ~MemberReader() override;
  MemberReader(const MemberReader&) = delete;
  MemberReader& operator=(const MemberReader&) = delete;

  // Unpacks a member into `target`, which has its size.  Throws FileFailure if only this member
  // fails, Failure or Interrupted if the run has to end.
  void Unpack(const Member& member, std::span<unsigned char> target);

 protected:
  int OnAbort(const ONABORTPARAM& param) override;

 private:
  const std::string archive;
  const std::string name;
  Progress progress;
  class KeptOpen;
  // Keeps the archive open and the archiver loaded between members.
  std::unique_ptr<KeptOpen> keptOpen;
};

// A member's name in the library's form, with '\' instead of '/'.
std::string MemberName(std::string name);

// Throws Failure unless the file at the library path `archive` is an archive.
void RequireArchive(const std::string& archive, const std::string& name);

}  // namespace kozor::program
