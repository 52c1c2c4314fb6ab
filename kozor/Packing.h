// Packing.h - options for packing new members, and passing them to the archiver.
#pragma once

#include <array>
#include <string>

#include "Arguments.h"

namespace kozor::program {

inline constexpr std::array<Option, 5> kPackingOptions = {{
    {"--method", "METHOD",
     "compression method: lh5 (default); lh6 or lh7, with\nlarger windows; lh1, for very old "
     "programs; lh0, none"},
    {"--level", "N", "compression level, from 1 (fastest) to 9 (smallest);\nthe default is 5"},
    {"-j,--threads", "N", "number of threads (default: one per processor)"},
    {"--unix", "",
     "store permissions, owners, symbolic links and\ndirectories, and names in UTF-8 (default on "
     "Linux)"},
    {"--no-unix", "",
     "store none of them, and names in code page 932, for\nprograms on Windows; links are "
     "followed"},
}};

// The suffix of a self-extracting program for the system of --for, or for this one.  Throws
// UsageError if this build makes none for it.
std::string ProgramSuffix(const Arguments& arguments);

// Whether permission bits, links and folders are stored.
bool KeepsUnixFacts(const Arguments& arguments);

// Passes the options to the archiver in the environment variable for default switches.  Switches
// that the user has set there stay valid unless an option overrides them.  Throws UsageError for
// options that contradict each other, and Failure if the archiver doesn't know a switch in that
// variable.
void SetUpPacking(const Arguments& arguments);
// Passes one more switch to the archiver, in the same way.
void AddPackingSwitch(const std::string& word);

}  // namespace kozor::program
