// FoldersAndLinks.h - puts into an archive what the library's interface has no room for.
//
// The library adds files.  Folders and links go to the archiver in a line of the program's own,
// after the files.
#pragma once

#include <string>

#include "Output.h"
#include "Selection.h"

namespace kozor::program {

// `name` is the archive as the user gave it.  Throws Failure, and Interrupted after a signal.
void AddFoldersAndLinks(const FileGroup& group, const Output& output, const std::string& name);

}  // namespace kozor::program
