// ExtractOperation.cpp - finds a member, reports its begin and end, and names it to the archiver.
#include "archive/ExtractOperation.h"

#include "archive/MemberSearch.h"

bool ZorExtractOperation::TestArguments() {
  CFileStatus status;
  return CFile::GetStatus(archive, status) != 0 || Fail(ZorErrorArchiveNotFound);
}

bool ZorExtractOperation::FindMember(const char* name) {
  ZorMemberSearch search(engine, archive, owner.GetBackgroundMode());
  if (!search.IsOpen() || !search.Find(name)) return Fail(ZorErrorArchiveOpen);
  progress.memberName = name;
  progress.memberSize = search.Member().size;
  progress.memberDate = search.Member().date;
  progress.memberTime = search.Member().time;
  progress.memberAttribute = static_cast<std::uint8_t>(search.Attribute() & 0xFF);
  return true;
}

bool ZorExtractOperation::BeginMember(const char* target) {
  progress.fileName = target;
  progress.bytesDone = 0;
  progress.bytesTotal = progress.memberSize;
  return Report(ZorArchive::PhaseFileBegin);
}

bool ZorExtractOperation::EndMember() {
  progress.bytesDone = progress.memberSize;
  progress.bytesTotal = progress.memberSize;
  ++progress.filesDone;
  return Report(ZorArchive::PhaseFileEnd);
}

ZorCommandLine ZorExtractOperation::MemberLine(const char* name) const {
  ZorCommandLine line("");
  line.Piece(BackgroundPiece(" -jsb")).Operand(archive).Operand(name);
  return line;
}
