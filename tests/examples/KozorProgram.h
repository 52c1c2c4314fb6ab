// KozorProgram.h - runs the built kozor program as a user would, in a folder of the test's own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/TestFolder.h"

namespace kozor::test {

// One word of a shell command, whatever is in it.
std::string Quoted(std::string_view word);

class KozorProgram : public testing::Test {
 protected:
  // Runs "kozor words..." in the test's folder, with nothing on standard input.
  CommandResult Kozor(const std::vector<std::string>& words) const;
  // Runs any shell command there; $KOZOR is the program.
  CommandResult Shell(const std::string& command) const;
  // The same, expected to succeed.
  void MustRun(const std::vector<std::string>& words) const;

  // Names of the members, in the archive's order, as kozor prints them.
  std::vector<std::string> Members(const std::string& archive) const;
  // Everything in the test's folder itself, hidden files too.
  std::vector<std::string> TopNames() const;

  TestFolder folder;
};

// A member stored as it is, under any name at all: a level 0 header, which has no other rules.
Bytes StoredMember(std::string_view name, std::string_view contents);
// An archive of such members.
Bytes StoredArchive(const std::vector<Bytes>& members);

}  // namespace kozor::test
