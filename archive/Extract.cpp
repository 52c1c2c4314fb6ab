// Extract.cpp - ZorArchive::Extract: selected members become files.
//
// The archiver isn't told to extract files.  Each member is unpacked straight into a mapped file
// whose path OnMakeFileName has chosen, so that an application can place, rename or skip each one.
#include "ZorFileServices.h"
#include "archive/ExtractOperation.h"
#include "archive/MappedFile.h"
#include "archive/MemberListing.h"
#include "files/Path.h"

namespace {

ZorError ErrorOfMapping(std::uint32_t systemError) {
  switch (systemError) {
    case ERROR_NOT_ENOUGH_MEMORY:
      return ZorErrorOutOfMemory;
    case ERROR_DISK_FULL:
      return ZorErrorDiskFull;
    default:
      return ZorErrorFileFailure;
  }
}

// A member's name from its directory on, without its root.
const char* ShortName(const char* member) {
  const char* directory = nullptr;
  ZorSplitPath(member, nullptr, &directory, nullptr);
  return directory != nullptr ? directory : member;
}

class ExtractOperation final : public ZorExtractOperation {
 public:
  // Without `directory` the base directory of the selection is the destination.
  ExtractOperation(ZorArchive& object, const ZorFind& selection, const char* archivePath,
                   const char* directory)
      : ZorExtractOperation(object, archivePath),
        find(selection),
        destination(directory != nullptr ? directory : selection.GetCurrentDirectoryA()) {}

 private:
  bool TestArguments() override {
    if (destination.IsEmpty()) return Fail(ZorErrorNoDirectory);
    ZorSetTrailingBackslash(destination, 1);
    return ZorExtractOperation::TestArguments();
  }

  bool Work() override {
    const ZorError error = ZorListArchiveMembers(archive, find, names, owner.GetBackgroundMode());
    if (error != ZorErrorNone) return Fail(error);
    if (names.IsEmpty() || !Begin(names.GetCount())) return false;
    for (const CString& name : names) {
      if (!ExtractMember(name)) return false;
    }
    return true;
  }

  // `name` is an element of `names`, and so outlives the record that refers to it.
  bool ExtractMember(const CString& name) {
    const ZorCommandLine line = MemberLine(name);
    const CString path = MakeFileName(destination, ShortName(name));
    if (!FindMember(name)) return false;
    target = path;  // not earlier: till now the record has referred to the last member's
    if (!BeginMember(target)) return false;
    const bool skipped = target.IsEmpty();
    return (skipped || (Accepts(line) && Unpack(line))) && EndMember();
  }

  bool Unpack(const ZorCommandLine& line) {
    if (ZorCreateDirectory(target, 1, nullptr) == 0) return Fail(ZorErrorMakeDirectory);
    std::int32_t time = 0;
    std::uint16_t attribute = 0;
    if (!UnpackInto(line, time, attribute)) return false;
    // The file is closed by now; setting its time earlier would be undone.  Neither is vital.
    ZorSetFileTimeStamp(target, time);
    if (owner.GetExtractFileAttibuteMode() != 0) ZorSetFileAttribute(target, attribute);
    return true;
  }

  bool UnpackInto(const ZorCommandLine& line, std::int32_t& time, std::uint16_t& attribute) {
    ZorMappedFile file(target, progress.memberSize);
    unsigned char* view = file.Map();
    if (view == nullptr) return Fail(ErrorOfMapping(file.SystemError()));
    std::uint32_t written = 0;  // the archiver's result says all that counts
    return CallArchiver([&] {
      return engine.UnlhaExtractMem(nullptr, line.Text(), view, file.Capacity(), &time, &attribute,
                                    &written);
    });
  }

  const ZorFind& find;
  CString destination;
  ZorFileList names;
  CString target;
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
