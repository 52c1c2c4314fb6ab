// KozorProgram.h - runs the built kozor program as a user would, in the test's own folder.
#pragma once

#include <gmock/gmock.h>

#include "tests/support/TestFolder.h"

namespace kozor::test {

// Names used by all these tests.
namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Words = std::vector<std::string>;
inline Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Quotes any text as one word of a shell command.
std::string Quoted(std::string_view word);

class KozorProgram : public testing::Test {
 protected:
  // Skips what the system's files, shell or terminal have no way to show.
  void SetUp() override;
  // Runs "kozor words..." in the test's folder, with nothing on standard input.
  CommandResult Kozor(const Words& words) const;
  // Runs any shell command there; $KOZOR is the program.
  CommandResult Shell(const std::string& command) const;
  // Runs kozor and expects success without output.
  void MustRun(const Words& words) const;
  // Runs kozor, expects exit code 1 and returns its output.
  std::string MustFail(const Words& words) const;

  // Names of the members, in the archive's order, as kozor prints them.
  Words Members(const std::string& archive) const;
  // Everything in the test's folder itself, hidden files too.
  Words TopNames() const;
  // The files below a folder, without directories.
  Words FilesIn(std::string_view name) const;

  TestFolder folder;
};

}  // namespace kozor::test
