// SfxFixture.h - makes archives into self-extracting programs and runs them as a user would.
#pragma once

#include "engine/sfx/Stub.h"
#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"

namespace kozor::test {

class SfxTest : public EngineTest {
 protected:
  void SetUp() override {
    if (sfx::FindStub() == nullptr) GTEST_SKIP() << "no self-extracting programs on this system";
    std::filesystem::create_directories(folder.Path("out"));
  }

  // `s -gw4` with any operands.
  int Convert(const std::string& operands) { return Command("s -gw4 " + operands); }
  int ConvertBeside(const std::string& archive) {
    return Convert(Quoted(archive) + " \"" + folder.Lib() + "\\\"");
  }

  // Puts the stub before any bytes.
  void MakeProgram(const std::string& name, const Bytes& archive) const {
    const auto stub = sfx::FindStub()->program;
    folder.WriteFile(name, Join({Bytes(stub.begin(), stub.end()), archive}));
    std::filesystem::permissions(folder.Path(name), std::filesystem::perms::owner_all);
  }

  // Runs a shell command in the folder "out"; $RUN is the program.
  CommandResult Run(const std::string& program, const std::string& command = "$RUN") const {
    return RunCommand("cd '" + ShellPathOf(folder.Path("out")) + "' && RUN='" +
                      ShellProgram(folder.Path(program)) + "' && " + command);
  }
};

}  // namespace kozor::test
