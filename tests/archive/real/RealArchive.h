// RealArchive.h - the fixture of the tests that run with the archiver itself, on real trees.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "ZorArchive.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

// Counts the calls of OnAbort and stops at one of them.
class StoppableArchive : public ZorArchive {
 public:
  int calls = 0;
  int stopAt = -1;  // the number of the call that answers 1, from 0
  std::function<CString(const char* directory, const char* name)> makeName;
  std::vector<std::string> membersDone;  // names reported at their end

 protected:
  int OnAbort(const ONABORTPARAM& param) override;
  CString OnMakeFileName(const char* directory, const char* name) override;
};

// Works in code page 932 unless the test says otherwise, and puts it back.
class RealArchiveTest : public testing::Test {
 protected:
  RealArchiveTest();
  ~RealArchiveTest() override;

  std::string Lib(const std::string& name = "") const { return folder.Lib(name); }
  std::string ArchivePath() const { return folder.Lib("a.lzh"); }
  // Everything below src/ goes into the archive, everything in the archive below out/.
  int Compress(int append = 0);
  int Compress(std::initializer_list<const char*> masks, int append = 0);
  int Extract(const char* mask = nullptr);
  // What differs between the two.
  std::string Difference() const;
  // The members' names, in the archive's order.
  std::vector<std::string> Members() const;
  // No temporaries and no response file anywhere.
  void ExpectNoLeftovers() const;

  TestFolder folder;
  StoppableArchive archive;
};

}  // namespace kozor::test
