// Failure.h - the archiver's result codes, and the exception that carries one.
//
// Archiver libraries of this interface share the numbers.  Inside the archiver a step that fails
// throws a Failure; the exports turn it into their result, so that no exception leaves the module.
#pragma once

#include <cstdint>
#include <exception>

namespace kozor::container {

enum class ResultCode : std::int32_t {
  Ok = 0,
  NoDiskSpace = 0x8005,
  ReadOnlyFile = 0x8006,
  UnknownKind = 0x8008,  // can't be added: too large, or not a regular file
  MethodNotSupported = 0x8009,
  CrcMismatch = 0x800C,
  FileNotOpened = 0x800D,
  NotFound = 0x800F,
  CannotWrite = 0x8013,
  PackedDataDamaged = 0x8014,
  HeaderChecksum = 0x8016,
  HeaderDamaged = 0x8017,
  ArchiveNotOpened = 0x8018,
  NotAnArchive = 0x8019,
  CannotRead = 0x801A,
  UnknownCommand = 0x801C,
  NotEnoughMemory = 0x801E,
  AlreadyRunning = 0x801F,
  Cancelled = 0x8020,
  InvalidHandle = 0x8021,
  TemporaryNotOpened = 0x8025,
  NameTooLong = 0x8026,
  ArchiveReadOnly = 0x8027,
  SameName = 0x8028,
  ArchiveNotFound = 0x8029,
  ResponseFileNotRead = 0x802A,
  NoFileName = 0x802B,
  TemporaryNotCopied = 0x802C,
};

class Failure : public std::exception {
 public:
  explicit Failure(ResultCode cause) : code(cause) {}
  const char* what() const noexcept override { return "archiver result code"; }

  const ResultCode code;
};

}  // namespace kozor::container
