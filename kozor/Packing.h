// Packing.h - how new members are packed: the options that say so, and how the archiver learns of
// them.
#pragma once

#include <array>

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

// Whether permission bits, links and folders are to be kept.
bool KeepsUnixFacts(const Arguments& arguments);

// Tells the archiver, by the environment variable from which it reads default switches.  What the
// user has put there stays in force where no option contradicts it.  Throws UsageError for options
// that make no sense, and Failure for a word in that variable which the archiver doesn't know.
void SetUpPacking(const Arguments& arguments);

}  // namespace kozor::program
