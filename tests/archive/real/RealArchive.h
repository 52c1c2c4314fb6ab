// RealArchive.h - the fixture of the tests that run with the archiver itself, on real trees.
#pragma once

#include <gmock/gmock.h>

#include <functional>

#include "Selection.h"
#include "ZorArchive.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

using testing::ElementsAre;

// Counts the calls of OnAbort and stops at one of them.
class StoppableArchive : public ZorArchive {
 public:
  int calls = 0;
  int stopAt = -1;  // the number of the call that answers 1, from 0
  std::function<CString(const std::string& name)> makeName;  // replaces the default
  std::vector<std::string> membersDone;                      // names reported at their end

 protected:
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileEnd && param.memberName != nullptr) {
      membersDone.emplace_back(param.memberName);
    }
    return calls++ == stopAt ? 1 : 0;
  }
  CString OnMakeFileName(const char* directory, const char* name) override {
    return makeName ? makeName(name) : ZorArchive::OnMakeFileName(directory, name);
  }
};

class ArchiveReal : public testing::Test {
 protected:
  ArchiveReal() : path(Lib("a.lzh")) {
    EXPECT_EQ(archive.IsEnabled(), 1) << "UNLHA32.DLL must stand beside this program";
  }

  std::string Lib(const std::string& name) const { return folder.Lib(name); }
  // Everything below src/ goes into the archive, everything in the archive below out/.
  int Compress() { return archive.Compress(Selection(Lib("src"), {"*.*"}), path.c_str(), 0, 0); }
  int Extract() { return archive.Extract(path.c_str(), Lib("out").c_str(), nullptr); }
  // The members' names, in the archive's order.
  std::vector<std::string> Members() const {
    StoppableArchive lister;
    lister.makeName = [](const std::string&) { return CString(); };
    lister.Extract(path.c_str(), "C:\\", nullptr);
    return lister.membersDone;
  }
  // No temporaries and no response file anywhere.
  void ExpectNoLeftovers() const {
    for (const std::string& name : folder.List()) {
      EXPECT_EQ(name.find("lhtmp"), std::string::npos) << name;
      EXPECT_EQ(name.find("ZORARC"), std::string::npos) << name;
    }
  }

  TestFolder folder;
  const std::string path;  // of the archive
  StoppableArchive archive;
};

}  // namespace kozor::test
