// Selection.h - from the words of a command line to files that the library can be given.
//
// The library drops what it can't read, and of names that differ in case alone all but one where
// several masks are given.  A user wants neither to happen silently.  So the program looks first:
// it searches with one mask at a time, compares names exactly, checks every file, and complains
// about each one that has to be left out.
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

// Files with names relative to one base directory.
struct FileGroup {
  std::string base;                 // library path without a trailing backslash, but "C:\"
  std::vector<std::string> names;   // library names of the files, in the order found
  std::vector<unsigned int> modes;  // permission bits of the files, in the same order
  std::uint64_t bytes = 0;          // of all files
  // Directories without a separator at their end; links, unless they are just followed.
  std::vector<std::string> folders;
  std::vector<std::string> links;
  bool IsEmpty() const { return names.empty() && folders.empty() && links.empty(); }
  // A mask that, with all folders below, selects exactly these files; empty when there is none.
  std::string wholeMask;

  // Selections that together are the group.  More than one only where names differ in case alone.
  std::vector<ZorFind> Finds() const;
};

enum class LinkRule {
  Followed,  // what a link leads to is selected; a link to nothing is complained of
  Noted,     // the same, and the link is listed, too
  Kept,      // the link itself is listed, and what it leads to isn't looked at
};

struct SelectionRequest {
  std::filesystem::path base;      // what relative words are relative to
  std::vector<std::string> words;  // masks and paths
  std::vector<std::string> excludes;
  // Files that are the run's own and left out without a word; host paths.
  std::function<bool(const std::filesystem::path&)> isOwnFile;
  LinkRule links = LinkRule::Followed;
  // Whether a group of nothing but folders and links is one.
  bool takesFolders = false;
  // Files that needn't be stored, by their names in the group and their state; null for none.
  std::function<bool(const std::string&, const FileState&)> isUpToDate = nullptr;
};

// The groups, without empty ones: files below the base directory, with names relative to it, and
// files elsewhere, with names relative to the root of their disk.  Throws Failure when a word means
// nothing, when nothing is left (but for files that needn't be stored), and when two files would
// get one name; complains about every file that can't be stored.
std::vector<FileGroup> Select(const SelectionRequest& request);

}  // namespace kozor::program
