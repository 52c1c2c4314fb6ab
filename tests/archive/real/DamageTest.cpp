// DamageTest.cpp - archives that are cut short or changed: an error or the right bytes, never a
// success with wrong or missing data.
#include <map>

#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class DamagedArchive : public RealArchiveTest {
 protected:
  DamagedArchive() {
    MakeTree(folder, "src", {{"a.txt", 60}, {"sub/b.txt", 200}, {"empty", 0}});
    EXPECT_EQ(Compress(), 1);
    whole = folder.ReadFile("a.lzh");
    for (const char* name : {"a.txt", "sub/b.txt", "empty"})
      sources[folder.ReadFile(std::string("src/") + name)]++;
  }

  // How often each of the contents came out, whatever the files are called.
  std::map<Bytes, int> Extracted() const {
    std::map<Bytes, int> contents;
    for (const std::string& name : folder.List("out")) {
      if (!name.ends_with('/')) ++contents[folder.ReadFile("out/" + name)];
    }
    return contents;
  }

  // Extracts into an empty folder; true when that claims to have worked.
  bool TryIt() {
    std::filesystem::remove_all(folder.Path("out"));
    return Extract() == 1;
  }

  Bytes whole;
  std::map<Bytes, int> sources;
};

TEST_F(DamagedArchive, IsNoticedWhereverItIsCut) {
  for (std::size_t size = 0; size < whole.size(); ++size) {
    folder.WriteFile("a.lzh", Bytes(whole.begin(), whole.begin() + static_cast<long>(size)));
    if (TryIt()) {
      EXPECT_EQ(Extracted(), sources) << size;
    } else {
      EXPECT_NE(archive.GetError(), ZorErrorNone) << size;
    }
  }
}

// A changed name may pass, as the format has no check over it in every header; changed contents and
// missing members may not.
TEST_F(DamagedArchive, IsNoticedWhereverAByteIsChanged) {
  archive.makeName = [this](const char*, const char* name) {
    std::string flat = name;
    std::replace(flat.begin(), flat.end(), '\\', '_');
    return CString(Lib("out\\" + flat).c_str());
  };
  for (std::size_t offset = 0; offset < whole.size(); ++offset) {
    for (const int change : {0x01, 0x80, 0xFF}) {
      folder.WriteFile("a.lzh", whole);
      folder.Damage("a.lzh", offset, static_cast<std::uint8_t>(whole[offset] ^ change));
      if (TryIt()) {
        EXPECT_EQ(Extracted(), sources) << offset << " ^ " << change;
      }
    }
  }
}

}  // namespace
}  // namespace kozor::test
