// WalkTest.cpp - walks through deep trees and through links.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include "ZorFileServices.h"
#include "ZorFind.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class FilesWalk : public testing::Test {
 protected:
  Names All(const std::string& below) {
    ZorFind find;
    find.SetCurrentDirectoryA(folder.Lib(below).c_str());
    find.AddTail("*.*");
    ZorFileList list;
    find.Find(list, 0);
    return Names(list.begin(), list.end());
  }

  void Link(const char* target, const char* name) {
    fs::create_directory_symlink(target, folder.Path(name));
  }

  TestFolder folder;
};

TEST_F(FilesWalk, EndsOnCycles) {
  MakeTree(folder, "", {{"tree/a/file", 1}, {"tree/b/", 0}});
  Link("..", "tree/a/up");
  Link(".", "tree/b/self");
  EXPECT_EQ(All("tree"), (Names{"a", "a\\file", "a\\up", "b", "b\\self"}));
  // From inside, the first link up leads to a new directory; the cycle ends there.
  EXPECT_EQ(All("tree/a"),
            (Names{"file", "up", "up\\a", "up\\a\\file", "up\\a\\up", "up\\b", "up\\b\\self"}));
}

TEST_F(FilesWalk, EntersLinksThatFormNoCycle) {
  MakeTree(folder, "", {{"tree/x", 1}, {"elsewhere/file", 1}});
  Link("../elsewhere", "tree/one");
  Link("../elsewhere", "tree/two");
  Link("nowhere", "tree/broken");
  EXPECT_EQ(All("tree"), (Names{"broken", "one", "one\\file", "two", "two\\file", "x"}));
}

TEST_F(FilesWalk, OfARemovalNeverGoesThroughALinkUnlessItIsNamed) {
  MakeTree(folder, "", {{"tree/sub/x", 1}, {"elsewhere/keep", 1}, {"keep", 1}});
  Link("../../elsewhere", "tree/sub/directory");
  Link("..", "tree/sub/cycle");
  fs::create_symlink("../keep", folder.Path("tree/file"));
  Link("elsewhere", "link");
  EXPECT_EQ(ZorRemoveDirectory(folder.Lib("tree").c_str(), 0), 1);
  EXPECT_EQ(folder.List("elsewhere"), Names{"keep"});
  EXPECT_EQ(ZorRemoveDirectory(folder.Lib("link").c_str(), 1), 1);
  EXPECT_EQ(folder.List("elsewhere"), Names{});
  EXPECT_TRUE(folder.Exists("link"));
  EXPECT_EQ(ZorRemoveDirectory(folder.Lib("link").c_str(), 0), 1);
  EXPECT_EQ(folder.List(), (Names{"elsewhere/", "keep"}));
}

// Counts and removes a tree.
void* CountAndRemove(void* argument) {
  auto& path = *static_cast<std::string*>(argument);
  ZorFind find;
  find.SetCurrentDirectoryA(path.c_str());
  find.AddTail("*.txt");
  find.AddTail("*.*");
  ZorFileList list;
  find.Find(list, 1);
  const int removed = ZorRemoveDirectory(path.c_str(), 0);
  path = std::to_string(list.GetCount()) + " " + std::to_string(removed);
  return nullptr;
}

// With a small stack and few open files: neither requirement grows with the depth.
TEST_F(FilesWalk, GoesAsDeepAsTheTreeIs) {
  constexpr int kLevels = 500;
  std::string name = "deep";
  for (int i = 0; i < kLevels; ++i) name += "/d";
  fs::create_directories(folder.Path(name));

  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{100, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  std::string argument = folder.Lib("deep");
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 128 * 1024);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, CountAndRemove, &argument), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(argument, std::to_string(kLevels) + " 1");
  EXPECT_FALSE(folder.Exists("deep"));
}

}  // namespace
}  // namespace kozor::test
