// StubTest.cpp - requirements on the stub, and what it must not look like.
#include <elf.h>

#include <cstring>

#include "engine/container/FirstHeader.h"
#include "engine/container/MemberHeader.h"
#include "tests/sfx/SfxFixture.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

constexpr const char* kSystems[] = {"linux-x64", "linux-arm64", "windows-x64", "windows-x86"};

using SfxStub = SfxTest;

TEST_F(SfxStub, NeedsNothing) {
  const auto stub = sfx::FindStub()->program;
  Elf64_Ehdr header;
  ASSERT_GE(stub.size(), sizeof header);
  std::memcpy(&header, stub.data(), sizeof header);
  for (std::size_t i = 0; i < header.e_phnum; ++i) {
    Elf64_Phdr segment;
    std::memcpy(&segment, stub.data() + header.e_phoff + i * sizeof segment, sizeof segment);
    EXPECT_NE(segment.p_type, PT_INTERP);
    EXPECT_NE(segment.p_type, PT_DYNAMIC);
    EXPECT_NE(segment.p_flags & (PF_W | PF_X), PF_W | PF_X) << "writable code";
  }
}

void ExpectNoHeaderIn(container::ByteSpan stub) {
  const Bytes whole = Join({{stub.begin(), stub.end()}, RawArchive({{.name = "a.txt"}})});
  for (std::size_t at = 0; at < stub.size(); ++at) {
    const container::ByteSpan bytes = container::ByteSpan(whole).subspan(at);
    container::MemberHeader header;
    ASSERT_NE(container::ParseMemberHeader(bytes, header), container::HeaderStatus::Complete) << at;
    container::MethodId id;
    std::copy_n(bytes.begin() + 2, id.size(), id.begin());
    ASSERT_FALSE(container::IsArchiveMethod(id)) << at;
  }
  container::MemorySource source(whole);
  EXPECT_EQ(container::FindFirstHeader(source), stub.size());
}

// Neither to us nor to programs that only check the id.
TEST_F(SfxStub, IsSmallAndHoldsNothingThatLooksLikeAHeader) {
  for (const char* system : kSystems) {
    SCOPED_TRACE(system);
    const sfx::Stub* const found = sfx::FindStub(system);
    if (found == nullptr) continue;
    const auto stub = found->program;
    EXPECT_LT(stub.size(), 64U << 10);
    ExpectNoHeaderIn(stub);
  }
}

TEST_F(SfxStub, IsPassedOverByOtherPrograms) {
  MakeTree(folder, "tree", {{"a.txt", 20'000}, {"sub/b.bin", 300}});
  ASSERT_EQ(AddTree("a.lzh", "tree"), 0);
  ASSERT_EQ(ConvertBeside("a.lzh"), 0);
  int readers = 0;
  for (const std::string reader : {"lhasa xq", "7zz x -y"}) {
    if (!HaveProgram(reader.substr(0, reader.find(' ')))) continue;
    ++readers;
    const CommandResult result = Run("a.run", "rm -rf * && TZ=UTC " + reader + " $RUN");
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "") << reader;
  }
  if (readers == 0) GTEST_SKIP() << "neither lhasa nor 7zz is installed";
}

// The one for 64-bit Arm is run by an emulator.  tests/exchange runs that for Windows.
TEST_F(SfxStub, OfAnotherProcessorRunsThere) {
  if (sfx::FindStub("linux-arm64") == nullptr) GTEST_SKIP() << "this build has no such stub";
  if (!HaveProgram("qemu-aarch64-static")) GTEST_SKIP() << "qemu-aarch64-static is not installed";
  MakeTree(folder, "tree", {{"a.txt", 20'000}, {"\u8868/b.bin", 300}});
  const CodePageScope utf8(65001);
  ASSERT_EQ(AddTree("a.lzh", "tree"), 0);
  ASSERT_EQ(Convert("-gfor=linux-arm64" + Quoted("a.lzh")), 0);
  const CommandResult result = Run("a.run", "qemu-aarch64-static $RUN");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
}

}  // namespace
}  // namespace kozor::test
