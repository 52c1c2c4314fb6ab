// MemberOperation.cpp - finds a member, reports its begin and end, and builds its command line.
#include "archive/MemberOperation.h"

#include "archive/ArchiveSearch.h"

void ZorMemberOperation::TestArguments() {
  CFileStatus status;
  if (!CFile::GetStatus(archive, status)) throw ZorFailure{ZorErrorArchiveNotFound};
}

void ZorUnpackOperation::FindMember(const char* name) {
  ZorArchiveSearch search(engine, archive, owner.GetBackgroundMode());
  if (!search.IsOpen() || !search.Find(name)) throw ZorFailure{ZorErrorArchiveOpen};
  progress.memberName = name;
  progress.memberSize = search.Member().size;
  progress.memberDate = search.Member().date;
  progress.memberTime = search.Member().time;
  progress.memberAttribute = static_cast<std::uint8_t>(search.Attribute() & 0xFF);
}

void ZorUnpackOperation::BeginMember(const char* target) {
  progress.fileName = target;
  progress.bytesDone = 0;
  progress.bytesTotal = progress.memberSize;
  Report(ZorArchive::PhaseFileBegin);
}

void ZorUnpackOperation::EndMember() {
  progress.bytesDone = progress.memberSize;
  progress.bytesTotal = progress.memberSize;
  ++progress.filesDone;
  Report(ZorArchive::PhaseFileEnd);
}

ZorLineBuilder ZorUnpackOperation::MemberLine(const char* name) const {
  ZorLineBuilder line("");
  line.Piece(BackgroundPiece(" -jsb")).Operand(archive).Operand(name);
  return line;
}
