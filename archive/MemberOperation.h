// MemberOperation.h - what the operations on members of an archive that must exist have in common.
#pragma once

#include "archive/Operation.h"

class ZorMemberOperation : public ZorOperation {
 protected:
  ZorMemberOperation(ZorArchive& object, const char* archivePath)
      : ZorOperation(Family::Extract, object, archivePath) {}

  // The archive must exist.
  void TestArguments() override;
};

// The steps of unpacking one member.  `name` and `target` live as long as the
// operation, as the record refers to them.
class ZorUnpackOperation : public ZorMemberOperation {
 protected:
  using ZorMemberOperation::ZorMemberOperation;

  // Looks the member up and fills the record's member fields; ZorErrorArchiveOpen without it.
  void FindMember(const char* name);
  // Reports its begin; `target` is where it goes, in the caller's terms.
  void BeginMember(const char* target);
  // Reports its end.
  void EndMember();
  // The line that unpacks it.
  ZorLineBuilder MemberLine(const char* name) const;
};
