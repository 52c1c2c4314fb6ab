// Ability.h - what the system that the tests run on can do.  posix/ and windows/ implement it.
#pragma once

namespace kozor::test {

// What not every system can do, or not under Wine; tests of it are skipped there.
enum class Ability {
  MakingLinks,          // symbolic ones, as an ordinary user
  TellingCaseApart,     // names that differ in case alone are two files
  ChangingOpenFiles,    // that somebody else reads
  MappingDrives,        // to folders, by DefineDosDeviceA; Wine finds no file there
  LongPaths,            // in std::filesystem, beyond 260 characters
  KeepingAttributes,    // hidden and the like; Wine keeps few, and reports "archive" always
  ChangingWithinATick,  // a file twice between two ticks of the clock; Wine is too slow
};
bool Can(Ability ability);
// The line end that text files have.
extern const char* const kTextLineEnd;
// The extension of self-extracting programs.
extern const char* const kProgramEnd;

}  // namespace kozor::test
