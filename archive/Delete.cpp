// Delete.cpp - ZorArchive::Delete: takes members out of an archive, in one run of the archiver.
#include "archive/ArchiveSearch.h"
#include "archive/MemberOperation.h"

namespace {

class DeleteOperation final : public ZorMemberOperation {
 public:
  DeleteOperation(ZorArchive& object, const ZorFind& selection, const char* archivePath)
      : ZorMemberOperation(object, archivePath), find(selection) {}

 private:
  void Work() override {
    SelectMembers();
    Begin(names.GetCount());
    RunCommand(Line());
  }

  // A single mask goes to the archiver unchanged; any other number is expanded to names first.
  void SelectMembers() {
    if (find.GetCount() == 1) {
      names.AddTail(find.GetAt(find.GetHeadPosition()));
      return;
    }
    ZorRequire(ZorListArchiveMembers(archive, find, names, owner.GetBackgroundMode()));
    if (names.IsEmpty()) throw ZorStopped{};
  }

  ZorLineBuilder Line() const {
    ZorLineBuilder line("d");
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
