// Packing.h - options for packing new members, and passing them to the archiver.
#pragma once

#include <array>
#include <string>

#include "Arguments.h"

namespace kozor::program {

inline constexpr std::array<Option, 5> kPackingOptions = {{
    {"--method", "METHOD",
     "pack by lh5 (the default), lh6 or lh7, which look back\nfurther, lh1 for very old programs, "
     "or lh0: store"},
    {"--level", "N", "from 1, the fastest, to 9, the smallest; the default\nis 5"},
    {"-j,--threads", "N", "pack on N threads; on all processors if absent"},
    {"--unix", "",
     "keep permission bits, owners, links and folders in\nthe archive; the default on Linux"},
    {"--no-unix", "", "keep none of them: store what links lead to, and\nfolders with --dir only"},
}};

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
