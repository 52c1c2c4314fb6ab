// TemporaryArchive.cpp - see TemporaryArchive.h.
#include "engine/container/TemporaryArchive.h"

#include <algorithm>

#include "engine/container/Failure.h"
#include "engine/container/Path.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/Win32.h"

namespace kozor::container {
namespace {

constexpr std::size_t kCopyPiece = 256 << 10;
constexpr unsigned int kNameCount = 36 * 36 * 36;

// The three characters of a temporary's name.
std::string NameSuffix(unsigned int number) {
  constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
  return {kDigits[number / (36 * 36) % 36], kDigits[number / 36 % 36], kDigits[number % 36]};
}

}  // namespace

void CopyBytes(File& from, std::uint64_t begin, std::uint64_t end,
               const std::function<void(ByteSpan)>& write, const CopyProgress& progress) {
  std::vector<std::uint8_t> piece(
      static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, kCopyPiece)));
  while (begin < end) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, kCopyPiece));
    if (from.ReadAt(begin, std::span(piece).first(wanted)) != wanted) {
      throw Failure(ResultCode::CannotRead);
    }
    write(ByteSpan(piece).first(wanted));
    begin += wanted;
    if (progress) progress(wanted);
  }
}

void TemporaryArchive::RemoveLeftovers(const std::string& directory) {
  WIN32_FIND_DATAA entry;
  HANDLE find = FindFirstFileA((directory + "lhtmp\?\?\?.lzh").c_str(), &entry);
  if (find == INVALID_HANDLE_VALUE) return;
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_TEMPORARY) == 0) continue;
    const std::string leftover = directory + entry.cFileName;
    File opened;
    if (opened.Open(leftover, File::Mode::Alone)) opened.Remove(leftover);
  } while (KzFindNextFile(find, &entry));
  FindClose(find);
}

TemporaryArchive::TemporaryArchive(const std::string& directory) {
  RemoveLeftovers(directory);
  const auto start = static_cast<unsigned int>(GetTickCount64() % kNameCount);
  for (unsigned int i = 0; i < kNameCount; ++i) {
    path = directory + "lhtmp" + NameSuffix(start + i) + ".lzh";
    if (file.Open(path, File::Mode::CreateNew)) return;
    // A sharing violation: another run has mistaken the new file for a leftover and is removing it.
    const DWORD error = GetLastError();
    const bool isTaken = error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS ||
                         error == ERROR_SHARING_VIOLATION;
    if (!isTaken) break;
  }
  throw Failure(ResultCode::TemporaryNotOpened);
}

TemporaryArchive::~TemporaryArchive() {
  file.Close();
  if (!path.empty()) DeleteFileA(path.c_str());
}

void TemporaryArchive::Replace(File& held, const std::string& archivePath) {
  // A run that was killed after its move has left the mark.
  Take(archivePath, held.Facts().attributes & ~std::uint32_t{FILE_ATTRIBUTE_TEMPORARY},
       [&](const std::string& from) { return held.ReplaceBy(from, archivePath); });
}

void TemporaryArchive::Replace(const std::string& targetPath) {
  Take(targetPath, FILE_ATTRIBUTE_ARCHIVE, [&](const std::string& from) {
    constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return MoveFileExA(from.c_str(), targetPath.c_str(), kFlags) != 0;
  });
}

void TemporaryArchive::BecomeNew(const std::string& archivePath) {
  Take(archivePath, FILE_ATTRIBUTE_ARCHIVE, [&](const std::string& from) {
    return MoveFileExA(from.c_str(), archivePath.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
  });
}

void TemporaryArchive::Take(const std::string& targetPath, std::uint32_t attributes,
                            const Move& move) {
  file.Close();
  if (RepeatWhileShared([&] { return move(path); })) {
    // Only now: until it has its place, its attribute marks it as a leftover of a killed run.
    SetFileAttributesA(targetPath.c_str(), attributes);
    path.clear();
    return;
  }
  const DWORD error = GetLastError();
  if (error == ERROR_NOT_SAME_DEVICE) {
    CopyBeside(targetPath, attributes, move);
    return;
  }
  const bool isTaken = error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS;
  throw Failure(isTaken ? ResultCode::ArchiveNotOpened : ResultCode::TemporaryNotCopied);
}

void TemporaryArchive::CopyBeside(const std::string& targetPath, std::uint32_t attributes,
                                  const Move& move) {
  if (!file.Open(path, File::Mode::Read)) throw Failure(ResultCode::TemporaryNotCopied);
  TemporaryArchive beside(FolderOf(targetPath));
  std::uint64_t done = 0;
  CopyBytes(file, 0, file.Size(), [&](ByteSpan piece) {
    beside.Contents().WriteAt(done, piece);
    done += piece.size();
  });
  beside.Contents().Flush();
  beside.Take(targetPath, attributes, move);
}

}  // namespace kozor::container
