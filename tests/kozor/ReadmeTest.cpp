// ReadmeTest.cpp - the command lines of README.md do what it says, one after the other.
#include <fstream>
#include <sstream>

#include "tests/kozor/KozorProgram.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

class KozorReadme : public KozorProgram {
 protected:
  KozorReadme() {
    MakeTree(folder, "home",
             {{"notes/todo.txt", 100},
              {"notes/old/a.txt", 5000},
              {"photos/1.jpg", 70'000},
              {"tmp/x.txt", 1}});
    fs::create_directories(folder.Path("usb"));
    fs::create_directories(folder.Path("here"));
    std::ifstream file(README);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
  }

  // The lines that begin so.
  Words LinesWith(std::string_view beginning) const {
    Words found;
    for (const std::string& line : lines) {
      if (line.starts_with(beginning)) found.push_back(line);
    }
    return found;
  }

  CommandResult RunHere(const std::string& line) const {
    return Shell("export HOME=$PWD/home; kozor() { $KOZOR \"$@\"; }; cd here; " + line);
  }

  Words lines;
};

TEST_F(KozorReadme, LinesOfTheProgramWorkInTheirOrder) {
  const Words commands = LinesWith("kozor ");
  ASSERT_GE(commands.size(), 12U);
  for (std::string line : commands) {
    line = line.substr(0, line.find(" #"));
    line = Replaced(Replaced(line, "/mnt/usb", ShellPathOf(folder.Path("usb"))), "| less", "| cat");
    const CommandResult result = RunHere(line);
    EXPECT_EQ(result.status, 0) << line << "\n" << result.output;
  }
  EXPECT_TRUE(folder.Exists(std::string("here/notes") + kProgramEnd));
  EXPECT_EQ(CompareTrees(folder.Path("home/photos"), folder.Path("here/restored/photos")), "");
}

TEST_F(KozorReadme, FirstProgramBringsAFolderBack) {
  const std::string source = folder.Lib("home");
  const Words commands = LinesWith("`build/release/bin/quickstart ");
  ASSERT_EQ(commands.size(), 1U);
  std::string line = commands[0].substr(1, commands[0].find('`', 1) - 1);
  line = Replaced(line, "build/release/bin/quickstart", ShellProgram(QUICKSTART_PROGRAM));
  line = Replaced(line, "C:\\tmp\\", folder.Lib("here") + "\\");
  line = Replaced(line, "C:\\usr\\include", source);
  const CommandResult result = RunHere(line);
  EXPECT_EQ(result.status, 0) << line << "\n" << result.output;
  EXPECT_EQ(CompareTrees(folder.Path("home"), folder.Path("here/back")), "");
  EXPECT_THAT(folder.List("here"), Not(testing::Contains(HasSubstr(".work"))));
}

}  // namespace
}  // namespace kozor::test
