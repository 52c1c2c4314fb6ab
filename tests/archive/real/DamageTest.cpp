// DamageTest.cpp - archives that are cut short or changed: an error or the right bytes, never a
// success with wrong or missing data.
#include <algorithm>
#include <string>
#include <vector>

#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class DamagedArchive : public RealArchiveTest {
 protected:
  DamagedArchive() {
    MakeTree(folder, "src", {{"a.txt", 60}, {"b.txt", 200}, {"empty", 0}});
    for (const char* name : {"a.txt", "b.txt", "empty"}) {
      EXPECT_EQ(Compress({name}, 1), 1);
      sources.push_back(folder.ReadFile(std::string("src/") + name));
      whole = folder.ReadFile("a.lzh");
      ends.push_back(whole.size() - 1);  // where the end mark stands
    }
  }

  // Extracts the archive with these bytes into an empty folder; true when that claims to have
  // worked.
  bool Try(const Bytes& bytes) {
    std::filesystem::remove_all(folder.Path("out"));
    folder.WriteFile("a.lzh", bytes);
    const bool worked = Extract() == 1;
    EXPECT_EQ(worked, archive.GetError() == ZorErrorNone);
    return worked;
  }

  // The contents that came out, whatever the files are called.
  std::vector<Bytes> Extracted() const {
    std::vector<Bytes> contents;
    for (const std::string& name : folder.List("out")) {
      if (!name.ends_with('/')) contents.push_back(folder.ReadFile("out/" + name));
    }
    return contents;
  }

  Bytes whole;
  std::vector<Bytes> sources;     // of the members, in their order
  std::vector<std::size_t> ends;  // of the members in the archive
};

// Right behind a member the cut can't be seen: archives without an end mark are common.
TEST_F(DamagedArchive, IsNoticedWhereverItIsCutInAMember) {
  for (std::size_t size = 0; size < whole.size(); ++size) {
    if (!Try(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))) continue;
    const auto end = std::find(ends.begin(), ends.end(), size);
    ASSERT_NE(end, ends.end()) << "cut at " << size;
    const std::vector<Bytes> members(sources.begin(), sources.begin() + (end - ends.begin()) + 1);
    EXPECT_TRUE(Extracted() == members) << "cut at " << size;
  }
}

// A changed name may pass, as the format has no check over it in every header; changed contents and
// missing members may not.
TEST_F(DamagedArchive, IsNoticedWhereverAByteIsChanged) {
  // Whatever the name has become, the file lands in the folder.
  archive.makeName = [this](const char*, const char* name) {
    std::string flat = name;
    std::replace(flat.begin(), flat.end(), '\\', '_');
    return CString(Lib("out\\" + flat).c_str());
  };
  std::sort(sources.begin(), sources.end());
  for (std::size_t offset = 0; offset < whole.size(); ++offset) {
    for (const int change : {0x01, 0x80, 0xFF}) {
      Bytes changed = whole;
      changed[offset] = static_cast<std::uint8_t>(changed[offset] ^ change);
      if (!Try(changed)) continue;
      std::vector<Bytes> contents = Extracted();
      std::sort(contents.begin(), contents.end());
      EXPECT_TRUE(contents == sources) << "offset " << offset << " ^ " << change;
    }
  }
}

}  // namespace
}  // namespace kozor::test
