// KozorProgram.cpp - see KozorProgram.h.
#include "tests/kozor/KozorProgram.h"

#include <algorithm>
#include <sstream>

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
