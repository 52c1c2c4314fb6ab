// ExtractOperation.h - what the operations on an archive that must exist have in common.
#pragma once

#include "archive/Operation.h"

class ZorExtractOperation : public ZorOperation {
 protected:
  ZorExtractOperation(ZorArchive& object, const char* archivePath)
      : ZorOperation(Family::kExtract, object, archivePath) {}

  // The archive must exist.
  bool TestArguments() override;

  // Steps in the life of one member that is unpacked.  `name` and `target` live as long as the
  // operation, as the record refers to them.
  // Looks the member up and fills the record's member fields; ZorErrorArchiveOpen without it.
  bool FindMember(const char* name);
  // Reports its begin; `target` is where it goes, in the caller's terms.
  bool BeginMember(const char* target);
  // Reports its end.
  bool EndMember();
  // The line that unpacks it.
  ZorCommandLine MemberLine(const char* name) const;
};
