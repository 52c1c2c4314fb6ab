// StubTest.cpp - requirements on the stub, and what it must not look like.
#include <elf.h>

#include <cstring>

#include "engine/container/FirstHeader.h"
#include "engine/container/MemberHeader.h"
#include "tests/sfx/SfxFixture.h"

namespace kozor::test {
namespace {

using SfxStub = SfxTest;

TEST_F(SfxStub, IsSmallAndNeedsNothing) {
  const auto stub = sfx::Stub();
  EXPECT_LT(stub.size(), 64U << 10);
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

// Neither to us nor to programs that only check the id.
TEST_F(SfxStub, HoldsNothingThatLooksLikeAHeader) {
  const auto stub = sfx::Stub();
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

}  // namespace
}  // namespace kozor::test
