// Selection.h - finds the files that the words of a command line mean, for the library.
//
// The library skips files that it can't read.  With several masks, it also skips all but one of the
// names that differ only in case.  Neither should happen silently.  So the program searches first,
// with one mask at a time, compares names exactly, checks every file, and reports each one that has
// to be left out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Host.h"
#include "Mask.h"
#include "ZorFind.h"

namespace kozor::program {

// Why a file is left out whose name Windows can't have.
inline constexpr const char* kUnnameable = "the name contains a character that can't be stored";

// Files with names relative to one base directory.
struct FileGroup {
  std::string base;                   // library path without a trailing backslash, except "C:\"
  std::vector<std::string> names;     // library names of the files, in the order found
  std::vector<unsigned int> modes;    // permission bits of the files, in the same order
  std::vector<FileVersion> versions;  // of the files, in the same order
  std::uint64_t bytes = 0;            // of all files
  // Directories, without a trailing separator; links, unless they are only followed.
  std::vector<std::string> folders;
  std::vector<std::string> links;
  bool IsEmpty() const { return names.empty() && folders.empty() && links.empty(); }
  // A mask that, with all folders below, selects exactly these files; empty if there is none.
  std::string wholeMask;

  // With several masks a library selection has only the first of the names that differ only in
  // case.  `others` receives the rest.
  ZorFind Find(std::vector<std::string>& others) const;
};

enum class LinkRule {
  Followed,  // selects a link's target; reports a dangling link
  Noted,     // the same, and lists the link
  Kept,      // lists the link and ignores its target
};

struct SelectionRequest {
  std::filesystem::path base;      // the base of relative words
  std::vector<std::string> words;  // masks and paths
  std::vector<std::string> excludes;
  // The run's own files, given their host paths and states, which are left out silently.
  std::function<bool(const std::filesystem::path&, const FileState&)> isOwnFile;
  LinkRule links = LinkRule::Followed;
  // Whether a group of only folders and links is returned, too.
  bool takesFolders = false;
  // Unless empty, why a selection is refused if something in it can't be read.
  std::string refusal = {};
  // Whether a file needn't be stored, given its name in the group and its state; null if all are
  // stored.
  std::function<bool(const std::string&, const FileState&)> isUpToDate = nullptr;
};

// Returns the groups that aren't empty: files below the base directory, with names relative to it,
// and files elsewhere, with names relative to the root of their disk.  Throws Failure if a word
// matches nothing, if nothing is left (apart from files that needn't be stored), or if two files
// would get the same name.  Reports every file that can't be stored.  With a `refusal`
// it then throws that as Failure if some of them can't be read.
std::vector<FileGroup> Select(const SelectionRequest& request);

// Call after the files have been stored.  Complains about each one that has been written to since
// it was selected: what is stored may be half the old contents and half the new.
void ReportChangedFiles(const FileGroup& group);

}  // namespace kozor::program
