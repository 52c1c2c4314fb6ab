// Failure.cpp - see Failure.h.
#include "Failure.h"

#include <array>

namespace kozor::program {

namespace {

// In the order of the numbers.
constexpr std::array<std::string_view, 45> kTexts = {
    "no error",
    "the archiver UNLHA32.DLL can't be loaded",
    "no directory to extract to",
    "the file can't be read or written",
    "the archiver reports an unknown error",
    "the disk is full",
    "a read-only file is in the way",
    "the file was left out",
    "the file is of a kind that can't be archived",
    "the compression method isn't supported",
    "the member is protected by a password",
    "the version of the archive isn't supported",
    "the member is damaged: its checksum doesn't match",
    "the file can't be opened",
    "an existing file is newer",
    "no such file or member",
    "the file exists already",
    "too many files",
    "can't create the directory",
    "can't write",
    "damaged: the packed data is invalid or cut short",
    "the comment in the archive is damaged",
    "the archive is damaged: the checksum of a header doesn't match",
    "the archive is damaged: a header is invalid",
    "the archive can't be opened, or another program is changing it",
    "not an LZH archive",
    "can't read",
    "the file can't be used as an LZH archive",
    "the archiver doesn't know the command",
    "not enough memory for the archiver",
    "not enough memory",
    "the archiver is busy",
    "stopped",
    "the archiver lost the archive",
    "the archiver wasn't searching",
    "the archiver doesn't support the function",
    "a time is invalid",
    "can't create a temporary file",
    "the name is too long for an archive",
    "the archive is read-only",
    "the archive already has a member of that name (--overwrite replaces it)",
    "no such archive",
    "the list of names can't be read",
    "no name was given",
    "the finished archive can't be moved to its place",
};

}  // namespace

std::string_view ErrorText(ZorError error) {
  const auto number = static_cast<std::size_t>(error);
  return kTexts[number < kTexts.size() ? number : std::size_t{ZorErrorEngineUnknown}];
}

bool EndsTheRun(ZorError error) {
  switch (error) {
    case ZorErrorEngineUnavailable:
    case ZorErrorCanceled:
    case ZorErrorEngineBusy:
    case ZorErrorArchiveNotFound:
      return true;
    default:
      return false;
  }
}

}  // namespace kozor::program
