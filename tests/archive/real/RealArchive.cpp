// RealArchive.cpp - see RealArchive.h.
#include "real/RealArchive.h"

#include "platform/win32/PosixAdmin.h"

namespace kozor::test {

int StoppableArchive::OnAbort(const ONABORTPARAM& param) {
  if (param.phase == PhaseFileEnd && param.memberName != nullptr) {
    membersDone.emplace_back(param.memberName);
  }
  return calls++ == stopAt ? 1 : 0;
}

CString StoppableArchive::OnMakeFileName(const char* directory, const char* name) {
  return makeName ? makeName(directory, name) : ZorArchive::OnMakeFileName(directory, name);
}

RealArchiveTest::RealArchiveTest() {
  KzSetActiveCodePage(932);
  EXPECT_EQ(archive.IsEnabled(), 1) << "UNLHA32.DLL must stand beside this program";
}

RealArchiveTest::~RealArchiveTest() {
  KzSetActiveCodePage(932);
}

int RealArchiveTest::Compress(int append) {
  return Compress({"*.*"}, append);
}

int RealArchiveTest::Compress(std::initializer_list<const char*> masks, int append) {
  ZorFind find;
  find.SetCurrentDirectoryA(Lib("src").c_str());
  for (const char* mask : masks) find.AddTail(mask);
  return archive.Compress(find, ArchivePath().c_str(), append, 0);
}

int RealArchiveTest::Extract(const char* mask) {
  return archive.Extract(ArchivePath().c_str(), Lib("out").c_str(), mask);
}

std::string RealArchiveTest::Difference() const {
  return CompareTrees(folder.Path("src"), folder.Path("out"));
}

std::vector<std::string> RealArchiveTest::Members() const {
  StoppableArchive lister;
  lister.makeName = [](const char*, const char*) { return CString(); };
  lister.Extract(ArchivePath().c_str(), "C:\\", nullptr);
  return lister.membersDone;
}

void RealArchiveTest::ExpectNoLeftovers() const {
  for (const std::string& name : folder.List()) {
    EXPECT_EQ(name.find("lhtmp"), std::string::npos) << name;
    EXPECT_EQ(name.find("ZORARC"), std::string::npos) << name;
  }
}

}  // namespace kozor::test
