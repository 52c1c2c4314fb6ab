// ObjectTest.cpp - the object between runs: its three byte strings and their ownership.
#include <algorithm>
#include <cstdlib>
#include <new>

#include "tests/volume/VolumeTest.h"

namespace {
std::size_t failingSize = 0;  // an array of this size can't be allocated
std::size_t largestSize = 0;  // of the arrays allocated

void* AllocateArray(std::size_t size) {
  largestSize = std::max(largestSize, size);
  return size != 0 && size == failingSize ? nullptr : std::malloc(size != 0 ? size : 1);
}
}  // namespace

void* operator new[](std::size_t size) {
  void* block = AllocateArray(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateArray(size);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}

namespace kozor::test {
namespace {

class VolumeObject : public VolumeTest {
 protected:
  VolumeObject() { MakeTree(folder, "source", {{"a", 1}}); }
  ~VolumeObject() override { failingSize = 0; }

  // The areas that an object writes to a volume.
  std::vector<std::string> Identity(ZorMultiVolume& object) {
    ZorFind find;
    find.AddTail(folder.Lib("source/*.*").c_str());
    EXPECT_EQ(object.Backup(find, folder.Lib("set/1").c_str()), 1);
    volumes.identity.clear();
    EXPECT_EQ(volumes.Check(folder.Lib("set/1").c_str()), 1);
    return volumes.identity;
  }
  static void SetMemo(ZorMultiVolume& object, const std::string& text) {
    object.SetMemo(reinterpret_cast<const unsigned char*>(text.data()),
                   static_cast<int>(text.size()));
  }
};

TEST_F(VolumeObject, CopiesOwnTheirStrings) {
  ZorMultiVolume first;
  SetMemo(first, "memo");
  first.SetBackupVersion(100);
  {
    ZorMultiVolume copy(first);
    SetMemo(copy, "a copy");
    EXPECT_THAT(Identity(copy), ElementsAre("", "", "a copy"));
    EXPECT_EQ(ReadVolumes().at(0)[100], 6);  // version 1.00 was copied too
  }
  EXPECT_THAT(Identity(first), ElementsAre("", "", "memo"));

  ZorMultiVolume assigned;
  SetMemo(assigned, "old");
  assigned = first;
  SetMemo(first, "other");
  EXPECT_THAT(Identity(assigned), ElementsAre("", "", "memo"));
  const ZorMultiVolume& self = assigned;
  assigned = self;
  EXPECT_THAT(Identity(assigned), ElementsAre("", "", "memo"));
}

TEST_F(VolumeObject, NoLengthAndNoMemoryEmptyAString) {
  const std::string text(4099, 'x');
  volumes.SetIdentity("id", "label", "memo");
  volumes.SetVolume(nullptr, 0);
  failingSize = text.size();
  EXPECT_THROW(SetMemo(volumes, text), std::bad_alloc);
  EXPECT_THAT(Identity(volumes), ElementsAre("id", "", ""));
}

// Nor is memory allocated for areas that the volume doesn't have.
TEST_F(VolumeObject, AVolumeWhoseAreasFindNoMemoryIsRefused) {
  volumes.SetIdentity("id", std::string(4097, 'x'), "");
  Identity(volumes);
  failingSize = 4099;
  EXPECT_EQ(volumes.Check(folder.Lib("set/1").c_str()), 0);
  folder.Damage("set/1", 99, 0x7F);  // an application ID of 2 GiB
  largestSize = 0;
  EXPECT_EQ(volumes.Check(folder.Lib("set/1").c_str()), 0);
  EXPECT_LT(largestSize, 65'536U);
}

}  // namespace
}  // namespace kozor::test
