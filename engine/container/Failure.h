// Failure.h - the archiver's result codes, and the exception that carries one up to the export.
//
// The numbers are the ones that archiver libraries of this interface share.  Inside the archiver a
// step that cannot go on throws a Failure; the exports turn it into their result, so that no
// exception leaves the module.
#pragma once

#include <cstdint>
#include <exception>

namespace kozor::container {

enum class Code : std::int32_t {
  ok = 0,
  noDiskSpace = 0x8005,
  readOnlyFile = 0x8006,
  unknownKind = 0x8008,  // not a file that can go in: too large, or of a kind that has no contents
  methodNotSupported = 0x8009,
  crcMismatch = 0x800C,
  fileNotOpened = 0x800D,
  notFound = 0x800F,
  cannotWrite = 0x8013,
  packedDataDamaged = 0x8014,
  headerChecksum = 0x8016,
  headerDamaged = 0x8017,
  archiveNotOpened = 0x8018,
  notAnArchive = 0x8019,
  cannotRead = 0x801A,
  unknownCommand = 0x801C,
  notEnoughMemory = 0x801E,
  alreadyRunning = 0x801F,
  cancelled = 0x8020,
  invalidHandle = 0x8021,
  temporaryNotOpened = 0x8025,
  nameTooLong = 0x8026,
  archiveReadOnly = 0x8027,
  sameName = 0x8028,
  archiveNotFound = 0x8029,
  responseFileNotRead = 0x802A,
  noFileName = 0x802B,
  temporaryNotCopied = 0x802C,
};

class Failure : public std::exception {
 public:
  explicit Failure(Code cause) : code(cause) {}
  const char* what() const noexcept override { return "archiver result code"; }

  const Code code;
};

}  // namespace kozor::container
