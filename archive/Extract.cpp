// Extract.cpp - ZorArchive::Extract: unpacks selected members into files.
//
// The archiver isn't told to extract files.  Each member is unpacked straight into a mapped file
// whose path OnMakeFileName has chosen, so that an application can place, rename or skip each one.
#include "ZorFileServices.h"
#include "archive/ArchiveSearch.h"
#include "archive/MappedFile.h"
#include "archive/MemberOperation.h"
#include "files/ParentDirectory.h"
#include "files/Path.h"
#include "platform/base/Clock.h"
#include "platform/win32/HostRules.h"

namespace {

ZorFailure FailureOf(const ZorMappedFile& file) {
  switch (file.SystemError()) {
    case ERROR_NOT_ENOUGH_MEMORY:
      return {ZorErrorOutOfMemory};
    case ERROR_DISK_FULL:
      return {ZorErrorDiskFull};
    default:
      return {ZorErrorFileFailure};
  }
}

// A member's name without its root.
const char* ShortName(const char* member) {
  const char* directory = nullptr;
  ZorSplitPath(member, nullptr, &directory, nullptr);
  return directory != nullptr ? directory : member;
}

// Whether a file just created has this attribute anyway.  A dot at the start may hide it.
bool HasFromStart(const char* path, unsigned int attribute) {
  const char* const name = ZorGetFileName(path);
  return attribute == FILE_ATTRIBUTE_ARCHIVE && name != nullptr && *name != '.';
}

class ExtractOperation final : public ZorUnpackOperation {
 public:
  // Without `directory` the base directory of the selection is the destination.
  ExtractOperation(ZorArchive& object, const ZorFind& selection, const char* archivePath,
                   const char* directory)
      : ZorUnpackOperation(object, archivePath),
        find(selection),
        destination(directory != nullptr ? directory : selection.GetCurrentDirectoryA()) {}

 private:
  void TestArguments() override {
    if (destination.IsEmpty()) throw ZorFailure{ZorErrorNoDirectory};
    ZorSetTrailingBackslash(destination, 1);
    ZorUnpackOperation::TestArguments();
  }

  void Work() override {
    ZorRequire(ZorListArchiveMembers(archive, find, names, owner.GetBackgroundMode()));
    if (names.IsEmpty()) throw ZorStopped{};
    Begin(names.GetCount());
    for (const CString& name : names) ExtractMember(name);
  }

  // `name` is an element of `names`, so it outlives the record's pointer to it.
  void ExtractMember(const CString& name) {
    const ZorLineBuilder line = MemberLine(name);
    const CString path = MakeFileName(destination, ShortName(name));
    FindMember(name);
    target = path;  // only now: until here the record points to the previous one
    BeginMember(target);
    if (!target.IsEmpty()) Unpack(line);
    EndMember();
  }

  void Unpack(const ZorLineBuilder& line) {
    RequireSound(line);
    if (!parent.Make(target)) throw ZorFailure{ZorErrorMakeDirectory};
    std::int32_t time = 0;
    std::uint16_t attribute = 0;
    UnpackInto(line, time, attribute);
    // Best effort, and again if closing the file may have changed its time.
    if (!kClosingKeepsTimes) ZorSetFileTimeStamp(target, time);
    if (owner.GetExtractFileAttibuteMode() != 0 && !HasFromStart(target, attribute)) {
      ZorSetFileAttribute(target, attribute);
    }
  }

  void UnpackInto(const ZorLineBuilder& line, std::int32_t& time, std::uint16_t& attribute) {
    ZorMappedFile file(target, progress.memberSize);
    unsigned char* view = file.Map();
    if (view == nullptr && file.SystemError() == ERROR_PATH_NOT_FOUND) {
      if (!parent.MakeAnew(target)) throw ZorFailure{ZorErrorMakeDirectory};
      view = file.Map();
    }
    if (view == nullptr) throw FailureOf(file);
    std::uint32_t written = 0;  // not needed: the result code is enough
    CallArchiver([&] {
      return engine.UnlhaExtractMem(nullptr, line.Text(), view, file.Capacity(), &time, &attribute,
                                    &written);
    });
    const auto lastWrite = kozor::FromTicks<FILETIME>(kozor::FileTimeOfUnix(time));
    if (!file.Finish(time >= 0 ? &lastWrite : nullptr)) throw FailureOf(file);
  }

  const ZorFind& find;
  CString destination;
  ZorFileList names;
  CString target;
  ZorParentDirectory parent{destination};
};

}  // namespace

int ZorArchive::Extract(const ZorFind& find, const char* archive, const char* directory) {
  return ExtractOperation(*this, find, archive, directory).Run();
}

int ZorArchive::Extract(const char* archive, const char* directory, const char* mask) {
  ZorFind find;
  find.AddTail(mask != nullptr ? mask : "*.*");
  return Extract(find, archive, directory);
}

CString ZorArchive::OnMakeFileName(const char* directory, const char* name) {
  name = ZorText(name);
  if (*name != '\\') return CString(directory) + name;
  const char* root = nullptr;
  const char* behindRoot = nullptr;
  const char* fileName = nullptr;
  ZorSplitPath(directory, &root, &behindRoot, &fileName);
  if (root == nullptr) return CString(name);
  if (behindRoot == nullptr) behindRoot = fileName;
  if (behindRoot == nullptr) return CString(root) + name;
  return CString(root, static_cast<int>(behindRoot - root)) + name;
}
