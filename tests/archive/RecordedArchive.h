// RecordedArchive.h - a ZorArchive whose hooks write into the log of the recording archiver, and
// the fixture of the tests that run against that archiver.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Selection.h"
#include "ZorArchive.h"
#include "recording/Recording.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

using testing::ElementsAre;
using testing::IsEmpty;

// The options that begin the archiver's command lines.
inline const std::string kOptions = " -+ -gm1 -a1 -c1 -m1 -x1 -n";

class RecordedArchive : public ZorArchive {
 public:
  explicit RecordedArchive(Recording& log) : recording(log) {}

  int stopAt = -1;  // counts down with each OnAbort; the one that finds 0 answers 1
  std::function<void(int phase)> inPhase;             // runs in each OnAbort
  std::function<CString(const char* name)> makeName;  // replaces the default

 protected:
  // Logs "OnAbort kind phase files bytes archive file member size date time attribute", null as
  // "-"; without a member only the fields before it.
  int OnAbort(const ONABORTPARAM& param) override;
  CString OnMakeFileName(const char* directory, const char* name) override;

 private:
  Recording& recording;
};

// Keeps the module loaded, so that its log lives from call to call.  In the log "#" is the test's
// folder.
class ArchiveRecorded : public testing::Test {
 protected:
  ArchiveRecorded();
  ~ArchiveRecorded() override;

  std::string Lib(const std::string& name) const { return folder.Lib(name); }
  // The outcome of an operation with this result.
  ZorError ErrorOf(int result) const;
  // The log from the last call of this function on.
  std::vector<std::string> TakeCalls();
  // The lines that begin with the text, without it.
  std::vector<std::string> TakeCalls(const std::string& beginning);

  TestFolder folder;
  HMODULE module;
  Recording& recording;
  RecordedArchive archive;
  const std::string path;  // of an archive that exists
};

}  // namespace kozor::test
