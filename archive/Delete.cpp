// Delete.cpp - ZorArchive::Delete: takes members out of an archive, in one run of the archiver.
#include "archive/ExtractOperation.h"
#include "archive/MemberListing.h"

namespace {

class DeleteOperation final : public ZorExtractOperation {
 public:
  DeleteOperation(ZorArchive& object, const ZorFind& selection, const char* archivePath)
      : ZorExtractOperation(object, archivePath), find(selection) {}

 private:
  bool Work() override { return SelectMembers() && Begin(names.GetCount()) && RunCommand(Line()); }

  // A single mask goes to the archiver as it is; any other number becomes names first.
  bool SelectMembers() {
    if (find.GetCount() == 1) {
      names.AddTail(find.GetAt(find.GetHeadPosition()));
      return true;
    }
    const ZorError error = ZorListArchiveMembers(archive, find, names, owner.GetBackgroundMode());
    return error == ZorErrorNone ? !names.IsEmpty() : Fail(error);
  }

  ZorCommandLine Line() const {
    ZorCommandLine line("d");
    line.Piece(BackgroundPiece(" -jyd")).WorkDirectory("").Operand(archive);
    for (const CString& name : names) line.Operand(name);
    return line;
  }

  const ZorFind& find;
  ZorFileList names;
};

}  // namespace

int ZorArchive::Delete(const ZorFind& find, const char* archive) {
  return DeleteOperation(*this, find, archive).Run();
}
