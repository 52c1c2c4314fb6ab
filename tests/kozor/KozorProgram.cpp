// KozorProgram.cpp - see KozorProgram.h.
#include "tests/kozor/KozorProgram.h"

#include <algorithm>
#include <sstream>

#include "tests/support/Ability.h"

namespace kozor::test {

std::string Quoted(std::string_view word) {
  std::string quoted = "'";
  for (const char character : word) {
    if (character == '\'') {
      quoted += "'\\''";
    } else {
      quoted += character;
    }
  }
  return quoted + "'";
}

namespace {

struct Demand {
  const char* reason;
  std::string_view tests;
};

// What makes no sense on Windows.
constexpr Demand kDemands[] = {
    {"needs links, which ordinary users can't make on Windows and Wine hides",
     " StayInsideTheDestination RefusesTargetsOutsideTheDestinationUnlessToldTo "},
    {"needs permission bits, links and names that Windows doesn't have",
     " NamesEveryFileThatHasToBeLeftOut BringsSetIdBitsBackOnlyWhenAskedTo"
     " KeepsModesLinksAndEmptyFoldersSoThatATreeComesBackIdentical "},
    {"needs a terminal or a named pipe of POSIX",
     " AskTheUserForTheNextMedium EndAWaitForStandardInput "},
    {"names that differ in case alone are one file here",
     " KeepsFilesWhoseNamesDifferInCaseAlone "},
};

}  // namespace

void KozorProgram::SetUp() {
  if (Can(Ability::MakingLinks)) return;
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = ' ' + std::string(test.name()) + ' ';
  for (const Demand& demand : kDemands) {
    if (demand.tests.find(name) != demand.tests.npos) GTEST_SKIP() << demand.reason;
  }
}

CommandResult KozorProgram::Kozor(const Words& words) const {
  std::string command = "$KOZOR";
  for (const std::string& word : words) command += " " + Quoted(word);
  return Shell(command + " < /dev/null");
}

CommandResult KozorProgram::Shell(const std::string& command) const {
  return RunCommand("cd " + Quoted(ShellPathOf(folder.Path())) + " && KOZOR=" +
                    Quoted(ShellProgram(KOZOR_PROGRAM)) + " && { " + command + "; }");
}

void KozorProgram::MustRun(const Words& words) const {
  const CommandResult result = Kozor(words);
  ASSERT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, "");
}

std::string KozorProgram::MustFail(const Words& words) const {
  const CommandResult result = Kozor(words);
  EXPECT_EQ(result.status, 1) << testing::PrintToString(words) << result.output;
  return result.output;
}

Words KozorProgram::Members(const std::string& archive) const {
  const CommandResult result = Kozor({"list", archive});
  EXPECT_EQ(result.status, 0) << result.output;
  constexpr std::size_t kColumnsInFrontOfNames = 39;
  Words names;
  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) {
    if (line.size() > kColumnsInFrontOfNames) names.push_back(line.substr(kColumnsInFrontOfNames));
  }
  return names;
}

Words KozorProgram::TopNames() const {
  Words names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Words KozorProgram::FilesIn(std::string_view name) const {
  Words names = folder.List(name);
  std::erase_if(names, [](const std::string& entry) { return entry.ends_with('/'); });
  return names;
}

}  // namespace kozor::test
