// TemporaryArchive.cpp - see TemporaryArchive.h.
#include "engine/container/TemporaryArchive.h"

#include <algorithm>

#include "engine/container/Failure.h"
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

std::string DirectoryOf(const std::string& path) {
  const char* end = path.c_str();
  for (const char* at = path.c_str(); *at != '\0'; at = CharNextA(at)) {
    if (*at == '\\' || *at == '/' || (*at == ':' && at == path.c_str() + 1)) end = at + 1;
  }
  return {path.c_str(), end};
}

std::string AsDirectory(const std::string& path) {
  return DirectoryOf(path) == path ? path : path + '\\';
}

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

TemporaryArchive::TemporaryArchive(const std::string& directory) {
  const auto start = static_cast<unsigned int>(GetTickCount64() % kNameCount);
  for (unsigned int i = 0; i < kNameCount; ++i) {
    path = directory + "lhtmp" + NameSuffix(start + i) + ".lzh";
    if (file.Open(path, File::Mode::CreateNew)) return;
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) break;
  }
  throw Failure(ResultCode::TemporaryNotOpened);
}

TemporaryArchive::~TemporaryArchive() {
  file.Close();
  if (!path.empty()) DeleteFileA(path.c_str());
}

void TemporaryArchive::TakePlaceOf(const std::string& archivePath, Target target) {
  file.Close();
  DWORD flags = MOVEFILE_WRITE_THROUGH;
  if (target == Target::IsThere) {
    const DWORD attributes = GetFileAttributesA(archivePath.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) SetFileAttributesA(path.c_str(), attributes);
    flags |= MOVEFILE_REPLACE_EXISTING;
  }
  if (MoveFileExA(path.c_str(), archivePath.c_str(), flags)) {
    path.clear();
  } else if (GetLastError() == ERROR_NOT_SAME_DEVICE) {
    CopyBeside(archivePath, target);
  } else {
    throw Failure(ResultCode::TemporaryNotCopied);
  }
}

void TemporaryArchive::CopyBeside(const std::string& archivePath, Target target) {
  if (!file.Open(path, File::Mode::Read)) throw Failure(ResultCode::TemporaryNotCopied);
  TemporaryArchive beside(DirectoryOf(archivePath));
  std::uint64_t done = 0;
  CopyBytes(file, 0, file.Size(), [&](ByteSpan piece) {
    beside.Contents().WriteAt(done, piece);
    done += piece.size();
  });
  beside.Contents().Flush();
  beside.TakePlaceOf(archivePath, target);
}

}  // namespace kozor::container
