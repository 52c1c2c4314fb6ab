// FoldersAndLinks.h - adds folders and links to an archive, which the library's interface can't.
//
// The library adds only files.  After them the program passes folders and links to the archiver in
// a command line of its own.
#pragma once

#include <string>

#include "Output.h"
#include "Selection.h"

namespace kozor::program {

// `name` is the archive as the user gave it.  Throws Failure, and Interrupted after a signal.
void AddFoldersAndLinks(const FileGroup& group, const Output& output, const std::string& name);

}  // namespace kozor::program
