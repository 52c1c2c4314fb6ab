// MemberOperation.h - the common part of operations on members of an existing archive.
#pragma once

#include "archive/Operation.h"

class ZorMemberOperation : public ZorOperation {
 protected:
  ZorMemberOperation(ZorArchive& object, const char* archivePath)
      : ZorOperation(Family::Extract, object, archivePath) {}

  // The archive must exist.
  void TestArguments() override;
};

// The steps of unpacking one member.  The record points to `name` and `target`, so they must live
// as long as the operation.
class ZorUnpackOperation : public ZorMemberOperation {
 protected:
  using ZorMemberOperation::ZorMemberOperation;

  // Looks the member up and fills in the record's member fields.  Throws ZorErrorArchiveOpen if
  // there is none.
  void FindMember(const char* name);
  // Reports its begin; `target` is its destination, as OnAbort sees it.
  void BeginMember(const char* target);
  // Reports its end.
  void EndMember();
  // The command line that unpacks it.
  ZorLineBuilder MemberLine(const char* name) const;
};
